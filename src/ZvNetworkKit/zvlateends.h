#pragma once

#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvretry.h"

#include <QObject>
#include <QString>

#include <deque>

// Actions whose end could not be learnt while others waited for it: their pages have heard that
// nothing is known. The exchange is asked on for each until it answers, one after the other and
// with growing pauses.
//
// The account that sent an action can ask for it, and no other: where its session ends the action
// is no longer checked, until the same account has signed in again.
class ZvLateEnds : public QObject
{
    Q_OBJECT

public:
    struct Entry {
        QString key;
        ZvIntent intent;
        ZvRequest question; // what became of the key
        ZvDecodeTask::Shape shape;
        quint32 session; // that `question` is asked in
        QString account; // empty where it was not known
    };

    // `checks` hears of the actions while they are asked for, and has to outlive this.
    ZvLateEnds(ZvExchangeLink *link, ZvActionChecks *checks);

    // The number of the account that is signed in; empty while it is not known.
    QString account() const { return m_account; }

    void add(const Entry &entry);

private:
    bool isOfSession(const Entry &entry) const;
    void begin(const Entry &entry);
    void ask();
    void take(const Entry &asked, const ZvOutcome &outcome);
    // One that has no end yet holds no other back.
    void askOthersFirst(const QString &key);
    void settle(const QString &key, ZvActionChecks::Outcome outcome, const QString &message = {});
    void followSession();
    void followAccount();
    void takeUp();

    ZvExchangeLink *m_link;
    ZvActionChecks *m_checks;
    std::deque<Entry> m_entries; // the first one of the session is being asked for, or next
    quint32 m_session;
    QString m_account;
    bool m_isAsking = false;
    ZvRetry m_retry;
};
