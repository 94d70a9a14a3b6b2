#pragma once

#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvretry.h"

#include <QObject>
#include <QString>

#include <deque>

// Actions whose end could not be learnt while others waited for it: their pages have heard that
// nothing is known. The exchange is asked on for each until it answers, one after the other and
// with growing pauses; the session that sent them can ask for them, and no other.
class ZvLateEnds : public QObject
{
    Q_OBJECT

public:
    explicit ZvLateEnds(ZvExchangeLink *link);

    // `question` asks what became of the action under `key`.
    void add(const QString &key, const ZvRequest &question, ZvDecodeTask::Shape shape);

signals:
    void settled(const QString &key, ZvActionChecks::Outcome outcome, const QString &message);

private:
    struct Entry {
        QString key;
        ZvRequest question;
        ZvDecodeTask::Shape shape;
        quint32 session;
    };

    void ask();
    void take(const QString &key, const ZvOutcome &outcome);
    // One that has no end yet holds no other back.
    void askOthersFirst(const QString &key);
    void settle(const QString &key, ZvActionChecks::Outcome outcome, const QString &message = {});
    void dropOldSessions();

    ZvExchangeLink *m_link;
    std::deque<Entry> m_entries; // the first one is being asked for, or next
    bool m_isAsking = false;
    ZvRetry m_retry;
};
