#include "campaign/campaign.h"
#include "exchange/kills/kills.h"

#include <cstdlib>

// The real service, killed under real orders: what was acknowledged is there, once.

int main(int argc, char **argv)
{
    campaign::Campaign campaign;
    campaign.subject = "kills of the service under load";
    campaign.seeds = 20 / zvxtest::kKillsOfALife;
    campaign.enough = campaign.seeds;
    campaign.counts = zvxtest::killCounts();
    campaign.live = zvxtest::killAgainAndAgain;
#ifdef ZVX_PROVE
    campaign::Proof proof;
    proof.bugs = [] {
        return std::vector<std::string>{"answer-before-commit", "keys-forgotten-at-restart",
                                        "burnt-key-forgotten"};
    };
    proof.plant = [](const std::string &name) { ::setenv("ZVX_FAULT", name.c_str(), 1); };
    proof.cleanSeeds = 1;
    campaign.proof = proof;
#endif
    return campaign::run(campaign, argc, argv);
}
