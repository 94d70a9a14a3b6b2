#include "exchange/service/link_page.h"

#include "exchange/accounts/bank_names.h"
#include "exchange/service/html_text.h"

namespace zvx {

std::string_view LinkView::typedIn(std::string_view name) const
{
    const std::string *text = typed.find(name);
    return text ? std::string_view(*text) : std::string_view();
}

std::string fieldHtml(const LinkView &view, std::string_view name, std::string_view label,
                      std::string_view attributes, std::string_view value)
{
    const std::string fault = faultBelow(view, name);
    std::string html = filledHtml(R"(<label for="{name}">{label}</label>
<input id="{name}" name="{name}" value="{value}" )",
                                  {{"name", name}, {"label", label}, {"value", value}});
    html.append(attributes);
    if (!fault.empty())
        html += filledHtml(R"( aria-invalid="true" aria-describedby="{name}-fault")",
                           {{"name", name}});
    return html.append(">\n").append(fault);
}

std::string faultBelow(const LinkView &view, std::string_view field)
{
    if (view.fault == AccountStatus::Done || fieldOf(view.fault) != field)
        return {};
    return filledHtml(R"(<p class="fault" id="{name}-fault">{text}</p>
)",
                      {{"name", field}, {"text", sentence(view.fault)}});
}

std::string rowHtml(std::string_view name, std::string_view value)
{
    return filledHtml("<dt>{name}</dt><dd>{value}</dd>\n", {{"name", name}, {"value", value}});
}

std::string_view fieldOf(AccountStatus status)
{
    switch (status) {
    case AccountStatus::BadHolder:
        return "holder";
    case AccountStatus::BadBank:
        return "bank";
    case AccountStatus::BadCardNumber:
        return "number";
    case AccountStatus::BadAmount:
        return "amount";
    case AccountStatus::BadCode:
    case AccountStatus::CodeWrong:
    case AccountStatus::CodeExpired:
    case AccountStatus::CodeUsed:
    case AccountStatus::CodeSpent:
    case AccountStatus::GuessLimit:
        return "code";
    default:
        return {};
    }
}

std::string cardText(const BankCard &card)
{
    const Bank *bank = findBank(card.bank);
    return std::string(bank ? bank->name : "银行卡") + "（尾号" + card.tail + "）";
}

} // namespace zvx
