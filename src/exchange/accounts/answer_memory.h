#pragma once

#include "exchange/accounts/account_file.h"
#include "exchange/store/clock.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

namespace zvx {

/// The answer of a key, with what the key stood for.
struct KnownAnswer {
    AccountAction action = AccountAction::SignIn;
    std::string fingerprint; ///< of the content; "" for a burnt key
    std::shared_ptr<const AccountAnswer> answer;
};

/// Answers that are not on the disk, each for so many milliseconds and the last so many of them;
/// the tokens among them are wiped with them. One thread at a time.
class AnswerMemory
{
public:
    AnswerMemory(std::int64_t life, std::size_t bound) : m_life(life), m_bound(bound) { }

    void put(const KeyName &name, KnownAnswer answer, SteadyMs now);
    /// Null where the key is not known, or not any more.
    const KnownAnswer *find(const KeyName &name, SteadyMs now);
    void forgetOld(SteadyMs now);

private:
    struct Hash {
        std::size_t operator()(const KeyName &name) const
        {
            return static_cast<std::size_t>(name.key.low ^ name.key.high);
        }
    };
    struct Age {
        KeyName name;
        SteadyMs until;
    };

    std::int64_t m_life;
    std::size_t m_bound;
    std::unordered_map<KeyName, KnownAnswer, Hash> m_answers;
    std::deque<Age> m_ages; ///< oldest first
};

} // namespace zvx
