#include "ZvNetworkKit/zvexchangelink.h"

#include "ZvNetworkKit/zvdecoderthread.h"
#include "ZvNetworkKit/zvhttptransport.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"

namespace {

// The exchange's own sentence, or one of the kit's where it sent none.
QString farewellOf(const ZvEnvelope &envelope)
{
    if (!envelope.message.isEmpty())
        return envelope.message;
    return envelope.status == QLatin1String("elsewhere") ? QStringLiteral("您的账号已在别处登录")
                                                         : QStringLiteral("登录已失效，请重新登录");
}

} // namespace

QString ZvOutcome::reason() const
{
    if (isLogged)
        return QString();
    if (!isReadable())
        return error;
    return reply.envelope.status + QLatin1String(": ") + reply.envelope.message;
}

ZvExchangeLink::ZvExchangeLink(QObject *parent)
    : QObject(parent), m_systemClock(std::make_unique<ZvSystemClock>()),
      m_decoder(std::make_unique<ZvDecoderThread>(this))
{
}

ZvExchangeLink::~ZvExchangeLink()
{
    // The transport may still speak to the decoder, so it goes first.
    m_transport.reset();
    m_decoder.reset();
}

void ZvExchangeLink::setTransport(std::unique_ptr<ZvTransport> transport)
{
    m_transport = std::move(transport);
    ++m_transports;
    m_transportAddress.clear();
    if (m_transport)
        m_transport->setClock(m_clock);
    if (m_started)
        emit started();
}

void ZvExchangeLink::setClock(ZvClock *clock)
{
    m_clock = clock;
    if (m_transport)
        m_transport->setClock(clock);
}

ZvClock *ZvExchangeLink::clock() const
{
    return m_clock ? m_clock.data() : m_systemClock.get();
}

void ZvExchangeLink::setPrefix(const QString &prefix)
{
    if (prefix == m_prefix)
        return;
    m_prefix = prefix;
    ++m_generation.server;
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    cache->setCurrentServer(prefix);
    cache->dropMarketRows(prefix);
    emit prefixChanged();
}

QString ZvExchangeLink::platformRoot() const
{
    const int platform = ZvServerConfig::getZvServerConfigInstance()->getCurrentPlatform();
    return platform == 1 ? QStringLiteral("/ch/") : QStringLiteral("/lc/");
}

void ZvExchangeLink::start()
{
    if (m_started)
        return;
    const bool isOurs = !m_transportAddress.isEmpty();
    if ((!m_transport || (isOurs && m_transportAddress != m_address)) && !m_address.isEmpty()) {
        setTransport(std::make_unique<ZvHttpTransport>(m_address));
        m_transportAddress = m_address;
    }
    m_started = true;
    m_awaySince = clock()->now();
    m_awayIsLogged = false;
    emit started();
}

void ZvExchangeLink::stop()
{
    if (!m_started)
        return;
    m_started = false;
    ++m_generation.server; // what is under way belongs to the time before
    emit stopped();
    setConnected(false);
}

void ZvExchangeLink::setToken(const QByteArray &token)
{
    if (token == m_token)
        return;
    m_token = token;
    ++m_generation.session;
    emit sessionChanged();
}

void ZvExchangeLink::setLogged(bool logged)
{
    const bool wasSignedIn = isSignedIn();
    m_isLogged = logged;
    if (isSignedIn() != wasSignedIn)
        emit sessionChanged();
}

ZvRequest ZvExchangeLink::makeRequest(const QString &path,
                                      const ZvRequest::Parameters &parameters) const
{
    ZvRequest request;
    request.prefix = m_prefix;
    request.path = path;
    request.parameters.append({QStringLiteral("protocol"), QStringLiteral("1")});
    request.parameters.append(parameters);
    request.token = m_token;
    request.deadline = usualDeadline;
    request.bodyBound = ZvDecoder::bodyBound;
    request.generation = m_generation;
    return request;
}

ZvCallId ZvExchangeLink::ask(const ZvRequest &request, Fate fate, QObject *context, Done done,
                             const ZvDecodeTask &task)
{
    if (!m_transport || request.prefix.isEmpty())
        return 0;
    const ZvCallId id = ++m_lastQuestion;
    Question question{request, fate, context, std::move(done), task};
    question.task.server = request.prefix;
    question.task.exchange = m_transports;
    question.call = m_transport->send(
        request, this, [this, id](const ZvAnswer &answer) { takeAnswer(id, answer); });
    m_questions.insert(id, question);
    return id;
}

bool ZvExchangeLink::cancel(ZvCallId id)
{
    const auto found = m_questions.find(id);
    if (found == m_questions.end() || found->call == 0)
        return false;
    const ZvCallId call = found->call;
    m_questions.erase(found);
    if (m_transport)
        m_transport->cancel(call);
    return true;
}

bool ZvExchangeLink::isLate(const Question &question) const
{
    const ZvGeneration &generation = question.request.generation;
    switch (question.fate) {
    case DiesWithServer:
        return generation.server != m_generation.server;
    case DiesWithSession:
        return generation.server != m_generation.server
            || generation.session != m_generation.session;
    case Survives:
        break;
    }
    return false;
}

void ZvExchangeLink::takeAnswer(ZvCallId id, const ZvAnswer &answer)
{
    const auto found = m_questions.find(id);
    if (found == m_questions.end())
        return;
    found->call = 0;

    if (answer.ending != ZvAnswer::Answered) {
        ZvOutcome outcome;
        outcome.ending = answer.ending;
        outcome.error = answer.error.isEmpty() ? QStringLiteral("broken off") : answer.error;
        if (answer.ending == ZvAnswer::TooLarge) {
            qCWarning(zvNetworkLog).noquote()
                << "The answer of" << found->request.path << "is refused: longer than its bound";
            outcome.isLogged = true;
        }
        tell(id, outcome);
        return;
    }
    const QString path = found->request.path;
    const int httpStatus = answer.httpStatus;
    m_decoder->decode(answer.body, found->task,
                      [this, id, path, httpStatus](const ZvReply &reply, const QString &error) {
                          ZvOutcome outcome;
                          outcome.ending = ZvAnswer::Answered;
                          outcome.reply = reply;
                          outcome.error = error;
                          if (!error.isEmpty()) {
                              outcome.isLogged = true;
                              qCWarning(zvNetworkLog).noquote().nospace()
                                  << "The answer of " << path << " (HTTP " << httpStatus
                                  << ") is refused: " << error;
                          }
                          tell(id, outcome);
                      });
}

void ZvExchangeLink::tell(ZvCallId id, const ZvOutcome &outcome)
{
    const auto found = m_questions.find(id);
    if (found == m_questions.end())
        return;
    const Question question = *found;
    m_questions.erase(found);
    if (outcome.isReadable())
        endSession(question.request, outcome.reply.envelope);
    if (!isLate(question) && question.context)
        question.done(outcome);
}

void ZvExchangeLink::endSession(const ZvRequest &request, const ZvEnvelope &envelope)
{
    // A refusal of an older token says nothing about the session in use.
    if (!envelope.isOfSession() || m_token.isEmpty() || request.token != m_token)
        return;
    const quint32 after = m_generation.session + 1;
    setToken(QByteArray());
    // Not from here: a page opens a box when it hears of it and stays in it, and polls and answers
    // go on meanwhile. A sign-in may come first; its session is not the one that has ended.
    QMetaObject::invokeMethod(
        this,
        [this, after, message = farewellOf(envelope)] {
            if (m_generation.session == after)
                emit sessionEnded(message);
        },
        Qt::QueuedConnection);
}

void ZvExchangeLink::afterDecoding(std::function<void()> action)
{
    // Answers are first in, first out; this one is nothing but its place in the row.
    m_decoder->decode(QByteArrayLiteral("{}"), ZvDecodeTask(),
                      [action = std::move(action)](const ZvReply &, const QString &) { action(); });
}

qint64 ZvExchangeLink::awayFor() const
{
    if (!m_started || m_connected)
        return 0;
    return clock()->now() - m_awaySince;
}

qint64 ZvExchangeLink::dataAge() const
{
    if (m_lastAnswer < 0)
        return -1;
    return clock()->now() - m_lastAnswer;
}

void ZvExchangeLink::noteAnswer()
{
    m_lastAnswer = clock()->now();
    if (m_awayIsLogged)
        qCInfo(zvNetworkLog).noquote() << "The exchange answers again";
    m_awayIsLogged = false;
    setConnected(true);
}

void ZvExchangeLink::noteFailure(const QString &reason)
{
    if (!m_awayIsLogged && !reason.isEmpty()) {
        qCInfo(zvNetworkLog).noquote() << "The exchange does not answer:" << reason;
        m_awayIsLogged = true;
    }
    setConnected(false);
}

void ZvExchangeLink::setConnected(bool connected)
{
    if (connected == m_connected)
        return;
    m_connected = connected;
    if (!connected)
        m_awaySince = clock()->now();
    emit connectionChanged(connected);
}
