#include "exchange/service/application_file.h"

#include "exchange/store/calendar.h"
#include "exchange/store/checkedjson.h"

#include <algorithm>
#include <array>
#include <exception>

namespace zvx {

namespace {

using Json = nlohmann::json;

constexpr std::int64_t format = 1;
constexpr std::int64_t largestNumber = kAmountBound;

/// Names of ApplicationState, in its order.
constexpr std::array<const char *, 4> stateNames = {"pending", "granted", "missed", "withdrawn"};

constexpr std::int64_t hourMs = 3'600'000;
constexpr std::int64_t wallTimeAhead = 8 * hourMs; ///< of UTC
constexpr std::int64_t dayMs = 24 * hourMs;

/// Reads "09:30:00" as milliseconds of a day.
std::optional<std::int64_t> readTimeOfDay(std::string_view text)
{
    if (text.size() != 8 || text[2] != ':' || text[5] != ':')
        return std::nullopt;
    const auto pair = [text](std::size_t at) -> std::int64_t {
        const bool digits
            = text[at] >= '0' && text[at] <= '9' && text[at + 1] >= '0' && text[at + 1] <= '9';
        return digits ? (text[at] - '0') * 10 + (text[at + 1] - '0') : 99;
    };
    const std::int64_t hour = pair(0);
    const std::int64_t minute = pair(3);
    const std::int64_t second = pair(6);
    if (hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return hour * hourMs + minute * 60'000 + second * 1'000;
}

/// The fields that an issue and an application share.
template <typename Entry>
void readCollection(Entry &entry, const JsonObject &object)
{
    entry.collection = CollectionId(object.integer("collection", 1, CollectionId::most));
    entry.code = object.text("code", 1, 16);
    entry.name = object.text("name", 1, 24);
    entry.price = Fen(object.integer("price", 1, kPriceBound - 1));
    entry.quantity = Quantity(object.integer("quantity", 1, kAmountBound));
}

OpenIssue readIssue(const Json &json, const JsonPlace &place)
{
    const JsonObject object(json, place,
                            {"collection", "code", "name", "price", "quantity", "from", "to"});
    OpenIssue issue;
    readCollection(issue, object);
    issue.from = object.day("from");
    issue.to = object.day("to");
    if (issue.to < issue.from)
        place.key("to").fail("is before \"from\"");
    return issue;
}

ApplicationState readState(const JsonObject &object)
{
    const std::string name = object.text("state", 0, 16);
    const auto found = std::find(stateNames.begin(), stateNames.end(), name);
    if (found == stateNames.end())
        object.place().key("state").fail(
            "has to be \"pending\", \"granted\", \"missed\" or \"withdrawn\"");
    return static_cast<ApplicationState>(found - stateNames.begin());
}

void readTime(Application &application, const JsonObject &object)
{
    const std::string text = object.text("time", 0, 32);
    const std::string_view view = text;
    const auto day = readDay(view.substr(0, 10));
    const auto time
        = text.size() == 19 && text[10] == ' ' ? readTimeOfDay(view.substr(11)) : std::nullopt;
    const auto ms
        = day && time ? dayNumber(*day) * dayMs + *time - wallTimeAhead : std::int64_t(-1);
    if (ms < 0)
        object.place().key("time").fail("has to be a time such as \"2020-01-01 09:30:00\"");
    application.day = *day;
    application.time = TimeMs(ms);
}

/// By what an application names its account: a phone or a number.
std::string readPerson(const JsonObject &object)
{
    if (object.has("phone") == object.has("account"))
        object.place().fail("needs either \"phone\" or \"account\"");
    if (object.has("account"))
        return object.text("account", 3, 32);
    const std::string phone = object.text("phone", 0, 32);
    if (phone.size() != 11 || phone.find_first_not_of("0123456789") != std::string::npos)
        object.place().key("phone").fail("has to be of 11 digits");
    return phone;
}

Application readApplication(const JsonObject &object)
{
    Application application;
    readCollection(application, object);
    application.number = object.integer("number", 1, largestNumber);
    application.state = readState(object);
    readTime(application, object);
    const bool granted = application.state == ApplicationState::Granted;
    if (granted)
        application.granted = Quantity(object.integer("granted", 1, application.quantity.value()));
    else if (object.has("granted"))
        object.place().key("granted").fail("stands there only where the state is \"granted\"");
    else if (application.state == ApplicationState::Missed)
        application.granted = Quantity(0);
    return application;
}

std::shared_ptr<const MarketApplications> readMarket(const Json &json, const JsonPlace &place)
{
    const JsonObject object(json, place, {"open", "applications"});
    auto market = std::make_shared<MarketApplications>();
    if (object.has("open")) {
        object.list("open", [&](const Json &entry, const JsonPlace &at) {
            if (market->open.size() == ApplicationFile::issueBound)
                at.fail("more than " + std::to_string(ApplicationFile::issueBound) + " entries");
            market->open.push_back(readIssue(entry, at));
        });
    }
    if (object.has("applications")) {
        std::size_t count = 0;
        JsonUnique numbers("number");
        object.list("applications", [&](const Json &entry, const JsonPlace &at) {
            if (++count > ApplicationFile::applicationBound)
                at.fail("more than " + std::to_string(ApplicationFile::applicationBound)
                        + " entries");
            const JsonObject one(entry, at,
                                 {"number", "phone", "account", "time", "collection", "code",
                                  "name", "price", "quantity", "granted", "state"});
            Application application = readApplication(one);
            numbers.add(std::to_string(application.number), at);
            market->byPerson[readPerson(one)].push_back(std::move(application));
        });
    }
    return market;
}

} // namespace

std::vector<const OpenIssue *> MarketApplications::openOn(TradingDay day) const
{
    std::vector<const OpenIssue *> found;
    for (const OpenIssue &issue : open) {
        if (issue.from <= day && day <= issue.to)
            found.push_back(&issue);
    }
    return found;
}

std::vector<const Application *> MarketApplications::of(std::string_view phone,
                                                        std::string_view account) const
{
    std::vector<const Application *> found;
    for (const std::string_view name : {phone, account}) {
        const auto person = byPerson.find(name);
        if (person == byPerson.end())
            continue;
        for (const Application &application : person->second)
            found.push_back(&application);
    }
    std::sort(found.begin(), found.end(), [](const Application *a, const Application *b) {
        return a->time != b->time ? b->time < a->time : b->number < a->number;
    });
    return found;
}

ApplicationFile::ApplicationFile(const std::filesystem::path &folder,
                                 std::vector<std::string> prefixes)
    : m_file(folder / fileName, fileBound), m_prefixes(std::move(prefixes))
{
}

void ApplicationFile::refresh(std::string &fault)
{
    switch (m_file.look()) {
    case WatchedFile::Look::Same:
        return;
    case WatchedFile::Look::Gone:
        m_markets.clear();
        return;
    case WatchedFile::Look::Changed:
        break;
    }
    try {
        Markets markets;
        const Json document = parseStrictly(m_file.read(), fileName);
        const JsonObject root(document, JsonPlace(fileName), {"format", "markets"});
        root.integer("format", format, format);
        root.names(
            "markets", [&](const std::string &prefix, const Json &entry, const JsonPlace &place) {
                if (std::find(m_prefixes.begin(), m_prefixes.end(), prefix) == m_prefixes.end())
                    place.fail("there is no such market");
                markets[prefix] = readMarket(entry, place);
            });
        m_markets = std::move(markets);
    } catch (const std::exception &reason) {
        fault = m_file.path().string() + " is not used: " + reason.what();
    }
}

std::shared_ptr<const MarketApplications> ApplicationFile::of(const std::string &prefix) const
{
    static const auto nothing = std::make_shared<const MarketApplications>();
    const auto found = m_markets.find(prefix);
    return found == m_markets.end() ? nothing : found->second;
}

} // namespace zvx
