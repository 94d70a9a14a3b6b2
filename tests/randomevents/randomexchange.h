#pragma once

#include "campaign/campaign.h"
#include "randomevents/chance.h"
#include "randomevents/randommarket.h"

#include "ZvNetworkKit/zvtransport.h"

#include <vector>

namespace randomevents {

// The exchange at the other end of the kit. It says nothing by itself: what is asked waits until
// it is answered by name, so that chance has the same order of events each time.
class RandomExchange : public ZvTransport
{
public:
    RandomExchange(Chance &chance, campaign::Counts &counts)
        : m_chance(chance), m_counts(counts), m_market(chance, counts)
    {
    }
    ~RandomExchange() override { finishAll(); }

    // The calls that wait, the oldest first.
    std::vector<ZvCallId> waiting() const;

    // Ends this call, or lets it wait on. False where there is no answer now, or no such call.
    bool mayAnswer(ZvCallId id);

    // The next `calls` calls find nobody.
    void goAway(int calls);

    RandomMarket &market() { return m_market; }

protected:
    void start(ZvCallId id, const ZvRequest &request) override;
    void abandon(ZvCallId id) override;

private:
    struct Open {
        ZvCallId id;
        ZvRequest request;
        bool isSilent;
    };

    ZvAnswer answerTo(const ZvRequest &request);

    Chance &m_chance;
    campaign::Counts &m_counts;
    RandomMarket m_market;
    std::vector<Open> m_open;
    int m_away = 0; // how many calls find nobody
};

} // namespace randomevents
