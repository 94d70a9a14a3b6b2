#include "ZvNetworkKit/zvscriptedtransport.h"

ZvScriptedTransport::ZvScriptedTransport(QObject *parent) : ZvTransport(parent) { }

ZvScriptedTransport::~ZvScriptedTransport()
{
    finishAll();
}

QList<ZvRequest> ZvScriptedTransport::takeRequests()
{
    QList<ZvRequest> taken;
    taken.swap(m_requests);
    return taken;
}

QStringList ZvScriptedTransport::requestedPaths() const
{
    QStringList paths;
    for (const ZvRequest &request : m_requests)
        paths.append(request.path);
    return paths;
}

ZvRequest ZvScriptedTransport::lastRequest(const QString &path) const
{
    for (int i = m_requests.size() - 1; i >= 0; --i) {
        if (m_requests.at(i).path == path)
            return m_requests.at(i);
    }
    return ZvRequest();
}

int ZvScriptedTransport::openCount(const QString &path) const
{
    int count = 0;
    for (const Open &open : m_waiting)
        count += path.isEmpty() || open.path == path ? 1 : 0;
    return count;
}

void ZvScriptedTransport::answer(const QString &path, const QByteArray &body, int httpStatus)
{
    ZvAnswer answer;
    answer.ending = ZvAnswer::Answered;
    answer.httpStatus = httpStatus;
    answer.body = body;
    say(path, answer);
}

void ZvScriptedTransport::fail(const QString &path, ZvAnswer::Ending ending)
{
    ZvAnswer answer;
    answer.ending = ending;
    answer.error = QStringLiteral("scripted failure");
    say(path, answer);
}

void ZvScriptedTransport::always(const QString &path, Reply reply)
{
    if (reply)
        m_always.insert(path, std::move(reply));
    else
        m_always.remove(path);
}

void ZvScriptedTransport::say(const QString &path, const ZvAnswer &answer)
{
    for (int i = 0; i < m_waiting.size(); ++i) {
        if (m_waiting.at(i).path == path) {
            finish(m_waiting.takeAt(i).id, answer);
            return;
        }
    }
    m_prepared[path].append(answer);
}

void ZvScriptedTransport::start(ZvCallId id, const ZvRequest &request)
{
    m_requests.append(request);
    QList<ZvAnswer> &prepared = m_prepared[request.path];
    if (!prepared.isEmpty()) {
        finish(id, prepared.takeFirst());
    } else if (m_always.contains(request.path)) {
        ZvAnswer answer;
        answer.ending = ZvAnswer::Answered;
        answer.httpStatus = 200;
        answer.body = m_always.value(request.path)(request);
        finish(id, answer);
    } else {
        m_waiting.append({id, request.path});
    }
    emit requested(request.path);
}

void ZvScriptedTransport::abandon(ZvCallId id)
{
    for (int i = 0; i < m_waiting.size(); ++i) {
        if (m_waiting.at(i).id == id) {
            const QString path = m_waiting.takeAt(i).path;
            emit cancelled(path);
            return;
        }
    }
}

QByteArray ZvScriptedTransport::ok(const QByteArray &data, qint64 version, const QByteArray &boot,
                                   qint64 time)
{
    return "{\"protocol\": 1, \"status\": \"ok\", \"boot\": \"" + boot
        + "\", \"time\": " + QByteArray::number(time)
        + ", \"version\": " + QByteArray::number(version) + ", \"data\": " + data + "}";
}

QByteArray ZvScriptedTransport::refusal(const QByteArray &status, const QString &message,
                                        const QByteArray &reason)
{
    QByteArray body = "{\"protocol\": 1, \"status\": \"" + status
        + "\", \"boot\": \"b001\", \"time\": 1577840400000, \"message\": \"" + message.toUtf8()
        + "\"";
    if (!reason.isEmpty())
        body += ", \"reason\": \"" + reason + "\"";
    return body + "}";
}
