#pragma once

#include "exchange/core/types.h"

#include <string>

namespace zvx {

/// Where goods go.
struct Recipient {
    std::string person;
    std::string phone;
    std::string address;

    friend bool operator==(const Recipient &a, const Recipient &b)
    {
        return a.person == b.person && a.phone == b.phone && a.address == b.address;
    }
    friend bool operator!=(const Recipient &a, const Recipient &b) { return !(a == b); }
};

/// By what a carrier's customers follow a parcel; both empty before it was sent.
struct Tracking {
    std::string carrier;
    std::string number;
};

struct Parcel {
    ParcelId id;
    Recipient recipient;
    Tracking tracking;
};

} // namespace zvx
