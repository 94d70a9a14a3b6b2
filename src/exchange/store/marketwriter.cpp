#include "exchange/store/marketwriter.h"

#include "exchange/core/eventcodec.h"
#include "exchange/core/faults.h"
#include "exchange/store/projector.h"
#include "exchange/store/publisher.h"
#include "exchange/store/recovery.h"
#include "exchange/store/store.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>
#include <utility>

namespace zvx {
namespace {

/// What execute() and the writer's thread share.
struct Execution {
    std::mutex mutex;
    std::condition_variable done;
    std::vector<Result> results;
    std::size_t open = 0;
    bool lost = false;
};

std::string describe(CollectionId id)
{
    return "collection " + std::to_string(id.value());
}

} // namespace

MarketWriter::MarketWriter(std::unique_ptr<Store> store, const CatalogueMarket &catalogue,
                           std::shared_ptr<Clock> clock, Events events,
                           const WriterOptions &options)
    : m_store(std::move(store)), m_clock(std::move(clock)), m_events(std::move(events)),
      m_options(options)
{
    m_options.batchBound = std::max<std::size_t>(m_options.batchBound, 1);
    recover();
    followCatalogue(catalogue);

    m_market->takeDirty(m_dirty);
    m_market->takeDirtyAccounts(m_dirtyAccounts);
    const Sequence session = m_market->session();
    m_publisher = std::make_unique<Publisher>(catalogue.types, collectionInfos(catalogue),
                                              *m_market, m_projector->composite().row(),
                                              [&](CollectionId id, std::size_t limit) {
                                                  return m_store->latestDeals(id, session, limit);
                                              });
    m_snapshot = m_publisher->snapshot();
}

MarketWriter::~MarketWriter()
{
    stop();
}

void MarketWriter::recover()
{
    Recovered found = recoverMarket(*m_store, m_options.limits);
    m_market = std::make_unique<Market>(std::move(found.market));
    m_lastCommand = found.lastCommand;
    m_lastCheckpoint = found.checkpoint;
    m_notices = std::move(found.notices);
    m_notices.push_back("recovered command " + std::to_string(m_lastCommand) + ", of which "
                        + std::to_string(m_lastCommand - m_lastCheckpoint) + " by replay");

    m_projector = std::make_unique<Projector>(*m_market, m_store->composite(m_market->session()),
                                              m_store.get());
}

void MarketWriter::followCatalogue(const CatalogueMarket &catalogue)
{
    std::vector<Waiting> batch;
    std::vector<ListingRow> names;
    const auto add = [&batch](Command command) { batch.push_back({std::move(command), {}, {}}); };
    std::unordered_map<std::int64_t, const CatalogueCollection *> wanted;
    for (const CatalogueCollection &entry : catalogue.collections) {
        wanted[entry.id.value()] = &entry;
        names.push_back({entry.id, entry.code, entry.name, entry.type, entry.introduction});
        const std::optional<CollectionView> view = m_market->collection(entry.id);
        if (!view) {
            ListCollection list;
            list.collection = entry.id;
            list.previousClose = entry.previousClose;
            list.issued = entry.listed;
            list.limit = catalogue.limit;
            add(list);
        } else if (view->issued != entry.listed || view->limit != catalogue.limit) {
            m_notices.push_back(describe(entry.id)
                                + " keeps the issued pieces and the limit that it was listed with");
        }
        if ((view && view->suspended) != entry.suspended)
            add(SuspendCollection{entry.id, entry.suspended});
    }
    for (const CollectionId id : m_market->collections()) {
        if (wanted.count(id.value()) == 0 && !m_market->collection(id)->suspended) {
            m_notices.push_back(describe(id) + " left the catalogue and is suspended");
            add(SuspendCollection{id, true});
        }
    }
    if (m_options.openAtStart && !m_market->isOpen())
        add(SetPhase{true});

    m_store->putListings(names);
    const std::vector<Result> results = carryOut(batch);
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const auto *list = std::get_if<ListCollection>(&batch[i].command);
        if (list && results[i].status != Status::Accepted)
            throw CatalogueError(catalogue.prefix + ": " + describe(list->collection)
                                 + " cannot be listed: " + name(results[i].status));
    }
}

std::vector<CollectionInfo> MarketWriter::collectionInfos(const CatalogueMarket &catalogue)
{
    std::unordered_map<std::int64_t, CollectionInfo> known;
    for (const ListingRow &row : m_store->listings()) {
        CollectionInfo info;
        info.code = row.code;
        info.name = row.name;
        info.type = row.type;
        info.introduction = row.introduction;
        known[row.collection.value()] = std::move(info);
    }
    for (const CatalogueCollection &entry : catalogue.collections)
        known[entry.id.value()].initials = entry.initials;

    std::vector<CollectionInfo> infos;
    for (const CollectionId id : m_market->collections()) {
        CollectionInfo info = std::move(known[id.value()]);
        const CollectionView view = *m_market->collection(id);
        info.id = id;
        info.listed = view.issued;
        info.suspended = view.suspended;
        if (info.initials.empty() && m_options.initials)
            info.initials = m_options.initials(info.name);
        infos.push_back(std::move(info));
    }
    return infos;
}

void MarketWriter::start()
{
    if (!m_thread.joinable() && m_store)
        m_thread = std::thread([this] { run(); });
}

bool MarketWriter::submit(Command command, Answered answered, Lost lost)
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        if (!m_accepting || m_queue.size() >= m_options.queueBound) {
            ++m_counters.refusedFull;
            return false;
        }
        m_queue.push_back({std::move(command), std::move(answered), std::move(lost)});
    }
    m_wake.notify_one();
    return true;
}

std::vector<Result> MarketWriter::execute(std::vector<Command> commands)
{
    const auto shared = std::make_shared<Execution>();
    shared->results.resize(commands.size());
    const auto end = [shared](bool lost) {
        std::lock_guard<std::mutex> guard(shared->mutex);
        --shared->open;
        shared->lost = shared->lost || lost;
        shared->done.notify_all();
    };
    bool ended = false;
    for (std::size_t i = 0; i < commands.size() && !ended; ++i) {
        const auto answered = [shared, end, i](const Result &result) {
            shared->results[i] = result;
            end(false);
        };
        {
            std::lock_guard<std::mutex> guard(shared->mutex);
            ++shared->open;
        }
        while (!submit(commands[i], answered, [end] { end(true); })) {
            ended = hasEnded();
            if (ended) {
                end(true);
                break;
            }
            // The queue is full of other callers' commands as well as ours: let it drain a little.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    std::unique_lock<std::mutex> lock(shared->mutex);
    shared->done.wait(lock, [&] { return shared->open == 0; });
    if (shared->lost)
        throw StoreError("the market ended before it carried out all commands");
    return std::move(shared->results);
}

void MarketWriter::stop()
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_accepting = false;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    } else if (m_store && !m_failed) {
        // Never started: whoever handed something in hears of it.
        for (Waiting &waiting : m_queue)
            if (waiting.lost)
                waiting.lost();
        m_queue.clear();
    }
    m_store.reset();
}

std::shared_ptr<const MarketSnapshot> MarketWriter::snapshot() const
{
    std::lock_guard<std::mutex> guard(m_snapshotMutex);
    return m_snapshot;
}

std::size_t MarketWriter::waiting() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_queue.size();
}

bool MarketWriter::hasEnded() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return !m_accepting;
}

void MarketWriter::run()
{
    std::vector<Waiting> batch;
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            while (m_queue.empty() && m_accepting) {
                const std::optional<SteadyMs> due = m_publisher->due();
                if (due && *due <= m_clock->steady())
                    break;
                m_clock->wait(m_wake, lock, due);
            }
            if (m_queue.empty() && !m_accepting)
                break;
            const std::size_t size = std::min(m_queue.size(), m_options.batchBound);
            const auto end = m_queue.begin() + static_cast<std::ptrdiff_t>(size);
            batch.assign(std::make_move_iterator(m_queue.begin()), std::make_move_iterator(end));
            m_queue.erase(m_queue.begin(), end);
        }
        std::vector<Result> results;
        try {
            results = carryOut(batch);
            publishDue();
            tellChangedAccounts();
        } catch (const std::exception &error) {
            fail(error.what(), batch);
            return;
        }
        answer(batch, results);
        batch.clear();
    }
    try {
        if (m_lastCommand > m_lastCheckpoint) {
            Batch last;
            last.checkpoint = makeCheckpoint();
            m_store->commit(last);
        }
    } catch (const std::exception &error) {
        fail(error.what(), batch);
    }
}

void MarketWriter::answer(std::vector<Waiting> &batch, const std::vector<Result> &results)
{
    for (std::size_t i = 0; i < batch.size(); ++i) {
        ++m_counters.commands;
        if (const Answered answered = std::exchange(batch[i].answered, {}))
            answered(results[i]);
    }
}

std::vector<Result> MarketWriter::carryOut(std::vector<Waiting> &batch)
{
    Batch stored;
    std::vector<Result> results;
    results.reserve(batch.size());
    std::uint64_t deals = 0;
    bool settled = false;
    for (const Waiting &waiting : batch) {
        m_happened.clear();
        const TimeMs now = m_clock->wall();
        results.push_back(m_market->apply(waiting.command, now, m_happened));
        if (m_happened.empty())
            continue;
        StoredCommand command;
        command.number = ++m_lastCommand;
        command.time = now;
        for (const Event &event : m_happened) {
            encode(event, command.events);
            m_projector->take(event);
            if (m_publisher)
                m_publisher->take(event);
            if (const auto *answer = std::get_if<ActionAnswered>(&event))
                command.key = answer->key;
            settled = settled || std::holds_alternative<DaySettled>(event);
            deals += std::holds_alternative<Deal>(event) ? 1 : 0;
        }
        stored.commands.push_back(std::move(command));
    }
    if (!stored.commands.empty()) {
        stored.tables = m_projector->finish(*m_market);
        if (settled || m_lastCommand - m_lastCheckpoint >= m_options.checkpointEvery)
            stored.checkpoint = makeCheckpoint();
        if (fault("answer-before-commit"))
            answer(batch, results);
        m_store->commit(stored);
        ++m_counters.commits;
        m_counters.committedCommands += stored.commands.size();
        m_counters.deals += deals;
        if (m_publisher) {
            m_market->takeDirty(m_dirty);
            m_publisher->touch(m_dirty);
        }
    }
    return results;
}

void MarketWriter::publishDue()
{
    const TopicSet topics
        = m_publisher->publish(*m_market, m_projector->composite().row(), m_clock->steady());
    if (topics.empty())
        return;
    std::shared_ptr<const MarketSnapshot> snapshot = m_publisher->snapshot();
    {
        std::lock_guard<std::mutex> guard(m_snapshotMutex);
        m_snapshot = snapshot;
    }
    ++m_counters.publications;
    if (m_events.published)
        m_events.published(snapshot, topics);
}

void MarketWriter::tellChangedAccounts()
{
    m_market->takeDirtyAccounts(m_dirtyAccounts);
    if (!m_dirtyAccounts.empty() && m_events.accountsChanged)
        m_events.accountsChanged(m_dirtyAccounts);
}

void MarketWriter::fail(const std::string &reason, std::vector<Waiting> &batch)
{
    m_failed = true;
    std::deque<Waiting> rest;
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_accepting = false;
        rest.swap(m_queue);
    }
    for (Waiting &waiting : batch)
        if (waiting.lost)
            waiting.lost();
    for (Waiting &waiting : rest)
        if (waiting.lost)
            waiting.lost();
    batch.clear();
    if (m_events.fatal)
        m_events.fatal(reason);
}

StoredCheckpoint MarketWriter::makeCheckpoint()
{
    ++m_counters.checkpoints;
    m_lastCheckpoint = m_lastCommand;
    return {m_lastCommand, m_market->stateHash(), m_market->checkpoint()};
}

} // namespace zvx
