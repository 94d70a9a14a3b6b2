#include "exchange/accounts/desk_bench.h"

#include <limits>

namespace zvx {
namespace {

using test::DeskBench;
using test::phone;

using Ids = std::vector<std::int64_t>;

TEST(Favourites, StayInTheOrderInWhichTheyWereAdded)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    for (const int id : {30, 10, 20})
        ASSERT_EQ(bench.favourite(account, id).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (Ids{30, 10, 20}));
    EXPECT_EQ(bench.favourite(account, 30).status, AccountStatus::Done); // goes to the end
    EXPECT_EQ(bench.favourites(account), (Ids{10, 20, 30}));
    EXPECT_EQ(bench.favourite(account, 20, false).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourite(account, 99, false).status, AccountStatus::Done); // no error
    EXPECT_EQ(bench.favourites(account), (Ids{10, 30}));
    bench.reopen();
    EXPECT_EQ(bench.favourites(account), (Ids{10, 30}));
    ASSERT_EQ(bench.favourite(account, 5).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (Ids{10, 30, 5}));
}

TEST(Favourites, BelongToOneAccountOnOneMarket)
{
    DeskBench bench;
    const AccountId one = bench.makeAccount(phone(1));
    const AccountId two = bench.makeAccount(phone(2));
    bench.favourite(one, 1);
    bench.favourite(one, 2, true, "/lc/qianbi/");
    bench.favourite(two, 3);
    EXPECT_EQ(bench.favourites(one), (Ids{1}));
    EXPECT_EQ(bench.favourites(one, 1, 100, "/lc/qianbi/"), (Ids{2}));
    EXPECT_EQ(bench.favourites(two), (Ids{3}));
    EXPECT_EQ(bench.favourite(AccountId(77), 1).status, AccountStatus::AccountUnknown);
}

TEST(Favourites, ComeInPages)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    for (int id = 1; id <= 7; ++id)
        bench.favourite(account, id);
    EXPECT_EQ(bench.favourites(account, 1, 3), (Ids{1, 2, 3}));
    EXPECT_EQ(bench.favourites(account, 3, 3), (Ids{7}));
    EXPECT_EQ(bench.favourites(account, 4, 3), (Ids{}));
    EXPECT_EQ(bench.favourites(account, std::numeric_limits<std::int64_t>::max(), 1'000), (Ids{}));
}

TEST(Favourites, RefuseWhatIsMalformed)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    EXPECT_EQ(bench.favourite(account, 0).status, AccountStatus::BadMarket);
    EXPECT_EQ(bench.favourite(account, 1, true, "lc/youbika").status, AccountStatus::BadMarket);
    const auto ask = [&](const std::string &market, std::int64_t page, std::int64_t size) {
        AccountStatus status = AccountStatus::Done;
        bench.desk().favourites(account, market, page, size,
                                [&](const FavouritesAnswer &answer) { status = answer.status; });
        return status;
    };
    EXPECT_EQ(ask("", 1, 10), AccountStatus::BadMarket);
    EXPECT_EQ(ask("/lc/youbika/", 0, 10), AccountStatus::BadPage);
    EXPECT_EQ(ask("/lc/youbika/", 1, 0), AccountStatus::BadPage);
    EXPECT_EQ(ask("/lc/youbika/", 1, 1'001), AccountStatus::BadPage);
}

TEST(Favourites, AFullListTakesNoMoreAndKeepsItsOrder)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.favourites = 3; });
    const AccountId account = bench.makeAccount(phone(1));
    for (int id = 1; id <= 3; ++id)
        bench.favourite(account, id);
    EXPECT_EQ(bench.favourite(account, 4).status, AccountStatus::TooManyFavourites);
    EXPECT_EQ(bench.favourite(account, 1).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (Ids{2, 3, 1}));
    bench.favourite(account, 3, false);
    EXPECT_EQ(bench.favourite(account, 4).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (Ids{2, 1, 4}));
}

} // namespace
} // namespace zvx
