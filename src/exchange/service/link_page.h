#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/http_message.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zvx {

/// What a page knows of whom it is shown to.
struct LinkView {
    const LinkState &link;
    const AccountProfile &profile;
    std::optional<BankCard> card; ///< that is bound
    std::string_view market; ///< name of the server that the link was made on
    const HttpParameters &typed; ///< the fields as they were sent; none where the page is new
    AccountStatus fault = AccountStatus::Done; ///< what is wrong with them

    /// The value of a field as it was typed, "" where it was not.
    std::string_view typedIn(std::string_view name) const;
};

/// How a confirmed link ended, in words.
struct LinkOutcome {
    bool done = true; ///< false: nothing has happened, and the link is good for another try
    int status = 200; ///< of the answer
    std::string title; ///< where it is done
    std::string text; ///< one sentence
};

/**
 * One kind of page behind one-time links. It asks for something in a first form, shows what was
 * asked for in a second one, and carries it out when that is confirmed. What all kinds have in
 * common stands in LinkPages.
 *
 * From any thread.
 */
class LinkPage
{
public:
    virtual ~LinkPage() = default;

    virtual LinkPurpose purpose() const = 0;
    virtual std::string_view file() const = 0; ///< "card.html"
    virtual std::string_view title() const = 0;

    /// Why this account can do nothing here, in one sentence; "" where it can.
    virtual std::string obstacle(const LinkView &view) const = 0;
    /// The fields of the first form and its button, as HTML.
    virtual std::string firstFields(const LinkView &view) const = 0;
    /// What was prepared, as the rows of a list in HTML.
    virtual std::string prepared(const LinkView &view) const = 0;
    virtual bool needsCode() const = 0;
    virtual std::string_view confirmButton() const = 0;

    /// Prepares what the first form asks for.
    virtual void prepare(AccountDesk &desk, const HttpParameters &typed, Secret link,
                         const std::string &peer, AccountDesk::Answered done) const = 0;
    /// Carries out what was confirmed.
    virtual void carryOut(const LinkState &link, std::function<void(LinkOutcome)> done) const = 0;
};

// What the forms are made of, as HTML.

/// A label with a field, and below it what is wrong with it, where that is about this field.
std::string fieldHtml(const LinkView &view, std::string_view name, std::string_view label,
                      std::string_view attributes, std::string_view value);
/// The sentence below a field that `fault` is about, or "".
std::string faultBelow(const LinkView &view, std::string_view field);
/// One row of a list.
std::string rowHtml(std::string_view name, std::string_view value);
/// The name of the field that a status is about, "" where it is about none.
std::string_view fieldOf(AccountStatus status);
/// "岚川银行（尾号1234）"
std::string cardText(const BankCard &card);

} // namespace zvx
