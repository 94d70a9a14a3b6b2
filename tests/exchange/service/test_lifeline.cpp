#include "exchange/service/lifeline.h"

#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace zvx {
namespace {

Lifeline::Options on(const std::filesystem::path &folder)
{
    Lifeline::Options options;
    options.folder = folder;
    return options;
}

// One service ends while the next one on the folder already listens.
TEST(Lifeline, LeavesTheSocketOfTheNextServiceAlone)
{
    const zvxtest::TemporaryFolder folder;
    const std::filesystem::path socket = folder.path() / Lifeline::socketName;

    auto ending = std::make_unique<Lifeline>(on(folder.path()));
    ending->listen();
    ASSERT_TRUE(std::filesystem::exists(socket));
    ending->close();
    EXPECT_FALSE(std::filesystem::exists(socket));

    Lifeline next(on(folder.path()));
    next.listen();
    ending.reset();
    EXPECT_TRUE(std::filesystem::exists(socket));
}

} // namespace
} // namespace zvx
