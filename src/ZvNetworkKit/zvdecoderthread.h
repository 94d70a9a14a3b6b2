#pragma once

#include "ZvNetworkKit/zvdecoder.h"

#include <QMutex>
#include <QObject>
#include <QThread>
#include <QWaitCondition>

#include <deque>
#include <functional>

// The one thread on which answers are decoded, first in, first out, so that the GUI thread only
// ever sees ready items. Its destructor drops what waits and joins the thread.
class ZvDecoderThread : public QThread
{
    Q_OBJECT

public:
    // `error` is empty when `reply` is good.
    using Decoded = std::function<void(const ZvReply &reply, const QString &error)>;

    explicit ZvDecoderThread(QObject *receiver);
    ~ZvDecoderThread() override;

    // `decoded` runs in the event loop of the receiver.
    void decode(const QByteArray &body, const ZvDecodeTask &task, Decoded decoded);

protected:
    void run() override;

private:
    struct Job {
        QByteArray body;
        ZvDecodeTask task;
        Decoded decoded;
    };

    QObject *m_receiver; // outlives this thread
    QMutex m_mutex;
    QWaitCondition m_wake;
    std::deque<Job> m_jobs;
    bool m_ending = false;
};
