#include "exchange/service/embedded_carrier.h"

#include "exchange/accounts/outbox.h"
#include "exchange/service/word_ledger.h"
#include "exchange/store/clock.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

namespace zvx {

namespace {

using IdKey = std::pair<std::uint64_t, std::uint64_t>;

constexpr const char *kCarrierName = "自营物流";

IdKey keyOf(ParcelId id)
{
    return {id.high, id.low};
}

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

/// Where parcels wait for their time, and the thread that takes their steps.
class EmbeddedCarrier::Counter
{
public:
    explicit Counter(EmbeddedCarrierOptions options)
        : m_options(completed(std::move(options))),
          m_ledger(m_options.folder / kFileName,
                   [this](ParcelId id, const std::string &words) { return recall(id, words); }),
          m_thread([this] { run(); })
    {
    }

    ~Counter()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
        }
        m_wake.notify_all();
        m_thread.join();
    }

    void ask(const CarrierOrder &order, Answered answered)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            Parcel &parcel = m_waiting[keyOf(order.id)];
            const bool isNew = !parcel.answered;
            parcel.order = order;
            // The later question is the one whose asker is there.
            parcel.answered = std::move(answered);
            parcel.told = Step::Asked;
            if (isNew)
                parcel.due = m_options.clock->steady() + delayAfter(stepOf(order.id));
        }
        m_wake.notify_all();
    }

    void goAhead(ParcelId id) { mark(id, &Parcel::isLetGo); }
    void giveUp(ParcelId id) { mark(id, &Parcel::isGivenUp); }

private:
    struct Parcel {
        CarrierOrder order;
        Answered answered;
        Step told = Step::Asked; ///< the last step that its asker heard of
        SteadyMs due = 0; ///< of its next step
        bool isLetGo = false; ///< it may be sent
        bool isGivenUp = false;
    };

    void mark(ParcelId id, bool Parcel::*what)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            const auto found = m_waiting.find(keyOf(id));
            if (found == m_waiting.end())
                return;
            found->second.*what = true;
        }
        m_wake.notify_all();
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
                m_steps[keyOf(id)] = step;
                return true;
            }
        }
        return false;
    }

    /// Under the lock, as m_steps is written by the thread.
    Step stepOf(ParcelId id) const
    {
        const auto found = m_steps.find(keyOf(id));
        return found == m_steps.end() ? Step::Asked : found->second;
    }

    std::int64_t delayAfter(Step step) const
    {
        return step == Step::Asked ? m_options.prepareDelay
            : step == Step::Packed ? m_options.shipDelay
                                   : 0;
    }

    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_ending) {
            const SteadyMs now = m_options.clock->steady();
            std::optional<SteadyMs> first;
            auto next = m_waiting.end();
            for (auto at = m_waiting.begin(); at != m_waiting.end(); ++at) {
                const Parcel &parcel = at->second;
                // What was packed before is told at once; the next step has its time.
                const bool isNews = parcel.told < stepOf(parcel.order.id);
                const bool mayMove = parcel.isLetGo || parcel.told != Step::Packed;
                if (isNews || parcel.isGivenUp || (mayMove && parcel.due <= now)) {
                    next = at;
                    break;
                }
                if (!mayMove)
                    continue;
                if (!first || parcel.due < *first)
                    first = parcel.due;
            }
            if (next == m_waiting.end())
                m_options.clock->wait(m_wake, lock, first);
            else
                proceed(next, lock);
        }
    }

    /// Takes the parcel's next step, or tells the one that it took. The lock is free meanwhile.
    void proceed(std::map<IdKey, Parcel>::iterator at, std::unique_lock<std::mutex> &lock)
    {
        Parcel &parcel = at->second;
        const CarrierOrder order = parcel.order;
        Step step = stepOf(order.id);
        const bool isOver = step != Step::Asked && step != Step::Packed;
        if (!isOver && (parcel.told == step)) {
            const Step taken = parcel.isGivenUp ? Step::GivenUp
                : step == Step::Packed          ? Step::Sent
                : m_options.refuses             ? Step::Refused
                                                : Step::Packed;
            lock.unlock();
            const bool isKept = keep(order, taken);
            lock.lock();
            if (!isKept) {
                parcel.due = m_options.clock->steady() + kPauseAfterFault;
                parcel.isGivenUp = false;
                return;
            }
            step = m_steps[keyOf(order.id)] = taken;
            parcel.due = m_options.clock->steady() + delayAfter(step);
        }
        parcel.told = step;
        const Answered answered = parcel.answered;
        if (step != Step::Packed)
            m_waiting.erase(at);
        lock.unlock();
        tell(order.id, step, answered);
        lock.lock();
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
    std::map<IdKey, Step> m_steps; ///< as the ledger has them
    WordLedger m_ledger; ///< on the thread alone, once it runs
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::map<IdKey, Parcel> m_waiting;
    bool m_ending = false;
    std::thread m_thread;
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
