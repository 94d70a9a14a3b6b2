#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/delivery_desk.h"
#include "exchange/service/embedded_bank.h"
#include "exchange/service/http_message.h"
#include "exchange/service/money_desk.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zvx {

class PasswordHasher;
class ServiceLog;

struct ServiceOptions {
    std::filesystem::path folder;
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;
    /// The catalogue of a folder that has none yet.
    std::optional<std::string> firstCatalogue;
    std::uint64_t seed = 1;
    /// Orders a second of the robots of each market; 0 lets nobody but people trade.
    double robotOrdersPerSecond = 6;
    HttpLimits limits;
    /// Names under which clients may ask for the service, beside numeric addresses and localhost.
    std::vector<std::string> hostNames;
    /// Where telephones reach the pages of the service, such as "https://exchange.example.org",
    /// whose host counts as one of `hostNames`; empty for the name that each request asks by.
    std::string publicUrl;
    AccountLimits accountLimits;
    /// Null for the usual one, whose cost is meant to be felt.
    std::shared_ptr<PasswordHasher> passwordHasher;
    MoneyLimits moneyLimits;
    /// The way to the banks; null for the embedded one, which the next two are for.
    std::shared_ptr<BankGateway> bank;
    std::chrono::milliseconds bankDelay{0};
    BankRefusal bankRefusal = BankRefusal::None;
    DeliveryLimits deliveryLimits;
    /// The way to the carriers; null for the embedded one, which the next three are for.
    std::shared_ptr<CarrierGateway> carrier;
    std::chrono::milliseconds prepareDelay{60'000};
    std::chrono::milliseconds shipDelay{60'000};
    bool carrierRefuses = false;
    /// A folder without an exchange gets a demo account with money and holdings.
    bool demo = false;
    /// Polls that may wait for a change at once; one more is told to come back.
    std::size_t parkedPolls = 4000;
    /// How often the files of announcements and of applications are looked at.
    std::chrono::milliseconds messagesEvery{2'000};
    /// A market cannot go on; the process has to end with a failure. From any thread.
    std::function<void(const std::string &reason)> fatal;
};

/// The exchange of one state folder, answering on one address. Serves from construction to `stop`.
class Service
{
public:
    /// Throws FolderError, CatalogueError, StoreError, Damaged or std::runtime_error, each with one
    /// sentence that is fit for an operator.
    Service(ServiceOptions options, ServiceLog &log);
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    std::uint16_t port() const;
    const std::string &boot() const;

    /// Closes the session of every market and opens the same date again. Waits until it is durable.
    void settle();

    /// The clean end: robots, then parked polls and open connections, then the queues and the
    /// stores. Harmless when called again.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zvx
