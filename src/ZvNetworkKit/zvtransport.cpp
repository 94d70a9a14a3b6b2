#include "ZvNetworkKit/zvtransport.h"

QString ZvRequest::parameter(const QString &name) const
{
    for (const auto &entry : parameters) {
        if (entry.first == name)
            return entry.second;
    }
    return QString();
}

bool ZvRequest::hasParameter(const QString &name) const
{
    for (const auto &entry : parameters) {
        if (entry.first == name)
            return true;
    }
    return false;
}

ZvTransport::ZvTransport(QObject *parent) : QObject(parent) { }

ZvTransport::~ZvTransport()
{
    finishAll();
}

void ZvTransport::setClock(ZvClock *clock)
{
    m_clock = clock;
}

ZvClock *ZvTransport::clock()
{
    if (m_clock)
        return m_clock;
    if (!m_ownClock)
        m_ownClock = std::make_unique<ZvSystemClock>();
    return m_ownClock.get();
}

ZvCallId ZvTransport::send(const ZvRequest &request, QObject *context, Ending ending)
{
    const ZvCallId id = ++m_last;
    Call &call = m_calls[id];
    call.context = context;
    call.ending = std::move(ending);
    call.deadline = clock()->after(request.deadline, [this, id] {
        ZvAnswer late;
        late.ending = ZvAnswer::TimedOut;
        late.error = QStringLiteral("no answer before the deadline");
        if (end(id, late))
            abandon(id);
    });
    start(id, request);
    return id;
}

void ZvTransport::cancel(ZvCallId id)
{
    ZvAnswer cancelled;
    cancelled.ending = ZvAnswer::Cancelled;
    if (end(id, cancelled))
        abandon(id);
}

void ZvTransport::finish(ZvCallId id, const ZvAnswer &answer)
{
    end(id, answer);
}

void ZvTransport::finishAll()
{
    ZvAnswer cancelled;
    cancelled.ending = ZvAnswer::Cancelled;
    while (!m_calls.empty())
        end(m_calls.begin()->first, cancelled);
}

bool ZvTransport::end(ZvCallId id, const ZvAnswer &answer)
{
    const auto found = m_calls.find(id);
    if (found == m_calls.end())
        return false;
    const Call call = std::move(found->second);
    m_calls.erase(found);
    if (call.context) {
        QMetaObject::invokeMethod(
            call.context, [ending = call.ending, answer] { ending(answer); }, Qt::QueuedConnection);
    }
    return true;
}
