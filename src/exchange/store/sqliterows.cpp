#include "exchange/store/sqliterows.h"

namespace zvx {

Binder &Binder::operator<<(ActionKey key)
{
    if (key.isNull()) {
        m_statement.bind(++m_index);
    } else {
        const std::string bytes = keyBytes(key);
        m_statement.bind(++m_index, bytes.data(), static_cast<int>(bytes.size()));
    }
    return *this;
}

OrderRow readOrder(SQLite::Statement &statement)
{
    OrderRow row;
    RowReader(statement) >> row.order >> row.account >> row.collection >> row.side >> row.price
        >> row.quantity >> row.filled >> row.amount >> row.fees >> row.fee >> row.state
        >> row.session >> row.placedAt >> row.changedAt >> row.key >> row.revokeKey >> row.frozen
        >> row.links.buy >> row.links.sell;
    return row;
}

DealRow readDeal(SQLite::Statement &statement)
{
    DealRow row;
    Deal &deal = row.deal;
    RowReader(statement) >> deal.sequence >> deal.at >> row.session >> deal.collection >> deal.maker
        >> deal.taker >> deal.takerSide >> deal.buyer >> deal.seller >> deal.price >> deal.quantity
        >> deal.buyerFee >> deal.sellerFee >> deal.released >> row.ordinal >> row.ofBuyer.buy
        >> row.ofBuyer.sell >> row.ofSeller.buy >> row.ofSeller.sell;
    return row;
}

RunningRow readRunning(SQLite::Statement &statement)
{
    RunningRow row;
    RowReader(statement) >> row.collection >> row.session >> row.day >> row.previousClose
        >> row.open >> row.high >> row.low >> row.last >> row.volume >> row.amount >> row.deals;
    return row;
}

} // namespace zvx
