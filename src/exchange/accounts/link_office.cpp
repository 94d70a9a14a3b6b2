#include "exchange/accounts/link_office.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/card_rules.h"
#include "exchange/accounts/digest.h"
#include "exchange/accounts/link_book.h"
#include "exchange/accounts/random_source.h"
#include "exchange/store/clock.h"

namespace zvx {
namespace {

/// 24 characters: with an address in front of them they still make a coarse QR code, which cheap
/// telephones read from a screen.
constexpr std::size_t kTokenBytes = 18;
constexpr std::size_t kFingerprintBytes = 16;
constexpr std::size_t kTail = 4;

AccountAnswer answerOf(AccountStatus status)
{
    AccountAnswer answer;
    answer.status = status;
    return answer;
}

bool sameCard(const std::optional<BankCard> &known, const BankCard &card)
{
    return known && known->bank == card.bank && known->holder == card.holder
        && known->fingerprint == card.fingerprint;
}

/// What the text message says of a code's use, so that nobody confirms what somebody else prepared.
std::string useOf(const StoredLink &link)
{
    return link.card ? "绑定尾号" + link.card->tail + "的银行卡"
                     : "转入资金" + yuanText(link.amount) + "元";
}

} // namespace

LinkOffice::LinkOffice(Tools tools, std::string secret, const AccountLimits &limits)
    : m_file(tools.file), m_clock(tools.clock), m_random(tools.random), m_codes(tools.codes),
      m_sendCode(std::move(tools.sendCode)), m_secret(std::move(secret)), m_limits(limits),
      m_linksOfAccount(limits.linksOfAccount, limits.linkOfAccountEvery, limits.throttleBound)
{
}

LinkOffice::Found LinkOffice::find(const Secret &token)
{
    auto link = m_file.link(LinkBook::hashOf(token.text()));
    if (!link)
        return {};
    switch (LinkBook::kindOf(*link, m_limits.linkLife, m_clock.wall())) {
    case LinkState::Live:
        return {AccountStatus::Done, std::move(*link)};
    case LinkState::Used:
        return {AccountStatus::LinkUsed, {}};
    case LinkState::Expired:
        return {AccountStatus::LinkExpired, {}};
    case LinkState::Unknown:
        break;
    }
    return {};
}

void LinkOffice::put(StoredLink link)
{
    m_file.putLink(link);
    m_changes.links.push_back(std::move(link));
}

AccountAnswer LinkOffice::carryOut(const LinkRequest &request)
{
    if (!m_file.account(request.account))
        return answerOf(AccountStatus::AccountUnknown);
    if (request.purpose == LinkPurpose::OpenAccount && m_file.card(request.account))
        return answerOf(AccountStatus::CardBound);
    const std::string name = std::to_string(request.account.value());
    const SteadyMs now = m_clock.steady();
    AccountAnswer answer;
    answer.wait = (m_linksOfAccount.wait(name, now) + 999) / 1000;
    if (answer.wait > 0) {
        answer.status = AccountStatus::TooOften;
        return answer;
    }
    if (!m_linksOfAccount.room(name, now))
        return answerOf(AccountStatus::Busy);
    m_linksOfAccount.take(name, now);

    answer.token = randomToken(m_random, kTokenBytes);
    StoredLink link;
    link.token = LinkBook::hashOf(answer.token.text());
    link.purpose = request.purpose;
    link.account = request.account;
    link.market = request.market;
    link.issued = m_clock.wall();
    put(std::move(link));
    return answer;
}

AccountAnswer LinkOffice::carryOut(const CardRequest &request)
{
    auto [status, link] = find(request.link);
    if (status == AccountStatus::Done && link.purpose != LinkPurpose::OpenAccount)
        status = AccountStatus::LinkUnknown;
    if (status == AccountStatus::Done && m_file.card(link.account))
        status = AccountStatus::CardBound;
    if (status != AccountStatus::Done)
        return answerOf(status);

    const Secret digits = cardDigits(request.number.text());
    Digest fingerprint(kFingerprintBytes, m_secret);
    fingerprint << "card" << digits.text();
    BankCard card;
    card.bank = request.bank;
    card.holder = request.holder;
    card.tail = digits.text().substr(digits.text().size() - kTail);
    card.fingerprint = hexText(fingerprint.finish());
    const bool repeated = link.codeIssued != TimeMs() && sameCard(link.card, card);
    link.card = std::move(card);
    return sendCode(std::move(link), request.peer, repeated);
}

AccountAnswer LinkOffice::carryOut(const AmountRequest &request)
{
    auto [status, link] = find(request.link);
    if (status == AccountStatus::Done && link.purpose == LinkPurpose::OpenAccount)
        status = AccountStatus::LinkUnknown;
    if (status != AccountStatus::Done)
        return answerOf(status);
    const bool repeated = link.codeIssued != TimeMs() && link.amount == request.amount;
    link.amount = request.amount;
    if (link.purpose == LinkPurpose::MoneyIn)
        return sendCode(std::move(link), request.peer, repeated);
    put(std::move(link));
    return {};
}

AccountAnswer LinkOffice::carryOut(const LinkCodeRequest &request)
{
    auto [status, link] = find(request.link);
    if (status == AccountStatus::Done && link.codeIssued == TimeMs())
        status = AccountStatus::CodeMissing;
    if (status != AccountStatus::Done)
        return answerOf(status);
    return sendCode(std::move(link), request.peer, false);
}

AccountAnswer LinkOffice::sendCode(StoredLink link, const std::string &peer, bool repeated)
{
    const auto account = m_file.account(link.account);
    if (!account)
        return answerOf(AccountStatus::AccountUnknown);
    AccountAnswer sent
        = m_sendCode({CodePurpose::Link, account->phone}, peerGroup(peer), useOf(link));
    if (repeated && sent.status == AccountStatus::CodePause)
        return {};
    if (sent.status != AccountStatus::Done)
        return sent;
    link.codeIssued = m_codes.issued({CodePurpose::Link, account->phone}).value();
    put(std::move(link));
    return {};
}

AccountAnswer LinkOffice::carryOut(const LinkConfirmation &request)
{
    auto [status, link] = find(request.link);
    if (status != AccountStatus::Done)
        return answerOf(status);
    if (link.purpose == LinkPurpose::MoneyOut)
        status = link.amount == Fen() ? AccountStatus::BadAmount : AccountStatus::Done;
    else
        status = checkCode(link, request);
    if (status == AccountStatus::Done && link.purpose == LinkPurpose::OpenAccount)
        status = bind(link);
    if (status != AccountStatus::Done)
        return answerOf(status);
    link.used = true;
    put(std::move(link));
    return {};
}

AccountStatus LinkOffice::checkCode(const StoredLink &link, const LinkConfirmation &request)
{
    if (link.codeIssued == TimeMs())
        return AccountStatus::CodeMissing;
    if (!isCode(CodePurpose::Link, request.code.text()))
        return AccountStatus::BadCode;
    const auto account = m_file.account(link.account);
    if (!account)
        return AccountStatus::AccountUnknown;
    const CodeOwner owner{CodePurpose::Link, account->phone};
    // The newest code was sent for another link, and nobody guesses at it here.
    if (m_codes.issued(owner) != link.codeIssued)
        return AccountStatus::CodeExpired;
    const CodeBook::Checked checked
        = m_codes.check(owner, request.code.text(), peerGroup(request.peer), m_clock.wall());
    if (checked.status == AccountStatus::Done)
        m_codes.use(owner, checked.issued);
    return checked.status;
}

AccountStatus LinkOffice::bind(const StoredLink &link)
{
    const BankCard &card = link.card.value();
    if (m_file.card(link.account))
        return AccountStatus::CardBound;
    // Told to those only who hold the code: others must not try numbers here.
    if (m_file.cardOwner(card.fingerprint))
        return AccountStatus::CardTaken;
    const StoredAccount account = m_file.account(link.account).value();
    const StoredCard bound{account.id, card, m_clock.wall()};
    m_file.putCard(bound);
    m_changes.cards.push_back(bound);
    if (account.name == maskedPhone(account.phone))
        m_file.setName(account.id, card.holder);
    closeCardLinks(account.id);
    return AccountStatus::Done;
}

void LinkOffice::closeCardLinks(AccountId account)
{
    for (StoredLink &other : m_file.unusedLinks(account, LinkPurpose::OpenAccount)) {
        other.used = true;
        put(std::move(other));
    }
}

AccountAnswer LinkOffice::carryOut(const LinkReturn &request)
{
    auto link = m_file.link(LinkBook::hashOf(request.link.text()));
    if (!link || !link->used || link->purpose == LinkPurpose::OpenAccount
        || LinkBook::keyOf(*link) != request.key)
        return answerOf(AccountStatus::LinkUnknown);
    link->used = false;
    ++link->round;
    link->amount = Fen();
    link->codeIssued = TimeMs();
    put(std::move(*link));
    return {};
}

void LinkOffice::tidy()
{
    const TimeMs before(m_clock.wall().value() - m_limits.linkLife - AccountLimits::kDay);
    std::vector<std::string> forgotten = m_file.forgetLinks(before);
    m_changes.forgotten.insert(m_changes.forgotten.end(),
                               std::make_move_iterator(forgotten.begin()),
                               std::make_move_iterator(forgotten.end()));
}

} // namespace zvx
