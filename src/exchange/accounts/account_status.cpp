#include "exchange/accounts/account_status.h"

#include <array>
#include <cstddef>

namespace zvx {
namespace {

struct Row {
    AccountStatus status;
    AccountVerdict verdict;
    std::string_view reason;
    std::string_view sentence; ///< "%1" stands for the seconds to wait
};

using Status = AccountStatus;
using Verdict = AccountVerdict;

constexpr std::size_t kCount = static_cast<std::size_t>(kLastAccountStatus) + 1;

constexpr std::array<Row, kCount> kRows = {{
    {Status::Done, Verdict::Done, "", ""},
    {Status::Busy, Verdict::Busy, "busy", "系统繁忙，请稍后再试"},
    {Status::Failed, Verdict::Failed, "failed", "服务暂时中断，请稍后再试"},
    {Status::BadKey, Verdict::Malformed, "key", "请求有误，请重试"},
    {Status::BadPhone, Verdict::Malformed, "phone", "手机号有误"},
    {Status::BadPassword, Verdict::Malformed, "password", "密码为6-20位，不能包含空格"},
    {Status::BadCode, Verdict::Malformed, "code", "校验码格式有误"},
    {Status::BadReferee, Verdict::Malformed, "referee", "推荐人手机号有误"},
    {Status::BadMarket, Verdict::Malformed, "market", "请求有误，请重试"},
    {Status::BadPage, Verdict::Malformed, "page", "请求有误，请重试"},
    {Status::BadPeer, Verdict::Malformed, "peer", "请求有误，请重试"},
    {Status::KeyDiffers, Verdict::Refused, "key-differs", "该请求编号已用于其他操作"},
    {Status::KeyUnknown, Verdict::Refused, "unknown-key", "该操作没有执行，请重试"},
    {Status::WrongPassword, Verdict::Refused, "wrong-password", "手机号或密码错误"},
    {Status::TooOften, Verdict::Refused, "too-often", "操作过于频繁，请%1秒后再试"},
    {Status::CodePause, Verdict::Refused, "code-pause", "验证码已发送，请%1秒后再重新获取"},
    {Status::CodeLimit, Verdict::Refused, "code-limit",
     "该手机号今日获取验证码次数过多，请明天再试"},
    {Status::CodeMissing, Verdict::Refused, "no-code", "请先获取验证码"},
    {Status::CodeWrong, Verdict::Refused, "wrong-code", "验证码错误"},
    {Status::CodeExpired, Verdict::Refused, "code-expired", "验证码已过期，请重新获取"},
    {Status::CodeUsed, Verdict::Refused, "code-used", "验证码已使用，请重新获取"},
    {Status::CodeSpent, Verdict::Refused, "code-spent", "验证码错误次数过多，请重新获取"},
    {Status::GuessLimit, Verdict::Refused, "guess-limit", "今日验证码错误次数过多，请明天再试"},
    {Status::AlreadyRegistered, Verdict::Refused, "registered", "该手机号已注册，请直接登录"},
    {Status::NotYourPhone, Verdict::Refused, "not-your-phone", "手机号与当前账户不一致"},
    {Status::AccountUnknown, Verdict::Refused, "unknown-account", "账户不存在"},
    {Status::TooManyFavourites, Verdict::Refused, "too-many", "自选数量已达上限，请先删除部分自选"},
    {Status::LinkUnknown, Verdict::Refused, "unknown-link", "链接无效，请回到客户端重新打开"},
    {Status::LinkExpired, Verdict::Refused, "link-expired", "链接已过期，请回到客户端重新打开"},
    {Status::LinkUsed, Verdict::Refused, "link-used", "链接已使用过，请回到客户端重新打开"},
    {Status::BadBank, Verdict::Malformed, "bank", "请选择发卡银行"},
    {Status::BadHolder, Verdict::Malformed, "holder", "请填写持卡人姓名，2至30个汉字或字母"},
    {Status::BadCardNumber, Verdict::Malformed, "card", "银行卡号有误，请核对后重新输入"},
    {Status::BadAmount, Verdict::Malformed, "amount", "请输入正确的金额，最多两位小数"},
    {Status::CardBound, Verdict::Refused, "card-bound", "您的账户已绑定银行卡，无需再次绑定"},
    {Status::CardTaken, Verdict::Refused, "card-taken",
     "该银行卡已绑定其他账户，请使用本人的另一张卡"},
}};

constexpr bool inOrder()
{
    for (std::size_t i = 0; i < kCount; ++i)
        if (static_cast<std::size_t>(kRows[i].status) != i)
            return false;
    return true;
}
static_assert(inOrder(), "a status has its row at its own number");

const Row &row(AccountStatus status)
{
    return kRows.at(static_cast<std::size_t>(status));
}

} // namespace

AccountVerdict verdict(AccountStatus status)
{
    return row(status).verdict;
}

std::string_view reason(AccountStatus status)
{
    return row(status).reason;
}

std::string sentence(AccountStatus status, std::int64_t wait)
{
    std::string text(row(status).sentence);
    const std::size_t place = text.find("%1");
    if (place != std::string::npos)
        text.replace(place, 2, std::to_string(wait));
    return text;
}

} // namespace zvx
