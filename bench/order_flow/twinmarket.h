#pragma once

#include "exchange/core/command.h"
#include "exchange/core/event.h"
#include "exchange/core/market.h"

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <stdexcept>
#include <unordered_map>
#include <vector>

// The market as one would write it first, and well: each side of a book is a std::map from prices
// to std::lists of orders, everything that has an id stands in an unordered map. It has every rule
// of the core, its words (commands, events, amounts) and none of its code, and it states the same
// events. It need not replay them, and makes no checkpoints.
class TwinMarket
{
public:
    explicit TwinMarket(const zvx::Limits &limits = {});

    zvx::Result apply(const zvx::Command &command, zvx::TimeMs now, std::vector<zvx::Event> &out);

    std::optional<zvx::AccountView> account(zvx::AccountId id) const;
    // By rising collection id, without empty ones.
    std::vector<zvx::HoldingView> holdingsOf(zvx::AccountId id) const;
    std::optional<zvx::CollectionView> collection(zvx::CollectionId id) const;
    // All of them, the best first.
    std::vector<zvx::Level> levels(zvx::CollectionId id, zvx::Side side) const;
    zvx::Fen feesEarned() const { return m_fees; }
    std::size_t openOrders() const { return m_orders.size(); }

private:
    struct Account;
    struct Book;
    struct Holding {
        zvx::Quantity quantity;
        zvx::Quantity frozen;
        zvx::Fen cost;
    };
    struct Order {
        zvx::OrderNumber number;
        Account *account = nullptr;
        Book *book = nullptr;
        Holding *holding = nullptr;
        zvx::Side side = zvx::Side::Buy;
        zvx::PartsPerMillion fee;
        zvx::Fen price;
        zvx::Quantity remaining;
        zvx::Fen amount;
        zvx::Fen charged;
        zvx::Fen frozenCash;
        zvx::Fen feeCap;

        zvx::Fen feeAfter(zvx::Fen amountThen) const;
        zvx::Fen needsFrozen() const;
    };
    struct Queue {
        std::list<Order> orders;
        zvx::Quantity quantity;
    };
    struct Book {
        zvx::CollectionView facts;
        std::map<zvx::Fen, Queue, std::greater<>> bids;
        std::map<zvx::Fen, Queue> asks;
    };
    struct KeyHash {
        std::size_t operator()(const zvx::ActionKey &key) const
        {
            return key.high * 0x9E3779B97F4A7C15u ^ key.low;
        }
    };
    struct Answer {
        std::uint64_t fingerprint = 0;
        zvx::Sequence session;
        zvx::Result result;
    };
    struct Account {
        zvx::AccountId id;
        zvx::PartsPerMillion fee;
        zvx::Fen available;
        zvx::Fen frozenCash;
        std::size_t openOrders = 0;
        bool frozen = false;
        std::unordered_map<std::int64_t, zvx::PartsPerMillion> rates;
        std::unordered_map<std::int64_t, Holding> holdings;
        std::unordered_map<zvx::ActionKey, Answer, KeyHash> answers;
    };
    using Happened = std::vector<zvx::Event>;

    zvx::Result carryOut(const zvx::ListCollection &command, Happened &out);
    zvx::Result carryOut(const zvx::SuspendCollection &command, Happened &out);
    zvx::Result carryOut(const zvx::OpenAccount &command, Happened &out);
    zvx::Result carryOut(const zvx::FreezeAccount &command, Happened &out);
    zvx::Result carryOut(const zvx::SetFeeRate &command, Happened &out);
    zvx::Result carryOut(const zvx::Deposit &command, Happened &out);
    zvx::Result carryOut(const zvx::Withdraw &command, Happened &out);
    zvx::Result carryOut(const zvx::GrantHolding &command, Happened &out);
    zvx::Result carryOut(const zvx::PlaceOrder &command, Happened &out);
    zvx::Result carryOut(const zvx::RevokeOrders &command, Happened &out);
    zvx::Result carryOut(const zvx::SettleDay &command, Happened &out);
    zvx::Result carryOut(const zvx::SetPhase &command, Happened &out);
    zvx::Result carryOut(const zvx::BurnKey &command, Happened &out);
    // Transfers and deliveries, which the stream that is measured does not hold.
    template <class Other>
    zvx::Result carryOut(const Other &, Happened &)
    {
        throw std::logic_error("the twin has no rules for this command");
    }

    template <class Keyed, class Judge>
    zvx::Result once(const Keyed &command, std::uint64_t fingerprint, bool refusalFreesKey,
                     Happened &out, const Judge &judge);
    void remember(Account &account, zvx::ActionKey key, const Answer &answer, Happened &out);
    zvx::Status judge(const zvx::PlaceOrder &command, Account &account, Book *book,
                      Order &order) const;
    zvx::Result place(const zvx::PlaceOrder &command, Account &account, Happened &out);
    template <class Levels>
    void match(Order &taker, Levels &against, Happened &out);
    void trade(Order &taker, Order &maker, Happened &out);
    void finish(const Order &order, zvx::DoneReason reason, Happened &out);
    template <class Levels>
    void rest(const Order &order, Levels &levels);
    void revoke(zvx::OrderNumber number, zvx::DoneReason reason, Happened &out);
    zvx::Status judgeRevoke(zvx::OrderNumber number, const Account &account) const;

    Account *accountOf(zvx::AccountId id);
    Book *bookOf(zvx::CollectionId id);
    const Account *accountOf(zvx::AccountId id) const;
    const Book *bookOf(zvx::CollectionId id) const;

    zvx::Limits m_limits;
    zvx::TimeMs m_now;
    zvx::TradingDay m_day{20'200'101};
    zvx::Sequence m_session{1};
    bool m_open = false;
    zvx::OrderNumber m_lastOrder;
    zvx::Sequence m_lastDeal;
    zvx::Fen m_fees;
    zvx::Fen m_outside; // came in and did not go out again
    std::unordered_map<std::int64_t, Account> m_accounts;
    std::unordered_map<std::int64_t, Book> m_books;
    std::vector<Book *> m_listed; // in order of listing
    std::unordered_map<std::int64_t, std::list<Order>::iterator> m_orders; // open ones
};
