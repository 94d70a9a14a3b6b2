#include "exchange/core/types.h"

#include <gtest/gtest.h>

using zvx::ActionKey;

TEST(ActionKeyText, ReadsThirtyTwoHexadecimalDigitsOfEitherCase)
{
    const auto key = ActionKey::fromText("00112233445566778899aAbBcCdDeEfF");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->high, 0x0011223344556677u);
    EXPECT_EQ(key->low, 0x8899aabbccddeeffu);
}

TEST(ActionKeyText, RefusesEverythingElse)
{
    for (const char *text :
         {"", "0", "00112233445566778899aabbccddeef", "00112233445566778899aabbccddeeff0",
          "00112233445566778899aabbccddeefg", "00112233-4556-6778-899a-abbccddeeff0",
          " 0112233445566778899aabbccddeeff", "00000000000000000000000000000000"})
        EXPECT_FALSE(ActionKey::fromText(text)) << text;
}
