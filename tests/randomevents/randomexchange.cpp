#include "randomevents/randomexchange.h"

#include "randomevents/names.h"

#include "ZvNetworkKit/serverpaths.h"

#include <algorithm>

namespace randomevents {

namespace {

ZvAnswer said(const QByteArray &body, int status = 200)
{
    ZvAnswer answer;
    answer.ending = ZvAnswer::Answered;
    answer.httpStatus = status;
    answer.body = body;
    return answer;
}

ZvAnswer lost(ZvAnswer::Ending ending)
{
    ZvAnswer answer;
    answer.ending = ending;
    answer.error = QStringLiteral("by chance");
    return answer;
}

} // namespace

void RandomExchange::start(ZvCallId id, const ZvRequest &request)
{
    const bool isSilent = m_away == 0 && m_chance.happens(2);
    m_counts[kSilent] += isSilent ? 1 : 0;
    m_open.push_back({id, request, isSilent});
}

void RandomExchange::abandon(ZvCallId id)
{
    m_open.erase(std::remove_if(m_open.begin(), m_open.end(),
                                [id](const Open &open) { return open.id == id; }),
                 m_open.end());
}

void RandomExchange::goAway(int calls)
{
    m_away = calls;
    ++m_counts[kOutage];
}

std::vector<ZvCallId> RandomExchange::waiting() const
{
    std::vector<ZvCallId> ids;
    for (const Open &open : m_open)
        ids.push_back(open.id);
    return ids;
}

bool RandomExchange::mayAnswer(ZvCallId id)
{
    const auto at = std::find_if(m_open.begin(), m_open.end(),
                                 [id](const Open &open) { return open.id == id; });
    if (at == m_open.end() || at->isSilent)
        return false;
    const bool isPoll = at->request.path == zvPath_sync;
    if (!m_chance.happens(isPoll ? 30 : 60))
        return false;
    const ZvRequest request = at->request;
    m_open.erase(at);
    finish(id, answerTo(request));
    return true;
}

ZvAnswer RandomExchange::answerTo(const ZvRequest &request)
{
    if (m_away > 0) {
        --m_away;
        ++m_counts[kLost];
        return lost(m_chance.happens(80) ? ZvAnswer::NotSent : ZvAnswer::Failed);
    }
    const int kind = m_chance.below(100);
    if (kind < 2) {
        ++m_counts[kLost];
        return lost(m_chance.oneOf({ZvAnswer::NotSent, ZvAnswer::Failed, ZvAnswer::TooLarge}));
    }
    if (kind < 4) {
        ++m_counts[kBroken];
        QByteArray body = m_market.answerTo(request);
        body.truncate(m_chance.below(body.size()));
        return said(body);
    }
    if (kind < 8) {
        ++m_counts[kRefused];
        return said(m_market.refusal());
    }
    if (kind < 9 && !request.token.isEmpty() && m_chance.happens(30)) {
        ++m_counts[kElsewhere];
        return said(m_market.endOfSession(), 401);
    }
    ++m_counts[request.path == zvPath_sync ? kPolled : kAnswered];
    return said(m_market.answerTo(request));
}

} // namespace randomevents
