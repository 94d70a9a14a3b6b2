#include "ZvNetworkKit/zvaccountquestion.h"

#include "ZvNetworkKit/zvkittrace.h"

#include <utility>

ZvAccountQuestion::ZvAccountQuestion(ZvExchangeLink *link, const QString &path,
                                     ZvDecodeTask::Shape shape, Take take)
    : m_link(link), m_path(path), m_take(std::move(take)), m_retry(link, [this] { ask(false); })
{
    m_task.shape = shape;
}

void ZvAccountQuestion::ask(bool isAwaited)
{
    m_link->cancel(m_call);
    m_retry.stop();
    m_isAwaited = m_isAwaited || isAwaited;
    m_isLogged = m_isLogged && !isAwaited;
    const quint64 number = ++m_number;
    m_call = m_link->ask(
        m_link->makeRequest(m_path, {}), ZvExchangeLink::DiesWithSession, this,
        [this, number](const ZvOutcome &outcome) {
            if (number == m_number)
                takeOutcome(outcome);
        },
        m_task);
    if (m_call == 0) {
        m_isAwaited = false;
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << m_path;
    }
}

void ZvAccountQuestion::drop()
{
    m_link->cancel(m_call);
    m_call = 0;
    ++m_number;
    m_isAwaited = false;
    m_isLogged = false;
    m_retry.reset();
}

void ZvAccountQuestion::takeOutcome(const ZvOutcome &outcome)
{
    m_call = 0;
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
