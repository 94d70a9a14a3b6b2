#pragma once

#include "exchange/core/command.h"
#include "exchange/store/snapshot.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <unordered_map>
#include <vector>

namespace zvx {

/// A source of numbers that gives the same ones for the same seed, on every machine.
class SeededSource
{
public:
    explicit SeededSource(std::uint64_t seed);
    std::uint64_t next();
    /// 0 to `bound` - 1; `bound` is at least 1.
    std::int64_t below(std::int64_t bound);
    /// `least` to `most`, both included.
    std::int64_t between(std::int64_t least, std::int64_t most);
    bool chance(int percent) { return below(100) < percent; }

private:
    std::uint64_t m_state;
};

struct RobotOptions {
    /// Of the whole market, 0.01 to 1000. Laying out thin books again comes on top.
    double ordersPerSecond = 6;
    int accounts = 8;
    std::int64_t restingMs = 2 * 60 * 60 * 1000; ///< how long an order may stay in its book
    std::size_t restingOfCollection = 24; ///< orders in one book, both sides
    std::size_t hotCollections = 12; ///< that draw half of the orders for a while
    std::int64_t hotMs = 45'000; ///< until others become hot
};

/**
 * The robots of one market: what they would like to do next, and nothing else. Time, the books and
 * the answers come in as arguments, so that the same seed and the same market give the same orders.
 *
 * Every collection has a value that wanders slowly within its daily limits and is drawn back to the
 * previous close. The robots lay out levels around it on either side, take what stands in the way
 * of their opinion, and revoke what became old. A session begins with one small deal in every
 * collection, so that nobody looks at an empty list, and half of all orders go to a few collections
 * that change every now and then. Money and pieces are handed to them when a refusal
 * shows that they lack some, a sixty-fourth of an issue at a time.
 */
class RobotCrowd
{
public:
    /// Accounts of robots begin here in every market; people's numbers stay far below.
    static constexpr std::int64_t firstAccount = 8'000'000'000'000'000;

    struct Listing {
        CollectionId id;
        Quantity listed;
        bool suspended = false;
    };

    /// A command and the number under which its answer is to be given back.
    struct Wish {
        std::uint64_t token = 0;
        Command command;
    };

    /// The book of a listing as the robots see it. Never null.
    using Books = std::function<const TradeLevels *(std::size_t listing)>;

    RobotCrowd(std::uint64_t seed, std::vector<Listing> listings, const RobotOptions &options = {});

    /// Appends what the robots want at `nowMs`, a clock that only goes forward, at most `room`
    /// commands. Call it every few hundred milliseconds while the market is open.
    void step(std::int64_t nowMs, const Books &books, std::size_t room, std::vector<Wish> &out);

    /// The answer to a wish. Each wish gets one `answered` or one `dropped`.
    void answered(std::uint64_t token, const Result &result);
    /// The wish was not carried out: the queue was full.
    void dropped(std::uint64_t token);

    /// All orders in the books ended with the session.
    void sessionEnded();

private:
    struct Resting {
        OrderNumber order;
        int account = 0;
        std::int64_t since = 0;
    };
    struct Book {
        Listing listing;
        std::int64_t value = 0; ///< thousandths of a fen, 0 before the first look
        std::int64_t filledAt = 0;
        std::size_t waiting = 0;
        std::deque<Resting> resting;
    };
    struct Pending {
        int account = 0;
        std::size_t book = 0;
        std::int64_t since = 0;
        Command command;
    };
    class Turn;

    void askForMoney(int robot);
    void openAccounts(Turn &turn);
    void sweepOldRun(Turn &turn);
    void helpOut(Turn &turn);
    void fillNext(Turn &turn);
    void revokeStale(Turn &turn);
    void act(Turn &turn);
    void place(Turn &turn, std::size_t index, Side side, std::int64_t price, std::int64_t quantity);
    void quote(Turn &turn, std::size_t index, const TradeLevels &levels, Side side, int depth);
    void take(Turn &turn, std::size_t index, const TradeLevels &levels);
    void revokeOldest(Turn &turn, std::size_t index, std::size_t count);
    void wander(Book &book, const TradeLevels &levels);
    std::int64_t usualQuantity(const Book &book, std::int64_t price);
    std::size_t pickBook(std::int64_t now);
    std::size_t pickPopular();

    SeededSource m_source;
    RobotOptions m_options;
    std::vector<Book> m_books;
    std::vector<std::size_t> m_popularity;
    std::vector<std::size_t> m_hot;
    std::int64_t m_hotSince = 0;
    std::unordered_map<std::uint64_t, Pending> m_pending;
    std::vector<Command> m_help;
    std::vector<bool> m_moneyOnItsWay; ///< by robot
    std::int64_t m_lastStep = -1;
    std::int64_t m_credit = 0; ///< thousandths of an order
    std::uint64_t m_lastToken = 0;
    std::vector<int> m_unopened; ///< robots without an account yet
    std::size_t m_fillCursor = 0;
    std::size_t m_staleCursor = 0;
    std::int64_t m_sweepFrom = 0; ///< numbers below it may be orders of an earlier run
    std::int64_t m_sweepTo = 0;
    std::int64_t m_sweepLength = 0;
    int m_sweepAccount = 0;
    bool m_sweepKnown = false;
};

} // namespace zvx
