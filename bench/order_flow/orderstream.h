#pragma once

#include "exchange/core/command.h"
#include "exchange/core/market.h"
#include "exchange/store/catalogue.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Numbers that the same seed gives on every machine.
class Chance
{
public:
    explicit Chance(std::uint64_t seed) : m_state(seed) { }

    std::uint64_t bits();
    std::int64_t below(std::int64_t bound)
    {
        return static_cast<std::int64_t>(bits() % static_cast<std::uint64_t>(bound));
    }
    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        return least + below(most - least + 1);
    }
    bool percent(int part) { return below(100) < part; }
    // 0 and more, each half as likely as the one before.
    std::int64_t halving();
    double part() { return static_cast<double>(bits() >> 11) * 0x1p-53; } // of one

private:
    std::uint64_t m_state;
};

// A market to trade on: so many collections and accounts, each of them a member of some books, with
// money and pieces of those.
class Floor
{
public:
    Floor(std::size_t books, std::size_t accounts, std::uint64_t seed);

    struct Book {
        zvx::CollectionId id;
        zvx::Fen previousClose;
        std::vector<zvx::AccountId> members;
    };
    const std::vector<Book> &books() const { return m_books; }
    std::size_t accounts() const { return m_accounts; }

    zvx::CatalogueMarket catalogue() const;
    // Lists the collections and opens the market, as a writer does with the catalogue.
    std::vector<zvx::Command> listing() const;
    // Opens the accounts and gives them what they trade with.
    std::vector<zvx::Command> opening() const;

    static constexpr std::int64_t issued = 1'000'000'000;

private:
    std::vector<Book> m_books;
    std::size_t m_accounts;
};

// What a busy market is asked, one command after the other: orders near the touch, of which a
// fifth crosses it, withdrawals of orders that rest, and what goes wrong in every market: retries
// under the same key, prices outside the limits, orders that are done, empty purses. One settlement
// in the middle. The numbers of orders are known from a market of its own.
class OrderStream
{
public:
    OrderStream(const Floor &floor, std::uint64_t seed);

    std::vector<zvx::Command> make(std::size_t count);

    // How many of each kind it made.
    struct Kinds {
        std::size_t orders = 0;
        std::size_t revokes = 0;
        std::size_t money = 0;
        std::size_t others = 0;
        std::size_t deals = 0;
        std::size_t refusals = 0;
    };
    const Kinds &kinds() const { return m_kinds; }

private:
    struct Resting {
        zvx::OrderNumber order;
        zvx::AccountId account;
    };
    struct Place {
        std::int64_t middle = 0; // what the traders think that a piece is worth, in fen
        std::vector<Resting> resting;
    };

    zvx::Command next();
    zvx::Command order(std::size_t book);
    zvx::Command revoke(std::size_t book);
    zvx::Command money();
    zvx::Command somethingElse(std::size_t book);
    std::size_t pickBook();
    zvx::AccountId pickMember(std::size_t book);
    zvx::ActionKey newKey();
    void carryOut(const zvx::Command &command);

    const Floor &m_floor;
    Chance m_chance;
    Chance m_keyBits;
    std::uint64_t m_keys = 0;
    zvx::Market m_market;
    std::vector<Place> m_places;
    std::vector<std::size_t> m_bookOf; // by collection id
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_where; // book and place of open orders
    std::vector<zvx::Event> m_happened;
    std::vector<zvx::Command> m_again; // commands whose answers got lost
    Kinds m_kinds;
};
