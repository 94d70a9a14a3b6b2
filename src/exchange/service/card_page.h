#pragma once

#include "exchange/service/link_page.h"

namespace zvx {

/// `card.html`: opens an account for trading by binding a bank card to it. Asks for the holder's
/// name, the bank and the card's number, and has the account's phone confirm it.
class CardPage : public LinkPage
{
public:
    LinkPurpose purpose() const override { return LinkPurpose::OpenAccount; }
    std::string_view file() const override { return "card.html"; }
    std::string_view title() const override { return "开户绑卡"; }
    std::string obstacle(const LinkView &view) const override;
    std::string firstFields(const LinkView &view) const override;
    std::string prepared(const LinkView &view) const override;
    bool needsCode() const override { return true; }
    std::string_view confirmButton() const override { return "确认绑定"; }
    void prepare(AccountDesk &desk, const HttpParameters &typed, Secret link,
                 const std::string &peer, AccountDesk::Answered done) const override;
    void carryOut(const LinkState &link, std::function<void(LinkOutcome)> done) const override;
};

} // namespace zvx
