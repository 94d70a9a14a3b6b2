#include "exchange/service/platform_pages.h"

#include "exchange/service/account_fixture.h"

namespace {

using namespace zvx;
using zvxtest::fetch;
using zvxtest::RawAnswer;

class PlatformPagesTest : public zvxtest::AccountTest
{
};

TEST_F(PlatformPagesTest, AreThereForEachPlatform)
{
    begin();
    const std::pair<const char *, const char *> platforms[] = {{"/lc/", "岚川"}, {"/ch/", "澄湖"}};
    const std::pair<const char *, const char *> pages[]
        = {{"agreement.html", "用户服务协议"}, {"risk.html", "风险揭示书"}};
    for (const auto &[platform, name] : platforms) {
        for (const auto &[page, title] : pages) {
            const RawAnswer answer = fetch(port(), std::string(platform) + page);
            EXPECT_EQ(answer.status, 200);
            EXPECT_NE(answer.head.find("\r\nContent-Type: text/html; charset=utf-8\r\n"),
                      std::string::npos);
            EXPECT_NE(answer.head.find("\r\nContent-Security-Policy: default-src 'none'; "
                                       "style-src 'self'; base-uri 'none'; form-action 'none'; "
                                       "frame-ancestors 'none'\r\n"),
                      std::string::npos);
            EXPECT_EQ(answer.body.rfind("<!DOCTYPE html>\n<html lang=\"zh-CN\">", 0), 0u);
            EXPECT_NE(answer.body.find("<meta charset=\"utf-8\">"), std::string::npos);
            EXPECT_NE(answer.body.find("<h1>" + std::string(title) + "</h1>"), std::string::npos);
            EXPECT_NE(answer.body.find(std::string(name) + "交易中心"), std::string::npos);
            EXPECT_EQ(answer.body.find('@'), std::string::npos);
            for (const char *foreign : {"<script", "http:", "https:", "style=", "onclick"})
                EXPECT_EQ(answer.body.find(foreign), std::string::npos) << foreign;
            EXPECT_GT(answer.body.size(), 2000u);
        }
        const RawAnswer style = fetch(port(), std::string(platform) + "page.css");
        EXPECT_EQ(style.status, 200);
        EXPECT_NE(style.head.find("text/css"), std::string::npos);
    }
    EXPECT_EQ(fetch(port(), "/lc/help.html").status, 404);
    EXPECT_EQ(fetch(port(), "/xx/agreement.html").status, 404);
    EXPECT_EQ(post("/lc/agreement.html", "a=b")["status"], "method");
}

TEST(PlatformPages, TakeANameAsText)
{
    const PlatformPages pages("A<b>&c");
    const std::string text = *pages.page("risk.html")->body.front();
    EXPECT_NE(text.find("A&lt;b&gt;&amp;c"), std::string::npos);
    EXPECT_EQ(text.find("<b>"), std::string::npos);
}

} // namespace
