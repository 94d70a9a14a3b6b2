#include "exchange/service/protocol.h"

#include "exchange/service/json_text.h"

#include <algorithm>

namespace zvx {

namespace {

struct WireEntry {
    std::string_view name;
    int http;
};

constexpr WireEntry wireEntries[] = {
    {"ok", 200},        {"refused", 200},   {"protocol", 400},  {"bad-request", 400},
    {"session", 401},   {"elsewhere", 401}, {"not-found", 404}, {"method", 405},
    {"too-large", 413}, {"busy", 503},      {"unserved", 501},  {"failed", 500},
};

} // namespace

std::string_view topicName(Topic topic)
{
    constexpr std::string_view names[topicCount]
        = {"market", "message", "check", "composite", "brief", "type",
           "list",   "item",    "trade", "latest",    "cap"};
    return names[indexOf(topic)];
}

const std::array<PathEntry, 46> &contractPaths()
{
    constexpr std::string_view get = "GET";
    constexpr std::string_view post = "POST";
    static constexpr std::array<PathEntry, 46> paths = {{
        {"sync.html", get, PathKind::Sync},
        {"update.html", get, PathKind::Update},
        {"market.html", get, PathKind::Market},
        {"message.html", get, PathKind::Message},
        {"market/check.html", get, PathKind::Check},
        {"market/composite.html", get, PathKind::Composite},
        {"market/collection.html", get, PathKind::Brief},
        {"market/list.html", get, PathKind::List},
        {"collection/item.html", get, PathKind::Item},
        {"collection/trade.html", get, PathKind::Trade},
        {"market/latest-list.html", get, PathKind::Latest},
        {"collection/type.html", get, PathKind::Type},
        {"market/jit.html", get, PathKind::Minutes},
        {"market/day.html", get, PathKind::DayBars},
        {"market/week.html", get, PathKind::WeekBars},
        {"market/month.html", get, PathKind::MonthBars},
        {"market/detail.html", get, PathKind::DealPage},
        {"myaccount.html", get, PathKind::Account},
        {"cap.html", get, PathKind::Cap},
        {"myaccount/gather.html", get, PathKind::Gather},
        {"revoke.html", get, PathKind::OpenOrders},
        {"myaccount/optional.html", get, PathKind::Favourites},
        {"myaccount/append.html", post, PathKind::FavouriteAdd},
        {"myaccount/remove.html", post, PathKind::FavouriteRemove},
        {"myaccount/entrust.html", get, PathKind::OrdersOfSession},
        {"myaccount/his-entrust.html", get, PathKind::Orders},
        {"myaccount/trade.html", get, PathKind::Deals},
        {"myaccount/hold.html", get, PathKind::Holdings},
        {"myaccount/take-list.html", get, PathKind::TakeList},
        {"pay/list.html", get, PathKind::MoneyList},
        {"login.html", post, PathKind::SignIn},
        {"reg.html", post, PathKind::Register},
        {"reg/send.html", post, PathKind::RegisterCode},
        {"forget/validate.html", post, PathKind::Reset},
        {"forget/send.html", post, PathKind::ResetCode},
        {"pay/qrcode.html", get, PathKind::QrCode},
        {"pay/send.html", post, PathKind::MoneyCode},
        {"pay/trade.html", post, PathKind::MoneyIn},
        {"pay/cash-deal.html", post, PathKind::MoneyOut},
        {"hold/list.html", get, PathKind::Applications},
        {"pay/hx.html", get, PathKind::BankCard},
        {"trade/buy.html", post, PathKind::Buy},
        {"trade/sell.html", post, PathKind::Sell},
        {"trade/revoke.html", post, PathKind::Revoke},
        {"myaccount/take.html", get, PathKind::TakeShown},
        {"trade/take.html", post, PathKind::Take},
    }};
    return paths;
}

const PathEntry *findPath(std::string_view path)
{
    const auto &paths = contractPaths();
    const auto found = std::find_if(paths.begin(), paths.end(),
                                    [&](const PathEntry &entry) { return entry.path == path; });
    return found == paths.end() ? nullptr : &*found;
}

PathRoom roomOf(PathKind kind)
{
    switch (kind) {
    case PathKind::Sync:
        return PathRoom::Polls;
    case PathKind::Minutes:
    case PathKind::DayBars:
    case PathKind::WeekBars:
    case PathKind::MonthBars:
    case PathKind::DealPage:
        return PathRoom::Charts;
    case PathKind::Applications:
        return PathRoom::Applications;
    case PathKind::SignIn:
    case PathKind::Register:
    case PathKind::RegisterCode:
    case PathKind::Reset:
    case PathKind::ResetCode:
    case PathKind::Account:
    case PathKind::Favourites:
    case PathKind::FavouriteAdd:
    case PathKind::FavouriteRemove:
        return PathRoom::Accounts;
    case PathKind::Cap:
    case PathKind::Buy:
    case PathKind::Sell:
    case PathKind::Revoke:
        return PathRoom::Trading;
    case PathKind::OpenOrders:
    case PathKind::OrdersOfSession:
    case PathKind::Orders:
    case PathKind::Deals:
    case PathKind::Gather:
    case PathKind::Holdings:
        return PathRoom::Records;
    case PathKind::MoneyCode:
    case PathKind::MoneyIn:
    case PathKind::MoneyOut:
    case PathKind::MoneyList:
        return PathRoom::Money;
    case PathKind::Take:
    case PathKind::TakeShown:
    case PathKind::TakeList:
        return PathRoom::Deliveries;
    case PathKind::BankCard:
    case PathKind::QrCode:
        return PathRoom::Cards;
    default:
        return PathRoom::Market;
    }
}

std::string_view wireName(WireStatus status)
{
    return wireEntries[static_cast<int>(status)].name;
}

int httpStatus(WireStatus status)
{
    return wireEntries[static_cast<int>(status)].http;
}

Envelope::Envelope(std::string boot, std::function<std::int64_t()> now)
    : m_boot(std::move(boot)), m_now(std::move(now))
{
}

std::string Envelope::open(WireStatus status) const
{
    JsonText json;
    json.open('{').key("protocol").number(protocolNumber);
    json.key("status").text(wireName(status));
    json.key("boot").text(m_boot).key("time").number(m_now());
    return json.take();
}

HttpAnswer Envelope::refusal(WireStatus status, std::string_view message, std::string_view reason,
                             std::string_view data) const
{
    JsonText rest;
    rest.raw(open(status)).key("message").text(message);
    if (!reason.empty())
        rest.key("reason").text(reason);
    if (!data.empty())
        rest.key("data").raw(data);
    HttpAnswer answer = HttpAnswer::of(httpStatus(status), rest.close('}').take());
    if (status == WireStatus::Method)
        answer.allow = "GET";
    return answer;
}

} // namespace zvx
