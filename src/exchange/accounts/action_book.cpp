#include "exchange/accounts/action_book.h"

#include "exchange/store/clock.h"

#include <tuple>

namespace zvx {
namespace {

std::shared_ptr<const AccountAnswer> answerOf(AccountStatus status)
{
    AccountAnswer answer;
    answer.status = status;
    return std::make_shared<const AccountAnswer>(std::move(answer));
}

} // namespace

ActionBook::ActionBook(AccountFile &file, Clock &clock, const AccountLimits &limits,
                       AccountCounters &counters)
    : m_file(file), m_clock(clock), m_limits(limits), m_counters(counters),
      m_successes(limits.signInKeyLife, limits.keysInMemory),
      m_refusals(limits.keyLife, limits.keysInMemory),
      m_burnt(limits.burntAtOnce, limits.burntEvery, 1)
{
}

bool ActionBook::KeyOrder::operator()(const KeyName &a, const KeyName &b) const
{
    return std::make_tuple(a.account.value(), a.key.high, a.key.low)
        < std::make_tuple(b.account.value(), b.key.high, b.key.low);
}

bool ActionBook::seen(const KeyName &name, AccountAction action, const std::string *content,
                      Answered &done)
{
    const auto first = m_underWay.find(name);
    if (first != m_underWay.end()) {
        UnderWay &other = first->second;
        if (other.action != action || (content && other.content != *content))
            reply(AccountStatus::KeyDiffers, done);
        else if (other.waiting.size() > m_limits.waitersOfKey)
            reply(AccountStatus::Busy, done);
        else
            other.waiting.push_back(std::exchange(done, {}));
        return true;
    }
    const auto known = recall(name);
    if (!known)
        return false;
    const bool burnt = known->fingerprint.empty();
    if (known->action != action || (content && !burnt && known->fingerprint != *content))
        reply(AccountStatus::KeyDiffers, done);
    else
        reply(known->answer, std::exchange(done, {}));
    return true;
}

bool ActionBook::begin(const KeyName &name, AccountAction action, std::string content,
                       Answered &done)
{
    if (seen(name, action, &content, done))
        return false;
    UnderWay &own = m_underWay[name];
    own.action = action;
    own.content = std::move(content);
    own.waiting.push_back(std::exchange(done, {}));
    return true;
}

void ActionBook::finish(const KeyName &name, AccountAnswer answer, Keep keep)
{
    const auto found = m_underWay.find(name);
    UnderWay ended = std::move(found->second);
    m_underWay.erase(found);
    count(answer.status);

    const auto shared = std::make_shared<const AccountAnswer>(std::move(answer));
    if (keep == Keep::Disk)
        m_file.putAnswer(name, {ended.action, ended.content, shared->status}, m_clock.wall());
    if (keep == Keep::Memory) {
        AnswerMemory &memory = shared->status == AccountStatus::Done ? m_successes : m_refusals;
        memory.put(name, {ended.action, ended.content, shared}, m_clock.steady());
    }
    for (Answered &done : ended.waiting)
        reply(shared, std::move(done));
}

void ActionBook::finish(const KeyName &name, AccountStatus status, Keep keep)
{
    AccountAnswer answer;
    answer.status = status;
    finish(name, std::move(answer), keep);
}

std::optional<KnownAnswer> ActionBook::recall(const KeyName &name)
{
    const SteadyMs now = m_clock.steady();
    for (AnswerMemory *memory : {&m_successes, &m_refusals})
        if (const KnownAnswer *known = memory->find(name, now))
            return *known;
    if (const auto stored = m_file.answer(name))
        return KnownAnswer{stored->action, stored->fingerprint, answerOf(stored->status)};
    return std::nullopt;
}

void ActionBook::reply(std::shared_ptr<const AccountAnswer> answer, Answered done)
{
    ++m_counters.requests;
    if (!done)
        return;
    m_replies.push_back([answer = std::move(answer), done = std::move(done)](bool failed) {
        done(failed ? *answerOf(AccountStatus::Failed) : *answer);
    });
}

void ActionBook::reply(AccountStatus status, Answered &done)
{
    reply(answerOf(status), std::exchange(done, {}));
}

void ActionBook::fail()
{
    const auto failed = answerOf(AccountStatus::Failed);
    for (Reply &tell : takeReplies())
        tell(true);
    for (auto &[name, action] : std::exchange(m_underWay, {}))
        for (Answered &done : action.waiting)
            if (done)
                done(*failed);
}

void ActionBook::resolve(const KeyName &name, AccountAction action, Answered &done)
{
    if (seen(name, action, nullptr, done))
        return;
    // Whoever has no account could otherwise fill the file with keys that nobody made.
    if (name.account == AccountId()) {
        const SteadyMs now = m_clock.steady();
        if (m_burnt.wait({}, now) > 0)
            return reply(AccountStatus::Busy, done);
        m_burnt.take({}, now);
    }
    m_file.putAnswer(name, {action, {}, AccountStatus::KeyUnknown}, m_clock.wall());
    reply(AccountStatus::KeyUnknown, done);
}

void ActionBook::add(Reply reply)
{
    ++m_counters.requests;
    m_replies.push_back(std::move(reply));
}

void ActionBook::answer(AccountAnswer answer, Answered &done)
{
    count(answer.status);
    reply(std::make_shared<const AccountAnswer>(std::move(answer)), std::exchange(done, {}));
}

void ActionBook::forgetOld()
{
    const TimeMs now = m_clock.wall();
    m_file.forgetAnswers(TimeMs(now.value() - m_limits.keyLife), m_limits.keyBound);
    m_successes.forgetOld(m_clock.steady());
    m_refusals.forgetOld(m_clock.steady());
}

void ActionBook::count(AccountStatus status)
{
    switch (status) {
    case AccountStatus::WrongPassword:
        ++m_counters.wrongPasswords;
        break;
    case AccountStatus::CodeWrong:
        ++m_counters.wrongCodes;
        break;
    case AccountStatus::TooOften:
    case AccountStatus::CodePause:
    case AccountStatus::CodeLimit:
    case AccountStatus::CodeSpent:
    case AccountStatus::GuessLimit:
        ++m_counters.refusedByLimit;
        break;
    case AccountStatus::Busy:
        ++m_counters.turnedAway;
        break;
    default:
        break;
    }
}

} // namespace zvx
