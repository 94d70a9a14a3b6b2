#include "exchange/core/command.h"

namespace zvx {

const char *name(Status status)
{
    switch (status) {
    case Status::Accepted:
        return "accepted";
    case Status::Exists:
        return "exists";
    case Status::AccountUnknown:
        return "account unknown";
    case Status::KeyDiffers:
        return "key differs";
    case Status::TooManyActions:
        return "too many actions";
    case Status::AccountFrozen:
        return "account frozen";
    case Status::MarketClosed:
        return "market closed";
    case Status::CollectionUnknown:
        return "collection unknown";
    case Status::CollectionSuspended:
        return "collection suspended";
    case Status::PriceOutsideLimits:
        return "price outside limits";
    case Status::BadTick:
        return "bad tick";
    case Status::BadQuantity:
        return "bad quantity";
    case Status::NotEnoughMoney:
        return "not enough money";
    case Status::NotEnoughHoldings:
        return "not enough holdings";
    case Status::TooManyOpenOrders:
        return "too many open orders";
    case Status::MarketFull:
        return "market full";
    case Status::OrderUnknown:
        return "order unknown";
    case Status::OrderDone:
        return "order done";
    case Status::NotYourOrder:
        return "not your order";
    case Status::BadAmount:
        return "bad amount";
    case Status::BadRate:
        return "bad rate";
    case Status::BadPrice:
        return "bad price";
    case Status::BadDay:
        return "bad day";
    case Status::AlreadyThere:
        return "already there";
    case Status::KeyBurnt:
        return "key burnt";
    case Status::BadKey:
        return "bad key";
    case Status::NoBankCard:
        return "no bank card";
    case Status::AboveTransferLimit:
        return "above transfer limit";
    case Status::AboveDayLimit:
        return "above day limit";
    case Status::TooManyTransfers:
        return "too many transfers";
    case Status::TransferUnknown:
        return "transfer unknown";
    case Status::TransferDone:
        return "transfer done";
    case Status::TooManyDeliveries:
        return "too many deliveries";
    case Status::DeliveryUnknown:
        return "delivery unknown";
    case Status::DeliveryDone:
        return "delivery done";
    }
    return "unknown status";
}

} // namespace zvx
