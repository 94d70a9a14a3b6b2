#include "exchange/service/trading_fixture.h"

#include "exchange/service/until.h"

#include <atomic>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using zvxtest::Hold;
using zvxtest::until;

/// Notes how one request ended.
class Noted : public HttpResponseSink
{
public:
    struct Ending {
        std::mutex mutex;
        std::vector<std::string> answers;

        std::size_t count()
        {
            const std::lock_guard<std::mutex> lock(mutex);
            return answers.size();
        }
    };
    explicit Noted(Ending &ending) : m_ending(ending) { }

    void answer(HttpAnswer answer) override
    {
        std::string text;
        for (const HttpFragment &part : answer.body)
            text += *part;
        note(nlohmann::json::accept(text) ? nlohmann::json::parse(text)["status"].get<std::string>()
                                          : text);
    }
    void watch(std::function<void()>) override { }
    void lose() override { note("lost"); }

private:
    void note(std::string text)
    {
        const std::lock_guard<std::mutex> lock(m_ending.mutex);
        m_ending.answers.push_back(std::move(text));
    }

    Ending &m_ending;
};

class QueryPoolTest : public zvxtest::TradingTest
{
protected:
    void ask(QueryPool::Question question)
    {
        floor->queries().answer(floor->market(), HttpResponder(std::make_shared<Noted>(ending)),
                                std::move(question));
    }
    static HttpAnswer fine(MarketReader &) { return HttpAnswer::of(200, "fine"); }

    Noted::Ending ending;
};

using Answers = std::vector<std::string>;

TEST_F(QueryPoolTest, AnswersEachQuestionOnce)
{
    begin();
    std::atomic<int> asked{0};
    for (int i = 0; i < 500; ++i)
        ask([&asked](MarketReader &reader) {
            ++asked;
            reader.account(AccountId(1));
            return HttpAnswer::of(200, "fine");
        });
    EXPECT_TRUE(until([&] { return ending.count() == 500; }));
    EXPECT_EQ(ending.answers, Answers(500, "fine"));
    EXPECT_EQ(asked, 500);
}

TEST_F(QueryPoolTest, OneTooManyIsTurnedAway)
{
    options.queries.threads = 1;
    options.queries.bound = 2;
    begin();
    const auto hold = std::make_shared<Hold>();
    ask([hold](MarketReader &reader) {
        hold->pass();
        return fine(reader);
    });
    hold->awaitVisitors();
    ask(fine);
    ask(fine);
    EXPECT_EQ(ending.count(), 0u);
    ask(fine);
    EXPECT_EQ(ending.answers, Answers{"busy"});
    hold->release();
    EXPECT_TRUE(until([&] { return ending.count() == 4; }));
    EXPECT_EQ(ending.answers, (Answers{"busy", "fine", "fine", "fine"}));
}

TEST_F(QueryPoolTest, AFailureIsAnsweredAndTheNextQuestionIsToo)
{
    options.queries.threads = 1;
    begin();
    ask([](MarketReader &) -> HttpAnswer { throw std::runtime_error("planted"); });
    ask(fine);
    EXPECT_TRUE(until([&] { return ending.count() == 2; }));
    EXPECT_EQ(ending.answers, (Answers{"failed", "fine"}));
}

TEST_F(QueryPoolTest, TheEndAnswersWhatWaitsAndRefusesWhatComesLater)
{
    options.queries.threads = 1;
    begin();
    const auto hold = std::make_shared<Hold>();
    ask([hold](MarketReader &reader) {
        hold->pass();
        return fine(reader);
    });
    hold->awaitVisitors();
    ask(fine);
    std::thread end([this] { floor->queries().stop(); });
    // Refused from the moment in which the end began.
    EXPECT_TRUE(until([&] {
        if (ending.count() == 0)
            ask(fine);
        return ending.count() > 0;
    }));
    EXPECT_EQ(ending.answers.front(), "failed");
    hold->release();
    end.join();
    for (std::size_t i = 1; i < ending.answers.size(); ++i)
        EXPECT_EQ(ending.answers[i], "fine");
    const std::size_t answered = ending.count();
    floor->queries().stop();
    ask(fine);
    EXPECT_EQ(ending.count(), answered + 1);
    EXPECT_EQ(ending.answers.back(), "failed");
}

} // namespace
