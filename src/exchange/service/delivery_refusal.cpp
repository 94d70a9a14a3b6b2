#include "exchange/service/delivery_refusal.h"

#include "exchange/service/action_refusal.h"

namespace zvx {

DeliveryDesk::Outcome deliveryRefusal(Status status)
{
    const auto refused = [](std::string_view reason, std::string_view message) {
        return DeliveryDesk::Outcome{DeliveryDesk::Status::Refused, reason, message, {}};
    };
    switch (status) {
    case Status::AccountUnknown:
        // Who never was in this market holds nothing there.
        return refused("holdings", "可提数量不足。");
    case Status::AccountFrozen:
        return refused("frozen", "您的账户已被冻结，暂时不能办理提货。");
    case Status::BadQuantity:
        return refused("quantity", "提货数量不符合规定。");
    case Status::NotEnoughHoldings:
        return refused("holdings", "可提数量不足。");
    case Status::TooManyDeliveries:
        return refused("too-many", "正在办理的提货过多，请等待发货后再试。");
    case Status::DeliveryUnknown:
        return refused("unknown-delivery", "没有这笔提货申请。");
    case Status::DeliveryDone:
        return refused("delivery-done", "该提货申请已开始备货或已结束，不能取消。");
    default:
        return refused(refusalOf(status).reason, refusalOf(status).message);
    }
}

DeliveryDesk::Outcome notTried(DeliveryDesk::Status status)
{
    return {status,
            {},
            status == DeliveryDesk::Status::Busy ? "服务繁忙，请稍后再试。"
                                                 : "服务正在停止，请稍后再试。",
            {}};
}

} // namespace zvx
