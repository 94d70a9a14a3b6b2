#pragma once

#include "ZvNetworkKit/zvclock.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <unordered_map>

// Which server and which session a request belongs to. Both count up with each change, so an
// answer that comes late is known by its number.
struct ZVNETWORKKIT_EXPORT ZvGeneration {
    quint32 server = 0;
    quint32 session = 0;
};

// One request to the exchange.
struct ZVNETWORKKIT_EXPORT ZvRequest {
    using Parameters = QList<QPair<QString, QString>>;

    QString prefix; // of the server, such as "/lc/youbika/"; or of the platform
    QString path; // one of the server paths
    Parameters parameters; // of the query, or the fields of an action's body; not encoded
    bool isAction = false; // POST on a connection of its own; goes out once
    QByteArray token; // of the session; empty for none
    int deadline = 10000; // milliseconds from sending to the whole answer
    qint64 bodyBound = 8 * 1024 * 1024; // bytes; a longer answer ends the call
    ZvGeneration generation;

    // The value of a parameter; empty when it is not there.
    QString parameter(const QString &name) const;
    bool hasParameter(const QString &name) const;
};

// How a call ended. Each call ends exactly once.
struct ZVNETWORKKIT_EXPORT ZvAnswer {
    enum Ending {
        Answered, // `httpStatus` and `body` are what the exchange said
        NotSent, // the exchange was not reached: nothing of the request can have arrived
        Failed, // broken off; whether the request arrived is not known
        TimedOut, // the deadline has passed; likewise
        TooLarge, // the body was longer than its bound
        Cancelled // by the caller, or because the transport ended
    };

    Ending ending = Failed;
    int httpStatus = 0;
    QByteArray body;
    QString error; // for the log
};

using ZvCallId = quint64;

// The one seam between the kit and the outside.
//
// The base keeps the promises that every transport gives: an ending never comes from inside send()
// or cancel() but through the event loop, comes exactly once, and comes at the deadline at the
// latest. A transport only starts and stops calls and says how they ended.
class ZVNETWORKKIT_EXPORT ZvTransport : public QObject
{
    Q_OBJECT

public:
    using Ending = std::function<void(const ZvAnswer &)>;

    explicit ZvTransport(QObject *parent = nullptr);

    // All calls that are still open end as cancelled.
    ~ZvTransport() override;

    // Takes deadlines from another clock, which the caller keeps; null for the machine's.
    void setClock(ZvClock *clock);

    // Sends `request`; `ending` runs in the event loop of `context`, and not at all when `context`
    // has died by then.
    ZvCallId send(const ZvRequest &request, QObject *context, Ending ending);

    // Ends an open call as cancelled. An id that is not open is ignored.
    void cancel(ZvCallId id);

    int openCalls() const { return static_cast<int>(m_calls.size()); }

protected:
    virtual void start(ZvCallId id, const ZvRequest &request) = 0;

    // The call has ended otherwise: nothing more is wanted of it.
    virtual void abandon(ZvCallId id) = 0;

    // Ends a call; a call that has ended is ignored.
    void finish(ZvCallId id, const ZvAnswer &answer);

    // Ends all open calls; a transport calls it first in its destructor.
    void finishAll();

private:
    struct Call {
        QPointer<QObject> context;
        Ending ending;
        ZvTimer deadline;
    };

    bool end(ZvCallId id, const ZvAnswer &answer);
    ZvClock *clock();

    std::unique_ptr<ZvClock> m_ownClock;
    QPointer<ZvClock> m_clock;
    std::unordered_map<ZvCallId, Call> m_calls;
    ZvCallId m_last = 0;
};
