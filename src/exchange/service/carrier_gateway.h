#pragma once

#include "exchange/accounts/parcel.h"
#include "exchange/core/command.h"

#include <functional>
#include <string>

namespace zvx {

/// What a carrier is asked to bring to somebody.
struct CarrierOrder {
    ParcelId id; ///< the parcel's own, never used for another one
    std::string goods; ///< their name
    Quantity quantity;
    Recipient recipient;
};

/// How far a parcel is.
struct CarrierWord {
    DeliveryStage stage = DeliveryStage::Preparing; ///< or Sent, or Refused
    Tracking tracking = {}; ///< of one that was sent
};

/// The way to the carriers.
class CarrierGateway
{
public:
    using Answered = std::function<void(const CarrierWord &)>;

    virtual ~CarrierGateway() = default;

    /// Hands a parcel over, or asks how far it is where its id was handed over before: one id is
    /// sent once, however often it is asked for.
    ///
    /// `answered` is called with each step that the parcel takes, also with those that it took
    /// before; before this returns, later, more than once or never, from any thread, also when
    /// nobody is interested any more. One thread of the exchange at a time; nothing here throws.
    virtual void ask(const CarrierOrder &order, Answered answered) = 0;

    /// The exchange has written down that a parcel is being prepared: nobody takes it back any
    /// more. A carrier that spoke of Preparing sends nothing before it hears this, which comes
    /// again as often as it speaks so.
    virtual void goAhead(ParcelId id) = 0;

    /// A parcel that its owner keeps after all.
    virtual void giveUp(ParcelId id) = 0;
};

} // namespace zvx
