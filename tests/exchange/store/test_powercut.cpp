#include "exchange/store/powercuts.h"

#include <gtest/gtest.h>

namespace zvx {
namespace {

/// The check that the power cuts are there for, on disks that do not keep their word: it has to see
/// that.
TEST(PowerCut, SeesADiskThatDoesNotSync)
{
    // The log alone is what a store without full synchronisation amounts to; "" is every file.
    for (const char *ending : {"-wal", ""}) {
        SCOPED_TRACE(ending);
        test::PowerCutDisk disk(3);
        disk.lieAboutSyncs(ending);
        campaign::Counts counts;
        EXPECT_TRUE(test::tradeThroughCuts(disk, 3, counts));
    }
}

} // namespace
} // namespace zvx
