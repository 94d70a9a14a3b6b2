#include "randomevents/randomexchange.h"

#include "randomevents/names.h"

#include "ZvNetworkKit/serverpaths.h"

#include <algorithm>
#include <utility>

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

void RandomExchange::speak()
{
    std::vector<Open> waiting;
    for (const Open &open : std::exchange(m_open, {})) {
        const bool isPoll = open.request.path == zvPath_sync;
        if (open.isSilent || !m_chance.happens(isPoll ? 30 : 60))
            waiting.push_back(open);
        else
            finish(open.id, answerTo(open.request));
    }
    m_open = std::move(waiting);
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
