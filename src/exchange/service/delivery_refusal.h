#pragma once

#include "exchange/core/command.h"
#include "exchange/service/delivery_desk.h"

namespace zvx {

/// What is told of a delivery that the market did not carry out.
DeliveryDesk::Outcome deliveryRefusal(Status status);

/// What is told where nothing was tried.
DeliveryDesk::Outcome notTried(DeliveryDesk::Status status);

} // namespace zvx
