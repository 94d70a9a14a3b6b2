#pragma once

#include "exchange/service/http_message.h"
#include "exchange/service/platform_rooms.h"

#include <functional>
#include <string>
#include <string_view>

namespace zvx {

class MarketPaths;
class WireAnswers;

/// Everything that stands below no market's prefix: the operator's pages at the root, pictures, and
/// of each platform its pages and what a client asks before it knows a market.
class OutsidePaths
{
public:
    /// What the operator's pages tell.
    struct Health {
        std::function<bool()> hasFailed;
        std::function<std::string()> metrics;
    };

    /// All have to outlive this and every request that it was handed.
    OutsidePaths(const WireAnswers &answers, const MarketPaths &market,
                 const PlatformRooms &platforms, const AccountRooms &accounts, Health health);

    /// On the server's thread.
    void handle(HttpRequest request, HttpResponder responder) const;

private:
    HttpAnswer root(const HttpRequest &request) const;
    HttpAnswer qrCode(const HttpRequest &request) const;
    HttpAnswer platform(std::string_view id, std::string_view rest,
                        const HttpRequest &request) const;

    const WireAnswers &m_answers;
    const MarketPaths &m_market;
    const PlatformRooms &m_platforms;
    const AccountRooms &m_accounts;
    Health m_health;
};

} // namespace zvx
