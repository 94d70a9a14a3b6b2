#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

namespace endtoend {

class StateFolder;

// Somebody who trades at a server by the wire alone, without a window.
class WireTrader
{
public:
    WireTrader(const QUrl &exchange, const QString &server) : m_exchange(exchange), m_server(server)
    {
    }

    // False where the exchange refuses it.
    bool signIn(const QString &phone, const QString &password);

    // Opens an account and binds a bank card to it. False where a step fails.
    bool openAccount(const StateFolder &state, const QString &phone, const QString &password);

    // The same, and moves money in.
    bool moveIn(const StateFolder &state, const QString &phone, const QString &password,
                qint64 fen);

    // Looks into the account of a session that somebody else has begun.
    void useSession(const QByteArray &token) { m_token = token; }

    // The number of the order, or 0 where it is refused; refusal() says why.
    int buy(const QString &collection, qint64 price, int quantity);
    int sell(const QString &collection, qint64 price, int quantity);
    bool revoke(int order);
    QString refusal() const { return m_refusal; } // a word for programs
    QString sentence() const { return m_sentence; } // for people

    // What the account has at the server, as the protocol tells it.
    QJsonObject cap();
    QJsonArray openOrders();
    QJsonArray ordersOfToday();

    // Pieces of a collection, all and those that can be sold.
    QPair<int, int> holding(const QString &collection);

    // The data of an answer, empty where the exchange refuses.
    using Fields = QList<QPair<QString, QString>>;
    QJsonObject get(const QString &path, const Fields &fields = {});
    QJsonObject post(const QString &path, const Fields &fields);

private:
    QJsonObject take(const QByteArray &body);
    bool bindCard(const StateFolder &state, const QString &phone);
    QByteArray page(const QString &path, const Fields &form);

    QUrl m_exchange;
    QString m_server;
    QByteArray m_token;
    bool m_isOk = false;
    QString m_refusal;
    QString m_sentence;
};

} // namespace endtoend
