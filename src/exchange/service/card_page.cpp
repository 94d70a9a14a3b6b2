#include "exchange/service/card_page.h"

#include "exchange/accounts/bank_names.h"
#include "exchange/service/html_text.h"

namespace zvx {

namespace {

std::string trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
}

std::string bankChoice(const LinkView &view)
{
    const std::string fault = faultBelow(view, "bank");
    std::string html = R"(<label for="bank">发卡银行</label>
<select id="bank" name="bank")";
    html += fault.empty() ? "" : R"( aria-invalid="true" aria-describedby="bank-fault")";
    html += ">\n<option value=\"\">请选择</option>\n";
    for (const Bank &bank : knownBanks()) {
        html += filledHtml(R"(<option value="{id}")", {{"id", bank.id}});
        html += view.typedIn("bank") == bank.id ? " selected>" : ">";
        html += filledHtml("{name}</option>\n", {{"name", bank.name}});
    }
    return html.append("</select>\n").append(fault);
}

} // namespace

std::string CardPage::obstacle(const LinkView &view) const
{
    return view.card ? "您的账户已绑定" + cardText(*view.card) + "，无需再次绑定。" : std::string();
}

std::string CardPage::firstFields(const LinkView &view) const
{
    // The card's number is not put back into the page, so that it stands in no copy of it.
    return fieldHtml(view, "holder", "持卡人姓名",
                     R"(maxlength="30" autocomplete="name" placeholder="与银行卡上的姓名一致")",
                     view.typedIn("holder"))
        + bankChoice(view)
        + fieldHtml(view, "number", "银行卡号",
                    R"(maxlength="30" inputmode="numeric" autocomplete="off" )"
                    R"(placeholder="16至19位数字")",
                    "")
        + R"(<button name="step" value="prepare">获取短信验证码</button>
<p class="hint">提交即表示您同意<a href="agreement.html">《用户服务协议》</a>和<a href="risk.html">《风险揭示书》</a>。卡号只用于核对，本平台不保存完整卡号。</p>
)";
}

std::string CardPage::prepared(const LinkView &view) const
{
    const BankCard card = view.link.card.value_or(BankCard());
    return rowHtml("持卡人", card.holder) + rowHtml("银行卡", cardText(card));
}

void CardPage::prepare(AccountDesk &desk, const HttpParameters &typed, Secret link,
                       const std::string &peer, AccountDesk::Answered done) const
{
    const auto field = [&typed](std::string_view name) {
        const std::string *text = typed.find(name);
        return text ? std::string_view(*text) : std::string_view();
    };
    desk.prepareCard({std::move(link), std::string(field("bank")), trimmed(field("holder")),
                      Secret(field("number")), peer},
                     std::move(done));
}

void CardPage::carryOut(const LinkState &link, std::function<void(LinkOutcome)> done) const
{
    // The confirmation itself has bound the card.
    done({true, 200, "绑定成功",
          "您的账户已绑定" + cardText(link.card.value_or(BankCard()))
              + "。请回到客户端，开户窗口会自动关闭。"});
}

} // namespace zvx
