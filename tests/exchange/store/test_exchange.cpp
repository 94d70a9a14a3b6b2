#include "exchange/store/exchange.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <sys/stat.h>

namespace zvx {
namespace {

using test::dataFile;
using test::readFile;
using test::TempFolder;

ExchangeOptions smallExchange(const TempFolder &folder)
{
    ExchangeOptions options;
    options.folder = folder / "state";
    options.firstCatalogue = readFile(dataFile("small-catalogue.json"));
    options.clock = std::make_shared<ManualClock>(test::kMorning);
    return options;
}

void replaceInFile(const std::filesystem::path &file, const std::string &before,
                   const std::string &after)
{
    std::string text = readFile(file);
    const std::size_t place = text.find(before);
    ASSERT_NE(place, std::string::npos) << before;
    text.replace(place, before.size(), after);
    test::writeFile(file, text);
}

TEST(Exchange, MakesItsFolderAndServesEveryMarket)
{
    const TempFolder folder;
    Exchange exchange(smallExchange(folder));
    EXPECT_EQ(readFile(folder / "state/catalogue.json"),
              readFile(dataFile("small-catalogue.json")));
    struct stat facts;
    ASSERT_EQ(::stat((folder / "state").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700u);

    ASSERT_EQ(exchange.platforms().size(), 2u);
    EXPECT_EQ(exchange.platforms()[1].name, "岚川");
    ASSERT_EQ(exchange.platforms()[1].markets.size(), 2u);
    MarketServer *market = exchange.market("/lc/youbika/");
    ASSERT_NE(market, nullptr);
    EXPECT_EQ(market, exchange.platforms()[1].markets[0]);
    EXPECT_EQ(market->name(), "邮币");
    EXPECT_EQ(market->platform(), "lc");
    EXPECT_EQ(exchange.market("/lc/youbika"), nullptr);
    EXPECT_EQ(exchange.market("/lc/"), nullptr);
    const auto snapshot = market->snapshot();
    EXPECT_TRUE(snapshot->check.data->open);
    ASSERT_EQ(snapshot->infos.data->size(), 8u);
    EXPECT_EQ((*snapshot->infos.data)[3]->name, "行舟邮资封");
    EXPECT_EQ(exchange.boot().size(), 16u);
    EXPECT_EQ(exchange.boot().find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(Exchange, ASecondOneOnTheFolderIsRefused)
{
    const TempFolder folder;
    std::string boot;
    {
        Exchange first(smallExchange(folder));
        boot = first.boot();
        EXPECT_THROW(Exchange second(smallExchange(folder)), FolderError);
    }
    Exchange third(smallExchange(folder));
    EXPECT_NE(third.boot(), boot);
}

TEST(Exchange, FollowsTheOperatorsCatalogue)
{
    const TempFolder folder;
    const std::filesystem::path file = folder / "state/catalogue.json";
    {
        Exchange exchange(smallExchange(folder));
    }
    replaceInFile(file, "\"id\": 1100, \"code\": \"111001\", \"name\": \"荷塘小型张\"",
                  "\"id\": 1999, \"code\": \"111999\", \"name\": \"新到藏品\"");
    replaceInFile(file, "\"id\": 1101,", "\"id\": 1101, \"suspended\": true,");
    replaceInFile(file, "白鹭四方连", "苍鹰四方连");
    replaceInFile(file, "\"listed\": 30000", "\"listed\": 30001");
    std::vector<std::string> notices;
    ExchangeOptions options = smallExchange(folder);
    options.notice = [&](const std::string &line) { notices.push_back(line); };
    options.initials = [](std::string_view) { return std::vector<std::string>{"x"}; };
    {
        Exchange exchange(options);
        const auto snapshot = exchange.market("/ch/youbi/")->snapshot();
        ASSERT_EQ(snapshot->infos.data->size(), 9u);
        const CollectionInfo &gone = *(*snapshot->infos.data)[0];
        EXPECT_EQ(gone.id, CollectionId(1100));
        EXPECT_EQ(gone.name, "荷塘小型张"); // its holders still see what they hold
        EXPECT_EQ(gone.code, "111001");
        EXPECT_EQ(gone.initials, std::vector<std::string>{"x"});
        EXPECT_TRUE(gone.suspended);
        EXPECT_TRUE((*snapshot->infos.data)[1]->suspended);
        EXPECT_EQ((*snapshot->infos.data)[1]->name, "苍鹰四方连");
        EXPECT_EQ((*snapshot->infos.data)[2]->listed, Quantity(30'000));
        const CollectionInfo &fresh = *(*snapshot->infos.data)[8];
        EXPECT_EQ(fresh.id, CollectionId(1999));
        EXPECT_FALSE(fresh.suspended);
        EXPECT_EQ(snapshot->list->rows[8]->previousClose, Fen(1'000));
    }
    const auto said = [&](const std::string &part) {
        return std::any_of(notices.begin(), notices.end(), [&](const std::string &line) {
            return line.find(part) != std::string::npos;
        });
    };
    EXPECT_TRUE(said("collection 1100 left the catalogue"));
    EXPECT_TRUE(said("collection 1102 keeps the issued pieces"));

    // Back in the catalogue it trades again, in its old place.
    test::writeFile(file, readFile(dataFile("small-catalogue.json")));
    Exchange exchange(smallExchange(folder));
    const auto snapshot = exchange.market("/ch/youbi/")->snapshot();
    ASSERT_EQ(snapshot->infos.data->size(), 9u);
    EXPECT_FALSE((*snapshot->infos.data)[0]->suspended);
    EXPECT_FALSE((*snapshot->infos.data)[1]->suspended);
    EXPECT_TRUE((*snapshot->infos.data)[8]->suspended);
}

TEST(Exchange, ACollectionStaysInTheMarketThatListedItFirst)
{
    // A second market would issue all its pieces once more.
    const TempFolder folder;
    const std::filesystem::path file = folder / "state/catalogue.json";
    {
        Exchange exchange(smallExchange(folder));
    }
    const auto refused = [&](const std::string &why) {
        try {
            Exchange exchange(smallExchange(folder));
            ADD_FAILURE() << "opened in spite of " << why;
        } catch (const CatalogueError &error) {
            EXPECT_NE(std::string(error.what()).find(why), std::string::npos) << error.what();
        }
    };
    const std::string original = readFile(file);
    {
        SCOPED_TRACE("moved to another market");
        replaceInFile(file, "\"id\": 1100,", "\"id\": 1999,");
        replaceInFile(file, "\"id\": 2100,", "\"id\": 1100,");
        refused("collection 1100 belongs to /ch/youbi/");
    }
    {
        SCOPED_TRACE("the market has another prefix");
        test::writeFile(file, original);
        replaceInFile(file, "/ch/youbi/", "/ch/other/");
        refused("belongs to ch-youbi.market");
    }
    // Nothing was changed on the way.
    test::writeFile(file, original);
    Exchange exchange(smallExchange(folder));
    EXPECT_EQ(exchange.market("/ch/youbi/")->snapshot()->infos.data->size(), 8u);
    EXPECT_FALSE((*exchange.market("/ch/youbi/")->snapshot()->infos.data)[0]->suspended);
}

TEST(Exchange, ASlashAtTheEndOfTheFolderDoesNotOpenItToOthers)
{
    const TempFolder folder;
    ExchangeOptions options = smallExchange(folder);
    options.folder = (folder / "deep/state").string() + "//";
    Exchange exchange(options);
    struct stat facts;
    ASSERT_EQ(::stat((folder / "deep/state").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700u);
}

TEST(Exchange, ABrokenCatalogueIsNamedAndNothingIsLocked)
{
    const TempFolder folder;
    {
        Exchange exchange(smallExchange(folder));
    }
    replaceInFile(folder / "state/catalogue.json", "\"format\": 1,", "\"format\": 1,,");
    try {
        Exchange exchange(smallExchange(folder));
        FAIL();
    } catch (const CatalogueError &error) {
        EXPECT_NE(std::string(error.what()).find("catalogue.json"), std::string::npos);
    }
    test::writeFile(folder / "state/catalogue.json", readFile(dataFile("small-catalogue.json")));
    EXPECT_NO_THROW(Exchange exchange(smallExchange(folder)));
}

TEST(Exchange, SettlementOpensTheSameDateWithTheNextSession)
{
    const TempFolder folder;
    std::atomic<int> checks{0};
    ExchangeOptions options = smallExchange(folder);
    options.published
        = [&](const MarketServer &market, const auto &snapshot, const TopicSet &topics) {
              EXPECT_EQ(market.snapshot(), snapshot);
              if (topics.check)
                  ++checks;
          };
    Exchange exchange(options);
    exchange.settle();
    EXPECT_EQ(checks, 3);
    for (const auto &market : exchange.markets()) {
        const CheckSnapshot check = *market->snapshot()->check.data;
        EXPECT_EQ(check.session, Sequence(2));
        EXPECT_EQ(dayText(check.day), "2020-01-01");
        EXPECT_TRUE(check.open);
    }
    exchange.stop();
    exchange.stop();
    Exchange again(smallExchange(folder));
    EXPECT_EQ(again.market("/ch/youbi/")->snapshot()->check.data->session, Sequence(2));
}

TEST(Exchange, OpensTheCatalogueThatItBringsAlong)
{
    const TempFolder folder;
    ExchangeOptions options = smallExchange(folder);
    options.firstCatalogue.reset();
    Exchange exchange(options);
    EXPECT_EQ(exchange.markets().size(), 8u);
    for (const auto &market : exchange.markets())
        EXPECT_GE(market->snapshot()->infos.data->size(), 180u);
}

// The operator mends the file that was given, and starts again.
TEST(Exchange, ABadFirstCatalogueIsNotLeftBehind)
{
    const TempFolder folder;
    ExchangeOptions options = smallExchange(folder);
    options.firstCatalogue = "{\"format\": 1}";
    EXPECT_THROW(Exchange exchange(options), CatalogueError);
    EXPECT_FALSE(std::filesystem::exists(folder / "state/catalogue.json"));
    EXPECT_EQ(Exchange(smallExchange(folder)).platforms().size(), 2u);
}

TEST(Exchange, AFolderThatCannotBeMadeIsNamed)
{
    const TempFolder folder;
    test::writeFile(folder / "file", "x");
    ExchangeOptions options = smallExchange(folder);
    options.folder = folder / "file" / "state";
    EXPECT_THROW(Exchange exchange(options), FolderError);
}

} // namespace
} // namespace zvx
