#include "exchange/service/initials.h"

#include <gtest/gtest.h>

namespace {

using Readings = std::vector<std::string>;

TEST(Initials, AreThoseOfEachCharacter)
{
    const zvx::Initials initials;
    const std::pair<const char *, Readings> table[] = {
        {"平安银票", {"payp"}},
        {"长城", {"cc", "zc"}},
        {"重阳", {"zy", "cy"}},
        {"音乐", {"yl", "yy"}},
        {"行舟", {"xz", "hz"}},
        {"荷塘小型张", {"htxxz"}},
        {"2016年Ab卡", {"2016nabk", "2016nabq"}},
        {"Ｔ４６猴票", {"t46hp"}},
        {"龙·凤（小）", {"lfx"}},
        {"绿女", {"ln"}},
        {"", {}},
        {"——", {}},
        {"😀", {}},
    };
    for (const auto &[name, expected] : table)
        EXPECT_EQ(initials.of(name), expected) << name;
}

TEST(Initials, CombineAllReadingsUpToABound)
{
    const zvx::Initials initials;
    EXPECT_EQ(initials.of("长乐"), (Readings{"cl", "zl", "cy", "zy"}));
    const Readings many = initials.of("长行重乐曾单朝调");
    EXPECT_EQ(many.size(), zvx::Initials::maximumReadings);
    EXPECT_EQ(many.front(), "cxzlzdcd");
    for (const std::string &reading : many)
        EXPECT_EQ(reading.size(), 8u);
}

TEST(Initials, SurviveTextThatIsNotUtf8)
{
    const zvx::Initials initials;
    EXPECT_EQ(initials.of("\xFF\xE9 a"), Readings{"a"});
}

} // namespace
