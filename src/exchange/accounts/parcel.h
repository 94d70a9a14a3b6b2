#pragma once

#include "exchange/core/types.h"

#include <string>

namespace zvx {

/// Where goods go.
struct Recipient {
    std::string person;
    std::string phone;
    std::string address;
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
