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
    static QByteArray check(bool open);
};
