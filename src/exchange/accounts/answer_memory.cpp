#include "exchange/accounts/answer_memory.h"

namespace zvx {

void AnswerMemory::put(const KeyName &name, KnownAnswer answer, SteadyMs now)
{
    if (!m_answers.emplace(name, std::move(answer)).second)
        return;
    m_ages.push_back({name, now + m_life});
    while (m_ages.size() > m_bound) {
        m_answers.erase(m_ages.front().name);
        m_ages.pop_front();
    }
}

const KnownAnswer *AnswerMemory::find(const KeyName &name, SteadyMs now)
{
    forgetOld(now);
    const auto found = m_answers.find(name);
    return found == m_answers.end() ? nullptr : &found->second;
}

void AnswerMemory::forgetOld(SteadyMs now)
{
    while (!m_ages.empty() && m_ages.front().until <= now) {
        m_answers.erase(m_ages.front().name);
        m_ages.pop_front();
    }
}

} // namespace zvx
