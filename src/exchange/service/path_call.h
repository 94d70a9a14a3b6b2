#pragma once

#include "exchange/service/http_message.h"
#include "exchange/service/protocol.h"

namespace zvx {

class MarketBoard;
class MarketServer;

/// One request of a path below a market's prefix, with the duty to answer it.
struct PathCall {
    PathKind kind;
    MarketServer &market;
    MarketBoard &board;
    HttpRequest request;
    HttpResponder responder;
};

} // namespace zvx
