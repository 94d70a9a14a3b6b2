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
        std::uint32_t next = kNone; ///< with the same hash
        Status status = Status::Accepted;
    };

    explicit ActionLog(std::uint64_t salt = 0) : m_salt(salt) { }

    const Entry *find(std::uint32_t account, ActionKey key) const;
    void add(const Entry &entry);
    /** Forgets what was answered before `session`. */
    void dropBefore(Sequence session);

    const std::vector<Entry> &entries() const { return m_entries; }

private:
    std::size_t bucketOf(std::uint32_t account, ActionKey key) const;
    void link(std::uint32_t index);
    void rebuild(std::size_t buckets);

    std::vector<Entry> m_entries;
    std::vector<std::uint32_t> m_buckets;
    std::uint64_t m_salt;
};

} // namespace zvx::core
