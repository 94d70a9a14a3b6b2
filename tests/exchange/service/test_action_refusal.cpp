#include "exchange/service/action_refusal.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

namespace {

using namespace zvx;

/// What an order can be refused for, in the order in which it is asked, with the word for programs.
const std::pair<Status, const char *> ofOrders[] = {
    {Status::AccountFrozen, "frozen"},
    {Status::MarketClosed, "closed"},
    {Status::CollectionUnknown, "unknown-collection"},
    {Status::CollectionSuspended, "suspended"},
    {Status::PriceOutsideLimits, "price-limit"},
    {Status::BadTick, "tick"},
    {Status::BadQuantity, "quantity"},
    {Status::NotEnoughMoney, "money"},
    {Status::NotEnoughHoldings, "holdings"},
    {Status::TooManyOpenOrders, "too-many"},
};

TEST(ActionRefusal, EveryRuleOfAnOrderHasAWordAndASentenceOfItsOwn)
{
    std::set<std::string> sentences;
    std::set<std::string> words;
    for (const auto &[status, word] : ofOrders) {
        const ActionRefusal &refusal = refusalOf(status);
        EXPECT_EQ(refusal.reason, word);
        const std::string sentence(refusal.message);
        EXPECT_TRUE(sentences.insert(sentence).second) << sentence;
        EXPECT_TRUE(words.insert(word).second) << word;
        // A trader reads it as it stands: Chinese throughout, a whole sentence.
        for (const char byte : sentence)
            EXPECT_GT(static_cast<unsigned char>(byte), 0x7f) << sentence;
        ASSERT_GT(sentence.size(), 9u);
        EXPECT_EQ(sentence.substr(sentence.size() - 3), "。") << sentence;
    }
}

TEST(ActionRefusal, OrdersOfOthersReadAsOrdersThatAreNotThere)
{
    EXPECT_EQ(refusalOf(Status::NotYourOrder).reason, refusalOf(Status::OrderUnknown).reason);
    EXPECT_EQ(refusalOf(Status::NotYourOrder).message, refusalOf(Status::OrderUnknown).message);
}

} // namespace
