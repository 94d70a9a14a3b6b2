#pragma once

#include "exchange/service/robot_crowd.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zvx {

class Exchange;
class MarketServer;

/// Lets the robots of all markets trade: one thread that takes a turn for one market after the
/// other and hands orders to the same queues as everyone. A queue that a thousand commands wait in
/// gets none.
class Robots
{
public:
    /// `ordersPerSecond` of each market; 0 gives robots that do nothing. The exchange must outlive
    /// this object.
    Robots(const Exchange &exchange, std::uint64_t seed, double ordersPerSecond);
    ~Robots();

    /// Takes no further turns. Answers that come later are ignored.
    void stop();

    std::uint64_t orders() const { return m_orders; }

private:
    /// Answers come on the writers' threads, and may come after the robots are gone.
    struct Inbox {
        std::mutex mutex;
        std::vector<std::pair<std::uint64_t, Result>> answers;
        std::vector<std::uint64_t> dropped;
    };
    struct Place {
        MarketServer *market = nullptr;
        std::unique_ptr<RobotCrowd> crowd;
        std::shared_ptr<Inbox> inbox;
        std::int64_t session = 0;
    };

    void run();
    void takeTurn(Place &place);

    std::vector<Place> m_places;
    std::atomic<std::uint64_t> m_orders{0};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace zvx
