#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/account_paths.h"
#include "exchange/service/application_paths.h"
#include "exchange/service/card_paths.h"
#include "exchange/service/link_pages.h"
#include "exchange/service/market_board.h"
#include "exchange/service/money_paths.h"
#include "exchange/service/platform_pages.h"
#include "exchange/service/session_gate.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace zvx {

/// The accounts of one platform, and who asks for them. Stays where it is.
struct AccountRoom {
    AccountRoom(AccountDeskOptions options, QueryPool &queries,
                const ApplicationFile &applicationFile, const WireAnswers &answers,
                const PublicAddress &address, LinkTools links)
        : desk(std::move(options)),
          gate([this](std::string_view token) { return desk.session(token); }, answers),
          paths(desk, gate, queries, answers), applications(desk, gate, applicationFile, answers),
          cards(desk, gate, address, answers), pages(desk, std::move(links))
    {
    }

    AccountDesk desk;
    SessionGate gate;
    AccountPaths paths;
    ApplicationPaths applications;
    CardPaths cards;
    LinkPages pages;
    std::optional<MoneyPaths> money; ///< as soon as money can be moved
};

/// What a platform has outside of its markets.
struct PlatformRoom {
    explicit PlatformRoom(const std::string &name)
        : board(std::make_shared<PlatformBoard>()), pages(name)
    {
    }

    std::shared_ptr<PlatformBoard> board;
    PlatformPages pages;
};

// By the platforms' ids.
using AccountRooms = std::map<std::string, std::unique_ptr<AccountRoom>, std::less<>>;
using PlatformRooms = std::map<std::string, PlatformRoom, std::less<>>;

} // namespace zvx
