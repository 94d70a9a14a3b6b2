#include "exchange/service/embedded_carrier.h"

#include "exchange/accounts/outbox.h"
#include "exchange/service/appointments.h"
#include "exchange/service/id_order.h"
#include "exchange/service/word_ledger.h"
#include "exchange/store/clock.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zvx {

namespace {

constexpr const char *kCarrierName = "自营物流";

/// What the ledger says of a parcel.
enum class Step : std::uint8_t { Asked, Packed, Sent, Refused, GivenUp };

constexpr std::pair<std::string_view, Step> kSteps[] = {{"packed", Step::Packed},
                                                        {"sent", Step::Sent},
                                                        {"refused", Step::Refused},
                                                        {"given-up", Step::GivenUp}};

/// Short enough to be typed, and the same after a restart.
Tracking trackingOf(ParcelId id)
{
    return {kCarrierName, "ZY" + std::to_string(1'000'000'000 + id.low % 9'000'000'000)};
}

} // namespace

/// Where parcels wait for their time, and the steps that they take.
class EmbeddedCarrier::Counter
{
public:
    explicit Counter(EmbeddedCarrierOptions options)
        : m_options(completed(std::move(options))),
          m_ledger(m_options.folder / kFileName,
                   [this](ParcelId id, const std::string &words) { return recall(id, words); }),
          m_appointments(m_options.clock, [this](ParcelId id) { proceed(id); })
    {
    }

    void ask(const CarrierOrder &order, Answered answered)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto [at, isNew] = m_waiting.try_emplace(order.id);
        Parcel &parcel = at->second;
        if (isNew)
            parcel.due = m_options.clock->steady() + delayAfter(stepOf(order.id));
        parcel.order = order;
        // The later question is the one whose asker is there.
        parcel.answered = std::move(answered);
        parcel.told = Step::Asked;
        arrange(parcel);
    }

    void goAhead(ParcelId id) { mark(id, &Parcel::isLetGo); }
    void giveUp(ParcelId id) { mark(id, &Parcel::isGivenUp); }

private:
    struct Parcel {
        CarrierOrder order;
        Answered answered;
        Step told = Step::Asked; ///< the last step that its asker heard of
        SteadyMs due = 0; ///< of its next step
        SteadyMs notBefore = 0; ///< of any step, after a fault
        bool isLetGo = false; ///< it may be sent
        bool isGivenUp = false;
    };

    void mark(ParcelId id, bool Parcel::*what)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_waiting.find(id);
        if (found == m_waiting.end())
            return;
        found->second.*what = true;
        arrange(found->second);
    }

    static EmbeddedCarrierOptions completed(EmbeddedCarrierOptions options)
    {
        if (!options.clock)
            options.clock = std::make_shared<SystemClock>();
        if (!options.outbox)
            options.outbox = std::make_shared<Outbox>(options.folder, options.clock);
        return options;
    }

    bool recall(ParcelId id, const std::string &words)
    {
        for (const auto &[word, step] : kSteps) {
            if (word == words) {
                m_steps[id] = step;
                return true;
            }
        }
        return false;
    }

    /// Under the lock, as m_steps is written by the thread.
    Step stepOf(ParcelId id) const
    {
        const auto found = m_steps.find(id);
        return found == m_steps.end() ? Step::Asked : found->second;
    }

    std::int64_t delayAfter(Step step) const
    {
        return step == Step::Asked ? m_options.prepareDelay
            : step == Step::Packed ? m_options.shipDelay
                                   : 0;
    }

    /// Whenever a parcel's turn may have changed. Under the lock.
    void arrange(const Parcel &parcel)
    {
        const ParcelId id = parcel.order.id;
        // What was packed before is told at once; the next step has its time.
        if (parcel.told < stepOf(id))
            m_appointments.make(id, m_options.clock->steady());
        else if (parcel.isGivenUp)
            m_appointments.make(id, std::max(parcel.notBefore, m_options.clock->steady()));
        else if (parcel.isLetGo || parcel.told != Step::Packed)
            m_appointments.make(id, std::max(parcel.notBefore, parcel.due));
        else
            m_appointments.drop(id);
    }

    /// Takes the parcel's next step, or tells the one that it took. The lock is free meanwhile.
    void proceed(ParcelId id)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const auto at = m_waiting.find(id);
        Parcel &parcel = at->second;
        Step step = stepOf(id);
        if (parcel.told == step) {
            const CarrierOrder order = parcel.order;
            const Step taken = parcel.isGivenUp ? Step::GivenUp
                : step == Step::Packed          ? Step::Sent
                : m_options.refuses             ? Step::Refused
                                                : Step::Packed;
            lock.unlock();
            const bool isKept = keep(order, taken);
            lock.lock();
            const SteadyMs now = m_options.clock->steady();
            if (!isKept) {
                parcel.notBefore = now + kPauseAfterFault;
                arrange(parcel);
                return;
            }
            step = m_steps[id] = taken;
            parcel.due = now + delayAfter(step);
        }
        parcel.told = step;
        const Answered answered = parcel.answered;
        if (step == Step::Packed) {
            arrange(parcel);
        } else {
            m_appointments.drop(id);
            m_waiting.erase(at);
        }
        lock.unlock();
        tell(id, step, answered);
    }

    bool keep(const CarrierOrder &order, Step step)
    {
        for (const auto &[word, known] : kSteps) {
            if (known != step)
                continue;
            try {
                m_ledger.add(order.id, word);
            } catch (const std::exception &error) {
                note(std::string("the carrier cannot write its ledger: ") + error.what());
                return false;
            }
        }
        noteInOutbox(order, step);
        return true;
    }

    void noteInOutbox(const CarrierOrder &order, Step step)
    {
        std::string text = order.goods + "，" + std::to_string(order.quantity.value())
            + "件，收货人" + order.recipient.person + "，" + order.recipient.address;
        switch (step) {
        case Step::Packed:
            text += "，已备货";
            break;
        case Step::Sent:
            text += "，已发货，运单号" + trackingOf(order.id).number;
            break;
        case Step::Refused:
            text += "，已拒绝";
            break;
        default:
            text += "，已取消";
            break;
        }
        try {
            m_options.outbox->send("carrier", text);
        } catch (const std::exception &error) {
            // What was done counts; the outbox only tells of it.
            note(std::string("the carrier's step is missing in the outbox: ") + error.what());
        }
    }

    static void tell(ParcelId id, Step step, const Answered &answered)
    {
        switch (step) {
        case Step::Packed:
            answered({DeliveryStage::Preparing, {}});
            break;
        case Step::Sent:
            answered({DeliveryStage::Sent, trackingOf(id)});
            break;
        case Step::Refused:
        case Step::GivenUp:
            answered({DeliveryStage::Refused, {}});
            break;
        case Step::Asked:
            break;
        }
    }

    void note(const std::string &line)
    {
        if (m_options.notice)
            m_options.notice(line);
    }

    static constexpr std::int64_t kPauseAfterFault = 30'000; // ms

    const EmbeddedCarrierOptions m_options;
    std::map<ParcelId, Step, IdOrder> m_steps; ///< as the ledger has them
    WordLedger m_ledger; ///< on the thread alone, once it runs
    std::mutex m_mutex;
    std::map<ParcelId, Parcel, IdOrder> m_waiting;
    Appointments m_appointments; ///< ends first
};

EmbeddedCarrier::EmbeddedCarrier(EmbeddedCarrierOptions options)
    : m_counter(std::make_unique<Counter>(std::move(options)))
{
}

EmbeddedCarrier::~EmbeddedCarrier() = default;

void EmbeddedCarrier::ask(const CarrierOrder &order, Answered answered)
{
    m_counter->ask(order, std::move(answered));
}

void EmbeddedCarrier::goAhead(ParcelId id)
{
    m_counter->goAhead(id);
}

void EmbeddedCarrier::giveUp(ParcelId id)
{
    m_counter->giveUp(id);
}

} // namespace zvx
