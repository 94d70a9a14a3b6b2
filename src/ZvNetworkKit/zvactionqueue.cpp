#include "ZvNetworkKit/zvactionqueue.h"

#include "ZvNetworkKit/zvfaults.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvlateends.h"
#include "ZvNetworkKit/zvresolution.h"

#include <QRandomGenerator>

#include <algorithm>

namespace {

QString makeKey()
{
    QString key;
    for (int i = 0; i < 4; ++i) {
        const quint32 word = QRandomGenerator::system()->generate();
        key += QStringLiteral("%1").arg(word, 8, 16, QLatin1Char('0'));
    }
    return key;
}

// What a busy or stopping exchange says of an action is not its end: it may still be done.
bool isFinal(const ZvEnvelope &envelope)
{
    return envelope.status != QLatin1String("busy") && envelope.status != QLatin1String("failed");
}

QString reasonOf(const ZvOutcome &outcome)
{
    return outcome.isReadable() ? outcome.reply.envelope.status : outcome.error;
}

QString signedOut()
{
    return QStringLiteral("登录已失效，上一请求的结果未知，请重新登录后查询");
}

} // namespace

ZvActionQueue::ZvActionQueue(ZvExchangeLink *link, ZvActionChecks *checks)
    : m_link(link), m_checks(checks), m_lateEnds(std::make_unique<ZvLateEnds>(link, checks))
{
    connect(link, &ZvExchangeLink::prefixChanged, this, &ZvActionQueue::changeView);
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvActionQueue::changeView);
}

ZvActionQueue::~ZvActionQueue() = default;

void ZvActionQueue::enqueue(ZvAction action)
{
    if (!m_link->hasTransport() || m_link->prefix().isEmpty()) {
        fail(action, QStringLiteral("尚未连接交易所，请稍后再试"));
        return;
    }
    const QString key = action.key.isEmpty() ? makeKey() : action.key;
    m_waiting.push_back({std::move(action), m_link->prefix(), m_link->generation().session,
                         m_lateEnds->account(), key});
    noteWaiting();
    next();
}

void ZvActionQueue::fail(const ZvAction &action, const QString &message)
{
    QMetaObject::invokeMethod(
        this, [end = action.fail, message] { end(message); }, Qt::QueuedConnection);
}

void ZvActionQueue::next()
{
    if (m_isBusy || m_waiting.empty())
        return;
    m_isBusy = true;
    m_resolutions = 0;
    send();
}

ZvRequest ZvActionQueue::requestFor(const Entry &entry, bool isResolution) const
{
    ZvRequest request = m_link->makeRequest(entry.action.path, entry.action.parameters);
    if (!entry.action.isOfSession)
        request.token.clear();
    request.prefix = entry.prefix;
    request.isAction = !entry.action.isQuestion;
    if (request.isAction)
        request.parameters.append(
            {QStringLiteral("key"),
             isResolution && zvFault("another-key-asked-for") ? makeKey() : entry.key});
    if (isResolution) {
        request.parameters.append({QStringLiteral("resolve"), QStringLiteral("1")});
        request.deadline = resolveDeadline;
    }
    return request;
}

void ZvActionQueue::send()
{
    Entry &entry = m_waiting.front();
    const bool isQuestion = entry.action.isQuestion;
    if (isOfOtherSession(entry) && (!isQuestion || m_link->token().isEmpty())) {
        endLater(isQuestion ? QStringLiteral("登录已失效，请重新登录")
                            : QStringLiteral("登录状态已改变，该请求未发送，请重新操作"));
        return;
    }
    if (isQuestion) {
        entry.prefix = m_link->prefix();
        entry.session = m_link->generation().session;
    }
    ZvDecodeTask task;
    task.shape = entry.action.shape;
    m_call = m_link->ask(
        requestFor(entry, false), ZvExchangeLink::Survives, this,
        [this](const ZvOutcome &outcome) {
            m_call = 0;
            take(outcome);
        },
        task);
    if (m_call == 0)
        endLater(QStringLiteral("尚未连接交易所，请稍后再试"));
}

void ZvActionQueue::endLater(const QString &message)
{
    QMetaObject::invokeMethod(
        this, [this, message] { endFailed(message); }, Qt::QueuedConnection);
}

void ZvActionQueue::changeView()
{
    if (m_call == 0 || !m_waiting.front().action.isQuestion || isOfView(m_waiting.front()))
        return;
    // An answer that is being decoded cannot be cancelled any more; take() finds it out.
    if (m_link->cancel(m_call)) {
        m_call = 0;
        send();
    }
}

bool ZvActionQueue::isOfView(const Entry &entry) const
{
    return entry.prefix == m_link->prefix() && !isOfOtherSession(entry);
}

bool ZvActionQueue::isOfOtherSession(const Entry &entry) const
{
    return entry.action.isOfSession && entry.session != m_link->generation().session;
}

void ZvActionQueue::take(const ZvOutcome &outcome)
{
    const bool isQuestion = m_waiting.front().action.isQuestion;
    if (isQuestion && !isOfView(m_waiting.front()))
        send();
    else if (outcome.isReadable() && (isQuestion || isFinal(outcome.reply.envelope)))
        endWith(outcome);
    else if (outcome.ending == ZvAnswer::NotSent)
        endFailed(QStringLiteral("无法连接交易所，请稍后再试"));
    else if (isQuestion || zvFault("lost-answer-is-a-failure"))
        endFailed(QStringLiteral("交易所没有答复，请稍后再试"));
    else if (zvFault("sent-again-after-a-lost-answer"))
        send();
    else
        resolveLater(reasonOf(outcome));
}

void ZvActionQueue::resolveLater(const QString &reason)
{
    const qint64 now = m_link->clock()->now();
    if (m_unknownSince < 0) {
        m_unknownSince = now;
        m_checks->begin(m_waiting.front().key, m_waiting.front().action.intent);
        noteWaiting();
        qCInfo(zvNetworkLog).noquote() << m_waiting.front().action.path
                                       << "has no answer and is asked for by its key:" << reason;
    }
    if (now - m_unknownSince > resolveBound) {
        endUnknown(QStringLiteral("交易所没有答复，结果未知，请查询后再操作"));
        return;
    }
    const int doublings = std::min(m_resolutions, 4);
    ++m_resolutions;
    m_pause = m_link->clock()->after(std::min(longestPause, shortestPause << doublings),
                                     [this] { resolve(); });
}

void ZvActionQueue::resolve()
{
    const Entry &entry = m_waiting.front();
    if (isOfOtherSession(entry)) { // nobody can ask for the key any more
        endUnknown(signedOut());
        return;
    }
    ZvDecodeTask task;
    task.shape = entry.action.shape;
    const ZvCallId call = m_link->ask(
        requestFor(entry, true), ZvExchangeLink::Survives, this,
        [this](const ZvOutcome &outcome) { takeResolution(outcome); }, task);
    if (call == 0)
        resolveLater(QString());
}

void ZvActionQueue::takeResolution(const ZvOutcome &outcome)
{
    switch (zvResolutionOf(outcome)) {
    case ZvResolution::None:
        resolveLater(outcome.error);
        break;
    case ZvResolution::SignedOut:
        endUnknown(signedOut());
        break;
    case ZvResolution::NotArrived:
        tellBurnt();
        endFailed(QStringLiteral("请求未送达交易所，请重试"));
        break;
    case ZvResolution::Ended:
        endWith(outcome);
        break;
    }
}

bool ZvActionQueue::isChecked() const
{
    return m_unknownSince >= 0 && m_waiting.front().action.intent.matter != ZvIntent::Other;
}

void ZvActionQueue::noteWaiting()
{
    if (isChecked())
        m_checks->setWaiting(waiting() - 1);
}

// Takes the action out that has ended.
ZvAction ZvActionQueue::leave()
{
    if (isChecked())
        m_checks->setWaiting(0);
    const Entry entry = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_isBusy = false;
    m_unknownSince = -1;
    m_checks->end(entry.key);
    return entry.action;
}

void ZvActionQueue::endWith(const ZvOutcome &outcome)
{
    if (!outcome.isOk()) {
        if (outcome.reply.envelope.status == QLatin1String("refused"))
            tellBurnt();
        endFailed(zvRefusalOf(outcome.reply.envelope));
        return;
    }
    // A row that vanishes says nothing to those who wonder what became of it.
    if (m_waiting.front().action.intent.matter == ZvIntent::PreparedOrder)
        m_checks->settle(m_waiting.front().key, ZvActionChecks::Done, QString());
    const ZvAction action = leave();
    const bool isKept = !action.keep || action.keep(outcome.reply);
    // The next one leaves before this one is told: a page may open a box and stay in it.
    next();
    if (isKept)
        action.succeed(outcome.reply);
    else
        action.fail(QStringLiteral("交易所的答复无法识别，请稍后再试"));
}

void ZvActionQueue::tellBurnt()
{
    if (const auto &burn = m_waiting.front().action.burn)
        burn();
}

void ZvActionQueue::endUnknown(const QString &message)
{
    const Entry entry = m_waiting.front();
    if (entry.action.lose)
        entry.action.lose(entry.key);
    // A prepared order is sent again under its key, which a question would use up.
    const bool isAskedOn = isChecked() && !entry.action.lose;
    leave();
    if (isAskedOn)
        m_lateEnds->add({entry.key, entry.action.intent, requestFor(entry, true),
                         entry.action.shape, entry.session, entry.account});
    next();
    entry.action.fail(message);
}

void ZvActionQueue::endFailed(const QString &message)
{
    const ZvAction action = leave();
    next();
    action.fail(message);
}
