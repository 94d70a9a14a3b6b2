#pragma once

#include "ZvNetworkKit/zvclock.h"

#include <QObject>

class ZvExchangeLink;

// Forgets the addresses of the pages for money before a user opens one that is of no use any more.
// An address is good for one use, and nobody tells the client of it: so it is kept only as long as
// it takes to open it, and no longer than until money has moved.
class ZvMoneyAddressLife : public QObject
{
    Q_OBJECT

public:
    static constexpr int longest = 60000; // milliseconds

    explicit ZvMoneyAddressLife(ZvExchangeLink *link);

    // The addresses have just been stored.
    void begin();

private:
    void end();

    ZvExchangeLink *m_link;
    qint64 m_available = 0; // fen, when they were stored
    ZvTimer m_end;
};
