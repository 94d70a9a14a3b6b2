#pragma once

#include "ZvNetworkKit/zvexchangelink.h"

#include <QObject>
#include <QPointer>

// A question that may be asked again before it is answered: the answer to an older one counts no
// more. It may outlive the link.
class ZvNewestQuestion : public QObject
{
    Q_OBJECT

public:
    explicit ZvNewestQuestion(ZvExchangeLink *link);
    ~ZvNewestQuestion() override;

    // Sends it, in place of one that is under way. False where nobody can be asked, and then `done`
    // is never called.
    bool ask(const ZvRequest &request, ZvExchangeLink::Fate fate, const ZvDecodeTask &task,
             ZvExchangeLink::Done done);

    // Nothing is to be heard of it any more.
    void drop();

    bool isOpen() const { return m_call != 0; }

private:
    QPointer<ZvExchangeLink> m_link;
    ZvCallId m_call = 0;
    quint64 m_number = 0; // of the newest one
};
