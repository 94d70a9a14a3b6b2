#pragma once

#include "ZvNetworkKit/zvaccountquestion.h"

#include <QObject>

// Keeps account, money, holdings and the day's sums in the cache as the exchange has them while a
// user is signed in: asked for after a sign-in, a start and a change of server, and money, holdings
// and sums again whenever a poll says that they are others.
//
// The sums have no version of their own, so they are asked for behind each answer about the money:
// what they say is then never older than what the version stands for.
class ZvAccountWatch : public QObject
{
    Q_OBJECT

public:
    // Milliseconds. How often a poll's word is followed; an account that trades all the time is not
    // to be asked for all the time.
    static constexpr int shortestDistance = 200;

    explicit ZvAccountWatch(ZvExchangeLink *link);

    // Asks for everything that is not being asked for; signals follow whether or not the content
    // differs. Nothing without a sign-in or before the start.
    void renew();

    // Asks for money and holdings as a page wants them, signed in or not.
    void askCap();

    // What a poll says of the topic: whether it names it, which version it holds within a run of
    // the service, and what it makes of the entry. True where the entry was news.
    bool isWatched() const;
    qint64 versionIn(const QString &boot) const { return boot == m_boot ? m_version : 0; }
    bool takePoll(const ZvTopicPart<ZvUBCapInfo> &entry);

signals:
    // A poll that is held back names another version than this one, or none.
    void versionChanged();

private:
    void restart();
    void drop();
    void followPoll();
    void takeAccount(const ZvReply &reply, bool isAwaited);
    void takeCap(const ZvReply &reply, bool isAwaited);
    void takeGather(const ZvReply &reply, bool isAwaited);

    ZvExchangeLink *m_link;
    ZvAccountQuestion m_account;
    ZvAccountQuestion m_cap;
    ZvAccountQuestion m_gather;
    QString m_boot; // the run that `m_version` counts in
    qint64 m_version = 0;
    ZvTimer m_distance; // since a poll's word was last followed
    bool m_isDue = false; // another word has come meanwhile
};
