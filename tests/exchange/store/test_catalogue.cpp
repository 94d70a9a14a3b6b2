#include "exchange/store/catalogue.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <set>

namespace zvx {
namespace {

using test::dataFile;
using test::readFile;

/// One change to a good catalogue, and what the error has to say of it.
struct Fault {
    const char *name;
    std::string before;
    std::string after;
    std::vector<std::string> said;
};

std::string good()
{
    return readFile(dataFile("small-catalogue.json"));
}

const Fault faults[] = {
    {"cut", "\n  ]\n}\n", "\n", {"cat.json", "end of input"}},
    {"no object", good(), "[]", {"has to be an object"}},
    {"other format", "\"format\": 1", "\"format\": 2", {"format", "from 1 to 1, not 2"}},
    {"lacks format", "\"format\": 1,", "", {"lacks \"format\""}},
    {"unknown key", "\"format\": 1,", "\"format\": 1, \"colour\": 3,", {"unknown key \"colour\""}},
    {"unknown key deep inside",
     "\"id\": 1100,",
     "\"id\": 1100, \"preis\": 3,",
     {"platforms[0].markets[0].collections[0]", "unknown key \"preis\""}},
    {"key twice", "\"id\": 1100,", "\"id\": 1100, \"id\": 1199,", {"\"id\" stands twice"}},
    {"id twice in a market",
     "\"id\": 1101,",
     "\"id\": 1100,",
     {"platforms[0].markets[0].collections[1]", "id 1100 is used twice"}},
    {"id twice over markets",
     "\"id\": 3100,",
     "\"id\": 1107,",
     {"platforms[1].markets[1].collections[0]", "id 1107 is used twice"}},
    {"code twice",
     "\"code\": \"111002\"",
     "\"code\": \"111001\"",
     {"collections[1]", "code 111001 is used twice"}},
    {"code with a blank",
     "\"code\": \"111002\"",
     "\"code\": \"111 02\"",
     {"collections[1].code", "letters and digits"}},
    {"prefix twice",
     "\"prefix\": \"/lc/chajiu/\"",
     "\"prefix\": \"/lc/youbika/\"",
     {"platforms[1].markets[1]", "prefix /lc/youbika/ is used twice"}},
    {"prefix of another platform",
     "\"prefix\": \"/lc/chajiu/\"",
     "\"prefix\": \"/ch/chajiu/\"",
     {"platforms[1].markets[1].prefix", "\"/lc/...\""}},
    {"prefix without its slash", "\"/lc/chajiu/\"", "\"/lc/chajiu\"", {"prefix", "closing slash"}},
    {"prefix that climbs", "\"/lc/chajiu/\"", "\"/lc/../\"", {"prefix"}},
    {"empty prefix", "\"/lc/chajiu/\"", "\"/lc//\"", {"prefix"}},
    {"platform twice", "\"id\": \"lc\"", "\"id\": \"ch\"", {"platform"}},
    {"platform in capitals", "\"id\": \"ch\"", "\"id\": \"CH\"", {"platforms[0].id"}},
    {"price is a fraction",
     "\"previousClose\": 1000,",
     "\"previousClose\": 1000.5,",
     {"previousClose", "whole number", "1000.5"}},
    {"price is a text",
     "\"previousClose\": 1000,",
     "\"previousClose\": \"1000\",",
     {"previousClose", "whole number"}},
    {"price is nothing", "\"previousClose\": 1000,", "\"previousClose\": 0,", {"previousClose"}},
    {"price above the bound",
     "\"previousClose\": 1000,",
     "\"previousClose\": 13107200,",
     {"previousClose", "13107199"}},
    {"listed is negative", "\"listed\": 10000,", "\"listed\": -1,", {"listed"}},
    {"listed leaves 64 bits",
     "\"listed\": 10000,",
     "\"listed\": 18446744073709551615,",
     {"listed", "whole number"}},
    {"worth too much", "\"listed\": 60000,", "\"listed\": 1000000000000,", {"beyond"}},
    {"type that is not there", "\"type\": 1,", "\"type\": 9,", {"type", "no type 9"}},
    {"type twice",
     "{\"id\": 2, \"name\": \"钱币\"}",
     "{\"id\": 1, \"name\": \"钱币\"}",
     {"types[1]", "type 1 is used twice"}},
    {"limit of all", "\"limitPpm\": 100000", "\"limitPpm\": 1000000", {"limitPpm", "999999"}},
    {"fee too high", "\"feePpm\": 3000", "\"feePpm\": 100001", {"feePpm", "100000"}},
    {"no name", "\"name\": \"荷塘小型张\"", "\"name\": \"\"", {"name", "1 to 24"}},
    {"long name",
     "\"name\": \"荷塘小型张\"",
     "\"name\": \"荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷塘荷\"",
     {"name", "1 to 24"}},
    {"name with a line break",
     "\"name\": \"荷塘小型张\"",
     "\"name\": \"荷塘\\n张\"",
     {"name", "control character"}},
    {"name is a number", "\"name\": \"荷塘小型张\"", "\"name\": 5", {"name", "a text"}},
    {"half a character", "荷塘小型张", "\xe8\x8d", {"cat.json", "UTF-8"}},
    {"suspended is a number",
     "\"id\": 1100,",
     "\"id\": 1100, \"suspended\": 1,",
     {"suspended", "true or false"}},
    {"history is a number",
     "\"feePpm\": 3000,",
     "\"feePpm\": 3000, \"history\": 1,",
     {"platforms[0].markets[0].history", "true or false"}},
    {"no markets", "\"markets\": [", "\"markets\": [], \"mar\": [", {"platforms[0]"}},
};

TEST(Catalogue, NamesFileEntryAndReasonOfEachFault)
{
    for (const Fault &fault : faults) {
        SCOPED_TRACE(fault.name);
        std::string text = good();
        const std::size_t place = text.find(fault.before);
        ASSERT_NE(place, std::string::npos);
        text.replace(place, fault.before.size(), fault.after);
        try {
            Catalogue::parse(text, "cat.json");
            ADD_FAILURE() << "was accepted";
        } catch (const CatalogueError &error) {
            const std::string what = error.what();
            EXPECT_EQ(what.rfind("cat.json", 0), 0u) << what;
            for (const std::string &part : fault.said)
                EXPECT_NE(what.find(part), std::string::npos) << "lacks " << part << ": " << what;
        }
    }
}

TEST(Catalogue, ReadsTheSmallOne)
{
    const Catalogue catalogue = Catalogue::load(dataFile("small-catalogue.json"));
    ASSERT_EQ(catalogue.platforms().size(), 2u);
    const CataloguePlatform &second = catalogue.platforms()[1];
    EXPECT_EQ(second.id, "lc");
    EXPECT_EQ(second.name, "岚川");
    ASSERT_EQ(second.markets.size(), 2u);
    const CatalogueMarket &market = second.markets[0];
    EXPECT_EQ(market.platform, "lc");
    EXPECT_EQ(market.prefix, "/lc/youbika/");
    EXPECT_EQ(market.fileStem(), "lc-youbika");
    EXPECT_EQ(market.limit, PartsPerMillion(100'000));
    EXPECT_EQ(market.types[1].name, "电话卡");
    EXPECT_FALSE(market.history);
    EXPECT_TRUE(second.markets[1].history);
    const CatalogueCollection &collection = market.collections[5];
    EXPECT_EQ(collection.id, CollectionId(2105));
    EXPECT_EQ(collection.code, "212006");
    EXPECT_EQ(collection.name, "灯会套卡");
    EXPECT_EQ(collection.type, 2);
    EXPECT_EQ(collection.listed, Quantity(60'000));
    EXPECT_EQ(collection.previousClose, Fen(13'000'000));
    EXPECT_FALSE(collection.suspended);
}

TEST(Catalogue, AsksForTheInitialsOfEachName)
{
    std::vector<std::string> asked;
    const Catalogue catalogue
        = Catalogue::load(dataFile("small-catalogue.json"), [&](std::string_view name) {
              asked.emplace_back(name);
              return std::vector<std::string>{"a" + std::to_string(asked.size())};
          });
    EXPECT_EQ(asked.size(), 24u);
    EXPECT_EQ(asked.front(), "荷塘小型张");
    EXPECT_EQ(catalogue.platforms()[0].markets[0].collections[2].initials,
              std::vector<std::string>{"a3"});
}

TEST(Catalogue, SaysWhichFileCannotBeRead)
{
    try {
        Catalogue::load("/nowhere/at/all.json");
        FAIL();
    } catch (const CatalogueError &error) {
        EXPECT_NE(std::string(error.what()).find("/nowhere/at/all.json"), std::string::npos);
    }
}

TEST(Catalogue, BringsAlongTwoPlatformsWithEightMarkets)
{
    const Catalogue catalogue = Catalogue::parse(Catalogue::embeddedText(), "embedded");
    ASSERT_EQ(catalogue.platforms().size(), 2u);
    EXPECT_EQ(catalogue.platforms()[0].name, "澄湖");
    EXPECT_EQ(catalogue.platforms()[0].markets.size(), 3u);
    EXPECT_EQ(catalogue.platforms()[1].name, "岚川");
    EXPECT_EQ(catalogue.platforms()[1].markets.size(), 5u);
    std::set<std::size_t> sizes;
    for (const CataloguePlatform &platform : catalogue.platforms()) {
        for (const CatalogueMarket &market : platform.markets) {
            SCOPED_TRACE(market.prefix);
            EXPECT_GE(market.collections.size(), 180u);
            EXPECT_LE(market.collections.size(), 320u);
            sizes.insert(market.collections.size());
            EXPECT_TRUE(market.history);
            std::set<std::string> names;
            for (const CatalogueCollection &collection : market.collections)
                EXPECT_TRUE(names.insert(collection.name).second) << collection.name;
            EXPECT_EQ(market.name.size(), 6u); // two characters of three bytes
        }
    }
    EXPECT_EQ(sizes.size(), 8u);
}

} // namespace
} // namespace zvx
