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
        = {"market", "message", "check", "composite", "brief",
           "type",   "list",    "item",  "trade",     "latest"};
    return names[indexOf(topic)];
}

const std::array<PathEntry, 46> &contractPaths()
{
    static constexpr std::array<PathEntry, 46> paths = {{
        {"sync.html", PathKind::Sync},
        {"update.html", PathKind::Update},
        {"market.html", PathKind::Market},
        {"message.html", PathKind::Message},
        {"market/check.html", PathKind::Check},
        {"market/composite.html", PathKind::Composite},
        {"market/collection.html", PathKind::Brief},
        {"market/list.html", PathKind::List},
        {"collection/item.html", PathKind::Item},
        {"collection/trade.html", PathKind::Trade},
        {"market/latest-list.html", PathKind::Latest},
        {"collection/type.html", PathKind::Type},
        {"market/jit.html", PathKind::Unserved},
        {"market/day.html", PathKind::Unserved},
        {"market/week.html", PathKind::Unserved},
        {"market/month.html", PathKind::Unserved},
        {"market/detail.html", PathKind::Unserved},
        {"myaccount.html", PathKind::Unserved},
        {"cap.html", PathKind::Unserved},
        {"myaccount/gather.html", PathKind::Unserved},
        {"revoke.html", PathKind::Unserved},
        {"myaccount/optional.html", PathKind::Unserved},
        {"myaccount/append.html", PathKind::Unserved},
        {"myaccount/remove.html", PathKind::Unserved},
        {"myaccount/entrust.html", PathKind::Unserved},
        {"myaccount/his-entrust.html", PathKind::Unserved},
        {"myaccount/trade.html", PathKind::Unserved},
        {"myaccount/hold.html", PathKind::Unserved},
        {"myaccount/take-list.html", PathKind::Unserved},
        {"pay/list.html", PathKind::Unserved},
        {"login.html", PathKind::Unserved},
        {"reg.html", PathKind::Unserved},
        {"reg/send.html", PathKind::Unserved},
        {"forget/validate.html", PathKind::Unserved},
        {"forget/send.html", PathKind::Unserved},
        {"pay/qrcode.html", PathKind::Unserved},
        {"pay/send.html", PathKind::Unserved},
        {"pay/trade.html", PathKind::Unserved},
        {"pay/cash-deal.html", PathKind::Unserved},
        {"hold/list.html", PathKind::Unserved},
        {"pay/hx.html", PathKind::Unserved},
        {"trade/buy.html", PathKind::Unserved},
        {"trade/sell.html", PathKind::Unserved},
        {"trade/revoke.html", PathKind::Unserved},
        {"myaccount/take.html", PathKind::Unserved},
        {"trade/take.html", PathKind::Unserved},
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

HttpAnswer Envelope::refusal(WireStatus status, std::string_view message) const
{
    JsonText text;
    text.text(message);
    HttpAnswer answer
        = HttpAnswer::of(httpStatus(status), open(status) + ",\"message\":" + text.view() + '}');
    if (status == WireStatus::Method)
        answer.allow = "GET";
    return answer;
}

} // namespace zvx
