#include "faultyproxy/faultyproxy.h"

#include "faultyproxy/errand.h"
#include "faultyproxy/names.h"

#include <QTcpSocket>

#include <memory>
#include <utility>

namespace faultyproxy {

namespace {

// After so many broken questions about a key the next one is handed on, so that its end can become
// known at all.
constexpr int mostBrokenQuestions = 3;

QString value(const QUrlQuery &form, const char *name)
{
    return form.queryItemValue(QLatin1String(name), QUrl::FullyDecoded);
}

} // namespace

FaultyProxy::FaultyProxy(quint16 servicePort, quint32 seed, campaign::Counts &counts, Heard heard)
    : m_servicePort(servicePort), m_random(seed), m_counts(counts), m_heard(std::move(heard))
{
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection())
            take(socket);
    });
}

QUrl FaultyProxy::address() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()));
}

bool FaultyProxy::takeDeadline()
{
    if (m_deadlines == 0)
        return false;
    --m_deadlines;
    return true;
}

void FaultyProxy::deliverAllOverdue()
{
    const QList<QByteArray> keys = m_overdue.keys();
    for (const QByteArray &key : keys)
        deliverOverdue(key);
}

QByteArray FaultyProxy::sentTwice() const
{
    for (auto it = m_sent.constBegin(); it != m_sent.constEnd(); ++it) {
        if (it.value() > 1)
            return it.key();
    }
    return {};
}

void FaultyProxy::take(QTcpSocket *socket)
{
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    const auto bytes = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::readyRead, this, [this, socket, bytes] {
        *bytes += socket->readAll();
        const QByteArray request = takeMessage(*bytes);
        if (request.isEmpty())
            return;
        Client client;
        client.socket = socket;
        client.request = request;
        client.form = QUrlQuery(QString::fromLatin1(request.mid(bodyOffset(request))));
        client.key = value(client.form, "key").toLatin1();
        handle(client);
    });
}

void FaultyProxy::handle(const Client &client)
{
    if (!m_isFaulty || client.key.isEmpty())
        send(client, [client](const QByteArray &answer) {
            if (client.socket)
                client.socket->write(answer);
        });
    else if (value(client.form, "resolve").isEmpty())
        handleAction(client);
    else
        handleQuestion(client);
}

void FaultyProxy::handleAction(const Client &client)
{
    ++m_sent[client.key];
    const unsigned fault = chance(100);
    if (breakAnswer(client, fault)) {
        // counted there
    } else if (fault < 56) {
        ++m_deadlines;
        m_overdue.insert(client.key, client);
    } else {
        handOn(client);
        if (fault < 64) {
            ++m_counts[kReplayed];
            replay(client);
        } else if (fault < 72 && !m_past.isEmpty()) {
            ++m_counts[kReplayedLate];
            replay(m_past.at(static_cast<int>(chance(static_cast<unsigned>(m_past.size())))));
        }
    }
    m_past.append(client);
}

void FaultyProxy::handleQuestion(const Client &client)
{
    if (++m_asked[client.key] == 1)
        ++m_counts[kAsked];
    if (m_asked.value(client.key) <= mostBrokenQuestions && breakAnswer(client, chance(150)))
        ++m_counts[kQuestionBroken];
    else
        handOn(client);
}

// The faults that an action shares with the question about it.
bool FaultyProxy::breakAnswer(const Client &client, unsigned fault)
{
    if (fault < 12)
        closeUnread(client);
    else if (fault < 26)
        closeDone(client);
    else if (fault < 40)
        cutOff(client);
    else if (fault < 48)
        answerLate(client);
    else
        return false;
    return true;
}

void FaultyProxy::send(const Client &client, std::function<void(const QByteArray &answer)> done)
{
    ++m_errands;
    new Errand(
        m_servicePort, client.request,
        [this, client, done](const QByteArray &answer) {
            --m_errands;
            if (!answer.isEmpty())
                m_heard(client.form, answer.mid(bodyOffset(answer)));
            done(answer);
            if (!value(client.form, "resolve").isEmpty())
                deliverOverdue(client.key);
        },
        this);
}

void FaultyProxy::replay(const Client &client)
{
    send(client, [](const QByteArray &) {});
}

void FaultyProxy::handOn(const Client &client)
{
    send(client, [this, client](const QByteArray &answer) {
        ++m_counts[kHandedOn];
        if (client.socket)
            client.socket->write(answer);
    });
}

void FaultyProxy::closeUnread(const Client &client)
{
    ++m_counts[kClosedUnread];
    // Some networks say that they have ended, some are gone without a word.
    if (chance(2) == 0)
        client.socket->disconnectFromHost();
    else
        client.socket->abort();
}

void FaultyProxy::closeDone(const Client &client)
{
    send(client, [this, client](const QByteArray &) {
        ++m_counts[kClosedDone];
        if (!client.socket)
            return;
        if (chance(2) == 0)
            client.socket->disconnectFromHost();
        else
            client.socket->abort();
    });
}

void FaultyProxy::cutOff(const Client &client)
{
    send(client, [this, client](const QByteArray &answer) {
        if (answer.isEmpty() || !client.socket)
            return;
        const int body = bodyOffset(answer);
        const bool isHead = chance(2) == 0;
        const int least = isHead ? 1 : body;
        const int most = isHead ? body - 1 : answer.size() - 1;
        const int kept = least + static_cast<int>(chance(static_cast<unsigned>(most - least + 1)));
        ++m_counts[isHead ? kHalfHead : kHalfBody];
        client.socket->write(answer.left(kept));
        client.socket->disconnectFromHost();
    });
}

// So late that nobody listens any more.
void FaultyProxy::answerLate(const Client &client)
{
    send(client, [this, client](const QByteArray &) {
        if (!client.socket)
            return;
        ++m_counts[kLateAnswer];
        ++m_deadlines;
    });
}

// The question was quicker than the action itself.
void FaultyProxy::deliverOverdue(const QByteArray &key)
{
    const auto found = m_overdue.find(key);
    if (found == m_overdue.end())
        return;
    const Client client = *found;
    m_overdue.erase(found);
    ++m_counts[kOvertaken];
    replay(client);
}

} // namespace faultyproxy
