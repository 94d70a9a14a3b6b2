#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>

// What a user meant by an action, as far as a window names it.
struct ZVNETWORKKIT_EXPORT ZvIntent {
    enum Matter {
        Other, // nothing that is at stake where its answer does not come
        Order,
        PreparedOrder,
        Withdrawal,
        Delivery, // or its cancellation, which names no collection
        Transfer // of money in or out
    };

    Matter matter = Other;
    int direction = 0; // of an order: 1 for a buy, 2 for a sale
    QString collectionId; // of an order or a delivery
};

// The actions whose answer has not come, and which may have been carried out or not: the exchange
// is asked what became of each. A window says so in words, for nobody may take such an order for
// one that was refused, and place it again.
class ZVNETWORKKIT_EXPORT ZvActionChecks : public QObject
{
    Q_OBJECT

public:
    enum Outcome {
        Done,
        Refused, // by the exchange, which has said why
        NotArrived, // and never will
        Unknown // nobody can ask any more
    };

    // Those that are being asked for, the oldest first.
    QList<ZvIntent> open() const;

    // How many actions have not left yet, since they wait for the end of such a one.
    int waiting() const { return m_waiting; }

    // The kit's side. A key stands for an action; one that is not open ends without effect.
    void begin(const QString &key, const ZvIntent &intent);
    void end(const QString &key);
    void settle(const QString &key, Outcome outcome, const QString &message);
    void setWaiting(int waiting);

signals:
    // Another action is open, one is no longer, or another number waits.
    void changed();

    // It is known now what became of an action, and no signal of ZvServerActionResult says it in
    // words: it has failed there as unknown, or is an order that vanishes from its table. `message`
    // is the exchange's word where it refused it.
    void settled(const ZvIntent &intent, ZvActionChecks::Outcome outcome, const QString &message);

private:
    QList<QPair<QString, ZvIntent>> m_open; // by key
    int m_waiting = 0;
};
