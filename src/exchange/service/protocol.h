#pragma once

#include "exchange/service/http_message.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace zvx {

constexpr std::int64_t protocolNumber = 1;

/// How many of a collection's latest deals a client may ask for, and gets unasked.
constexpr std::int64_t mostLatestDeals = 200;
constexpr std::int64_t usualLatestDeals = 10;

/// The pieces of market state that have a version. In the order in which answers hold them.
enum class Topic {
    Market,
    Message,
    Check,
    Composite,
    Brief,
    Type,
    List,
    Item,
    Trade,
    Latest,
    Cap,
};
constexpr std::size_t topicCount = 11;

/// "check": the name in parameters and answers.
std::string_view topicName(Topic topic);
constexpr std::size_t indexOf(Topic topic)
{
    return static_cast<std::size_t>(topic);
}

/// What a path is for.
enum class PathKind {
    Sync,
    Update,
    Market,
    Message,
    Check,
    Composite,
    Brief,
    List,
    Item,
    Trade,
    Latest,
    Type,
    Minutes,
    DayBars,
    WeekBars,
    MonthBars,
    DealPage,
    Applications,
    SignIn,
    Register,
    RegisterCode,
    Reset,
    ResetCode,
    Account,
    Favourites,
    FavouriteAdd,
    FavouriteRemove,
    Cap,
    Buy,
    Sell,
    Revoke,
    OpenOrders,
    OrdersOfSession,
    Orders,
    Deals,
    Gather,
    Holdings,
    BankCard,
    QrCode,
    MoneyCode,
    MoneyIn,
    MoneyOut,
    MoneyList,
    Take,
    TakeShown,
    TakeList,
};

/// Who answers a path.
enum class PathRoom {
    Polls, ///< what may wait for a change
    Market, ///< what everybody may read
    Charts, ///< the same, of one collection's past and from the market's store
    Applications, ///< what can be applied for, and who did
    Accounts, ///< signing in, registering, favourites
    Trading, ///< what an account has and does in one market
    Records, ///< what it did there, page by page
    Money, ///< money in and out of one market
    Deliveries, ///< goods on their way out of one market
    Cards, ///< the bank card, and the pages behind one-time links
};
constexpr std::size_t pathRoomCount = 10;
PathRoom roomOf(PathKind kind);

struct PathEntry {
    std::string_view path;
    std::string_view method;
    PathKind kind;
};

/// The whole contract: every path below a prefix, in its order.
const std::array<PathEntry, 46> &contractPaths();

/// The entry of a path below a prefix, or null.
const PathEntry *findPath(std::string_view path);

/// The closed list of the envelope's states.
enum class WireStatus {
    Ok,
    Refused,
    Protocol,
    BadRequest,
    Session,
    Elsewhere,
    NotFound,
    Method,
    TooLarge,
    Busy,
    Unserved,
    Failed,
};

std::string_view wireName(WireStatus status);
int httpStatus(WireStatus status);

/// Writes the frame that every answer has.
class Envelope
{
public:
    /// `boot` names this run; `now` gives UTC milliseconds.
    Envelope(std::string boot, std::function<std::int64_t()> now);

    const std::string &boot() const { return m_boot; }

    /// `{"protocol":1,…,"time":…` without the closing brace.
    std::string open(WireStatus status) const;
    /// A whole answer that says no; `message` is a Chinese sentence for people, `reason` the word
    /// for programs that goes with WireStatus::Refused. `data` is a JSON object, for the few
    /// refusals that tell more.
    HttpAnswer refusal(WireStatus status, std::string_view message, std::string_view reason = {},
                       std::string_view data = {}) const;

private:
    std::string m_boot;
    std::function<std::int64_t()> m_now;
};

} // namespace zvx
