#include "exchange/service/action_refusal.h"

#include <algorithm>
#include <iterator>

namespace zvx {

namespace {

struct Entry {
    Status status;
    ActionRefusal refusal;
};

// Orders of others are told as orders that are not there, so that nobody learns of them.
constexpr Entry entries[] = {
    {Status::AccountUnknown, {"too-many", "本市场的账户数量已达上限，暂时不能交易。"}},
    {Status::KeyDiffers, {"key-differs", "该操作编号已用于另一笔操作，本次操作未执行。"}},
    {Status::TooManyActions, {"too-many", "本交易日的操作次数已达上限，请在结算后再试。"}},
    {Status::AccountFrozen, {"frozen", "您的账户已被冻结，暂时不能交易。"}},
    {Status::MarketClosed, {"closed", "当前已休市，不能委托。"}},
    {Status::CollectionUnknown, {"unknown-collection", "没有这个藏品。"}},
    {Status::CollectionSuspended, {"suspended", "该藏品已停牌，暂时不能委托。"}},
    {Status::PriceOutsideLimits, {"price-limit", "委托价格超出涨跌停范围。"}},
    {Status::BadTick, {"tick", "委托价格不是最小变动价位的整数倍。"}},
    {Status::BadQuantity, {"quantity", "委托数量不符合规定。"}},
    {Status::NotEnoughMoney, {"money", "可用资金不足。"}},
    {Status::NotEnoughHoldings, {"holdings", "可卖数量不足。"}},
    {Status::TooManyOpenOrders, {"too-many", "未成交的委托过多，请先撤销一部分再试。"}},
    {Status::MarketFull, {"too-many", "本市场的委托数量已达上限，请稍后再试。"}},
    {Status::OrderUnknown, {"unknown-order", "没有这笔委托。"}},
    {Status::NotYourOrder, {"unknown-order", "没有这笔委托。"}},
    {Status::OrderDone, {"order-done", "该委托已成交或已撤销。"}},
    {Status::KeyBurnt, {"unknown-key", "该操作没有执行，也不会再执行。"}},
};

/// For what no action of an account can come to.
constexpr ActionRefusal other{"failed", "操作未能执行。"};

} // namespace

const ActionRefusal &refusalOf(Status status)
{
    const auto found = std::find_if(std::begin(entries), std::end(entries),
                                    [status](const Entry &e) { return e.status == status; });
    return found == std::end(entries) ? other : found->refusal;
}

} // namespace zvx
