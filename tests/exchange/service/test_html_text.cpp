#include "exchange/service/html_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace zvx;

TEST(HtmlText, EscapesWhatHasAMeaning)
{
    EXPECT_EQ(htmlOf("林晓月 & <b>\"it's\"</b>"),
              "林晓月 &amp; &lt;b&gt;&quot;it&#39;s&quot;&lt;/b&gt;");
    EXPECT_EQ(htmlOf(""), "");
}

TEST(HtmlText, FillsTemplatesWithText)
{
    EXPECT_EQ(filledHtml("<a href=\"{to}\">{name}</a>{name}", {{"to", "x\"y"}, {"name", "<n>"}}),
              "<a href=\"x&quot;y\">&lt;n&gt;</a>&lt;n&gt;");
    EXPECT_EQ(filledHtml("{a}{b}", {{"a", "{b}"}, {"b", "{a}"}}), "{b}{a}")
        << "what is filled in is no template";
    EXPECT_EQ(filledHtml("plain", {}), "plain");
    EXPECT_THROW(filledHtml("{a}", {{"b", "1"}}), std::logic_error);
    EXPECT_THROW(filledHtml("{a", {{"a", "1"}}), std::logic_error);
}

TEST(HtmlText, MakesAWholePage)
{
    const std::string page = htmlPage("<t>", "A&B", "<p>body</p>\n");
    EXPECT_EQ(page.rfind("<!DOCTYPE html>\n<html lang=\"zh-CN\">", 0), 0u);
    EXPECT_NE(page.find("<title>&lt;t&gt; - A&amp;B</title>"), std::string::npos);
    EXPECT_NE(page.find("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"),
              std::string::npos);
    EXPECT_NE(
        page.find("<body>\n<p>body</p>\n<footer>A&amp;B交易中心</footer>\n</body>\n</html>\n"),
        std::string::npos);
}

} // namespace
