#pragma once

#include "exchange/core/types.h"

#include <optional>
#include <string>
#include <vector>

namespace zvx {

struct AccountState;
struct MarketSnapshot;
class JsonText;

/// One holding as clients see it.
struct CapHolding {
    CollectionId collection;
    std::string code;
    std::string name;
    Quantity quantity; ///< all pieces
    Quantity sellable; ///< those that no open order holds
    Fen cost; ///< what was paid for all of them, fees included
    /// The latest price or, where nothing was dealt, the previous close; none for a collection that
    /// was listed while the service runs, whose pieces are worth what was paid for them.
    std::optional<Fen> latest;
};

/// An account's money and holdings with what follows from them. Sums stop at kAmountBound.
struct CapFigures {
    Fen heldMarketValue; ///< of all pieces, at CapHolding::latest or as paid
    Fen profit; ///< heldMarketValue less what was paid for the pieces, fees included
    Fen available;
    Fen frozen; ///< of open buys
    Fen total; ///< available, frozen and heldMarketValue
    std::vector<CapHolding> holdings; ///< by rising collection
};

CapFigures capFigures(const AccountState &account, const MarketSnapshot &market);

/// The JSON array of holdings.
void writeHoldings(JsonText &json, const std::vector<CapHolding> &holdings);

/// The `data` of cap.html.
void writeCap(JsonText &json, const CapFigures &figures);

} // namespace zvx
