#include "exchange/kills/order_load.h"

#include "exchange/kills/names.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/until.h"

#include <algorithm>
#include <stdexcept>

namespace zvxtest {

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds kPatience = 60s; ///< for one answer, or for the bank
constexpr std::size_t kBurst = 4;
constexpr std::size_t kQuestions = 32; ///< that are on their way at the same time

void post(RawClient &client, const Trader &trader, const Intent &intent, const std::string &form)
{
    client.post(FundedFolder::kMarket + intent.path, form, trader.token);
}

/// What is counted where an intent that was acknowledged is there.
const char *nameOf(Intent::Kind kind)
{
    switch (kind) {
    case Intent::PlaceOrder:
        return kOrderThere;
    case Intent::Revoke:
        return kRevokeThere;
    case Intent::PayOut:
        return kTransferThere;
    case Intent::TakeOut:
        return kTakeThere;
    case Intent::TakeBack:
        break;
    }
    return kTakeBackThere;
}

std::string bodyOf(RawClient &client)
{
    const auto answer = client.answer(kPatience);
    return answer ? answer->body : std::string();
}

} // namespace

TradingClient::TradingClient(const Trader &trader, std::uint64_t seed)
    : m_trader(trader), m_wishes(seed, static_cast<int>(trader.account.value()))
{
}

void TradingClient::fail(const Intent &intent, const std::string &what)
{
    if (!m_failure)
        m_failure = intent.path + " of trader " + std::to_string(m_trader.account.value())
            + ", key " + intent.key + ": " + what;
}

void TradingClient::take(Intent &intent, const Word &word)
{
    intent.said = word.said;
    intent.done = word.done;
    if (intent.kind == Intent::PlaceOrder && word.done) {
        intent.order = word.order;
        m_wishes.addOrder(word.order);
    }
    if (intent.kind == Intent::TakeOut && word.done) {
        intent.parcel = word.parcel;
        m_wishes.addParcel(word.parcel);
    }
}

void TradingClient::trade(std::uint16_t port, const std::atomic<bool> &stop,
                          const std::function<void()> &told)
{
    try {
        RawClient client(port);
        while (!stop) {
            const std::size_t first = m_intents.size();
            for (std::size_t i = 1 + m_wishes.below(kBurst); i > 0; --i)
                m_intents.push_back(m_wishes.next());
            for (std::size_t i = first; i < m_intents.size(); ++i)
                post(client, m_trader, m_intents[i], m_intents[i].form());
            if (stop && m_wishes.below(2) == 0)
                return;
            for (std::size_t i = first; i < m_intents.size(); ++i) {
                const Word word = Word::of(bodyOf(client));
                if (word.kind == Word::None)
                    return;
                if (word.kind == Word::Passing)
                    continue;
                take(m_intents[i], word);
                told();
            }
        }
    } catch (const std::runtime_error &) {
        // The service was killed before it took the connection.
    }
}

Word TradingClient::finalWord(std::uint16_t port, const Intent &intent, const std::string &form)
{
    Word word;
    until(
        [&] {
            RawClient client(port);
            post(client, m_trader, intent, form);
            word = Word::of(bodyOf(client));
            return word.kind != Word::Passing;
        },
        kPatience);
    if (word.kind != Word::Final)
        fail(intent, "no final answer, the last one was \"" + word.said + '"');
    return word;
}

void TradingClient::ask(std::uint16_t port, bool all, campaign::Counts &counts)
{
    RawClient client(port);
    const std::size_t begin = all ? 0 : m_asked;
    for (std::size_t first = begin; first < m_intents.size(); first += kQuestions) {
        const std::size_t end = std::min(first + kQuestions, m_intents.size());
        for (std::size_t i = first; i < end; ++i)
            post(client, m_trader, m_intents[i], m_intents[i].question());
        for (std::size_t i = first; i < end && !m_failure; ++i) {
            Word word = Word::of(bodyOf(client));
            if (word.kind == Word::Passing)
                word = finalWord(port, m_intents[i], m_intents[i].question());
            if (word.kind == Word::None)
                fail(m_intents[i], "no answer to the question what became of it");
            else
                learn(m_intents[i], word, counts);
        }
    }
    for (std::size_t i = m_asked; i < m_intents.size() && !m_failure; ++i)
        if (!m_intents[i].done || m_wishes.below(8) == 0)
            repeat(port, m_intents[i], counts);
    m_asked = m_intents.size();
}

void TradingClient::learn(Intent &intent, const Word &word, campaign::Counts &counts)
{
    if (intent.said.empty()) {
        ++counts[word.done ? kUnheardDone : kUnheardNotDone];
        take(intent, word);
    } else if (intent.said != word.said) {
        fail(intent,
             "answered \"" + intent.said + "\" before, and \"" + word.said
                 + "\" when asked for after a restart");
    } else if (word.done) {
        ++counts[nameOf(intent.kind)];
    } else {
        ++counts[kRefusalThere];
    }
}

void TradingClient::repeat(std::uint16_t port, const Intent &intent, campaign::Counts &counts)
{
    const Word word = finalWord(port, intent, intent.form());
    if (m_failure)
        return;
    ++counts[kSentAgain];
    if (word.said != intent.said)
        fail(intent,
             "stands as \"" + intent.said + "\", and answers \"" + word.said
                 + "\" when it is sent again");
}

OrderLoad::OrderLoad(std::vector<TradingClient> &clients, std::uint16_t port)
{
    const auto told = [this] {
        const std::lock_guard<std::mutex> guard(m_mutex);
        ++m_answers;
        m_changed.notify_all();
    };
    for (TradingClient &client : clients)
        m_threads.emplace_back([this, &client, port, told] { client.trade(port, m_stop, told); });
}

OrderLoad::~OrderLoad()
{
    stop();
    join();
}

bool OrderLoad::awaitAnswers(unsigned count)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] { return m_answers >= count; });
}

void OrderLoad::join()
{
    for (std::thread &thread : m_threads)
        if (thread.joinable())
            thread.join();
}

} // namespace zvxtest
