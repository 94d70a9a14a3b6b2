#pragma once

#include "exchange/accounts/account_file.h"
#include "exchange/accounts/answer_memory.h"
#include "exchange/accounts/throttle.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zvx {

/**
 * Which keys were seen, who waits for them, and what was answered.
 *
 * An action begins, may go away for its password to be hashed, and finishes; who comes with the
 * same key meanwhile waits, and who comes later gets the first answer again. Answers leave only
 * when the caller takes the replies, after the commit.
 *
 * Works within AccountFile::change().
 */
class ActionBook
{
public:
    using Answered = AccountDesk::Answered;
    /// Tells an answer; with `true`, tells Failed instead.
    using Reply = std::function<void(bool failed)>;

    /// Where an answer is kept for the next time its key comes.
    enum class Keep : std::uint8_t {
        Nowhere, ///< the key is not used up
        Memory, ///< nothing happened that would outlive the service
        Disk,
    };

    ActionBook(AccountFile &file, Clock &clock, const AccountLimits &limits,
               AccountCounters &counters);

    /// Whether the action is to be carried out now. Where not, its key was seen; `done` is answered
    /// or waits. `content` is a fingerprint, never empty. Leaves `done` empty.
    bool begin(const KeyName &name, AccountAction action, std::string content, Answered &done);
    /// Ends an action that began.
    void finish(const KeyName &name, AccountAnswer answer, Keep keep);
    void finish(const KeyName &name, AccountStatus status, Keep keep);

    /// Answers what was answered under a key, or burns it. Leaves `done` empty.
    void resolve(const KeyName &name, AccountAction action, Answered &done);

    /// An answer that belongs to no key.
    void add(Reply reply);
    /// The answer to an action without a key. Leaves `done` empty.
    void answer(AccountAnswer answer, Answered &done);

    std::vector<Reply> takeReplies() { return std::exchange(m_replies, {}); }
    /// Tells Failed to all whose answers were not taken, and to all who wait.
    void fail();
    /// Whether an action began and did not finish.
    bool anyUnderWay() const { return !m_underWay.empty(); }
    void forgetOld();

private:
    struct UnderWay {
        AccountAction action = AccountAction::SignIn;
        std::string content;
        std::vector<Answered> waiting; ///< the first one and its repetitions
    };
    struct KeyOrder {
        bool operator()(const KeyName &a, const KeyName &b) const;
    };

    /// Whether the key was used before; then `done` is answered or waits. Without `content` any
    /// content of the action will do.
    bool seen(const KeyName &name, AccountAction action, const std::string *content,
              Answered &done);
    std::optional<KnownAnswer> recall(const KeyName &name);
    void reply(std::shared_ptr<const AccountAnswer> answer, Answered done);
    void reply(AccountStatus status, Answered &done);
    void count(AccountStatus status);

    AccountFile &m_file;
    Clock &m_clock;
    const AccountLimits &m_limits;
    AccountCounters &m_counters;
    std::map<KeyName, UnderWay, KeyOrder> m_underWay;
    AnswerMemory m_successes; ///< sign-ins, whose tokens are nowhere else
    AnswerMemory m_refusals;
    Throttle m_burnt; ///< by strangers, all together
    std::vector<Reply> m_replies;
};

} // namespace zvx
