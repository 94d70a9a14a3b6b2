#include "exchange/store/catalogue.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <set>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

namespace zvx {
namespace {

using Json = nlohmann::json;

constexpr std::int64_t kFormat = 1;
constexpr std::uintmax_t kLargestFile = 64u << 20;
constexpr std::int64_t kMostListed = 1'000'000'000'000;

/// A place in the file, for errors: "catalogue.json: platforms[0].markets[2]".
class Place
{
public:
    explicit Place(std::string text) : m_text(std::move(text)) { }

    Place key(const char *name) const
    {
        const bool top = m_text.back() == ' ';
        return Place(m_text + (top ? "" : ".") + name);
    }
    Place entry(std::size_t index) const
    {
        return Place(m_text + "[" + std::to_string(index) + "]");
    }

    [[noreturn]] void fail(const std::string &reason) const
    {
        throw CatalogueError(m_text + (m_text.back() == ' ' ? "" : ": ") + reason);
    }

private:
    std::string m_text;
};

/// Code points of a text that is known to be UTF-8.
std::size_t length(const std::string &text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
    }));
}

bool lowerOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}
bool letterOrDigit(char c)
{
    return lowerOrDigit(c) || (c >= 'A' && c <= 'Z');
}

/// One object of the file, with every access checked.
class Object
{
public:
    Object(const Json &json, Place place, std::initializer_list<const char *> keys)
        : m_json(json), m_place(std::move(place))
    {
        if (!json.is_object())
            m_place.fail("has to be an object");
        for (const auto &item : json.items()) {
            const auto same = [&](const char *key) { return item.key() == key; };
            if (std::none_of(keys.begin(), keys.end(), same))
                m_place.fail("unknown key \"" + item.key() + "\"");
        }
    }

    const Place &place() const { return m_place; }
    bool has(const char *key) const { return m_json.contains(key); }

    std::int64_t integer(const char *key, std::int64_t least, std::int64_t most) const
    {
        const Json &value = at(key);
        const bool fits = value.is_number_unsigned() ? value.get<std::uint64_t>()
                <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                                                     : value.is_number_integer();
        const std::int64_t number = fits ? value.get<std::int64_t>() : 0;
        if (!fits || number < least || number > most)
            m_place.key(key).fail("has to be a whole number from " + std::to_string(least) + " to "
                                  + std::to_string(most) + ", not " + value.dump());
        return number;
    }

    std::string text(const char *key, std::size_t least, std::size_t most) const
    {
        const Json &value = at(key);
        if (!value.is_string())
            m_place.key(key).fail("has to be a text");
        std::string found = value.get<std::string>();
        const std::size_t size = length(found);
        if (size < least || size > most)
            m_place.key(key).fail("has to be of " + std::to_string(least) + " to "
                                  + std::to_string(most) + " characters");
        const auto control
            = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
        if (std::any_of(found.begin(), found.end(), control))
            m_place.key(key).fail("holds a control character");
        return found;
    }

    bool flag(const char *key) const
    {
        const Json &value = at(key);
        if (!value.is_boolean())
            m_place.key(key).fail("has to be true or false");
        return value.get<bool>();
    }

    /// Calls visit(entry, place) for each entry of a list of at least one.
    template <typename Visit>
    void list(const char *key, const Visit &visit) const
    {
        const Json &value = at(key);
        if (!value.is_array() || value.empty())
            m_place.key(key).fail("has to be a list with at least one entry");
        for (std::size_t i = 0; i < value.size(); ++i)
            visit(value[i], m_place.key(key).entry(i));
    }

private:
    const Json &at(const char *key) const
    {
        const auto found = m_json.find(key);
        if (found == m_json.end())
            m_place.fail(std::string("lacks \"") + key + "\"");
        return *found;
    }

    const Json &m_json;
    Place m_place;
};

/// Notes where a value was used first, and refuses it the second time.
class Unique
{
public:
    explicit Unique(const char *what) : m_what(what) { }

    void add(const std::string &value, const Place &place)
    {
        if (!m_seen.insert(value).second)
            place.fail(std::string(m_what) + " " + value + " is used twice");
    }

private:
    const char *m_what;
    std::unordered_set<std::string> m_seen;
};

/// Reads the platforms. Ids and prefixes are unique over all of them.
class Reader
{
public:
    explicit Reader(const InitialsFunction &initials) : m_initials(initials) { }

    std::vector<CataloguePlatform> platforms(const Json &json, const std::string &source)
    {
        const Object root(json, Place(source + ": "), {"format", "platforms"});
        root.integer("format", kFormat, kFormat);
        std::vector<CataloguePlatform> found;
        Unique ids("platform");
        root.list("platforms", [&](const Json &entry, const Place &place) {
            found.push_back(platform(entry, place));
            ids.add(found.back().id, place);
        });
        return found;
    }

private:
    CataloguePlatform platform(const Json &json, const Place &place)
    {
        const Object object(json, place, {"id", "name", "markets"});
        CataloguePlatform found;
        found.id = object.text("id", 1, 16);
        if (!std::all_of(found.id.begin(), found.id.end(), lowerOrDigit))
            place.key("id").fail("has to be of lower-case letters and digits");
        found.name = object.text("name", 1, 24);
        object.list("markets", [&](const Json &entry, const Place &at) {
            found.markets.push_back(market(entry, at, found.id));
        });
        return found;
    }

    CatalogueMarket market(const Json &json, const Place &place, const std::string &platform)
    {
        const Object object(json, place,
                            {"name", "prefix", "limitPpm", "feePpm", "types", "collections"});
        CatalogueMarket found;
        found.platform = platform;
        found.name = object.text("name", 1, 24);
        found.prefix = prefix(object, platform);
        found.limit = PartsPerMillion(object.integer("limitPpm", 1, 999'999));
        found.fee = PartsPerMillion(object.integer("feePpm", 0, kHighestFee.value()));
        Unique typeIds("type");
        object.list("types", [&](const Json &entry, const Place &at) {
            const Object type(entry, at, {"id", "name"});
            found.types.push_back(
                {static_cast<int>(type.integer("id", 1, 9'999)), type.text("name", 1, 24)});
            typeIds.add(std::to_string(found.types.back().id), at);
        });
        Unique codes("code");
        object.list("collections", [&](const Json &entry, const Place &at) {
            found.collections.push_back(collection(entry, at, found));
            codes.add(found.collections.back().code, at);
        });
        return found;
    }

    std::string prefix(const Object &object, const std::string &platform)
    {
        const std::string text = object.text("prefix", 4, 64);
        const std::string head = "/" + platform + "/";
        const bool shaped = text.size() > head.size() + 1 && text.compare(0, head.size(), head) == 0
            && text.back() == '/'
            && std::all_of(text.begin() + static_cast<std::ptrdiff_t>(head.size()), text.end() - 1,
                           lowerOrDigit);
        if (!shaped)
            object.place().key("prefix").fail("has to be \"" + head
                                              + "...\" with lower-case letters and digits and a "
                                                "closing slash, not \""
                                              + text + "\"");
        m_prefixes.add(text, object.place());
        return text;
    }

    CatalogueCollection collection(const Json &json, const Place &place,
                                   const CatalogueMarket &market)
    {
        const Object object(
            json, place,
            {"id", "code", "name", "type", "listed", "previousClose", "introduction", "suspended"});
        CatalogueCollection found;
        found.id = CollectionId(object.integer("id", 1, CollectionId::most));
        m_ids.add(std::to_string(found.id.value()), place);
        found.code = object.text("code", 1, 16);
        if (!std::all_of(found.code.begin(), found.code.end(), letterOrDigit))
            place.key("code").fail("has to be of letters and digits");
        found.name = object.text("name", 1, 24);
        found.type = static_cast<int>(object.integer("type", 1, 9'999));
        const auto same = [&](const CatalogueType &type) { return type.id == found.type; };
        if (std::none_of(market.types.begin(), market.types.end(), same))
            place.key("type").fail("the market has no type " + std::to_string(found.type));
        found.listed = Quantity(object.integer("listed", 1, kMostListed));
        found.previousClose = Fen(object.integer("previousClose", 1, kPriceBound - 1));
        if (Wide(found.listed.value()) * found.previousClose.value() > kAmountBound)
            place.fail("listed times previousClose is beyond " + std::to_string(kAmountBound));
        found.introduction = object.text("introduction", 0, 512);
        found.suspended = object.has("suspended") && object.flag("suspended");
        if (m_initials)
            found.initials = m_initials(found.name);
        return found;
    }

    const InitialsFunction &m_initials;
    Unique m_ids{"id"};
    Unique m_prefixes{"prefix"};
};

/// Parses strictly: a key that stands twice in one object would hide one of its two values.
Json parseStrictly(std::string_view text, const std::string &source)
{
    std::vector<std::set<std::string>> keys;
    const auto watch = [&](int, Json::parse_event_t event, Json &parsed) {
        if (event == Json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == Json::parse_event_t::key
                 && !keys.back().insert(parsed.get<std::string>()).second)
            throw CatalogueError(source + ": key \"" + parsed.get<std::string>()
                                 + "\" stands twice in one object");
        return true;
    };
    try {
        return Json::parse(text, watch);
    } catch (const Json::parse_error &error) {
        // The library's text starts with its own number in brackets, which helps nobody here.
        std::string reason = error.what();
        if (const std::size_t end = reason.find("] "); end != std::string::npos)
            reason.erase(0, end + 2);
        throw CatalogueError(source + ": " + reason);
    }
}

} // namespace

std::string CatalogueMarket::fileStem() const
{
    std::string stem = prefix.substr(1, prefix.size() - 2);
    std::replace(stem.begin(), stem.end(), '/', '-');
    return stem;
}

Catalogue Catalogue::parse(std::string_view text, const std::string &source,
                           const InitialsFunction &initials)
{
    Catalogue catalogue;
    catalogue.m_platforms = Reader(initials).platforms(parseStrictly(text, source), source);
    return catalogue;
}

Catalogue Catalogue::load(const std::filesystem::path &file, const InitialsFunction &initials)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error)
        throw CatalogueError(file.string() + ": " + error.message());
    if (size > kLargestFile)
        throw CatalogueError(file.string() + ": larger than 64 MiB");
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream)
        throw CatalogueError(file.string() + ": cannot be read");
    return parse(text.str(), file.string(), initials);
}

} // namespace zvx
