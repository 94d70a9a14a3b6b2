#include "exchange/service/link_pages.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/service/action_form.h"
#include "exchange/service/form_guard.h"
#include "exchange/service/html_text.h"
#include "exchange/store/exchange.h"

#include <algorithm>
#include <utility>

namespace zvx {

namespace {

constexpr std::string_view methods = "GET, HEAD, POST";

constexpr std::string_view security = "default-src 'none'; style-src 'self'; base-uri 'none'; "
                                      "form-action 'self'; frame-ancestors 'none'";

// Values of a form's field "step".
constexpr std::string_view prepareStep = "prepare";
constexpr std::string_view confirmStep = "confirm";
constexpr std::string_view codeStep = "code";

/// The status of an answer that says that a step was not done.
int statusOf(AccountStatus status)
{
    switch (verdict(status)) {
    case AccountVerdict::Busy:
        return 503;
    case AccountVerdict::Failed:
        return 500;
    default:
        return 400;
    }
}

} // namespace

/// One request on its way through the desk.
struct LinkPages::Visit {
    const LinkPage &page;
    std::string peer;
    HttpResponder responder;
    Secret token;
    HttpParameters typed;
};

LinkPages::LinkPages(AccountDesk &desk, LinkTools tools) : m_desk(desk), m_tools(std::move(tools))
{
}

const LinkPage *LinkPages::find(std::string_view file) const
{
    const auto found = std::find_if(m_tools.pages.begin(), m_tools.pages.end(),
                                    [file](const auto &page) { return page->file() == file; });
    return found == m_tools.pages.end() ? nullptr : found->get();
}

LinkState LinkPages::linkOf(const Visit &visit) const
{
    LinkState link = m_desk.link(visit.token.text());
    if (link.purpose != visit.page.purpose() || !m_tools.market(link.market))
        link.kind = LinkState::Unknown;
    return link;
}

HttpAnswer LinkPages::pageOf(int status, std::string_view title, std::string_view body) const
{
    HttpAnswer answer = HttpAnswer::of(status, htmlPage(title, m_tools.platform, body));
    answer.contentType = "text/html; charset=utf-8";
    answer.contentSecurity = security;
    return answer;
}

void LinkPages::handle(const LinkPage &page, HttpRequest request, HttpResponder responder) const
{
    const std::string *token = request.query.find("s");
    const auto visit = std::make_shared<Visit>(
        Visit{page, request.peer, std::move(responder), Secret(token ? *token : ""), {}});
    const bool isPost = request.method == "POST";
    if (!isPost && request.method != "GET" && request.method != "HEAD") {
        HttpAnswer answer
            = pageOf(405, page.title(), "<main>\n<p>此页面不支持这种请求。</p>\n</main>\n");
        answer.allow = methods;
        visit->responder.answer(std::move(answer));
        return;
    }
    const LinkState link = linkOf(*visit);
    if (link.kind != LinkState::Live) {
        showOver(visit, link.kind);
        return;
    }
    if (!isPost) {
        show(visit, First);
        return;
    }
    auto typed = isForm(request.contentType) ? HttpParameters::parse(request.body) : std::nullopt;
    if (!typed) {
        show(visit, First, AccountStatus::Done, "提交的内容无法识别，请重新填写。", 400);
        return;
    }
    visit->typed = std::move(*typed);
    receive(visit);
}

void LinkPages::receive(const VisitPointer &visit) const
{
    const auto field = [&visit](std::string_view name) {
        const std::string *text = visit->typed.find(name);
        return text ? std::string_view(*text) : std::string_view();
    };
    const std::string_view step = field("step");
    // Forms of an earlier run of the service are not known to this one.
    if (!m_tools.guard.fits(field("form"), visit->token.text(), step))
        show(visit, First, AccountStatus::Done, "页面已失效，请重新提交。", 403);
    else if (step == prepareStep)
        prepare(visit);
    else if (step == codeStep)
        sendCodeAgain(visit);
    else
        confirm(visit);
}

void LinkPages::prepare(const VisitPointer &visit) const
{
    visit->page.prepare(m_desk, visit->typed, visit->token.copy(), visit->peer,
                        [this, visit](const AccountAnswer &answer) {
                            if (answer.status == AccountStatus::Done)
                                show(visit, Second);
                            else
                                refuse(visit, First, answer);
                        });
}

void LinkPages::sendCodeAgain(const VisitPointer &visit) const
{
    m_desk.sendLinkCode({visit->token.copy(), visit->peer},
                        [this, visit](const AccountAnswer &answer) {
                            if (answer.status == AccountStatus::Done)
                                show(visit, Second, AccountStatus::Done, "验证码已重新发送。", 200);
                            else
                                refuse(visit, Second, answer);
                        });
}

void LinkPages::confirm(const VisitPointer &visit) const
{
    const std::string *code = visit->typed.find("code");
    m_desk.confirmLink({visit->token.copy(), Secret(code ? *code : ""), visit->peer},
                       [this, visit](const AccountAnswer &answer) {
                           if (answer.status == AccountStatus::Done)
                               carryOut(visit);
                           else
                               refuse(visit, Second, answer);
                       });
}

void LinkPages::carryOut(const VisitPointer &visit) const
{
    const LinkState link = linkOf(*visit);
    visit->page.carryOut(link, [this, visit, key = link.key](const LinkOutcome &outcome) {
        if (outcome.done) {
            showNotice(visit, outcome.status, outcome.title, outcome.text);
            return;
        }
        // Nothing was moved, so the same link may be tried again.
        m_desk.giveLinkBack(
            {visit->token.copy(), key}, [this, visit, outcome](const AccountAnswer &) {
                show(visit, First, AccountStatus::Done, outcome.text, outcome.status);
            });
    });
}

void LinkPages::refuse(const VisitPointer &visit, Step step, const AccountAnswer &answer) const
{
    switch (answer.status) {
    case AccountStatus::LinkUsed:
        showOver(visit, LinkState::Used);
        return;
    case AccountStatus::LinkExpired:
        showOver(visit, LinkState::Expired);
        return;
    case AccountStatus::LinkUnknown:
        showOver(visit, LinkState::Unknown);
        return;
    case AccountStatus::CodeMissing: // nothing is prepared
    case AccountStatus::CardBound:
    case AccountStatus::CardTaken:
        step = First;
        break;
    default:
        break;
    }
    const bool aboutField = !fieldOf(answer.status).empty();
    show(visit, step, answer.status,
         aboutField ? std::string() : sentence(answer.status, answer.wait) + "。",
         statusOf(answer.status));
}

void LinkPages::show(const VisitPointer &visit, Step step, AccountStatus fault, std::string message,
                     int status) const
{
    const LinkState link = linkOf(*visit);
    if (link.kind != LinkState::Live) {
        showOver(visit, link.kind);
        return;
    }
    m_desk.profile(
        link.account,
        [this, visit, step, fault, message = std::move(message), status,
         link](const ProfileAnswer &who) {
            if (who.status != AccountStatus::Done) {
                showNotice(visit, statusOf(who.status), visit->page.title(),
                           sentence(who.status) + "。");
                return;
            }
            const LinkView view{link,
                                who.profile,
                                m_desk.cardOf(link.account),
                                m_tools.market(link.market)->name(),
                                visit->typed,
                                fault};
            std::string body = "<main>\n";
            body += filledHtml("<h1>{title}</h1>\n", {{"title", visit->page.title()}});
            body += filledHtml(
                "<p class=\"who\">账户 {number}，手机 {phone}</p>\n",
                {{"number", who.profile.number}, {"phone", maskedPhone(who.profile.phone)}});
            if (!message.empty())
                body += filledHtml("<p class=\"notice{kind}\" role=\"alert\">{text}</p>\n",
                                   {{"kind", status == 200 ? " good" : ""}, {"text", message}});
            body += formHtml(*visit, step, view);
            body += "</main>\n";
            visit->responder.answer(pageOf(status == 0 ? 200 : status, visit->page.title(), body));
        });
}

/// A form's beginning, and the field that says that it is ours.
std::string LinkPages::openForm(const Visit &visit, std::string_view step) const
{
    return filledHtml(R"(<form method="post" action="{file}?s={link}" autocomplete="off">
<input type="hidden" name="form" value="{token}">
)",
                      {{"file", visit.page.file()},
                       {"link", visit.token.text()},
                       {"token", m_tools.guard.tokenOf(visit.token.text(), step)}});
}

std::string LinkPages::formHtml(const Visit &visit, Step step, const LinkView &view) const
{
    const std::string obstacle = visit.page.obstacle(view);
    if (!obstacle.empty())
        return filledHtml("<p>{text}</p>\n", {{"text", obstacle}});
    if (step == First)
        return openForm(visit, prepareStep) + visit.page.firstFields(view) + "</form>\n";

    std::string html = "<dl>\n" + visit.page.prepared(view) + "</dl>\n";
    html += openForm(visit, confirmStep);
    if (visit.page.needsCode()) {
        html += filledHtml("<p>6位验证码已发送到手机 {phone}，5分钟内有效。</p>\n",
                           {{"phone", maskedPhone(view.profile.phone)}});
        html += fieldHtml(view, "code", "短信验证码",
                          R"(maxlength="6" inputmode="numeric" autocomplete="one-time-code")", "");
    } else {
        html += "<p>请核对以上内容，确认后立即提交银行。</p>\n";
    }
    html += filledHtml("<button name=\"step\" value=\"confirm\">{text}</button>\n</form>\n",
                       {{"text", visit.page.confirmButton()}});
    if (visit.page.needsCode()) {
        html += openForm(visit, codeStep);
        html += "<button class=\"quiet\" name=\"step\" value=\"code\">重新获取验证码</button>\n"
                "</form>\n";
    }
    html += filledHtml(R"(<p class="back"><a href="{file}?s={link}">返回修改</a></p>
)",
                       {{"file", visit.page.file()}, {"link", visit.token.text()}});
    return html;
}

void LinkPages::showOver(const VisitPointer &visit, LinkState::Kind kind) const
{
    if (kind == LinkState::Used)
        showNotice(
            visit, 410, "链接已使用",
            "此链接已经使用过，不能再次使用。刚才提交的操作只会执行一次，结果请在客户端查看。");
    else if (kind == LinkState::Expired)
        showNotice(visit, 410, "链接已过期", "此链接已过期，请回到客户端重新打开。");
    else
        showNotice(visit, 404, "链接无效", "没有这个链接，请回到客户端重新打开。");
}

void LinkPages::showNotice(const VisitPointer &visit, int status, std::string_view title,
                           std::string_view text) const
{
    visit->responder.answer(pageOf(status, title,
                                   filledHtml("<main>\n<h1>{title}</h1>\n<p>{text}</p>\n</main>\n",
                                              {{"title", title}, {"text", text}})));
}

} // namespace zvx
