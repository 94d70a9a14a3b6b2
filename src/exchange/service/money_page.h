#pragma once

#include "exchange/service/link_page.h"
#include "exchange/service/money_desk.h"

#include <functional>
#include <optional>

namespace zvx {

/// Moves money between an account and its card, as MoneyDesk does.
using MoveMoney = std::function<void(const LinkState &link, MoneyDesk::Done done)>;

/// `money-in.html` and `money-out.html`: ask for an amount, show it, and move it.
class MoneyPage : public LinkPage
{
public:
    enum Direction { In, Out };

    /// `most` is the largest amount that one transfer may move.
    MoneyPage(Direction direction, Fen most, MoveMoney move);

    LinkPurpose purpose() const override;
    std::string_view file() const override;
    std::string_view title() const override;
    std::string obstacle(const LinkView &view) const override;
    std::string firstFields(const LinkView &view) const override;
    std::string prepared(const LinkView &view) const override;
    bool needsCode() const override { return m_direction == In; }
    std::string_view confirmButton() const override;
    void prepare(AccountDesk &desk, const HttpParameters &typed, Secret link,
                 const std::string &peer, AccountDesk::Answered done) const override;
    void carryOut(const LinkState &link, std::function<void(LinkOutcome)> done) const override;

private:
    std::string word() const { return m_direction == In ? "入金" : "出金"; }
    std::string way(const LinkView &view) const;

    Direction m_direction;
    Fen m_most;
    MoveMoney m_move;
};

/// Reads yuan as people type them, "1,234.5": digits, commas before groups of three of them, at
/// most two decimals. Nothing where anything else stands there or the amount has more digits than
/// money can have.
std::optional<Fen> readYuan(std::string_view text);

} // namespace zvx
