#include "campaign/campaign.h"
#include "exchange/core/faults.h"
#include "exchange/store/powercuts.h"

// A market's store on a disk whose power is cut: what was answered is there.

int main(int argc, char **argv)
{
    using namespace zvx::test;
    campaign::Campaign campaign;
    campaign.subject = "power cuts of a market's store";
    campaign.seeds = 2'000 / kCutsOfAMarket;
    campaign.enough = 50;
    campaign.counts = powerCutCounts();
    campaign.live = [](std::uint64_t seed, campaign::Counts &counts) {
        PowerCutDisk disk(static_cast<std::uint32_t>(seed));
        return tradeThroughCuts(disk, seed, counts);
    };
#ifdef ZVX_FAULTS
    campaign::Proof proof;
    proof.bugs = [] {
        return std::vector<std::string>{"answer-before-commit", "commits-synced-later",
                                        "nothing-synced", "keys-forgotten-at-restart"};
    };
    proof.plant = zvx::plantFault;
    campaign.proof = proof;
#endif
    return campaign::run(campaign, argc, argv);
}
