#pragma once

#include "exchange/accounts/parcel_book.h"
#include "exchange/service/carrier_gateway.h"
#include "exchange/service/chart_paths.h"
#include "exchange/service/delivery_desk.h"
#include "exchange/service/delivery_paths.h"
#include "exchange/service/http_server.h"
#include "exchange/service/market_board.h"
#include "exchange/service/query_pool.h"
#include "exchange/service/record_paths.h"
#include "exchange/service/service_log.h"
#include "exchange/service/trading_paths.h"
#include "exchange/service/wire_answers.h"
#include "exchange/store/exchange.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zvxtest {

/// The paths of trading, records and charts on a real server and real markets. Who asks stands in
/// the token, which is the account's number.
class TradingFloor : private zvx::HttpHandler
{
public:
    struct Options {
        std::filesystem::path folder;
        zvx::WriterOptions writer;
        zvx::QueryPool::Options queries;
        std::shared_ptr<zvx::Clock> clock;
        /// Goods can be taken out where there is one.
        std::shared_ptr<zvx::CarrierGateway> carrier;
        zvx::DeliveryLimits deliveries;
    };
    explicit TradingFloor(const Options &options);
    ~TradingFloor() override;

    std::uint16_t port() const { return m_server->port(); }
    zvx::MarketServer &market() const { return *m_exchange->market("/lc/youbika/"); }
    zvx::Exchange &exchange() const { return *m_exchange; }
    zvx::QueryPool &queries() { return *m_queries; }
    zvx::ParcelBook &parcels() { return *m_parcels; }
    zvx::DeliveryDesk &deliveries() { return *m_desk; }
    const zvx::HttpCounters &counters() const { return m_server->counters(); }

private:
    void openDeliveries(const Options &options);
    void handle(zvx::HttpRequest request, zvx::HttpResponder responder) override;
    zvx::HttpAnswer refuse(const zvx::HttpFault &fault) override;

    zvx::ServiceLog m_log{true};
    std::map<const zvx::MarketServer *, std::unique_ptr<zvx::MarketBoard>> m_boards;
    std::shared_ptr<zvx::PlatformBoard> m_platform = std::make_shared<zvx::PlatformBoard>();
    zvx::BuildCounters m_builds{};
    std::unique_ptr<zvx::Envelope> m_envelope;
    std::unique_ptr<zvx::WireAnswers> m_answers;
    std::unique_ptr<zvx::QueryPool> m_queries;
    std::unique_ptr<zvx::TradingPaths> m_paths;
    std::unique_ptr<zvx::RecordPaths> m_records;
    std::unique_ptr<zvx::ChartPaths> m_charts;
    std::unique_ptr<zvx::DeliveryPaths> m_deliveries;
    std::unique_ptr<zvx::HttpServer> m_server;
    std::unique_ptr<zvx::Exchange> m_exchange;
    std::shared_ptr<zvx::ParcelBook> m_parcels;
    std::unique_ptr<zvx::DeliveryDesk> m_desk;
};

/// Holds a thread until it is let go.
class Hold
{
public:
    /// Waits until `release`.
    void pass();
    /// Waits until so many stand in `pass`.
    void awaitVisitors(int wanted = 1);
    void release();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_visitors = 0;
    bool m_open = false;
};

/// A floor, and what its clients ask. Collection 2100 trades at 9.00 to 11.00.
class TradingTest : public testing::Test
{
protected:
    TradingTest();

    void begin() { floor = std::make_unique<TradingFloor>(options); }
    void restart()
    {
        floor.reset();
        begin();
    }

    /// The answer's body without its time.
    nlohmann::json post(const std::string &path, const std::string &form,
                        std::int64_t account) const;
    nlohmann::json get(const std::string &path, std::int64_t account) const;

    /// An order with a key of its own, for 2100.
    nlohmann::json buy(std::int64_t account, std::int64_t price, std::int64_t quantity);
    nlohmann::json sell(std::int64_t account, std::int64_t price, std::int64_t quantity);
    /// The number of an order that is expected to be taken.
    std::int64_t placed(const nlohmann::json &answer) const;
    nlohmann::json revoke(std::int64_t account, const std::string &orders);
    nlohmann::json cap(std::int64_t account) const { return get("cap.html", account)["data"]; }

    std::string newKey();

    /// Carries commands out beside the paths, and expects that all are accepted.
    void carryOut(const std::vector<zvx::Command> &commands);
    /// Gives an account money and pieces of 2100 at 10.00.
    void fund(std::int64_t account, std::int64_t fen, std::int64_t pieces = 0);
    /// Commands that were answered so far by the market.
    std::uint64_t commands() const { return floor->market().writer().counters().commands; }
    /// Keeps the writer's thread from going on until `hold` is released.
    void holdWriter(const std::shared_ptr<Hold> &hold) const;

    TemporaryFolder folder;
    TradingFloor::Options options;
    std::unique_ptr<TradingFloor> floor;

private:
    std::uint64_t m_keys = 0;
};

/// `status`, or `refused reason`: what tables compare.
std::string outcome(const nlohmann::json &answer);

/// The fields of an order of 2100.
std::string orderForm(const std::string &key, std::int64_t price, std::int64_t quantity);

} // namespace zvxtest
