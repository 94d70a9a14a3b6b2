#include "exchange/store/catalogue.h"

#include "exchange/store/checkedjson.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace zvx {
namespace {

using Json = nlohmann::json;

constexpr std::int64_t kFormat = 1;
constexpr std::uintmax_t kLargestFile = 64u << 20;
constexpr std::int64_t kMostListed = 1'000'000'000'000;

bool lowerOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}
bool letterOrDigit(char c)
{
    return lowerOrDigit(c) || (c >= 'A' && c <= 'Z');
}

/// Reads the platforms. Ids and prefixes are unique over all of them.
class Reader
{
public:
    explicit Reader(const InitialsFunction &initials) : m_initials(initials) { }

    std::vector<CataloguePlatform> platforms(const Json &json, const std::string &source)
    {
        const JsonObject root(json, JsonPlace(source), {"format", "platforms"});
        root.integer("format", kFormat, kFormat);
        std::vector<CataloguePlatform> found;
        JsonUnique ids("platform");
        root.filledList("platforms", [&](const Json &entry, const JsonPlace &place) {
            found.push_back(platform(entry, place));
            ids.add(found.back().id, place);
        });
        return found;
    }

private:
    CataloguePlatform platform(const Json &json, const JsonPlace &place)
    {
        const JsonObject object(json, place, {"id", "name", "markets"});
        CataloguePlatform found;
        found.id = object.text("id", 1, 16);
        if (!std::all_of(found.id.begin(), found.id.end(), lowerOrDigit))
            place.key("id").fail("has to be of lower-case letters and digits");
        found.name = object.text("name", 1, 24);
        object.filledList("markets", [&](const Json &entry, const JsonPlace &at) {
            found.markets.push_back(market(entry, at, found.id));
        });
        return found;
    }

    CatalogueMarket market(const Json &json, const JsonPlace &place, const std::string &platform)
    {
        const JsonObject object(
            json, place,
            {"name", "prefix", "limitPpm", "feePpm", "history", "types", "collections"});
        CatalogueMarket found;
        found.platform = platform;
        found.name = object.text("name", 1, 24);
        found.prefix = prefix(object, platform);
        found.limit = PartsPerMillion(object.integer("limitPpm", 1, 999'999));
        found.fee = PartsPerMillion(object.integer("feePpm", 0, kHighestFee.value()));
        found.history = object.has("history") && object.flag("history");
        JsonUnique typeIds("type");
        object.filledList("types", [&](const Json &entry, const JsonPlace &at) {
            const JsonObject type(entry, at, {"id", "name"});
            found.types.push_back(
                {static_cast<int>(type.integer("id", 1, 9'999)), type.text("name", 1, 24)});
            typeIds.add(std::to_string(found.types.back().id), at);
        });
        JsonUnique codes("code");
        object.filledList("collections", [&](const Json &entry, const JsonPlace &at) {
            found.collections.push_back(collection(entry, at, found));
            codes.add(found.collections.back().code, at);
        });
        return found;
    }

    std::string prefix(const JsonObject &object, const std::string &platform)
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

    CatalogueCollection collection(const Json &json, const JsonPlace &place,
                                   const CatalogueMarket &market)
    {
        const JsonObject object(
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
    JsonUnique m_ids{"id"};
    JsonUnique m_prefixes{"prefix"};
};

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
    try {
        Catalogue catalogue;
        catalogue.m_platforms = Reader(initials).platforms(parseStrictly(text, source), source);
        return catalogue;
    } catch (const JsonFault &fault) {
        throw CatalogueError(fault.what());
    }
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
