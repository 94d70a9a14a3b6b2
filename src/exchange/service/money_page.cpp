#include "exchange/service/money_page.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/service/html_text.h"

#include <algorithm>

namespace zvx {

namespace {

constexpr std::size_t mostDigits = 12;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

std::optional<Fen> readYuan(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    const std::size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    const std::string_view rest
        = point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
    const bool grouped = whole.find(',') != std::string_view::npos;
    // Groups of four, commas included, fill a text that lacks its first, shorter group.
    if (whole.empty() || (grouped && whole.size() % 4 == 0) || rest.size() > 2
        || (point != std::string_view::npos && rest.empty())
        || !std::all_of(rest.begin(), rest.end(), isDigit))
        return std::nullopt;

    std::int64_t yuan = 0;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const bool commaDue = grouped && i > 0 && (whole.size() - i) % 4 == 0;
        if (commaDue ? whole[i] != ',' : !isDigit(whole[i]) || ++digits > mostDigits)
            return std::nullopt;
        if (!commaDue)
            yuan = yuan * 10 + (whole[i] - '0');
    }
    std::int64_t fen = 0;
    for (std::size_t i = 0; i < 2; ++i)
        fen = fen * 10 + (i < rest.size() ? rest[i] - '0' : 0);
    return Fen(yuan * 100 + fen);
}

MoneyPage::MoneyPage(Direction direction, Fen most, MoveMoney move)
    : m_direction(direction), m_most(most), m_move(std::move(move))
{
}

LinkPurpose MoneyPage::purpose() const
{
    return m_direction == In ? LinkPurpose::MoneyIn : LinkPurpose::MoneyOut;
}

std::string_view MoneyPage::file() const
{
    return m_direction == In ? "money-in.html" : "money-out.html";
}

std::string_view MoneyPage::title() const
{
    return m_direction == In ? "入金" : "出金";
}

std::string_view MoneyPage::confirmButton() const
{
    return m_direction == In ? "确认入金" : "确认出金";
}

std::string MoneyPage::obstacle(const LinkView &view) const
{
    return view.card ? "" : "您的账户尚未绑定银行卡，请先在客户端完成开户绑卡。";
}

/// From where to where.
std::string MoneyPage::way(const LinkView &view) const
{
    const std::string card = view.card ? cardText(*view.card) : std::string();
    const std::string account = view.profile.number + "（" + std::string(view.market) + "）";
    return rowHtml("转出", m_direction == In ? card : account)
        + rowHtml("转入", m_direction == In ? account : card);
}

std::string MoneyPage::firstFields(const LinkView &view) const
{
    std::string html = "<dl>\n" + way(view) + "</dl>\n";
    html += fieldHtml(view, "amount", word() + "金额（元）",
                      R"(maxlength="20" inputmode="decimal" autocomplete="off")",
                      view.typedIn("amount"));
    html += filledHtml("<p class=\"hint\">最少0.01元，单笔最多{most}元。</p>\n",
                       {{"most", yuanText(m_most)}});
    html += filledHtml("<button name=\"step\" value=\"prepare\">{text}</button>\n",
                       {{"text", m_direction == In ? "获取短信验证码" : "下一步"}});
    return html;
}

std::string MoneyPage::prepared(const LinkView &view) const
{
    return way(view) + rowHtml("金额", yuanText(view.link.amount) + "元");
}

void MoneyPage::prepare(AccountDesk &desk, const HttpParameters &typed, Secret link,
                        const std::string &peer, AccountDesk::Answered done) const
{
    const std::string *text = typed.find("amount");
    const auto amount = text ? readYuan(*text) : std::nullopt;
    // An amount beyond the bound is refused like one that is none: before anything is sent.
    const bool good = amount && *amount <= m_most;
    desk.prepareAmount({std::move(link), good ? *amount : Fen(), peer}, std::move(done));
}

void MoneyPage::carryOut(const LinkState &link, std::function<void(LinkOutcome)> done) const
{
    const std::string amount = yuanText(link.amount) + "元";
    m_move(link, [this, amount, done = std::move(done)](const MoneyDesk::Outcome &outcome) {
        switch (outcome.status) {
        case MoneyDesk::Status::Accepted:
            done({true, 200, word() + "成功",
                  m_direction == In ? amount + "已转入您的账户。请回到客户端查看。"
                                    : amount + "已转出到您的银行卡。请回到客户端查看。"});
            break;
        case MoneyDesk::Status::Pending:
            done(
                {true, 200, "银行处理中",
                 amount + word() + "已提交，银行尚未答复，请勿重复操作。结果请稍后在客户端查看。"});
            break;
        case MoneyDesk::Status::Refused:
            done({false, 400, {}, outcome.message});
            break;
        case MoneyDesk::Status::Busy:
            done({false, 503, {}, "系统繁忙，没有转账，请稍后再试。"});
            break;
        case MoneyDesk::Status::Failed:
            done({true, 500, "结果未知", "服务暂时中断，请勿重复操作。结果请稍后在客户端查看。"});
            break;
        }
    });
}

} // namespace zvx
