#pragma once

#include "exchange/kills/funded_folder.h"

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace zvxtest {

/// What a trader wants done once, and what was said of it.
struct Intent {
    enum Kind { PlaceOrder, Revoke, PayOut, TakeOut, TakeBack };

    Kind kind = PlaceOrder;
    std::string key;
    std::string path;
    std::string fields; ///< of the form, without the key

    zvx::CollectionId collection; ///< of an order, or of pieces that are taken out
    zvx::Quantity quantity; ///< likewise
    zvx::Side side = zvx::Side::Buy; ///< of an order, like the price
    zvx::Fen price;
    std::int64_t order = 0; ///< that was placed, or is to be withdrawn
    std::string parcel; ///< in which pieces are taken out, or that is to be cancelled
    zvx::Fen amount; ///< of a transfer

    std::string said; ///< the answer's status, reason and data; empty where none came
    bool done = false; ///< where `said` says so

    std::string form() const { return "key=" + key + '&' + fields; }
    std::string question() const;
};

/// What an answer comes to.
struct Word {
    enum Kind { Final, Passing, None };

    Kind kind = None; ///< Passing: asking again later may tell
    std::string said;
    bool done = false;
    std::int64_t order = 0;
    std::string parcel;

    /// Of an answer's body; None for an empty one.
    static Word of(const std::string &body);
};

/// Makes up what one trader wants, one thing after the other. The same seed and the same answers
/// give the same.
class Wishes
{
public:
    Wishes(std::uint64_t seed, int trader);

    Intent next();
    /// An order that may be withdrawn from now on.
    void addOrder(std::int64_t order) { m_orders.push_back(order); }
    /// A parcel that may be cancelled.
    void addParcel(const std::string &parcel) { m_parcels.push_back(parcel); }
    std::size_t below(std::size_t bound) { return m_random() % bound; }

private:
    std::string newKey();
    void payOut(Intent &intent);
    void revoke(Intent &intent);
    void takeOut(Intent &intent);
    void takeBack(Intent &intent);
    void placeOrder(Intent &intent);

    std::mt19937_64 m_random;
    std::string m_keys; ///< how they begin
    unsigned m_made = 0;
    std::vector<std::int64_t> m_orders;
    std::vector<std::string> m_parcels;
};

} // namespace zvxtest
