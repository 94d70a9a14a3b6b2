#pragma once

#include "ZvNetworkKit/zvnewestquestion.h"
#include "ZvNetworkKit/zvretry.h"

#include <QObject>
#include <QString>

#include <functional>

// One thing that the exchange knows of the account that is signed in, asked for until it is told.
class ZvAccountQuestion : public QObject
{
    Q_OBJECT

public:
    // Takes an answer; `isAwaited` says that a page waits for its signal, whatever the answer is.
    using Take = std::function<void(const ZvReply &reply, bool isAwaited)>;

    ZvAccountQuestion(ZvExchangeLink *link, const QString &path, ZvDecodeTask::Shape shape,
                      Take take);

    // Asks anew. The answer to an older question counts no more: it may have left the exchange
    // before what this one is about.
    void ask(bool isAwaited);

    // As the session or the server that it was about.
    void drop();

    // Asked, or waiting to be asked again.
    bool isOpen() const { return m_question.isOpen() || m_retry.isWaiting(); }

private:
    void takeOutcome(const ZvOutcome &outcome);

    ZvExchangeLink *m_link;
    QString m_path;
    ZvDecodeTask m_task;
    Take m_take;
    ZvNewestQuestion m_question;
    bool m_isAwaited = false;
    bool m_isLogged = false; // that it failed
    ZvRetry m_retry;
};
