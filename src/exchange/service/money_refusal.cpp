#include "exchange/service/money_refusal.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/service/action_refusal.h"

namespace zvx {

MoneyDesk::Outcome notTried(MoneyDesk::Status status)
{
    return {status,
            {},
            status == MoneyDesk::Status::Busy ? "服务繁忙，请稍后再试。"
                                              : "服务正在停止，请稍后再试。"};
}

std::string_view moneyReason(Status status)
{
    switch (status) {
    case Status::NoBankCard:
        return "no-card";
    case Status::AboveTransferLimit:
        return "amount-limit";
    case Status::AboveDayLimit:
        return "day-limit";
    case Status::BadAmount:
        return "amount";
    case Status::TooManyTransfers:
        return "too-many";
    default:
        return refusalOf(status).reason;
    }
}

std::string moneySentence(Status status, bool incoming, const MoneyLimits &limits)
{
    const std::string way = incoming ? "入金" : "出金";
    switch (status) {
    case Status::AccountUnknown:
        return "本市场的账户数量已达上限，暂时不能划转资金。";
    case Status::AccountFrozen:
        return "您的账户已被冻结，暂时不能划转资金。";
    case Status::NoBankCard:
        return "您还没有绑定银行卡，请先开户绑卡。";
    case Status::AboveTransferLimit:
        return "单笔" + way + "不能超过 " + yuanText(limits.ofTransfer) + " 元。";
    case Status::AboveDayLimit:
        return "今日" + way + "已达上限：每日最多 " + yuanText(limits.ofDay) + " 元、"
            + std::to_string(limits.transfersOfDay) + " 笔。";
    case Status::BadAmount:
        return way + "金额不符合规定。";
    case Status::NotEnoughMoney:
        return "可用资金不足，不能出金。";
    case Status::TooManyTransfers:
        return "您有多笔资金划转正在等待银行答复，请稍后再试。";
    default:
        return std::string(refusalOf(status).message);
    }
}

} // namespace zvx
