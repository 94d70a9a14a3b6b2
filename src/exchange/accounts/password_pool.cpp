#include "exchange/accounts/password_pool.h"

#include "exchange/accounts/digest.h"

#include <sodium.h>

#include <new>
#include <sys/resource.h>
#include <utility>

namespace zvx {
namespace {

constexpr int kNiceness = 10;

} // namespace

PasswordPool::PasswordPool(std::shared_ptr<PasswordHasher> hasher, std::size_t threads,
                           std::size_t queueBound)
    : m_hasher(hasher ? std::move(hasher) : std::make_shared<ArgonHasher>()),
      m_queueBound(queueBound)
{
    startSodium();
    char nobodys[32];
    randombytes_buf(nobodys, sizeof nobodys);
    m_decoy = m_hasher->hash({nobodys, sizeof nobodys});
    wipe(nobodys, sizeof nobodys);
    for (std::size_t i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { run(); });
}

PasswordPool::~PasswordPool()
{
    stop();
}

bool PasswordPool::hash(Secret password, Hashed done)
{
    return take({std::move(password), {}, std::move(done), {}});
}

bool PasswordPool::verify(std::string stored, Secret password, Verified done)
{
    return take({std::move(password), std::move(stored), {}, std::move(done)});
}

void PasswordPool::stop()
{
    std::deque<Job> dropped;
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_stopped = true;
        dropped.swap(m_queue);
    }
    m_wake.notify_all();
    for (const Job &job : dropped)
        carryOut(job, true);
    for (std::thread &thread : m_threads)
        if (thread.joinable())
            thread.join();
}

std::size_t PasswordPool::waiting() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_queue.size();
}

bool PasswordPool::take(Job job)
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        if (m_stopped || m_queue.size() >= m_queueBound)
            return false;
        m_queue.push_back(std::move(job));
    }
    m_wake.notify_one();
    return true;
}

void PasswordPool::run()
{
    // On Linux this is the calling thread's own priority. Where it fails, hashing only competes
    // as every other thread does.
    (void)::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + kNiceness);
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopped || !m_queue.empty(); });
            if (m_queue.empty())
                return;
            job = std::move(m_queue.front());
            m_queue.pop_front();
        }
        carryOut(job, false);
    }
}

void PasswordPool::carryOut(const Job &job, bool dropped)
{
    std::optional<std::string> stored;
    std::optional<bool> right;
    if (!dropped) {
        try {
            if (job.hashed)
                stored = m_hasher->hash(job.password.text());
            else
                right = m_hasher->verify(job.stored, job.password.text());
        } catch (const std::bad_alloc &) {
            // Told by the empty answer; the next job may find memory again.
        }
    }
    if (job.hashed)
        job.hashed(stored);
    else
        job.verified(right);
}

} // namespace zvx
