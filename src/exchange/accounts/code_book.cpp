#include "exchange/accounts/code_book.h"

#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/digest.h"
#include "exchange/accounts/random_source.h"

namespace zvx {
namespace {

constexpr std::size_t kHashBytes = 32;
constexpr std::size_t kDecoyBytes = 32;
constexpr std::string_view kPairContext = "pair of a code"; ///< no hash of a code begins so

} // namespace

CodeBook::CodeBook(AccountFile &file, RandomSource &random, std::string secret,
                   const AccountLimits &limits)
    : m_file(file), m_random(random), m_secret(std::move(secret)), m_limits(limits)
{
}

CodeBook::Refusal CodeBook::mayIssue(const CodeOwner &owner, TimeMs now)
{
    if (const auto last = m_file.code(owner.purpose, owner.phone)) {
        const std::int64_t age = now.value() - last->issued.value();
        // An age below zero means that the clock was set back; nobody is made to wait for that.
        if (age >= 0 && age < m_limits.codePause)
            return {AccountStatus::CodePause, (m_limits.codePause - age + 999) / 1000};
    }
    if (m_file.codesSent(owner.phone, exchangeDay(now)) >= m_limits.codesOfDay)
        return {AccountStatus::CodeLimit, 0};
    return {};
}

Secret CodeBook::issue(const CodeOwner &owner, bool decoy, TimeMs now)
{
    std::string digits;
    for (std::size_t i = codeDigits(owner.purpose); i > 0; --i)
        digits.push_back(static_cast<char>('0' + uniform(m_random, 10)));
    std::string nobodys(kDecoyBytes, '\0');
    m_random.fill(nobodys.data(), nobodys.size());

    StoredCode code;
    code.hash = hash(owner, now, decoy ? nobodys : digits);
    code.issued = now;
    m_file.putCode(owner.purpose, owner.phone, code);
    m_file.countCodeSent(owner.phone, exchangeDay(now));

    Secret text(decoy ? std::string_view() : std::string_view(digits));
    wipe(digits.data(), digits.size());
    wipe(nobodys.data(), nobodys.size());
    return text;
}

CodeBook::Checked CodeBook::check(const CodeOwner &owner, std::string_view code,
                                  std::string_view peer, TimeMs now)
{
    const std::int64_t day = exchangeDay(now);
    if (m_file.guesses(owner.phone, day) >= m_limits.guessesOfPhone
        || m_file.guesses(owner.phone, day, peer) >= m_limits.guessesOfPeer)
        return {AccountStatus::GuessLimit};
    auto newest = m_file.code(owner.purpose, owner.phone);
    if (!newest)
        return {AccountStatus::CodeMissing};
    // Before anything else: whether an old code was ever used is nobody's business, since it would
    // tell that the phone has an account.
    const std::int64_t age = now.value() - newest->issued.value();
    if (age < 0 || age >= m_limits.codeLife)
        return {AccountStatus::CodeExpired};
    if (newest->guesses >= m_limits.guessesOfCode)
        return {AccountStatus::CodeSpent};
    if (!sameBytes(newest->hash, hash(owner, newest->issued, code))) {
        ++newest->guesses;
        m_file.putCode(owner.purpose, owner.phone, *newest);
        m_file.countGuess(owner.phone, day, peer);
        return {AccountStatus::CodeWrong};
    }
    return {newest->used ? AccountStatus::CodeUsed : AccountStatus::Done, newest->issued};
}

std::optional<TimeMs> CodeBook::issued(const CodeOwner &owner)
{
    const auto newest = m_file.code(owner.purpose, owner.phone);
    return newest ? std::optional(newest->issued) : std::nullopt;
}

bool CodeBook::use(const CodeOwner &owner, TimeMs issued)
{
    auto newest = m_file.code(owner.purpose, owner.phone);
    // A code that was sent meanwhile is another one.
    if (!newest || newest->issued != issued)
        return true;
    if (newest->used)
        return false;
    newest->used = true;
    m_file.putCode(owner.purpose, owner.phone, *newest);
    return true;
}

std::string CodeBook::hash(const CodeOwner &owner, TimeMs issued, std::string_view code) const
{
    Digest digest(kHashBytes, m_secret);
    digest << static_cast<std::int64_t>(owner.purpose) << owner.phone << issued.value() << code;
    if (!owner.bound.empty())
        digest << owner.bound;
    return digest.finish();
}

CodePair CodeBook::pair(AccountId account, std::string_view market, ActionKey key) const
{
    Digest digest(kHashBytes, m_secret);
    digest << kPairContext << account.value() << market << static_cast<std::int64_t>(key.high)
           << static_cast<std::int64_t>(key.low);
    std::string text;
    for (const char byte : digest.finish()) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto bits = static_cast<unsigned char>(byte);
        text.push_back(digits[bits >> 4]);
        text.push_back(digits[bits & 15]);
    }
    return {text.substr(0, kHashBytes), text.substr(kHashBytes)};
}

} // namespace zvx
