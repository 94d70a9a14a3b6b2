#include "faultyproxy/kittrader.h"

#include "ZvNetworkKit/zvserveractionresult.h"

namespace faultyproxy {

namespace {

// Of the collection, in fen. Buys rise from the lowest and sales fall from the highest, so that
// they never meet.
constexpr int lowest = 42'300;
constexpr int highest = 51'700;
constexpr int mostCallsAtOnce = 5;

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

} // namespace

KitTrader::KitTrader(quint32 seed, int count) : m_random(seed), m_left(count)
{
    static int lives = 0;
    m_life = ++lives;

    using Result = ZvServerActionResult;
    connect(actions(), &Result::signal_login_succeed, this, [this] { m_isSignedIn = true; });
    connect(actions(), &Result::signal_trade_buy_succeed, this,
            [this] { end(Intent::Buy, true, {}); });
    connect(actions(), &Result::signal_trade_buy_failed, this,
            [this](const QString &message) { end(Intent::Buy, false, message); });
    connect(actions(), &Result::signal_trade_sell_succeed, this,
            [this] { end(Intent::Sell, true, {}); });
    connect(actions(), &Result::signal_trade_sell_failed, this,
            [this](const QString &message) { end(Intent::Sell, false, message); });
    connect(actions(), &Result::signal_trade_revoke_succeed, this,
            [this] { end(Intent::Withdraw, true, {}); });
    connect(actions(), &Result::signal_trade_revoke_failed, this,
            [this](const QString &message) { end(Intent::Withdraw, false, message); });
    connect(actions(), &Result::signal_prepay_send_succeed, this,
            [this] { end(Intent::Prepared, true, {}); });
    connect(
        actions(), &Result::signal_prepay_send_failed, this,
        [this](const QString &, const QString &message) { end(Intent::Prepared, false, message); });
}

void KitTrader::signIn(const zvxtest::Trader &trader)
{
    actions()->sendRequest_login(QString::fromStdString(trader.phone),
                                 QString::fromStdString(trader.password));
}

void KitTrader::goOn()
{
    for (auto calls = 1 + chance(mostCallsAtOnce); calls > 0 && m_left > 0; --calls) {
        --m_left;
        act();
    }
}

QString KitTrader::md5Of(int fen) const
{
    return QStringLiteral("%1%2")
        .arg(m_life, 16, 16, QLatin1Char('0'))
        .arg(fen, 16, 16, QLatin1Char('0'));
}

void KitTrader::act()
{
    const int number = static_cast<int>(m_intents.size());
    Intent intent;
    const unsigned kind = chance(100);
    if (kind < 20 && !m_orders.isEmpty()) {
        const QList<int> numbers = m_orders.values();
        intent.kind = Intent::Withdraw;
        // An order that was withdrawn before is among them now and then.
        intent.order = numbers.at(static_cast<int>(chance(static_cast<unsigned>(numbers.size()))));
    } else {
        intent.kind = kind < 50 ? Intent::Buy : kind < 80 ? Intent::Sell : Intent::Prepared;
        const bool isRefused = kind % 10 == 0;
        if (isRefused)
            intent.fen = highest + 1 + number;
        else
            intent.fen = intent.isBuy() ? lowest + number : highest - number;
    }
    m_underWay.push_back(m_intents.size());
    m_intents.push_back(intent);

    const QString id = QString::number(collection);
    const float price = static_cast<float>(intent.fen / 100.0);
    switch (intent.kind) {
    case Intent::Buy:
        actions()->sendRequest_trade_buy(id, price, 1);
        break;
    case Intent::Sell:
        actions()->sendRequest_trade_sell(id, price, 1);
        break;
    case Intent::Withdraw:
        actions()->sendRequest_trade_revoke({intent.order});
        break;
    case Intent::Prepared:
        // A second click means the same.
        for (auto clicks = 1 + chance(2); clicks > 0; --clicks)
            actions()->sendRequest_prepay_send(md5Of(intent.fen), 1, id, price, 1);
        break;
    }
}

void KitTrader::end(Intent::Kind kind, bool succeeded, const QString &message)
{
    if (m_underWay.empty() || m_intents[m_underWay.front()].kind != kind) {
        if (!m_failure)
            m_failure = "a call ended out of its turn, or twice: " + message.toStdString();
        return;
    }
    Intent &intent = m_intents[m_underWay.front()];
    m_underWay.pop_front();
    intent.end = succeeded ? Intent::Succeeded : Intent::Failed;
    intent.message = message;
}

} // namespace faultyproxy
