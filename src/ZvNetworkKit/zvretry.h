#pragma once

#include "ZvNetworkKit/zvclock.h"

#include <QObject>

#include <functional>

class ZvExchangeLink;

// Brings back a question of the kit's own that was not answered: after a second, then after two,
// four and so on up to half a minute, and at once when the exchange answers polls again.
class ZvRetry : public QObject
{
    Q_OBJECT

public:
    // Milliseconds.
    static constexpr int shortestPause = 1000;
    static constexpr int longestPause = 30000;

    ZvRetry(ZvExchangeLink *link, std::function<void()> again);

    // The question has failed: it comes again.
    void later();

    // The question is out, whoever brought it; its failure goes on with the next pause.
    void stop() { m_pause.reset(); }

    // The question is answered, or is none any more.
    void reset();

    bool isWaiting() const { return bool(m_pause); }

private:
    void bring();

    ZvExchangeLink *m_link;
    std::function<void()> m_again;
    int m_failures = 0;
    ZvTimer m_pause;
};
