#pragma once

#include "exchange/accounts/password_hasher.h"
#include "exchange/accounts/secret.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace zvx {

/**
 * The threads that hash passwords: few, of low priority, behind a bounded queue, so that a flood of
 * sign-ins takes nothing from trading.
 *
 * Each job that was taken ends by one call of its `done` on a thread of the pool, with nothing
 * where the machine had no memory for it or the pool was stopped before its turn.
 */
class PasswordPool
{
public:
    using Hashed = std::function<void(const std::optional<std::string> &stored)>;
    using Verified = std::function<void(std::optional<bool> right)>;

    static constexpr std::size_t kThreads = 2;
    static constexpr std::size_t kQueueBound = 64;

    /// `hasher` is Argon2id at its interactive cost where it is null. Hashes once to make decoy(),
    /// and throws std::bad_alloc where that cannot be done.
    explicit PasswordPool(std::shared_ptr<PasswordHasher> hasher = {},
                          std::size_t threads = kThreads, std::size_t queueBound = kQueueBound);
    ~PasswordPool();

    PasswordPool(const PasswordPool &) = delete;
    PasswordPool &operator=(const PasswordPool &) = delete;

    /// False where the queue is full or the pool was stopped; `done` is not called then.
    bool hash(Secret password, Hashed done);
    bool verify(std::string stored, Secret password, Verified done);

    /// What to verify against where a phone has no account: made of a password that nobody knows,
    /// at the cost of every other.
    const std::string &decoy() const { return m_decoy; }

    /// Hashes on the caller's thread, for the making of a file.
    std::string hashNow(std::string_view password) { return m_hasher->hash(password); }

    /// Ends the threads after the jobs that they have in hand. Idempotent.
    void stop();

    /// Jobs that wait for a thread.
    std::size_t waiting() const;

private:
    struct Job {
        Secret password;
        std::string stored;
        Hashed hashed;
        Verified verified; ///< one of the two
    };

    bool take(Job job);
    void run();
    void carryOut(const Job &job, bool dropped);

    std::shared_ptr<PasswordHasher> m_hasher;
    std::string m_decoy;
    std::size_t m_queueBound;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_queue;
    bool m_stopped = false;
    std::vector<std::thread> m_threads;
};

} // namespace zvx
