#pragma once

#include "exchange/service/carrier_gateway.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace zvx {

class Clock;
class TextGateway;

struct EmbeddedCarrierOptions {
    std::filesystem::path folder; ///< has to exist
    std::int64_t prepareDelay = 60'000; ///< ms from a request to its packing
    std::int64_t shipDelay = 60'000; ///< ms from the packing to the sending
    bool refuses = false; ///< every parcel, when it would be packed
    std::shared_ptr<Clock> clock; ///< the machine's without it
    std::shared_ptr<TextGateway> outbox; ///< an Outbox in the folder without it
    /// A line for the operator's log.
    std::function<void(const std::string &line)> notice;
};

/**
 * The carrier of an exchange without one: it packs and sends what it is asked for, each step after
 * its time, and says in the outbox what it did.
 *
 * Its steps stand in `carrier.ledger`, a line each, before anybody hears of them, so that a parcel
 * is sent once whatever happens. Waiting begins anew after a restart, when the exchange asks again.
 * Where the ledger cannot be written it stays silent.
 */
class EmbeddedCarrier : public CarrierGateway
{
public:
    static constexpr const char *kFileName = "carrier.ledger";

    /// Reads the ledger. Throws std::runtime_error where it cannot be read or holds something else.
    explicit EmbeddedCarrier(EmbeddedCarrierOptions options);
    /// What waits stays where it is.
    ~EmbeddedCarrier() override;

    void ask(const CarrierOrder &order, Answered answered) override;
    void goAhead(ParcelId id) override;
    void giveUp(ParcelId id) override;

private:
    class Counter;
    std::unique_ptr<Counter> m_counter;
};

} // namespace zvx
