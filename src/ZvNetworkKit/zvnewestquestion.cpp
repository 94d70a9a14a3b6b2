#include "ZvNetworkKit/zvnewestquestion.h"

#include <utility>

ZvNewestQuestion::ZvNewestQuestion(ZvExchangeLink *link) : m_link(link) { }

ZvNewestQuestion::~ZvNewestQuestion()
{
    drop();
}

bool ZvNewestQuestion::ask(const ZvRequest &request, ZvExchangeLink::Fate fate,
                           const ZvDecodeTask &task, ZvExchangeLink::Done done)
{
    drop();
    if (!m_link)
        return false;
    m_call = m_link->ask(
        request, fate, this,
        [this, number = m_number, done = std::move(done)](const ZvOutcome &outcome) {
            if (number != m_number)
                return;
            m_call = 0;
            done(outcome);
        },
        task);
    return isOpen();
}

void ZvNewestQuestion::drop()
{
    if (m_link)
        m_link->cancel(m_call);
    m_call = 0;
    ++m_number; // an answer that is being decoded comes in spite of it
}
