#pragma once

#include "exchange/accounts/parcel.h"
#include "exchange/core/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace zvx {

class HttpParameters;

/// What somebody wants to receive, and where.
struct DeliveryForm {
    CollectionId collection;
    Quantity quantity;
    Recipient recipient; ///< without blanks around
};

/// Name of a field that was missing, malformed or out of bounds.
using WrongDeliveryField = std::string;

/// The fields of a request. Whether the account has so many pieces is for the market to say.
std::variant<DeliveryForm, WrongDeliveryField> readDeliveryForm(const HttpParameters &fields);

/// A Chinese sentence that says what the field should be, "" for one that no person fills in.
std::string_view deliveryFieldSentence(std::string_view field);

/// The id as keyText() writes it.
std::optional<ParcelId> readParcelId(std::string_view text);

} // namespace zvx
