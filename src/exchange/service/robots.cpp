#include "exchange/service/robots.h"

#include "exchange/store/exchange.h"

#include <chrono>

namespace zvx {

namespace {

using Steady = std::chrono::steady_clock;

/// Each market has its turn this often; what several orders of one turn cost is one commit.
constexpr std::chrono::milliseconds roundTime{400};
constexpr std::size_t queueShare = 1024;
/// Commands of one turn: enough to lay out a new market in some seconds, without one long commit.
constexpr std::size_t turnBound = 256;

std::int64_t steadyMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now().time_since_epoch())
        .count();
}

std::uint64_t seedOf(std::uint64_t seed, const std::string &prefix)
{
    // FNV-1a, so that markets differ and a market keeps its robots when others are added.
    std::uint64_t hash = 0xCBF29CE484222325ull ^ seed;
    for (const char c : prefix)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ull;
    return hash;
}

} // namespace

Robots::Robots(const Exchange &exchange, std::uint64_t seed, double ordersPerSecond)
{
    if (ordersPerSecond <= 0)
        return;
    RobotOptions options;
    options.ordersPerSecond = ordersPerSecond;
    for (const auto &market : exchange.markets()) {
        std::vector<RobotCrowd::Listing> listings;
        const auto snapshot = market->snapshot();
        for (const auto &info : *snapshot->infos.data)
            listings.push_back({info->id, info->listed, info->suspended});
        Place place;
        place.market = market.get();
        place.crowd = std::make_unique<RobotCrowd>(seedOf(seed, market->prefix()),
                                                   std::move(listings), options);
        place.inbox = std::make_shared<Inbox>();
        place.session = snapshot->check.data->session.value();
        m_places.push_back(std::move(place));
    }
    if (!m_places.empty())
        m_thread = std::thread([this] { run(); });
}

Robots::~Robots()
{
    stop();
}

void Robots::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void Robots::run()
{
    const auto pause = roundTime / static_cast<std::int64_t>(m_places.size());
    auto next = Steady::now();
    std::unique_lock<std::mutex> lock(m_mutex);
    for (std::size_t turn = 0; !m_stopping; turn = (turn + 1) % m_places.size()) {
        lock.unlock();
        takeTurn(m_places[turn]);
        lock.lock();
        // After a long stall the rounds that were missed are not made up for.
        next = std::max(next + pause, Steady::now() - roundTime);
        m_wake.wait_until(lock, next, [this] { return m_stopping; });
    }
}

void Robots::takeTurn(Place &place)
{
    std::vector<std::pair<std::uint64_t, Result>> answers;
    std::vector<std::uint64_t> dropped;
    {
        const std::lock_guard<std::mutex> lock(place.inbox->mutex);
        answers.swap(place.inbox->answers);
        dropped.swap(place.inbox->dropped);
    }
    for (const auto &[token, result] : answers)
        place.crowd->answered(token, result);
    for (const std::uint64_t token : dropped)
        place.crowd->dropped(token);

    MarketWriter &writer = place.market->writer();
    const auto snapshot = place.market->snapshot();
    const std::int64_t session = snapshot->check.data->session.value();
    if (session != place.session) {
        place.session = session;
        place.crowd->sessionEnded();
    }
    if (!snapshot->check.data->open || writer.failed() || writer.waiting() >= queueShare)
        return;

    std::vector<RobotCrowd::Wish> wishes;
    place.crowd->step(
        steadyMs(), [&](std::size_t row) { return snapshot->collections[row]->trade.data.get(); },
        turnBound, wishes);
    for (RobotCrowd::Wish &wish : wishes) {
        const auto inbox = place.inbox;
        const std::uint64_t token = wish.token;
        const bool taken = writer.submit(
            std::move(wish.command),
            [inbox, token](const Result &result) {
                const std::lock_guard<std::mutex> lock(inbox->mutex);
                inbox->answers.emplace_back(token, result);
            },
            [inbox, token] {
                const std::lock_guard<std::mutex> lock(inbox->mutex);
                inbox->dropped.push_back(token);
            });
        if (taken)
            ++m_orders;
        else
            place.crowd->dropped(token);
    }
}

} // namespace zvx
