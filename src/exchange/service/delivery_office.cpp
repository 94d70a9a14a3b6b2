#include "exchange/service/delivery_office.h"

#include "exchange/accounts/random_source.h"
#include "exchange/service/delivery_refusal.h"
#include "exchange/store/store.h"

#include <utility>

namespace zvx {

namespace {

void tell(const DeliveryDesk::Done &done, const DeliveryDesk::Outcome &outcome)
{
    if (done)
        done(outcome);
}

} // namespace

DeliveryOffice::DeliveryOffice(Tools tools, const DeliveryLimits &limits,
                               DeliveryCounters &counters)
    : m_tools(std::move(tools)), m_limits(limits), m_counters(counters)
{
}

void DeliveryOffice::open(DeliveryMarket &market)
{
    for (const ParcelId id : market.withoutDelivery(m_tools.parcels.parcelsOf(market.prefix())))
        m_tools.parcels.drop(id);
    for (const DeliveryRow &row : market.underWay()) {
        const auto parcel = m_tools.parcels.find(row.parcel);
        if (parcel)
            follow(market, row, parcel->recipient);
        else
            note("delivery " + std::to_string(row.number.value())
                 + " has no recipient: somebody took it out of the parcels");
    }
}

template <typename Work>
DeliveryDesk::Outcome DeliveryOffice::guarded(const Work &work)
{
    try {
        return work();
    } catch (const StoreError &error) {
        fail(error.what());
        return notTried(DeliveryDesk::Status::Failed);
    }
}

void DeliveryOffice::request(const DeliveryRequest &request, Done done)
{
    tell(done, guarded([&] { return tryRequest(request); }));
}

DeliveryDesk::Outcome DeliveryOffice::tryRequest(const DeliveryRequest &request)
{
    DeliveryMarket &market = *request.market;
    // The market forgets a key after two sessions. What froze pieces once is known for ever.
    if (const auto row = market.deliveryOf(request.account, request.key)) {
        if (row->collection != request.collection || row->quantity != request.quantity
            || goesElsewhere(row->parcel, request.recipient))
            return refused(Status::KeyDiffers);
        return answerOf(*row);
    }
    RequestDelivery command;
    command.account = request.account;
    command.collection = request.collection;
    command.quantity = request.quantity;
    command.parcel = newId();
    command.key = request.key;
    m_tools.parcels.put(command.parcel, market.prefix(), request.recipient);
    const Result result = market.carryOut(command);
    if (result.status != Status::Accepted) {
        m_tools.parcels.drop(command.parcel);
        // A key of something else that was done: no delivery stands under it.
        return refused(result.meaning() == Status::Accepted ? Status::KeyDiffers
                                                            : result.meaning());
    }
    ++m_counters.requested;
    DeliveryRow row;
    row.number = result.delivery;
    row.collection = command.collection;
    row.quantity = command.quantity;
    row.parcel = command.parcel;
    follow(market, row, request.recipient);
    return answerOf(row);
}

void DeliveryOffice::cancel(DeliveryMarket &market, AccountId account, ParcelId parcel,
                            ActionKey key, Done done)
{
    tell(done, guarded([&] { return tryCancel(market, account, parcel, key); }));
}

DeliveryDesk::Outcome DeliveryOffice::tryCancel(DeliveryMarket &market, AccountId account,
                                                ParcelId parcel, ActionKey key)
{
    const auto row = market.deliveryOf(parcel);
    if (!row || row->account != account)
        return refused(Status::DeliveryUnknown);
    if (market.deliveryOf(account, key))
        return refused(Status::KeyDiffers);
    const Result result = market.carryOut(CancelDelivery{account, row->number, key});
    if (result.meaning() != Status::Accepted)
        return refused(result.meaning());
    if (result.status == Status::Accepted)
        ++m_counters.cancelled;
    m_underWay.erase(idOf(parcel));
    m_tools.carrier.giveUp(parcel);
    return {};
}

void DeliveryOffice::resolve(DeliveryMarket &market, AccountId account, ActionKey key, Done done)
{
    tell(done, guarded([&] { return tryResolve(market, account, key); }));
}

DeliveryDesk::Outcome DeliveryOffice::tryResolve(DeliveryMarket &market, AccountId account,
                                                 ActionKey key)
{
    if (const auto row = market.deliveryOf(account, key))
        return answerOf(*row);
    const Result result = market.carryOut(BurnKey{account, key});
    const Status status = result.meaning();
    // Where a key could not be burnt, what it stands for is as open as before.
    if (status == Status::TooManyActions || status == Status::AccountUnknown)
        return notTried(DeliveryDesk::Status::Busy);
    if (status != Status::Accepted)
        return refused(status);
    // Done, and no delivery stands under it: a cancel, or something that has its own path.
    const bool isOfOrders = result.order != OrderNumber(0) || result.revoked != 0;
    return isOfOrders || market.isOfTransfer(account, key) ? refused(Status::KeyDiffers)
                                                           : Outcome{};
}

void DeliveryOffice::hear(ParcelId id, const CarrierWord &word)
{
    const auto found = m_underWay.find(idOf(id));
    if (found == m_underWay.end())
        return;
    UnderWay &own = found->second;
    const bool isOver = word.stage != DeliveryStage::Preparing;
    try {
        if (word.stage == DeliveryStage::Sent)
            m_tools.parcels.putTracking(id, word.tracking);
        // A carrier that is asked again says again that it prepares.
        if (word.stage != own.stage) {
            const Result result = own.market->carryOut(AdvanceDelivery{own.delivery, word.stage});
            if (result.status == Status::Accepted && isOver)
                ++(word.stage == DeliveryStage::Sent ? m_counters.sent
                                                     : m_counters.refusedByCarrier);
            own.stage = word.stage;
        }
        if (isOver)
            m_underWay.erase(found);
        else
            m_tools.carrier.goAhead(id);
    } catch (const StoreError &error) {
        // The next run asks the carrier again.
        fail(error.what());
    }
}

void DeliveryOffice::tick()
{
    const SteadyMs now = m_tools.clock.steady();
    while (!m_askAgain.empty() && m_askAgain.begin()->first <= now) {
        const auto found = m_underWay.find(m_askAgain.begin()->second);
        m_askAgain.erase(m_askAgain.begin());
        if (found == m_underWay.end())
            continue;
        ++m_counters.askedAgain;
        ask(CarrierOrder(found->second.order));
    }
}

std::optional<SteadyMs> DeliveryOffice::due() const
{
    return m_askAgain.empty() ? std::nullopt : std::optional(m_askAgain.begin()->first);
}

DeliveryDesk::Outcome DeliveryOffice::answerOf(const DeliveryRow &row) const
{
    Outcome outcome;
    outcome.parcel = row.parcel;
    return outcome;
}

DeliveryDesk::Outcome DeliveryOffice::refused(Status status)
{
    ++m_counters.refused;
    return deliveryRefusal(status);
}

bool DeliveryOffice::goesElsewhere(ParcelId id, const Recipient &recipient)
{
    const auto parcel = m_tools.parcels.find(id);
    return parcel && parcel->recipient != recipient;
}

ParcelId DeliveryOffice::newId()
{
    ParcelId id;
    while (id.isNull()) {
        m_tools.random.fill(&id.high, sizeof id.high);
        m_tools.random.fill(&id.low, sizeof id.low);
    }
    return id;
}

void DeliveryOffice::follow(DeliveryMarket &market, const DeliveryRow &row,
                            const Recipient &recipient)
{
    UnderWay own{&market,
                 row.number,
                 row.stage,
                 {row.parcel, market.nameOf(row.collection), row.quantity, recipient}};
    const CarrierOrder order = own.order;
    m_underWay[idOf(row.parcel)] = std::move(own);
    ask(order);
}

void DeliveryOffice::ask(const CarrierOrder &order)
{
    m_askAgain.emplace(m_tools.clock.steady() + m_limits.askAgainEvery, idOf(order.id));
    m_tools.carrier.ask(order,
                        [comeBack = m_tools.comeBack, id = order.id](const CarrierWord &word) {
                            comeBack(id, word);
                        });
}

void DeliveryOffice::note(const std::string &line)
{
    if (m_tools.notice)
        m_tools.notice(line);
}

void DeliveryOffice::fail(const std::string &reason)
{
    if (m_tools.fatal)
        m_tools.fatal(reason);
}

} // namespace zvx
