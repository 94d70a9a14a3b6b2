#include "ZvNetworkKit/zvaccountquestion.h"

#include "ZvNetworkKit/zvkittrace.h"

#include <utility>

ZvAccountQuestion::ZvAccountQuestion(ZvExchangeLink *link, const QString &path,
                                     ZvDecodeTask::Shape shape, Take take)
    : m_link(link), m_path(path), m_take(std::move(take)), m_question(link),
      m_retry(link, [this] { ask(false); })
{
    m_task.shape = shape;
}

void ZvAccountQuestion::ask(bool isAwaited)
{
    m_retry.stop();
    m_isAwaited = m_isAwaited || isAwaited;
    m_isLogged = m_isLogged && !isAwaited;
    const bool isSent
        = m_question.ask(m_link->makeRequest(m_path, {}), ZvExchangeLink::DiesWithSession, m_task,
                         [this](const ZvOutcome &outcome) { takeOutcome(outcome); });
    if (!isSent) {
        m_isAwaited = false;
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << m_path;
    }
}

void ZvAccountQuestion::drop()
{
    m_question.drop();
    m_isAwaited = false;
    m_isLogged = false;
    m_retry.reset();
}

void ZvAccountQuestion::takeOutcome(const ZvOutcome &outcome)
{
    if (outcome.isOk()) {
        m_retry.reset();
        m_isLogged = false;
        m_take(outcome.reply, std::exchange(m_isAwaited, false));
        return;
    }
    const QString reason = outcome.reason();
    if (!m_isLogged && !reason.isEmpty())
        qCInfo(zvNetworkLog).noquote() << m_path << "cannot be served:" << reason;
    m_isLogged = true;
    if (m_link->followsAccount())
        m_retry.later();
    else
        m_isAwaited = false;
}
