#include "exchange/service/revoke_outcome.h"

#include "exchange/service/action_refusal.h"
#include "exchange/service/json_text.h"

#include <algorithm>

namespace zvx {

namespace {

/// Orders that a message names; of more it gives the number.
constexpr std::size_t mostNamed = 10;

std::string listed(const std::vector<OrderNumber> &numbers)
{
    std::string text;
    for (std::size_t i = 0; i < std::min(numbers.size(), mostNamed); ++i)
        text += (i == 0 ? "" : "、") + std::to_string(numbers[i].value());
    if (numbers.size() > mostNamed)
        text += " 等 " + std::to_string(numbers.size()) + " 笔";
    return text;
}

} // namespace

RevokeOutcome RevokeOutcome::of(const std::vector<OrderNumber> &numbers,
                                const std::vector<OrderRow> &rows, AccountId account, ActionKey key)
{
    RevokeOutcome outcome;
    for (const OrderNumber number : numbers) {
        const auto row = std::find_if(rows.begin(), rows.end(), [number](const OrderRow &each) {
            return each.order == number;
        });
        if (row == rows.end() || row->account != account)
            outcome.unknown.push_back(number);
        else if (row->revokeKey == key)
            outcome.revoked.push_back(number);
        else
            outcome.done.push_back(number);
    }
    return outcome;
}

std::string RevokeOutcome::reason() const
{
    return std::string(
        refusalOf(unknown.empty() ? Status::OrderDone : Status::OrderUnknown).reason);
}

std::string RevokeOutcome::message() const
{
    std::string text;
    if (!unknown.empty())
        text += "没有委托 " + listed(unknown) + "。";
    if (!done.empty())
        text += "委托 " + listed(done) + " 已成交或已撤销，不能再撤。";
    if (!revoked.empty())
        text += "其余 " + std::to_string(revoked.size()) + " 笔已撤销。";
    return text;
}

std::string RevokeOutcome::data() const
{
    JsonText json;
    json.open('{').key("revoked").number(static_cast<std::int64_t>(revoked.size()));
    json.key("failed").open('[');
    for (const auto *numbers : {&unknown, &done})
        for (const OrderNumber number : *numbers)
            json.number(number.value());
    return json.close(']').close('}').take();
}

} // namespace zvx
