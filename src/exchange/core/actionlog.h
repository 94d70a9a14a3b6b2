#pragma once

#include "exchange/core/command.h"
#include "exchange/core/flatmap.h"

#include <vector>

namespace zvx::core {

/** What was answered under each action key, in order of answering. */
class ActionLog
{
public:
    struct Entry {
        ActionKey key;
        std::uint64_t fingerprint = 0;
        Sequence session;
        OrderNumber order;
        std::int64_t revoked = 0;
        std::uint32_t account = kNone;
        Status status = Status::Accepted;
    };

    explicit ActionLog(std::uint64_t salt = 0) : m_salt(salt) { }

    const Entry *find(std::uint32_t account, ActionKey key) const;
    /** The key is not there yet. */
    void add(const Entry &entry);
    /** Forgets what was answered before `session`. */
    void dropBefore(Sequence session);

    const std::vector<Entry> &entries() const { return m_entries; }

private:
    /** Half of the hash stands beside the index, so that a search looks at an entry only when it
     * has nearly certainly found it. */
    struct Slot {
        std::uint32_t index = kNone;
        std::uint32_t tag = 0;
    };

    std::uint64_t hashOf(std::uint32_t account, ActionKey key) const;
    void link(std::uint32_t index);
    void rebuild(std::size_t slots);

    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots; ///< at most half of them taken
    std::uint64_t m_salt;
};

} // namespace zvx::core
