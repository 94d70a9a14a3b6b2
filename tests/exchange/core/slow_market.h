#pragma once

#include "exchange/core/command.h"

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

/**
 * The rules of the market a second time, written for plainness alone. Nothing is kept that can be
 * counted again: money, fees, frozen amounts and costs are sums over everything that ever happened.
 * It shares the vocabulary of commands with the core and not a line of its code.
 */
class SlowMarket
{
public:
    struct Trade {
        std::int64_t maker = 0;
        std::int64_t taker = 0;
        std::int64_t price = 0;
        std::int64_t quantity = 0;
        std::int64_t buyerFee = 0;
        std::int64_t sellerFee = 0;

        bool operator==(const Trade &o) const
        {
            return maker == o.maker && taker == o.taker && price == o.price
                && quantity == o.quantity && buyerFee == o.buyerFee && sellerFee == o.sellerFee;
        }
    };
    struct Bounds {
        std::int64_t openOrdersOfAccount = 0;
        std::int64_t keysOfAccount = 0;
        std::int64_t transfersOfAccount = 0;
        std::int64_t deliveriesOfAccount = 0;
    };

    SlowMarket(std::int64_t day, Bounds bounds);

    zvx::Result apply(const zvx::Command &command);

    /** The whole visible state as text, one fact a line, in a fixed order. */
    std::string picture() const;
    /** The deals of the last command. */
    const std::vector<Trade> &trades() const { return m_trades; }

private:
    struct Order {
        std::int64_t number = 0;
        std::int64_t account = 0;
        std::int64_t collection = 0;
        bool buy = false;
        std::int64_t price = 0;
        std::int64_t quantity = 0;
        std::int64_t rate = 0;
        std::int64_t cap = 0;
        bool open = true;
        std::vector<std::pair<std::int64_t, std::int64_t>> fills; ///< price, quantity

        std::int64_t traded() const;
        std::int64_t amount() const;
        std::int64_t left() const { return quantity - traded(); }
        std::int64_t feeOf(std::int64_t sum) const;
        std::int64_t frozenMoney() const;
    };
    struct Account {
        bool frozen = false;
        std::int64_t rate = 0;
        std::map<std::int64_t, std::int64_t> rates;
        std::vector<std::int64_t> moved; ///< money from and to outside
        /** What changed the holdings: collection, pieces, cost; pieces given have no cost. */
        std::vector<std::pair<std::int64_t, std::pair<std::int64_t, std::int64_t>>> pieces;
    };
    struct Collection {
        std::int64_t issued = 0;
        std::int64_t limit = 0;
        std::int64_t tick = 0;
        std::int64_t lot = 0;
        bool suspended = false;
        std::int64_t close = 0;
        std::vector<std::pair<bool, std::pair<std::int64_t, std::int64_t>>> deals;
        std::map<std::int64_t, std::list<std::int64_t>> buys;
        std::map<std::int64_t, std::list<std::int64_t>> sells;

        std::int64_t lower() const;
        std::int64_t upper() const;
    };
    struct Transfer {
        std::int64_t account = 0;
        bool incoming = false;
        std::int64_t amount = 0;
        bool waiting = true;
    };
    struct Delivery {
        std::int64_t account = 0;
        std::int64_t collection = 0;
        std::int64_t quantity = 0;
        enum { Asked, Packed, Gone, Back } where = Asked;

        bool underWay() const { return where == Asked || where == Packed; }
    };
    struct Answer {
        zvx::Result result;
        std::string content;
        std::int64_t session = 0;
    };
    using Key = std::pair<std::uint64_t, std::uint64_t>;

    zvx::Result run(const zvx::ListCollection &command);
    zvx::Result run(const zvx::SuspendCollection &command);
    zvx::Result run(const zvx::OpenAccount &command);
    zvx::Result run(const zvx::FreezeAccount &command);
    zvx::Result run(const zvx::SetFeeRate &command);
    zvx::Result run(const zvx::Deposit &command);
    zvx::Result run(const zvx::Withdraw &command);
    zvx::Result run(const zvx::GrantHolding &command);
    zvx::Result run(const zvx::PlaceOrder &command);
    zvx::Result run(const zvx::RevokeOrders &command);
    zvx::Result run(const zvx::SettleDay &command);
    zvx::Result run(const zvx::SetPhase &command);
    zvx::Result run(const zvx::BurnKey &command);
    zvx::Result run(const zvx::BeginTransfer &command);
    zvx::Result run(const zvx::EndTransfer &command);
    zvx::Result run(const zvx::RequestDelivery &command);
    zvx::Result run(const zvx::CancelDelivery &command);
    zvx::Result run(const zvx::AdvanceDelivery &command);

    template <class Command>
    zvx::Result keyed(const Command &command, const std::string &content, bool freeing);
    zvx::Result carryOut(const zvx::Deposit &command);
    zvx::Result carryOut(const zvx::Withdraw &command);
    zvx::Result carryOut(const zvx::GrantHolding &command);
    zvx::Result carryOut(const zvx::PlaceOrder &command);
    zvx::Result carryOut(const zvx::RevokeOrders &command);
    zvx::Result carryOut(const zvx::BeginTransfer &command);
    zvx::Result carryOut(const zvx::RequestDelivery &command);
    zvx::Result carryOut(const zvx::CancelDelivery &command);
    void match(Order &taker);
    void close(Order &order);
    zvx::Status mayRevoke(std::int64_t number, std::int64_t account) const;

    /** What more may come in from outside. */
    std::int64_t roomForMoney() const;
    std::int64_t frozen(std::int64_t account) const;
    std::int64_t available(std::int64_t account) const;
    std::int64_t held(std::int64_t account, std::int64_t collection) const;
    std::int64_t frozenPieces(std::int64_t account, std::int64_t collection) const;
    std::int64_t cost(std::int64_t account, std::int64_t collection) const;
    std::int64_t openOrders(std::int64_t account) const;
    std::int64_t circulating(std::int64_t collection) const;
    std::int64_t sent(std::int64_t collection) const;

    std::int64_t m_day;
    std::int64_t m_session = 1;
    Bounds m_bounds;
    bool m_open = false;
    std::map<std::int64_t, Account> m_accounts;
    std::map<std::int64_t, Collection> m_collections;
    std::map<std::int64_t, Order> m_orders;
    std::map<std::int64_t, Transfer> m_transfers;
    std::map<std::int64_t, Delivery> m_deliveries;
    std::map<std::int64_t, std::map<Key, Answer>> m_answers;
    std::vector<Trade> m_trades;
    std::int64_t m_deals = 0;
};
