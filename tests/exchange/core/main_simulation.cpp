#include "campaign/campaign.h"
#include "exchange/core/faults.h"
#include "exchange/core/simulation.h"

// Many lives of a market, against the slow one. All fault points of the core have to be found.

int main(int argc, char **argv)
{
    campaign::Campaign campaign;
    campaign.subject = "simulation of the market";
    campaign.seeds = 2'000;
    campaign.enough = 100;
    campaign.counts = emptyCounts();
    campaign.live = liveThrough;
#ifdef ZVX_FAULTS
    campaign::Proof proof;
    proof.bugs = zvx::faultPoints;
    proof.plant = zvx::plantFault;
    proof.cleanSeeds = 50;
    proof.tries = 400;
    campaign.proof = proof;
#endif
    return campaign::run(campaign, argc, argv);
}
