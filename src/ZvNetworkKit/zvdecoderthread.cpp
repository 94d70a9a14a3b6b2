#include "ZvNetworkKit/zvdecoderthread.h"

ZvDecoderThread::ZvDecoderThread(QObject *receiver) : m_receiver(receiver)
{
    setObjectName(QStringLiteral("zv-decoder"));
}

ZvDecoderThread::~ZvDecoderThread()
{
    {
        QMutexLocker lock(&m_mutex);
        m_ending = true;
        m_jobs.clear();
        m_wake.wakeAll();
    }
    wait();
}

void ZvDecoderThread::decode(const QByteArray &body, const ZvDecodeTask &task, Decoded decoded)
{
    QMutexLocker lock(&m_mutex);
    m_jobs.push_back({body, task, std::move(decoded)});
    m_wake.wakeOne();
    if (!isRunning())
        start();
}

void ZvDecoderThread::run()
{
    ZvDecoder decoder;
    for (;;) {
        Job job;
        {
            QMutexLocker lock(&m_mutex);
            while (m_jobs.empty() && !m_ending)
                m_wake.wait(&m_mutex);
            if (m_ending)
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        ZvReply reply;
        QString error;
        decoder.decode(job.body, job.task, reply, error);
        QMetaObject::invokeMethod(
            m_receiver, [decoded = std::move(job.decoded), reply, error] { decoded(reply, error); },
            Qt::QueuedConnection);
    }
}
