#include "exchange/store/marketreader.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace zvx {
namespace {

using test::kMorning;
using test::RandomTrading;
using test::Scribe;
using test::TempFolder;

using Numbers = std::vector<std::int64_t>;

constexpr std::int64_t kFirstDay = 20'200'101;

/// What happened, kept as plain lists and walked from end to end for each question.
class PlainRecords
{
public:
    void take(const Event &event)
    {
        if (const auto *accepted = std::get_if<OrderAccepted>(&event)) {
            orders.push_back({*accepted, m_day, m_session});
            open.insert({accepted->order.value(), accepted->account.value()});
        } else if (const auto *deal = std::get_if<Deal>(&event)) {
            deals.push_back({*deal, m_day, m_session});
        } else if (const auto *done = std::get_if<OrderDone>(&event)) {
            open.erase(done->order.value());
        } else if (const auto *settled = std::get_if<DaySettled>(&event)) {
            m_day = settled->day;
            m_session = settled->session;
        }
    }

    /// The numbers of an account's orders, the newest first.
    Numbers ordersOf(std::int64_t account, const RecordPage &page) const
    {
        Numbers numbers;
        for (const auto &each : orders) {
            const OrderAccepted &order = each.what;
            if (order.account.value() == account && isWanted(each, page)
                && (page.kind == RecordPage::All
                    || (page.kind == RecordPage::Incoming) == (order.side == Side::Buy)))
                numbers.push_back(order.order.value());
        }
        return cut(numbers, page);
    }
    Numbers ordersOfSession(std::int64_t account, RecordPage page) const
    {
        Numbers numbers;
        for (const auto &each : orders) {
            const OrderAccepted &order = each.what;
            if (order.account.value() == account && each.session == m_session
                && (page.kind == RecordPage::All
                    || (page.kind == RecordPage::Incoming) == (order.side == Side::Buy)))
                numbers.push_back(order.order.value());
        }
        return cut(numbers, page);
    }
    Numbers openOrders(std::int64_t account, const RecordPage &page) const
    {
        Numbers numbers;
        for (const auto &[number, owner] : open)
            if (owner == account)
                numbers.push_back(number);
        return cut(numbers, page);
    }
    Numbers dealsOf(std::int64_t account, const RecordPage &page) const
    {
        Numbers numbers;
        for (const auto &each : deals) {
            const bool bought = each.what.buyer.value() == account;
            const bool sold = each.what.seller.value() == account;
            if (isWanted(each, page)
                && ((bought && page.kind != RecordPage::Outgoing)
                    || (sold && page.kind != RecordPage::Incoming)))
                numbers.push_back(each.what.sequence.value());
        }
        return cut(numbers, page);
    }

    Sequence session() const { return m_session; }

    template <typename What>
    struct Entry {
        What what;
        TradingDay day;
        Sequence session;
    };
    std::vector<Entry<OrderAccepted>> orders;
    std::vector<Entry<Deal>> deals;
    std::map<std::int64_t, std::int64_t> open; ///< order, account

private:
    template <typename What>
    static bool isWanted(const Entry<What> &each, const RecordPage &page)
    {
        return each.day >= page.first && each.day <= page.last;
    }
    static Numbers cut(Numbers numbers, const RecordPage &page)
    {
        std::reverse(numbers.begin(), numbers.end());
        const auto count = static_cast<std::int64_t>(numbers.size());
        const std::int64_t first = std::min((page.page - 1) * page.size, count);
        const std::int64_t end = std::min(first + page.size, count);
        return {numbers.begin() + first, numbers.begin() + end};
    }

    TradingDay m_day{kFirstDay};
    Sequence m_session{1};
};

Numbers numbersOf(const std::vector<OrderRow> &rows)
{
    Numbers numbers;
    for (const OrderRow &row : rows)
        numbers.push_back(row.order.value());
    return numbers;
}

Numbers numbersOf(const std::vector<AccountDeal> &deals)
{
    Numbers numbers;
    for (const AccountDeal &deal : deals)
        numbers.push_back(deal.row.deal.sequence.value());
    return numbers;
}

/// A store that is written, a reader beside it, and everything that happened.
class RecordsTest : public testing::Test
{
protected:
    RecordsTest() { begin(); }

    /// As after a restart: nothing is remembered but what is stored.
    void begin()
    {
        keepEvents();
        reader.reset();
        scribe.reset();
        store.reset();
        store = std::make_unique<SqliteStore>(folder / "m.market");
        scribe = std::make_unique<Scribe>(*store, recoverMarket(*store).market);
        scribe->remember = true;
        reader = std::make_unique<MarketReader>(folder / "m.market");
    }
    void carryOut(const std::vector<Command> &commands)
    {
        scribe->carryOut(commands);
        keepEvents();
    }
    /// Lists 1100 to 1107 and gives accounts from 1 on money and pieces.
    void open(std::int64_t accounts)
    {
        carryOut(test::listing(test::smallMarket()));
        for (std::int64_t id = 1; id <= accounts; ++id)
            carryOut(
                {OpenAccount{AccountId(id), kDefaultFee, {}},
                 Deposit{AccountId(id), Fen(1'000'000'000), {}},
                 GrantHolding{AccountId(id), CollectionId(1100), Quantity(2'000), Fen(900), {}}});
    }
    static PlaceOrder order(std::int64_t account, Side side, std::int64_t price,
                            std::int64_t quantity)
    {
        PlaceOrder place;
        place.account = AccountId(account);
        place.collection = CollectionId(1100);
        place.side = side;
        place.price = Fen(price);
        place.quantity = Quantity(quantity);
        return place;
    }
    /// Some weeks of random trading in batches of any size, with restarts and days between.
    void tradeFor(int commands, std::uint32_t seed)
    {
        RandomTrading trading(seed, test::smallMarket());
        std::mt19937 random(seed);
        carryOut(test::listing(test::smallMarket()));
        carryOut(trading.opening());
        std::int64_t day = kFirstDay;
        std::vector<Command> batch;
        for (int i = 0; i < commands; ++i) {
            batch.push_back(trading.next());
            if (random() % 120 == 0)
                batch.push_back(SettleDay{TradingDay(day += random() % 3)});
            if (random() % 9 == 0) {
                carryOut(batch);
                batch.clear();
            }
            if (random() % 300 == 0)
                begin();
        }
        carryOut(batch);
    }

    void keepEvents()
    {
        if (!scribe)
            return;
        for (const Event &event : scribe->happened)
            plain.take(event);
        scribe->happened.clear();
    }

    TempFolder folder;
    std::unique_ptr<SqliteStore> store;
    std::unique_ptr<Scribe> scribe;
    std::unique_ptr<MarketReader> reader;
    PlainRecords plain;
};

TEST_F(RecordsTest, PagesAreCutAsAListWouldBe)
{
    tradeFor(6'000, 11);
    ASSERT_GT(plain.deals.size(), 1'000u);
    ASSERT_GT(plain.session(), Sequence(20));
    const TradingDay last = plain.orders.back().day;
    ASSERT_GT(last, TradingDay(kFirstDay + 10));
    int pages = 0;
    for (const std::int64_t account : {1, 5, 12, 13})
        for (const auto kind : {RecordPage::Outgoing, RecordPage::Incoming, RecordPage::All})
            for (const std::int64_t from : {19'700'101, 20'200'101, 20'200'104, 20'200'109})
                for (const std::int64_t to :
                     {20'191'231, 20'200'104, 20'200'108, 20'200'130, 99'991'231})
                    for (const std::int64_t size : {1, 7, 200})
                        for (const std::int64_t number : {1, 2, 5, 14, 40, 0x7fffffff}) {
                            const RecordPage page{kind, TradingDay(from), TradingDay(to), number,
                                                  size};
                            const Numbers orders = plain.ordersOf(account, page);
                            ASSERT_EQ(numbersOf(reader->ordersOf(AccountId(account), page)), orders)
                                << account << ' ' << kind << ' ' << from << ' ' << to << ' '
                                << number << ' ' << size;
                            const Numbers deals = plain.dealsOf(account, page);
                            ASSERT_EQ(numbersOf(reader->dealsOf(AccountId(account), page)), deals)
                                << account << ' ' << kind << ' ' << from << ' ' << to << ' '
                                << number << ' ' << size;
                            pages += !orders.empty() + !deals.empty();
                        }
    EXPECT_GT(pages, 500);
}

TEST_F(RecordsTest, OfTheSessionAndOpenOnesAreCutAlike)
{
    tradeFor(1'200, 12);
    // The running session gets long enough for pages.
    RandomTrading trading(13, test::smallMarket());
    int filled = 0;
    for (int i = 0; i < 900; ++i) {
        Command command = trading.next();
        if (std::holds_alternative<PlaceOrder>(command)
            || std::holds_alternative<RevokeOrders>(command))
            carryOut({command});
        if (i % 150 == 0)
            begin();
        for (const std::int64_t account : {1 + i % 12, 13}) {
            const RecordPage page{static_cast<RecordPage::Kind>(i % 3), TradingDay(99'990'101),
                                  TradingDay(19'800'101), 1 + i % 7, 1 + i % 11};
            const Numbers session = plain.ordersOfSession(account, page);
            ASSERT_EQ(numbersOf(reader->ordersOfSession(AccountId(account), page)), session);
            const Numbers open = plain.openOrders(account, page);
            ASSERT_EQ(numbersOf(reader->openOrders(AccountId(account), page)), open);
            filled += !session.empty() + !open.empty();
        }
    }
    EXPECT_GT(filled, 300);
}

TEST_F(RecordsTest, ASessionOfTheSameDateBeginsANewList)
{
    open(2);
    const auto session = [this] { return numbersOf(reader->ordersOfSession(AccountId(1), {})); };
    EXPECT_EQ(session(), Numbers());
    carryOut({order(1, Side::Buy, 1000, 5), order(1, Side::Sell, 1050, 5)});
    EXPECT_EQ(session(), (Numbers{2, 1}));
    EXPECT_EQ(numbersOf(reader->openOrders(AccountId(1), {})), (Numbers{2, 1}));
    carryOut({SettleDay{TradingDay(kFirstDay)}});
    EXPECT_EQ(session(), Numbers()) << "those of the session before are past";
    EXPECT_EQ(numbersOf(reader->openOrders(AccountId(1), {})), Numbers());
    RecordPage today;
    today.first = today.last = TradingDay(kFirstDay);
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(1), today)), (Numbers{2, 1}))
        << "but of the same day";
    carryOut({order(2, Side::Buy, 1000, 5), order(1, Side::Sell, 1060, 5)});
    EXPECT_EQ(session(), (Numbers{4}));
    RecordPage buys;
    buys.kind = RecordPage::Incoming;
    EXPECT_EQ(numbersOf(reader->ordersOfSession(AccountId(1), buys)), Numbers());
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(1), today)), (Numbers{4, 2, 1}));
    begin();
    EXPECT_EQ(session(), (Numbers{4})) << "after a restart as well";
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(3), {})), Numbers());
}

TEST_F(RecordsTest, OrdersTellHowTheyStand)
{
    open(3);
    carryOut({order(1, Side::Buy, 1000, 10)}); // 1
    const auto row = [this](std::int64_t number) {
        const auto rows = reader->orders({OrderNumber(number)});
        EXPECT_EQ(rows.size(), 1u);
        return rows.empty() ? OrderRow() : rows.front();
    };
    EXPECT_EQ(row(1).state, OrderState::Open);
    EXPECT_EQ(row(1).frozen, Fen(10'030));
    carryOut({order(2, Side::Sell, 990, 4)}); // 2, at the resting price
    EXPECT_EQ(row(1).filled, Quantity(4));
    EXPECT_EQ(row(1).amount, Fen(4'000));
    EXPECT_EQ(row(1).fees, Fen(12));
    EXPECT_EQ(row(1).frozen, Fen(6'018));
    EXPECT_EQ(row(2).state, OrderState::Filled);
    EXPECT_EQ(row(2).fees, Fen(12));
    EXPECT_EQ(row(2).frozen, Fen(0));
    EXPECT_EQ(numbersOf(reader->openOrders(AccountId(1), {})), (Numbers{1}));
    // A newer sell of the same account ends the rest.
    carryOut({order(1, Side::Sell, 1000, 2)}); // 3
    EXPECT_EQ(row(1).state, OrderState::SelfTrade);
    EXPECT_EQ(row(1).frozen, Fen(0));
    EXPECT_EQ(row(1).filled, Quantity(4));
    EXPECT_EQ(row(3).state, OrderState::Open);
    EXPECT_EQ(row(3).frozen, Fen(0)) << "a sell reserves pieces";
    EXPECT_EQ(numbersOf(reader->openOrders(AccountId(1), {})), (Numbers{3}));
    RevokeOrders revoke;
    revoke.account = AccountId(1);
    revoke.orders = {OrderNumber(3)};
    carryOut({revoke, order(3, Side::Buy, 1000, 7)}); // 4
    EXPECT_EQ(row(3).state, OrderState::Revoked);
    carryOut({SettleDay{TradingDay(kFirstDay + 1)}});
    EXPECT_EQ(row(4).state, OrderState::Ended);
    EXPECT_EQ(row(4).frozen, Fen(0));
    EXPECT_EQ(numbersOf(reader->openOrders(AccountId(3), {})), Numbers());
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(1), {})), (Numbers{3, 1}));
}

TEST_F(RecordsTest, EveryOpenOrderReservesWhatTheMarketReserves)
{
    tradeFor(900, 14);
    RandomTrading trading(17, test::smallMarket()); // so that the running session is no short one
    for (int i = 0; i < 300; ++i) {
        Command command = trading.next();
        if (std::holds_alternative<PlaceOrder>(command))
            carryOut({command});
    }
    std::vector<OrderView> views;
    int checked = 0;
    for (std::int64_t account = 1; account <= RandomTrading::kAccounts; ++account) {
        scribe->market().ordersOf(AccountId(account), views);
        RecordPage page;
        page.size = 200;
        const std::vector<OrderRow> rows = reader->openOrders(AccountId(account), page);
        ASSERT_EQ(rows.size(), views.size());
        for (const OrderView &view : views) {
            const auto row = std::find_if(rows.begin(), rows.end(), [&](const OrderRow &each) {
                return each.order == view.order;
            });
            ASSERT_NE(row, rows.end());
            EXPECT_EQ(row->frozen, view.frozenCash);
            EXPECT_EQ(row->quantity - row->filled, view.remaining);
            EXPECT_EQ(row->amount, view.amount);
            EXPECT_EQ(row->fees, view.charged);
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
}

TEST_F(RecordsTest, DealsBearTheAccountsOwnSideAndFee)
{
    open(3);
    carryOut({SetFeeRate{AccountId(2), CollectionId(1100), PartsPerMillion(20'000)}});
    carryOut({order(1, Side::Buy, 1000, 10), order(2, Side::Sell, 1000, 4)}); // deal 1
    carryOut({order(2, Side::Buy, 1010, 3), order(3, Side::Sell, 1010, 3)}); // deal 2
    carryOut({order(3, Side::Sell, 1000, 6)}); // deal 3, with the rest of the first order
    const auto texts = [this](std::int64_t account, RecordPage::Kind kind = RecordPage::All) {
        RecordPage page;
        page.kind = kind;
        std::string text;
        for (const AccountDeal &deal : reader->dealsOf(AccountId(account), page))
            text += std::to_string(deal.row.deal.sequence.value())
                + (deal.side == Side::Buy ? " buy " : " sell ") + std::to_string(deal.fee().value())
                + "; ";
        return text;
    };
    EXPECT_EQ(texts(1), "3 buy 18; 1 buy 12; ");
    EXPECT_EQ(texts(2), "2 buy 61; 1 sell 80; ");
    EXPECT_EQ(texts(2, RecordPage::Outgoing), "1 sell 80; ");
    EXPECT_EQ(texts(2, RecordPage::Incoming), "2 buy 61; ");
    EXPECT_EQ(texts(3), "3 sell 18; 2 sell 9; ");
    EXPECT_EQ(texts(1, RecordPage::Outgoing), "");
    EXPECT_EQ(texts(4), "");
}

/// "bought amount fee sold amount fee profit"
std::string text(const GatherRow &row)
{
    std::string text = std::to_string(row.collection.value()) + ':';
    for (const std::int64_t figure :
         {row.buyQuantity.value(), row.buyAmount.value(), row.buyFee.value(),
          row.sellQuantity.value(), row.sellAmount.value(), row.sellFee.value(),
          row.sellProfit.value()})
        text += ' ' + std::to_string(figure);
    return text;
}

TEST_F(RecordsTest, SumsTellWhatSellingEarned)
{
    open(2);
    const auto sums = [this](std::int64_t account) {
        std::string all;
        for (const GatherRow &row : reader->gathers(AccountId(account)))
            all += text(row) + "; ";
        return all;
    };
    EXPECT_EQ(sums(1), "");
    carryOut({order(1, Side::Sell, 1000, 10), order(2, Side::Buy, 1000, 10)});
    // Pieces of 9.00 were sold at 10.00, less a fee of 0.30.
    EXPECT_EQ(sums(1), "1100: 0 0 0 10 10000 30 970; ");
    EXPECT_EQ(sums(2), "1100: 10 10000 30 0 0 0 0; ");
    // What was bought raises what a piece has cost: 2,010 pieces for 18,100.30.
    carryOut({order(1, Side::Buy, 950, 100), order(2, Side::Sell, 950, 60)});
    const std::int64_t cost = 2'000 * 900 + 10'030;
    const std::int64_t paid = cost * 60 / 2'010;
    EXPECT_EQ(sums(2),
              "1100: 10 10000 30 60 57000 171 " + std::to_string(57'000 - 171 - paid) + "; ");
    begin();
    carryOut({order(2, Side::Sell, 950, 40)});
    const std::int64_t rest = (cost - paid) * 40 / 1'950;
    EXPECT_EQ(sums(2),
              "1100: 10 10000 30 100 95000 285 " + std::to_string(95'000 - 285 - paid - rest)
                  + "; ")
        << "they go on after a restart";
    // The next session begins with nothing, whatever came in the same commit.
    carryOut({order(1, Side::Buy, 950, 1), order(2, Side::Sell, 950, 1),
              SettleDay{TradingDay(kFirstDay)}});
    EXPECT_EQ(sums(1), "");
    EXPECT_EQ(sums(2), "");
    carryOut({order(1, Side::Buy, 950, 1), order(2, Side::Sell, 950, 1)});
    EXPECT_EQ(sums(1), "1100: 1 950 3 0 0 0 0; ");
    const std::string grown = store->describeTables();
    rebuildTables(*store);
    EXPECT_EQ(store->describeTables(), grown);
}

/// The same sums, from the deals of the session and the costs that the market told on the way.
TEST_F(RecordsTest, SumsAreThoseOfTheSessionsDeals)
{
    RandomTrading trading(15, test::smallMarket());
    carryOut(test::listing(test::smallMarket()));
    carryOut(trading.opening());
    std::map<std::pair<std::int64_t, std::int64_t>, GatherRow> wanted;
    int soldAtALoss = 0;
    for (int i = 0; i < 1'500; ++i) {
        std::map<std::pair<std::int64_t, std::int64_t>, HoldingView> before;
        for (std::int64_t account = 1; account <= RandomTrading::kAccounts; ++account)
            for (std::int64_t id = 1100; id < 1108; ++id)
                before[{account, id}]
                    = scribe->market().holding(AccountId(account), CollectionId(id));
        const std::size_t known = plain.deals.size();
        const Sequence session = plain.session();
        carryOut({trading.next()});
        if (plain.session() != session)
            wanted.clear();
        for (std::size_t d = known; d < plain.deals.size(); ++d) {
            const Deal &deal = plain.deals[d].what;
            const Fen amount = deal.price * deal.quantity;
            const std::int64_t id = deal.collection.value();
            GatherRow &bought = wanted[{deal.buyer.value(), id}];
            bought.collection = deal.collection;
            bought.buyQuantity += deal.quantity;
            bought.buyAmount += amount;
            bought.buyFee += deal.buyerFee;
            HoldingView &taken = before[{deal.buyer.value(), id}];
            taken.quantity += deal.quantity;
            taken.cost += amount + deal.buyerFee;
            HoldingView &given = before[{deal.seller.value(), id}];
            const Fen paid(given.cost.value() * deal.quantity.value() / given.quantity.value());
            given.quantity -= deal.quantity;
            given.cost -= paid;
            GatherRow &sold = wanted[{deal.seller.value(), id}];
            sold.collection = deal.collection;
            sold.sellQuantity += deal.quantity;
            sold.sellAmount += amount;
            sold.sellFee += deal.sellerFee;
            sold.sellProfit += amount - deal.sellerFee - paid;
            soldAtALoss += amount - deal.sellerFee < paid;
        }
        if (i % 10 != 0)
            continue;
        if (i % 200 == 0)
            begin();
        for (std::int64_t account = 1; account <= RandomTrading::kAccounts; ++account) {
            std::vector<std::string> lines;
            for (const auto &[place, row] : wanted)
                if (place.first == account)
                    lines.push_back(text(row));
            std::vector<std::string> found;
            for (const GatherRow &row : reader->gathers(AccountId(account)))
                found.push_back(text(row));
            ASSERT_EQ(found, lines) << "account " << account << " after command " << i;
        }
    }
    EXPECT_GT(plain.session(), Sequence(2));
    EXPECT_GT(soldAtALoss, 20);
}

TEST_F(RecordsTest, TablesAreTheSameHoweverTheCommandsCame)
{
    tradeFor(2'500, 16);
    const std::string grown = store->describeTables();
    for (const char *table : {"records ", "record_days ", "milestones ", "gathers "})
        EXPECT_NE(grown.find(std::string("\n") + table), std::string::npos) << table;
    rebuildTables(*store);
    EXPECT_EQ(store->describeTables(), grown);
}

/// A page needs the records that it shows and a few beside them, wherever it stands.
TEST_F(RecordsTest, FarPagesDoNotWalkFromTheNewest)
{
    open(2);
    for (int i = 0; i < 300; ++i)
        carryOut({order(1, i % 3 == 0 ? Side::Sell : Side::Buy, i % 3 == 0 ? 1050 : 950, 1)});
    RecordPage page; // places 91 to 100 of 300
    page.page = 21;
    const Numbers wanted{100, 99, 98, 97, 96, 95, 94, 93, 92, 91};
    ASSERT_EQ(numbersOf(reader->ordersOf(AccountId(1), page)), wanted);
    {
        SQLite::Database database((folder / "m.market").string(), SQLite::OPEN_READWRITE);
        ASSERT_GT(database.exec("DELETE FROM orders WHERE number > 112 OR number < 91"), 200);
    }
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(1), page)), wanted);
    page.page = 22;
    EXPECT_THROW(reader->ordersOf(AccountId(1), page), StoreError) << "what is missing is noticed";
    page.page = 1;
    EXPECT_THROW(reader->ordersOf(AccountId(1), page), StoreError);
    page.page = 31;
    EXPECT_EQ(numbersOf(reader->ordersOf(AccountId(1), page)), Numbers());
}

TEST_F(RecordsTest, OpenOrdersAreFoundByTheirIndex)
{
    SQLite::Database database((folder / "m.market").string(), SQLite::OPEN_READONLY);
    SQLite::Statement plan(database,
                           "EXPLAIN QUERY PLAN SELECT number, price FROM orders WHERE account = 1 "
                           "AND state = 0 ORDER BY number DESC LIMIT 10 OFFSET 20");
    std::string steps;
    while (plan.executeStep())
        steps += plan.getColumn(3).getString() + '\n';
    EXPECT_NE(steps.find("INDEX open_orders"), std::string::npos) << steps;
    EXPECT_EQ(steps.find("TEMP B-TREE"), std::string::npos) << steps;
}

} // namespace
} // namespace zvx
