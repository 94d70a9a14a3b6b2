#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/// Gives all pinyin initials of a name, lower case, most usual reading first.
using InitialsFunction = std::function<std::vector<std::string>(std::string_view)>;

/// What the catalogue says of one collection.
struct CatalogueCollection {
    CollectionId id; ///< 1 to 2^31 - 1, unique over all markets of the catalogue
    std::string code; ///< 1 to 16 letters or digits, unique within its market
    std::string name; ///< 1 to 24 characters
    std::vector<std::string> initials; ///< filled while loading, never written to the file
    int type = 0; ///< id of one of the market's types
    Quantity listed; ///< issued pieces, at least 1
    Fen previousClose; ///< first reference price, at least 1
    std::string introduction; ///< address of a page, or ""
    bool suspended = false; ///< listed, and not to be traded for now
};

struct CatalogueType {
    int id = 0; ///< 1 to 9999, unique within the market
    std::string name;
};

/// One market, which a client calls a trading server.
struct CatalogueMarket {
    std::string platform; ///< "ch" or "lc"
    std::string name;
    std::string prefix; ///< "/lc/youbika/"
    PartsPerMillion limit; ///< how far a price may leave the previous close, either side
    PartsPerMillion fee; ///< of a deal's amount, for each side
    bool history = false; ///< charts show years before the first session
    std::vector<CatalogueType> types;
    std::vector<CatalogueCollection> collections;

    /// The prefix as a file name without an ending: "lc-youbika".
    std::string fileStem() const;
};

struct CataloguePlatform {
    std::string id; ///< first folder of its prefixes: "lc"
    std::string name; ///< 岚川
    std::vector<CatalogueMarket> markets;
};

/// A catalogue that cannot be used. what() names the file, the entry and the reason.
class CatalogueError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/**
 * The platforms, their markets and what is listed on them, as an operator writes them down.
 *
 * The file is JSON, prices in fen, rates in parts per million:
 *
 *     {"format": 1, "platforms": [
 *       {"id": "lc", "name": "岚川", "markets": [
 *         {"name": "邮币", "prefix": "/lc/youbika/", "limitPpm": 100000, "feePpm": 3000,
 *          "history": true,
 *          "types": [{"id": 1, "name": "邮票"}],
 *          "collections": [
 *            {"id": 4001, "code": "401001", "name": "…", "type": 1, "listed": 39000,
 *             "previousClose": 28500, "introduction": "", "suspended": false}]}]}]}
 *
 * "history" and "suspended" may be left out, everything else stands there; other keys are refused,
 * since most of them are slips of the pen. "listed" and "previousClose" count when the collection
 * is listed first, later the market has its own figures. Everything is checked on loading, and
 * nothing is half loaded: a catalogue object is whole and consistent.
 */
class Catalogue
{
public:
    /// Reads a text. `source` is the name that errors carry. Throws CatalogueError.
    static Catalogue parse(std::string_view text, const std::string &source,
                           const InitialsFunction &initials = {});

    /// Reads a file of at most 64 MiB. Throws CatalogueError.
    static Catalogue load(const std::filesystem::path &file, const InitialsFunction &initials = {});

    /// The text of the catalogue that the program brings along.
    static std::string_view embeddedText();

    const std::vector<CataloguePlatform> &platforms() const { return m_platforms; }

private:
    std::vector<CataloguePlatform> m_platforms;
};

} // namespace zvx
