#pragma once

#include "ZvNetworkKit/zvretry.h"

#include <QObject>

class ZvActionQueue;
class ZvExchangeLink;

// Makes the cache's favourites of the server in view those that the exchange has, after a sign-in,
// a start and a change of server; pages ask by themselves only when the user does something.
//
// The question waits its turn among what the user does to the favourites, so that no older list
// follows a newer one.
class ZvFavouriteSync : public QObject
{
    Q_OBJECT

public:
    // As many as pages ask for.
    static constexpr int mostFavourites = 100;

    ZvFavouriteSync(ZvExchangeLink *link, ZvActionQueue *queue);

private:
    void restart();
    void ask();

    ZvExchangeLink *m_link;
    ZvActionQueue *m_queue;
    bool m_isScheduled = false;
    bool m_isOpen = false;
    bool m_isLogged = false; // that the question failed
    ZvRetry m_retry;
};
