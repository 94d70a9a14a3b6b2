#include "exchange/service/bank_gateway.h"
#include "exchange/service/link_fixture.h"
#include "exchange/service/until.h"

#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::RawClient;
using zvxtest::until;

/// A bank that says what it is told to, when it is told to. From any thread.
class PlainBank : public BankGateway
{
public:
    enum Manner { AtOnce, Twice, Later, Never };

    void ask(const BankOrder &order, Answered answered) override
    {
        BankWord word = BankWord::Done;
        Manner how = AtOnce;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_orders.push_back(order);
            const auto known = m_words.find({order.id.high, order.id.low});
            word = known != m_words.end()  ? known->second
                : m_refuses || !order.card ? BankWord::Refused
                                           : BankWord::Done;
            m_words[{order.id.high, order.id.low}] = word;
            how = m_manner;
            if (how == Later)
                m_later.emplace_back([word, answered] { answered(word); });
        }
        if (how == AtOnce || how == Twice)
            answered(word);
        if (how == Twice)
            answered(word);
    }

    void behave(Manner manner, bool refuses = false)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_manner = manner;
        m_refuses = refuses;
    }
    /// Says what was kept back.
    void speak()
    {
        std::vector<std::function<void()>> later;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            later.swap(m_later);
        }
        for (const auto &say : later)
            say();
    }
    std::vector<BankOrder> orders() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_orders;
    }

private:
    mutable std::mutex m_mutex;
    Manner m_manner = AtOnce;
    bool m_refuses = false;
    std::vector<BankOrder> m_orders;
    std::map<std::pair<std::uint64_t, std::uint64_t>, BankWord> m_words;
    std::vector<std::function<void()>> m_later;
};

/// A code as a person has it, with the two texts of its answer.
struct Code {
    std::string digits;
    std::string first;
    std::string second;
};

/// A person of 岚川 who is signed in, and whose card is bound where a test says so.
class MoneyTest : public zvxtest::LinkTest
{
protected:
    using AccountTest::post;

    MoneyTest()
    {
        options.accountLimits.guessesOfCode = 1'000;
        options.accountLimits.guessesOfPeer = 1'000;
        options.accountLimits.guessesOfPhone = 1'000;
        options.accountLimits.codesOfDay = 1'000;
        options.accountLimits.textsOfPeer = 1'000;
        options.moneyLimits.answerWait = 50;
        options.moneyLimits.askAgainEvery = 100;
        options.bank = bank;
    }

    void beginBound()
    {
        beginSignedIn();
        bindCard();
    }
    void again()
    {
        restart();
        token = signIn(phone, password);
    }

    Code sendCode(const std::string &market)
    {
        const std::size_t before = texts();
        const json answer = act(market + "pay/send.html", "phone=" + phone, token);
        EXPECT_EQ(answer["status"], "ok") << answer;
        return {codeAfter(before), answer["data"]["first"], answer["data"]["second"]};
    }
    Code sendCode() { return sendCode(lc); }

    static std::string form(const std::string &amount, const Code &code)
    {
        return "amount=" + amount + "&code=" + code.digits + "&first=" + code.first
            + "&second=" + code.second;
    }
    json in(const std::string &amount, const Code &code)
    {
        return act(lc + "pay/trade.html", form(amount, code), token);
    }
    json in(std::int64_t fen) { return in(std::to_string(fen), sendCode()); }
    json out(const std::string &amount)
    {
        return act(lc + "pay/cash-deal.html", "amount=" + amount, token);
    }
    json out(std::int64_t fen) { return out(std::to_string(fen)); }

    /// "refused no-card", with a sentence in Chinese; "ok".
    static std::string outcome(const json &answer)
    {
        std::string text = answer.value("status", std::string("none"));
        if (text != "ok") {
            const std::string message = answer.value("message", std::string());
            EXPECT_FALSE(message.empty()) << answer;
            EXPECT_GT(static_cast<unsigned char>(message.empty() ? 'x' : message[0]), 0x7f)
                << message;
        }
        if (answer.contains("reason"))
            text += ' ' + answer["reason"].get<std::string>();
        return text;
    }
    /// "available frozen"
    std::string cash()
    {
        const json cap = get(lc + "cap.html", token)["data"];
        return cap["available"].dump() + ' ' + cap["frozen"].dump();
    }
    bool comesTo(const std::string &wanted)
    {
        return until([&] { return cash() == wanted; });
    }
    json flows(const std::string &query = {})
    {
        return get(lc + "pay/list.html" + query, token)["data"]["flows"];
    }
    static std::string line(const json &flow)
    {
        return flow["number"].dump() + (flow["in"].get<bool>() ? " in " : " out ")
            + flow["amount"].dump() + " state " + flow["state"].dump() + " balance "
            + flow["balance"].dump();
    }

    const std::shared_ptr<PlainBank> bank = std::make_shared<PlainBank>();
};

TEST_F(MoneyTest, ComesInWithACodeAndGoesOutWithout)
{
    options.bank.reset(); // the embedded one
    beginBound();
    EXPECT_EQ(cash(), "0 0");
    const json answer = in(12'345);
    EXPECT_EQ(outcome(answer), "ok");
    EXPECT_EQ(answer["data"], json::object());
    EXPECT_EQ(cash(), "12345 0");
    EXPECT_EQ(outcome(out(345)), "ok");
    EXPECT_EQ(outcome(in(1)), "ok") << "one fen";
    EXPECT_EQ(cash(), "12001 0");
    const json list = flows();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(line(list[0]), "3 in 1 state 1 balance 12001");
    EXPECT_EQ(line(list[1]), "2 out 345 state 1 balance 12000");
    EXPECT_EQ(line(list[2]), "1 in 12345 state 1 balance 12345");
    EXPECT_GT(list[0]["time"].get<std::int64_t>(), 1'577'836'800'000);
    EXPECT_EQ(metric("zvexchange_transfers_total{way=\"in\"}"), "2");
    EXPECT_EQ(metric("zvexchange_transfers_total{way=\"out\"}"), "1");
    EXPECT_EQ(metric("zvexchange_transfers_under_way"), "0");

    std::ifstream outbox(folder.path() / "outbox.txt");
    std::ostringstream text;
    text << outbox.rdbuf();
    EXPECT_NE(text.str().find("转入123.45元，卡号尾号0121，已完成"), std::string::npos)
        << text.str();
    EXPECT_EQ(text.str().find("9990001234567890121"), std::string::npos);
}

TEST_F(MoneyTest, NeedsASignInAndACard)
{
    beginSignedIn();
    for (const char *path : {"pay/send.html", "pay/trade.html", "pay/cash-deal.html"})
        EXPECT_EQ(act(lc + path, "amount=5&phone=" + phone)["status"], "session") << path;
    EXPECT_EQ(get(lc + "pay/list.html")["status"], "session");
    EXPECT_EQ(act(ch + "pay/cash-deal.html", "amount=5", token)["status"], "session")
        << "a token of another platform";
    const json sent = act(lc + "pay/send.html", "phone=" + phone, token);
    EXPECT_EQ(outcome(sent), "refused no-card");
    EXPECT_EQ(outcome(in("500", {"123456", "a", "b"})), "refused no-card");
    const std::string key = newKey();
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "amount=5&key=" + key, token)),
              "refused no-card");
    bindCard();
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "amount=5&key=" + key, token)),
              "refused no-card")
        << "a refusal is final";
    EXPECT_EQ(outcome(out(5)), "refused money");
    EXPECT_TRUE(bank->orders().empty());
    EXPECT_EQ(flows(), json::array());
}

TEST_F(MoneyTest, AmountsThatNobodyCanMoveAreRefusedBeforeAnythingMoves)
{
    options.moneyLimits.ofTransfer = Fen(50'000);
    options.moneyLimits.ofDay = Fen(70'000);
    beginBound();
    const Code code = sendCode();
    for (const char *amount : {"0", "-1", "0.5", "1.5", "0.001", "1e3", "", "abc", "01", "%2b5",
                               " 5", "0x10", "9000000000000001", "99999999999999999999"}) {
        EXPECT_EQ(outcome(in(amount, code)), "bad-request amount") << amount;
        EXPECT_EQ(outcome(out(amount)), "bad-request amount") << amount;
    }
    EXPECT_EQ(outcome(act(lc + "pay/cash-deal.html", "", token)), "bad-request amount");
    const json much = in("50001", code);
    EXPECT_EQ(outcome(much), "refused amount-limit");
    EXPECT_NE(much["message"].get<std::string>().find("500.00"), std::string::npos) << much;
    EXPECT_EQ(outcome(out(50'001)), "refused amount-limit");
    EXPECT_EQ(outcome(in("9000000000000000", code)), "refused amount-limit");
    EXPECT_EQ(cash(), "0 0");
    EXPECT_EQ(outcome(in("50000", code)), "ok") << "none of that has used up the code";
    EXPECT_EQ(outcome(in(20'001)), "refused day-limit");
    EXPECT_EQ(outcome(in(20'000)), "ok");
    const json day = in(1);
    EXPECT_EQ(outcome(day), "refused day-limit");
    EXPECT_NE(day["message"].get<std::string>().find("700.00"), std::string::npos) << day;
    EXPECT_EQ(outcome(out(50'000)), "ok") << "the other way has a sum of its own";
    EXPECT_EQ(outcome(out(20'001)), "refused day-limit");
    EXPECT_EQ(cash(), "20000 0");
    EXPECT_EQ(bank->orders().size(), 3u);
}

TEST_F(MoneyTest, ACodeIsGoodOnceForWhatItWasSentForAlone)
{
    beginBound();
    const Code never{"123456", "", ""};
    EXPECT_EQ(outcome(in("500", never)), "refused no-code") << "none was ever sent";
    const Code code = sendCode();
    const auto changed = [&code](const std::function<void(Code &)> &change) {
        Code other = code;
        change(other);
        return other;
    };
    const std::string wrong = code.digits == "111111" ? "222222" : "111111";
    const struct {
        const char *what;
        Code code;
        const char *outcome;
    } table[] = {
        {"wrong digits", changed([&](Code &c) { c.digits = wrong; }), "refused wrong-code"},
        {"five digits", changed([](Code &c) { c.digits = "12345"; }), "bad-request code"},
        {"letters", changed([](Code &c) { c.digits = "12345x"; }), "bad-request code"},
        {"no digits", changed([](Code &c) { c.digits = ""; }), "bad-request code"},
        {"an empty pair", changed([](Code &c) { c.first = c.second = ""; }), "refused wrong-code"},
        {"a pair the wrong way round", changed([](Code &c) { std::swap(c.first, c.second); }),
         "refused wrong-code"},
        {"a pair that somebody made up", changed([](Code &c) { c.first = std::string(32, 'a'); }),
         "refused wrong-code"},
        {"a long pair", changed([](Code &c) { c.second = std::string(5'000, 'b'); }),
         "refused wrong-code"},
    };
    for (const auto &row : table)
        EXPECT_EQ(outcome(in("500", row.code)), row.outcome) << row.what;
    EXPECT_EQ(outcome(act(tea + "pay/trade.html", form("500", code), token)), "refused wrong-code")
        << "another market";
    EXPECT_EQ(cash(), "0 0");
    EXPECT_EQ(flows(), json::array());

    const std::string key = newKey();
    const std::string whole = "key=" + key + '&' + form("500", code);
    const json first = post(lc + "pay/trade.html", whole, token);
    EXPECT_EQ(outcome(first), "ok");
    EXPECT_EQ(outcome(in("500", code)), "refused code-used");
    EXPECT_EQ(outcome(in("600", code)), "refused code-used") << "another amount";
    EXPECT_EQ(timeless(post(lc + "pay/trade.html", whole, token)), timeless(first));
    EXPECT_EQ(outcome(post(lc + "pay/trade.html", "key=" + key + '&' + form("600", code), token)),
              "refused key-differs");
    EXPECT_EQ(outcome(post(tea + "pay/trade.html", whole, token)), "refused key-differs");
    EXPECT_EQ(cash(), "500 0");

    // The newest code counts, with its own pair.
    const Code older = sendCode();
    const Code newer = sendCode();
    EXPECT_NE(older.first, newer.first);
    EXPECT_EQ(outcome(in("500", older)), "refused wrong-code");
    EXPECT_EQ(outcome(in("500", {newer.digits, older.first, older.second})), "refused wrong-code");
    EXPECT_EQ(outcome(in("500", newer)), "ok");
    EXPECT_EQ(cash(), "1000 0");
    EXPECT_EQ(bank->orders().size(), 2u);
}

TEST_F(MoneyTest, ACodeIsGoodForItsAccountAlone)
{
    beginBound();
    const Code code = sendCode();
    const std::string otherPhone = "13900000002";
    registerAccount(otherPhone, password);
    const std::string other = signIn(otherPhone, password);
    EXPECT_EQ(outcome(act(lc + "pay/send.html", "phone=" + phone, other)), "refused no-card");
    const std::string mine = token;
    token = other;
    const std::size_t before = texts();
    const auto shown = page("/lc/card.html?s=" + newCode());
    const auto prepared
        = submit(shown, "prepare", "holder=林晓月&bank=lanchuan&number=9990005555666678");
    ASSERT_TRUE(until([&] { return texts() > before; }));
    ASSERT_EQ(submit(prepared, "confirm", "code=" + codeOf(otherPhone)).status, 200);
    EXPECT_EQ(outcome(act(lc + "pay/send.html", "phone=" + phone, other)),
              "refused not-your-phone");
    EXPECT_EQ(outcome(act(lc + "pay/send.html", "phone=abc", other)), "bad-request phone");
    EXPECT_EQ(outcome(in("500", code)), "refused no-code");
    EXPECT_EQ(cash(), "0 0");
    token = mine;
    EXPECT_EQ(outcome(in("500", code)), "ok");
    EXPECT_EQ(cash(), "500 0");
}

TEST_F(MoneyTest, AnOldCodeIsRefused)
{
    beginBound();
    const Code code = sendCode();
    options.accountLimits.codeLife = 1;
    again();
    EXPECT_EQ(outcome(in("500", code)), "refused code-expired");
    EXPECT_EQ(cash(), "0 0");
    options.accountLimits.codeLife = AccountLimits().codeLife;
    again();
    EXPECT_EQ(outcome(in("500", code)), "ok") << "it was its age alone";
}

TEST_F(MoneyTest, SendingACodeAgainUnderItsKeyTellsItsPairAgain)
{
    beginBound();
    const std::string key = newKey();
    const std::size_t before = texts();
    const json first = post(lc + "pay/send.html", "key=" + key + "&phone=" + phone, token);
    EXPECT_EQ(outcome(first), "ok");
    EXPECT_TRUE(until([&] { return texts() == before + 1; }));
    EXPECT_EQ(timeless(post(lc + "pay/send.html", "key=" + key + "&phone=" + phone, token)),
              timeless(first));
    EXPECT_EQ(timeless(post(lc + "pay/send.html", "key=" + key + "&resolve=1", token)),
              timeless(first));
    EXPECT_EQ(outcome(post(tea + "pay/send.html", "key=" + key + "&phone=" + phone, token)),
              "refused key-differs");
    again();
    const json later = post(lc + "pay/send.html", "key=" + key + "&resolve=1", token);
    EXPECT_EQ(later["data"], first["data"]);
    EXPECT_EQ(texts(), before + 1) << "one message";
    EXPECT_EQ(outcome(in("500", {codeOf(phone), first["data"]["first"], first["data"]["second"]})),
              "ok");
    const std::string unused = newKey();
    EXPECT_EQ(outcome(post(lc + "pay/send.html", "key=" + unused + "&resolve=1", token)),
              "refused unknown-key");
    EXPECT_EQ(outcome(post(lc + "pay/send.html", "key=" + unused + "&phone=" + phone, token)),
              "refused unknown-key");
}

TEST_F(MoneyTest, AskingForAKeyTellsWhatBecameOfTheMoney)
{
    beginBound();
    EXPECT_EQ(outcome(in(1'000)), "ok");
    const auto resolve = [this](const std::string &path, const std::string &key) {
        return post(lc + path, "key=" + key + "&resolve=1", token);
    };
    const std::string key = newKey();
    const json done = post(lc + "pay/cash-deal.html", "amount=300&key=" + key, token);
    EXPECT_EQ(timeless(resolve("pay/cash-deal.html", key)), timeless(done));
    EXPECT_EQ(outcome(resolve("pay/trade.html", key)), "refused key-differs");
    const std::string money = newKey();
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "amount=701&key=" + money, token)),
              "refused money");
    EXPECT_EQ(outcome(resolve("pay/cash-deal.html", money)), "refused money");

    const std::string burnt = newKey();
    EXPECT_EQ(outcome(resolve("pay/cash-deal.html", burnt)), "refused unknown-key");
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "amount=1&key=" + burnt, token)),
              "refused unknown-key");
    const Code code = sendCode();
    const std::string burntIn = newKey();
    EXPECT_EQ(outcome(resolve("pay/trade.html", burntIn)), "refused unknown-key");
    EXPECT_EQ(outcome(post(lc + "pay/trade.html", "key=" + burntIn + '&' + form("5", code), token)),
              "refused unknown-key");
    const std::string wrong = newKey();
    Code bad = code;
    bad.second = "x";
    EXPECT_EQ(outcome(post(lc + "pay/trade.html", "key=" + wrong + '&' + form("5", bad), token)),
              "refused wrong-code");
    EXPECT_EQ(outcome(resolve("pay/trade.html", wrong)), "refused wrong-code");
    EXPECT_EQ(outcome(post(lc + "pay/trade.html", "key=" + wrong + '&' + form("5", code), token)),
              "refused wrong-code")
        << "final, also with the right code";
    const std::string good = newKey();
    const json in = post(lc + "pay/trade.html", "key=" + good + '&' + form("5", code), token);
    EXPECT_EQ(outcome(in), "ok");
    EXPECT_EQ(timeless(resolve("pay/trade.html", good)), timeless(in));
    EXPECT_EQ(cash(), "705 0");
}

TEST_F(MoneyTest, WhatTheBankRefusesGoesBack)
{
    beginBound();
    EXPECT_EQ(outcome(in(1'000)), "ok");
    bank->behave(PlainBank::AtOnce, true);
    EXPECT_EQ(outcome(in(500)), "refused bank");
    EXPECT_EQ(outcome(out(300)), "refused bank");
    EXPECT_EQ(cash(), "1000 0");
    const json list = flows();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(line(list[0]), "3 out 300 state 2 balance 1000");
    EXPECT_EQ(line(list[1]), "2 in 500 state 2 balance 1000");
    EXPECT_EQ(metric("zvexchange_transfers_refused_total{by=\"bank\"}"), "2");
}

TEST_F(MoneyTest, ABankThatTakesItsTimeIsWaitedForAndPostedOnce)
{
    options.moneyLimits.askAgainEvery = 600'000;
    beginBound();
    EXPECT_EQ(outcome(in(1'000)), "ok");
    bank->behave(PlainBank::Later);
    const std::string key = newKey();
    const json pending = post(lc + "pay/cash-deal.html", "amount=300&key=" + key, token);
    EXPECT_EQ(outcome(pending), "refused pending");
    EXPECT_EQ(outcome(in(50)), "refused pending");
    EXPECT_EQ(cash(), "700 300");
    EXPECT_EQ(line(flows()[0]), "3 in 50 state 0 balance 700");
    EXPECT_EQ(outcome(out(701)), "refused money") << "what is frozen cannot be spent";
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "key=" + key + "&resolve=1", token)),
              "refused pending");
    EXPECT_EQ(metric("zvexchange_transfers_under_way"), "2");
    bank->speak();
    EXPECT_TRUE(comesTo("750 0")) << cash();
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "key=" + key + "&resolve=1", token)), "ok");
    EXPECT_EQ(outcome(post(lc + "pay/cash-deal.html", "amount=300&key=" + key, token)), "ok");
    EXPECT_EQ(cash(), "750 0");
    EXPECT_EQ(bank->orders().size(), 3u);

    bank->behave(PlainBank::Twice);
    EXPECT_EQ(outcome(out(50)), "ok");
    EXPECT_EQ(outcome(in(20)), "ok");
    EXPECT_TRUE(until([&] { return metric("zvexchange_bank_idle_answers_total") == "2"; }));
    EXPECT_EQ(cash(), "720 0");
}

TEST_F(MoneyTest, WhoWaitsForTheBankIsToldAsSoonAsItSpeaks)
{
    options.moneyLimits.answerWait = 30'000;
    options.moneyLimits.askAgainEvery = 600'000;
    beginBound();
    bank->behave(PlainBank::Later);
    RawClient client(port());
    client.post(lc + "pay/trade.html", "key=" + newKey() + '&' + form("70", sendCode()), token);
    EXPECT_TRUE(until([&] { return bank->orders().size() == 1; }));
    bank->speak();
    const auto answer = client.answer(20s);
    ASSERT_TRUE(answer);
    EXPECT_EQ(outcome(json::parse(answer->body)), "ok");
    EXPECT_EQ(cash(), "70 0");
}

TEST_F(MoneyTest, ASilentBankIsAskedAgainByTheSameIdAlsoAfterARestart)
{
    beginBound();
    EXPECT_EQ(outcome(in(1'000)), "ok");
    bank->behave(PlainBank::Never);
    EXPECT_EQ(outcome(out(300)), "refused pending");
    EXPECT_TRUE(until([&] { return bank->orders().size() >= 4; })) << "again, and again";
    again();
    EXPECT_EQ(cash(), "700 300");
    const std::size_t before = bank->orders().size();
    bank->behave(PlainBank::Never);
    again();
    EXPECT_GT(bank->orders().size(), before) << "at once after a restart";
    bank->behave(PlainBank::AtOnce);
    EXPECT_TRUE(comesTo("700 0")) << cash();
    EXPECT_TRUE(until([&] { return metric("zvexchange_transfers_under_way") == "0"; }));
    std::set<std::pair<std::uint64_t, std::uint64_t>> ids;
    for (const BankOrder &order : bank->orders()) {
        ids.insert({order.id.high, order.id.low});
        ASSERT_TRUE(order.card);
        EXPECT_EQ(order.card->tail, "0121");
    }
    EXPECT_EQ(ids.size(), 2u) << "an id for each transfer";
    EXPECT_EQ(line(flows()[0]), "2 out 300 state 1 balance 700");
    service->settle();
    EXPECT_EQ(cash(), "700 0");
}

TEST_F(MoneyTest, TheListIsCutIntoPagesByKindAndDay)
{
    beginBound();
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(outcome(in(i * 100)), "ok");
        EXPECT_EQ(outcome(out(i * 10)), "ok");
    }
    const auto numbers = [this](const std::string &query) {
        std::string text;
        for (const json &flow : flows(query))
            text += flow["number"].dump() + ' ';
        return text;
    };
    EXPECT_EQ(numbers(""), "8 7 6 5 4 3 2 1 ");
    EXPECT_EQ(numbers("?page=1&size=3"), "8 7 6 ");
    EXPECT_EQ(numbers("?page=3&size=3"), "2 1 ");
    EXPECT_EQ(numbers("?page=4&size=3"), "");
    EXPECT_EQ(numbers("?page=2147483647&size=200"), "");
    EXPECT_EQ(numbers("?type=1"), "7 5 3 1 ");
    EXPECT_EQ(numbers("?type=0&page=2&size=2"), "4 2 ");
    EXPECT_EQ(numbers("?type=2&start=2020/01/01&stop=2020/01/01"), "8 7 6 5 4 3 2 1 ");
    EXPECT_EQ(numbers("?start=&stop="), "8 7 6 5 4 3 2 1 ");
    EXPECT_EQ(numbers("?start=2020/01/02"), "");
    EXPECT_EQ(numbers("?stop=2019/12/31"), "");
    for (const char *wrong : {"page=0", "page=x", "size=0", "size=201", "type=3",
                              "start=2020-01-01", "stop=2020/13/01", "start=1"}) {
        const std::string name(wrong, std::string(wrong).find('='));
        EXPECT_EQ(outcome(get(lc + "pay/list.html?" + wrong, token)), "bad-request " + name);
    }
    EXPECT_EQ(get(lc + "pay/list.html?protocol=9", token)["status"], "protocol");
    EXPECT_EQ(get(tea + "pay/list.html", token)["data"]["flows"], json::array()) << "by market";
}

TEST_F(MoneyTest, NeitherCodesNorPairsNorTokensAreWrittenDown)
{
    auto written = std::make_unique<ServiceLog>(folder.path());
    service = std::make_unique<Service>(options, *written);
    registerAccount(phone, password);
    token = signIn(phone, password);
    bindCard();
    std::set<std::string> secrets{token};
    for (int i = 0; i < 3; ++i) {
        const Code code = sendCode();
        secrets.insert({code.first, code.second});
        EXPECT_EQ(outcome(in("500", {code.digits, "Tiger", "Tiger"})), "refused wrong-code");
        EXPECT_EQ(outcome(in("500", code)), "ok");
        EXPECT_EQ(outcome(in("500", code)), "refused code-used");
        EXPECT_EQ(outcome(out(5)), "ok");
    }
    secrets.insert("Tiger");
    const std::string metrics = zvxtest::fetch(port(), "/metrics").body;
    service.reset();
    written.reset();
    int files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        ++files;
        for (const std::string &secret : secrets)
            EXPECT_EQ(text.str().find(secret), std::string::npos) << entry.path();
    }
    EXPECT_GT(files, 4);
    for (const std::string &secret : secrets)
        EXPECT_EQ(metrics.find(secret), std::string::npos);
}

} // namespace
