#pragma once

#include "ZvNetworkKit/zvclock.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class ZvScriptedTransport;

// The kit on a scripted exchange and a clock that stands still: what the tests of polls, queries
// and actions share.
class KitBench
{
public:
    KitBench();
    ~KitBench();

    ZvManualClock clock;
    ZvScriptedTransport *exchange; // owned by the kit

    // Starts the kit on a server and answers what it asks at first, until it holds a long poll.
    void startOn(const QString &prefix);

    // Signs in: the exchange answers with this token, and the engine runs for the account.
    void signIn(const QByteArray &token, const QByteArray &number = "80001");

    // Answers what the kit asks about the account by itself, money and holdings under `version`.
    void answerAccount(const QByteArray &cap, qint64 version = 1,
                       const QList<QByteArray> &favourites = {},
                       const QByteArray &number = "80001");

    // The rows of actions live longer than a test, so each test that acts leaves them empty: ends
    // the session, and everything that is under way or waits.
    void endActions();

    // Ends the poll that is held with these topics, the inside of a JSON object.
    void answerPoll(const QByteArray &topics, const QByteArray &boot = "b001");

    // Lets the event loop and the decoder come to rest: all calls that are left wait.
    void settle();

    static QByteArray row(const QByteArray &id, int type = 1, qint64 latest = 1000,
                          qint64 volume = 10);
    static QByteArray rows(const QList<QByteArray> &rows);
    static QByteArray brief(const QList<QByteArray> &ids);
    static QByteArray item(const QByteArray &id, qint64 volume = 10);
    static QByteArray trade(const QByteArray &id, qint64 latest = 1000);
    static QByteArray latest(const QByteArray &id, int deals = 2);
    static QByteArray check(bool open, int session = 1);
    static QByteArray detail(const QByteArray &id, int page = 1, int deals = 2);

    // The `number`th minute of a session and a session of such minutes, which has no end.
    static QByteArray minute(int number, qint64 price = 1000, qint64 volume = 5);
    static QByteArray timeLine(const QByteArray &id, const QList<QByteArray> &minutes,
                               int session = 1,
                               const QByteArray &spans = "[[1577840400000, null]]");
    static QByteArray bar(const QByteArray &day, qint64 close = 1000);
    static QByteArray kLine(const QByteArray &id, const QList<QByteArray> &bars, int session = 1);
    static QByteArray account(const QByteArray &number = "80001");
    static QByteArray signedIn(const QByteArray &token, const QByteArray &number = "80001");
    static QByteArray holding(const QByteArray &id, qint64 quantity = 30, qint64 cost = 29700);
    static QByteArray cap(qint64 available, const QList<QByteArray> &holdings = {});
    static QByteArray gather(const QList<QByteArray> &ids = {});
    static QByteArray favourites(const QList<QByteArray> &ids);
};
