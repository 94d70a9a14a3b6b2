#pragma once

#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <memory>

class ZvLateEnds;

// One action and how its end is told.
struct ZvAction {
    QString path;
    ZvRequest::Parameters parameters;
    ZvDecodeTask::Shape shape = ZvDecodeTask::Action; // of its answer
    ZvIntent intent;

    // Changes nothing: a query that waits for its turn among the actions. It is about the server
    // and the user in view; where they change before it has ended it is asked again.
    bool isQuestion = false;

    // False for those who sign in or register: the exchange is told of no session, and what it says
    // ends none.
    bool isOfSession = true;
    QString key; // of an earlier attempt whose end is not known; empty for a new one

    // What the kit keeps of a success, before the next action goes out; may be empty. False where
    // the answer does not hold it, which is a failure.
    std::function<bool(const ZvReply &)> keep;
    std::function<void(const ZvReply &)> succeed;
    std::function<void(const QString &message)> fail;

    // Told before `fail` where the end could not be learnt, with the key that still stands for the
    // action; may be empty.
    std::function<void(const QString &key)> lose;

    // Told before `fail` where the exchange says that nothing happened under the key; may be empty.
    std::function<void()> burn;
};

// Sends actions one after the other, in the order of the calls, each once under a key of its own.
//
// Where the answer does not come, the action may have been done or not: the exchange is asked for
// what became of the key, again and again within `resolveBound`, and later on unhurriedly while
// other actions leave, as long as its account is signed in. An action is never sent twice, and
// never for another user or at another server than those it was meant for.
class ZVNETWORKKIT_EXPORT ZvActionQueue : public QObject
{
    Q_OBJECT

public:
    // Milliseconds.
    static constexpr int resolveDeadline = 5000; // of one question about a key
    static constexpr int resolveBound = 60000; // from the failure to the last question
    static constexpr int shortestPause = 250;
    static constexpr int longestPause = 3000;

    // `checks` hears of the actions that are being asked for, and has to outlive the queue.
    ZvActionQueue(ZvExchangeLink *link, ZvActionChecks *checks);
    ~ZvActionQueue() override;

    void enqueue(ZvAction action);

    // Ends an action that needs no request with a failure, through the event loop.
    void fail(const ZvAction &action, const QString &message);

    int waiting() const { return static_cast<int>(m_waiting.size()); }

private:
    struct Entry {
        ZvAction action;
        QString prefix; // of the server in view when the user acted; of a question, when it left
        quint32 session; // likewise
        QString account; // of that session; empty where it was not known
        QString key;
    };

    void next();
    void send();
    void changeView();
    bool isOfView(const Entry &entry) const;
    bool isOfOtherSession(const Entry &entry) const;
    void take(const ZvOutcome &outcome);
    void takeResolution(const ZvOutcome &outcome);
    void resolveLater(const QString &reason);
    void resolve();
    ZvRequest requestFor(const Entry &entry, bool isResolution) const;
    void noteWaiting();
    bool isChecked() const;
    ZvAction leave();
    void endWith(const ZvOutcome &outcome);
    void endLater(const QString &message);
    void endFailed(const QString &message);
    void tellBurnt();
    void endUnknown(const QString &message);

    ZvExchangeLink *m_link;
    ZvActionChecks *m_checks;
    std::unique_ptr<ZvLateEnds> m_lateEnds;
    std::deque<Entry> m_waiting; // the first one is under way while `m_isBusy`
    bool m_isBusy = false;
    ZvCallId m_call = 0; // under way for the first time
    qint64 m_unknownSince = -1; // below 0: the first answer is still awaited
    int m_resolutions = 0;
    ZvTimer m_pause;
};
