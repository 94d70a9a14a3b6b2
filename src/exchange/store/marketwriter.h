#pragma once

#include "exchange/core/market.h"
#include "exchange/store/catalogue.h"
#include "exchange/store/clock.h"
#include "exchange/store/snapshot.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace zvx {

class Projector;
class Publisher;
class Store;
struct StoredCheckpoint;

struct WriterOptions {
    std::size_t queueBound = 4096; ///< commands that may wait; more are refused
    std::size_t batchBound = 512; ///< commands in one commit, at least 1
    std::int64_t checkpointEvery = 50'000; ///< stored commands between two checkpoints
    bool openAtStart = true; ///< a closed market is opened when the writer is made
    Limits limits;
    InitialsFunction initials; ///< for names that only the store remembers
};

/// Counters since the start. Each is right by itself, they are not read as one.
struct WriterCounters {
    std::atomic<std::uint64_t> commands{0}; ///< answered
    std::atomic<std::uint64_t> refusedFull{0}; ///< turned away because the queue was full
    std::atomic<std::uint64_t> commits{0};
    std::atomic<std::uint64_t> committedCommands{0}; ///< rows in those commits
    std::atomic<std::uint64_t> checkpoints{0};
    std::atomic<std::uint64_t> publications{0};
    std::atomic<std::uint64_t> deals{0};
};

/**
 * The one thread that changes a market.
 *
 * Commands wait in a bounded queue. The writer takes what is waiting, applies it, makes all of it
 * durable with one commit, publishes what is due, and answers only then. Between commands it wakes
 * for publications that fall due. Readers take snapshots and never touch the writer's state.
 *
 * A commit that fails ends the writer at once: nothing of the batch is answered, nothing more is
 * written, and the market has to be opened again from its store.
 */
class MarketWriter
{
public:
    /// The command's effects are durable. Called on the writer's thread: be short, never throw,
    /// never wait for the writer.
    using Answered = std::function<void(const Result &)>;
    /// The writer ended first. Whether the command took effect is only known after a restart.
    using Lost = std::function<void()>;

    struct Events {
        /// After each publication but the first, which the constructor makes. On the writer's
        /// thread; what it throws ends the writer.
        std::function<void(const std::shared_ptr<const MarketSnapshot> &, const TopicSet &)>
            published;
        /// After a commit, before its answers: the accounts whose money, holdings or orders it
        /// changed, each once. On the writer's thread; what it throws ends the writer.
        std::function<void(const std::vector<AccountId> &)> accountsChanged;
        /// The writer ended by a fault, with the reason for the log. On the writer's thread.
        std::function<void(const std::string &reason)> fatal;
    };

    /**
     * Recovers the market from its store: newest usable checkpoint, later events, audit. Then lists
     * what is new in the catalogue and suspends what is missing, opens the market, and makes the
     * first snapshot. Commands wait until start().
     * Throws StoreError, CatalogueError where a listing is refused, or Damaged where the stored
     * events contradict themselves.
     */
    MarketWriter(std::unique_ptr<Store> store, const CatalogueMarket &catalogue,
                 std::shared_ptr<Clock> clock, Events events, const WriterOptions &options = {});
    /// Stops cleanly if that was not done.
    ~MarketWriter();

    MarketWriter(const MarketWriter &) = delete;
    MarketWriter &operator=(const MarketWriter &) = delete;

    /// Starts the thread; does nothing after stop().
    void start();

    /// Hands a command in, from any thread. Exactly one of the two endings is called, once, unless
    /// this returns false: then the queue is full, or the writer has ended, and neither is called.
    bool submit(Command command, Answered answered, Lost lost = {});

    /// Hands commands in and waits for all answers, in order. Not on the writer's thread. Throws
    /// StoreError when the writer ends first.
    std::vector<Result> execute(std::vector<Command> commands);

    /// Takes no more commands, carries out those that wait, writes a checkpoint and ends the
    /// thread.
    void stop();

    /// The newest publication, never null. Cheap, from any thread.
    std::shared_ptr<const MarketSnapshot> snapshot() const;

    const WriterCounters &counters() const { return m_counters; }
    /// Commands that wait.
    std::size_t waiting() const;
    /// Whether the writer ended by a fault.
    bool failed() const { return m_failed; }
    /// Whether the writer takes no more commands, after stop() or a fault.
    bool hasEnded() const;
    /// Lines for the log: what recovery did, and where the catalogue cannot be followed.
    const std::vector<std::string> &notices() const { return m_notices; }

private:
    struct Waiting {
        Command command;
        Answered answered;
        Lost lost;
    };

    void recover();
    void followCatalogue(const CatalogueMarket &catalogue);
    std::vector<CollectionInfo> collectionInfos(const CatalogueMarket &catalogue);
    void run();
    void runUntilStopped();
    std::vector<Result> carryOut(std::vector<Waiting> &batch);
    void answer(std::vector<Waiting> &batch, const std::vector<Result> &results);
    void publishDue();
    void tellChangedAccounts();
    void fail(const std::string &reason, std::vector<Waiting> &batch);
    StoredCheckpoint makeCheckpoint();

    std::unique_ptr<Store> m_store;
    std::shared_ptr<Clock> m_clock;
    Events m_events;
    WriterOptions m_options;
    std::vector<std::string> m_notices;

    // Touched by the writer's thread only, once it runs.
    std::unique_ptr<Market> m_market;
    std::unique_ptr<Projector> m_projector;
    std::unique_ptr<Publisher> m_publisher;
    std::int64_t m_lastCommand = 0;
    std::int64_t m_lastCheckpoint = 0;
    std::vector<Event> m_happened; ///< events of one command
    std::vector<CollectionId> m_dirty;
    std::vector<AccountId> m_dirtyAccounts;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Waiting> m_queue;
    bool m_accepting = true;

    mutable std::mutex m_snapshotMutex;
    std::shared_ptr<const MarketSnapshot> m_snapshot;

    WriterCounters m_counters;
    std::atomic<bool> m_failed{false};
    std::thread m_thread;
};

} // namespace zvx
