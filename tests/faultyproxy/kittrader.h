#pragma once

#include "campaign/campaign.h"
#include "exchange/kills/funded_folder.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QUrlQuery>

#include <deque>
#include <random>
#include <vector>

namespace faultyproxy {

// What the user of the kit wants done once, and what the kit said of it.
struct Intent {
    enum Kind { Buy, Sell, Prepared, Withdraw };
    enum End { Open, Succeeded, Failed };

    Kind kind = Buy;
    int fen = 0; // the price of an order, which no other intent has
    int order = 0; // number of the order to be withdrawn
    End end = Open;
    QString message;

    bool isOrder() const { return kind != Withdraw; }
    bool isBuy() const { return kind == Buy || kind == Prepared; }
};

// Places and withdraws orders by ZvServerActionResult, a few calls at a time, and notes how each
// call ends. The same seed and the same ends give the same calls.
class KitTrader : public QObject
{
    Q_OBJECT

public:
    static constexpr int collection = 2106;

    KitTrader(quint32 seed, int actions);

    void signIn(const zvxtest::Trader &trader);
    bool isSignedIn() const { return m_isSignedIn; }

    void begin() { m_hasBegun = true; }
    bool isIdle() const { return m_hasBegun && m_left > 0 && m_underWay.empty(); }
    void goOn(); // by some more calls
    bool isDone() const { return m_left == 0 && m_underWay.empty(); }
    int ended() const { return static_cast<int>(m_intents.size() - m_underWay.size()); }

    // The number that the service gave an order.
    void noteOrder(int fen, int number) { m_orders.insert(fen, number); }

    const std::vector<Intent> &intents() const { return m_intents; }
    // Where calls ended otherwise than once each, in their order.
    const campaign::Failure &failure() const { return m_failure; }

private:
    void act();
    void end(Intent::Kind kind, bool succeeded, const QString &message);
    QString md5Of(int fen) const;
    unsigned chance(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    int m_life; // the kit remembers prepared orders, and a seed may be lived through again
    std::mt19937 m_random;
    int m_left; // calls
    bool m_isSignedIn = false;
    bool m_hasBegun = false;
    std::vector<Intent> m_intents;
    std::deque<std::size_t> m_underWay; // indexes into them
    QHash<int, int> m_orders; // by price
    campaign::Failure m_failure;
};

} // namespace faultyproxy
