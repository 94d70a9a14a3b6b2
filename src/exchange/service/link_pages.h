#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/http_message.h"
#include "exchange/service/link_page.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zvx {

class FormGuard;
class MarketServer;

/// What the pages of one platform are made with. What is referred to has to outlive them.
struct LinkTools {
    std::string platform; ///< its name
    std::array<std::unique_ptr<LinkPage>, 3> pages;
    const FormGuard &guard;
    /// The server of a prefix, or null where the catalogue has it no more.
    std::function<MarketServer *(std::string_view prefix)> market;
};

/**
 * The pages behind one-time links of one platform: `card.html`, `money-in.html` and
 * `money-out.html`, each with `?s=` and the link's token. They are for people on a telephone: no
 * script, no sign-in, nothing loaded from elsewhere.
 *
 * A page has two steps, each a form that is posted to the page's own address. What was typed comes
 * back with a sentence that says what is wrong, the card's number and codes excepted. Every answer
 * is a whole page, so a touch on "reload" repeats a step, and no step does its work twice.
 *
 * Called on the server's thread, and never keeps it waiting.
 */
class LinkPages
{
public:
    /// The desk has to outlive every request that this was handed.
    LinkPages(AccountDesk &desk, LinkTools tools);

    /// The page of that file name, or null.
    const LinkPage *find(std::string_view file) const;
    void handle(const LinkPage &page, HttpRequest request, HttpResponder responder) const;

private:
    struct Visit;
    using VisitPointer = std::shared_ptr<Visit>;
    /// What a status is about decides which of the two forms comes back.
    enum Step { First, Second };

    void receive(const VisitPointer &visit) const;
    void prepare(const VisitPointer &visit) const;
    void sendCodeAgain(const VisitPointer &visit) const;
    void confirm(const VisitPointer &visit) const;
    void carryOut(const VisitPointer &visit) const;

    /// Shows a form, with what is wrong where `fault` is not Done, or `message` above it.
    void show(const VisitPointer &visit, Step step, AccountStatus fault = AccountStatus::Done,
              std::string message = {}, int status = 0) const;
    /// Shows what a step that was not done comes to.
    void refuse(const VisitPointer &visit, Step step, const AccountAnswer &answer) const;
    void showOver(const VisitPointer &visit, LinkState::Kind kind) const;
    void showNotice(const VisitPointer &visit, int status, std::string_view title,
                    std::string_view text) const;

    std::string formHtml(const Visit &visit, Step step, const LinkView &view) const;
    std::string openForm(const Visit &visit, std::string_view step) const;
    HttpAnswer pageOf(int status, std::string_view title, std::string_view body) const;
    /// As the desk knows it; of another purpose it is Unknown here.
    LinkState linkOf(const Visit &visit) const;

    AccountDesk &m_desk;
    LinkTools m_tools;
};

} // namespace zvx
