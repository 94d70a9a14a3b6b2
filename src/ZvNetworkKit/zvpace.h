#pragma once

#include "ZvNetworkKit/zvretry.h"

#include <QObject>
#include <QPointer>

#include <functional>

// Says when a question is to be asked that follows something: one at a time, at most once in a
// distance, again where there was news meanwhile, and after a pause where it has failed.
class ZvPace : public QObject
{
    Q_OBJECT

public:
    // `ask` sends the question; false where it cannot be asked now. `distance` in milliseconds.
    ZvPace(ZvExchangeLink *link, int distance, std::function<bool()> ask);

    // There is something to ask for: at once from the event loop, so that many calls in a turn are
    // one question.
    void begin();

    // There is news: as soon as it may be. A question that has failed is not hurried.
    void follow();

    // The question that was asked is answered, or has failed.
    void end();
    void fail();

    // There is nothing to ask for. A question that was asked is none any more.
    void drop();

    // Nobody has to keep a distance from what was asked before.
    void forgetDistance() { m_distance.reset(); }

    // Asked, or to be asked.
    bool isBusy() const { return m_isAsked || m_isDue || m_isQueued || m_retry.isWaiting(); }

private:
    void ask();
    void askIfDue();

    QPointer<ZvExchangeLink> m_link;
    int m_shortest;
    std::function<bool()> m_ask;
    bool m_isAsked = false;
    bool m_isQueued = false;
    bool m_isDue = false;
    ZvTimer m_distance; // since the last question
    ZvRetry m_retry;
};
