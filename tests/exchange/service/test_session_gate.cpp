#include "exchange/service/session_gate.h"

#include "exchange/service/wire_answers.h"

#include <gtest/gtest.h>

namespace {

using namespace zvx;

class SessionGateTest : public testing::Test
{
protected:
    std::string ask(const std::string &authorization)
    {
        HttpRequest request;
        request.authorization = authorization;
        const auto asked = gate.ask(request);
        if (const auto *who = std::get_if<SignedIn>(&asked))
            return "account " + std::to_string(who->account.value()) + " session "
                + std::to_string(who->session);
        const HttpAnswer &answer = std::get<HttpAnswer>(asked);
        EXPECT_EQ(answer.status, 401);
        const std::string &text = *answer.body.front();
        return text.find("\"elsewhere\"") != std::string::npos ? "elsewhere"
            : text.find("\"session\"") != std::string::npos    ? "session"
                                                               : text;
    }

    Envelope envelope{"5f0c9a41d2e37b68", [] { return 1577840400123; }};
    WireAnswers answers{envelope};
    std::vector<std::string> tokens;
    SessionGate gate{[this](std::string_view token) {
                         tokens.emplace_back(token);
                         SessionState state;
                         state.kind = token == "live" ? SessionState::Live
                             : token == "gone"        ? SessionState::Elsewhere
                             : token == "old"         ? SessionState::Ended
                                                      : SessionState::Unknown;
                         state.account = AccountId(4711);
                         state.session = 12;
                         return state;
                     },
                     answers};
};

TEST_F(SessionGateTest, LetsLiveSessionsInAlone)
{
    EXPECT_EQ(ask("Bearer live"), "account 4711 session 12");
    EXPECT_EQ(ask("bEARER live"), "account 4711 session 12");
    EXPECT_EQ(ask("Bearer gone"), "elsewhere");
    EXPECT_EQ(ask("Bearer old"), "session");
    EXPECT_EQ(ask("Bearer LIVE"), "session");
    EXPECT_EQ(ask("Bearer  live"), "session");
}

TEST_F(SessionGateTest, AsksNobodyAboutWhatIsNoToken)
{
    for (const char *header : {"", "Bearer", "Bearer ", "live", "Basic live", "Bearerlive",
                               "Bearer\tlive", "Token live"})
        EXPECT_EQ(ask(header), "session") << header;
    EXPECT_TRUE(tokens.empty());
}

} // namespace
