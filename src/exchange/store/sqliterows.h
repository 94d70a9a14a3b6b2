#pragma once

#include "exchange/store/sqliteconnection.h"
#include "exchange/store/tables.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <string>

namespace zvx {

// How rows of the tables stand in SQLite, for the store that writes them and those who read them.

/// The columns of orders and of deals in the order in which readOrder() and readDeal() take them.
constexpr const char *kOrderColumns = "number, account, collection, side, price, quantity, filled, "
                                      "amount, fees, fee, state, session, placed, changed, key, "
                                      "revoke_key, frozen, previous_buy, previous_sell";
constexpr const char *kDealColumns = "sequence, time, session, collection, maker, taker, side, "
                                     "buyer, seller, price, quantity, buyer_fee, seller_fee, "
                                     "released, ordinal, buyer_bought, buyer_sold, "
                                     "seller_bought, seller_sold";
/// The same of a collection's running session, for readRunning().
constexpr const char *kRunningColumns = "collection, session, day, previous_close, open, high, "
                                        "low, last, volume, amount, deals";

/// Binds values one after another, so that the order of columns stands in one place only.
class Binder
{
public:
    explicit Binder(SQLite::Statement &statement) : m_statement(statement) { m_statement.reset(); }

    Binder &operator<<(std::int64_t value)
    {
        m_statement.bind(++m_index, value);
        return *this;
    }
    template <class Tag>
    Binder &operator<<(Number<Tag> value)
    {
        return *this << value.value();
    }
    /// The null key is NULL.
    Binder &operator<<(ActionKey key);

private:
    SQLite::Statement &m_statement;
    int m_index = 0;
};

/// Reads the columns of a row one after another.
class RowReader
{
public:
    explicit RowReader(SQLite::Statement &statement) : m_statement(statement) { }

    template <class Tag>
    RowReader &operator>>(Number<Tag> &value)
    {
        value = Number<Tag>(next());
        return *this;
    }
    RowReader &operator>>(std::int64_t &value)
    {
        value = next();
        return *this;
    }
    RowReader &operator>>(Side &side)
    {
        side = next() == 0 ? Side::Buy : Side::Sell;
        return *this;
    }
    RowReader &operator>>(OrderState &state)
    {
        state = static_cast<OrderState>(next());
        return *this;
    }
    RowReader &operator>>(bool &value)
    {
        value = next() != 0;
        return *this;
    }
    RowReader &operator>>(ActionKey &key)
    {
        key = keyOf(m_statement.getColumn(m_index++).getString());
        return *this;
    }

private:
    std::int64_t next() { return m_statement.getColumn(m_index++).getInt64(); }

    SQLite::Statement &m_statement;
    int m_index = 0;
};

OrderRow readOrder(SQLite::Statement &statement);
DealRow readDeal(SQLite::Statement &statement);
RunningRow readRunning(SQLite::Statement &statement);

} // namespace zvx
