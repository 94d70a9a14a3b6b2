#include "exchange/service/embedded_bank.h"

#include "exchange/accounts/outbox.h"
#include "exchange/service/key_text.h"
#include "exchange/service/word_ledger.h"
#include "exchange/store/clock.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace zvx {

namespace {

using IdKey = std::pair<std::uint64_t, std::uint64_t>;

IdKey keyOf(TransferId id)
{
    return {id.high, id.low};
}

std::string yuan(Fen amount)
{
    char text[40];
    std::snprintf(text, sizeof text, "%lld.%02lld", static_cast<long long>(amount.value() / 100),
                  static_cast<long long>(amount.value() % 100));
    return text;
}

std::string textOf(const BankOrder &order, BankWord word)
{
    return (order.incoming ? "in " : "out ") + std::to_string(order.amount.value())
        + (word == BankWord::Done ? " done" : " refused");
}

/// The word at the end of such a text.
std::optional<BankWord> wordOf(const std::string &text)
{
    const std::string last = text.substr(text.rfind(' ') + 1);
    return last == "done"   ? std::optional(BankWord::Done)
        : last == "refused" ? std::optional(BankWord::Refused)
                            : std::nullopt;
}

} // namespace

/// Where questions wait for their time, and the thread that answers them.
class EmbeddedBank::Counter
{
public:
    explicit Counter(EmbeddedBankOptions options)
        : m_options(completed(std::move(options))),
          m_ledger(m_options.folder / kFileName,
                   [this](TransferId id, const std::string &text) { return recall(id, text); }),
          m_thread([this] { run(); })
    {
    }

    ~Counter()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
        }
        m_wake.notify_all();
        m_thread.join();
    }

    void ask(const BankOrder &order, Answered answered)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            const auto same
                = std::find_if(m_waiting.begin(), m_waiting.end(), [&order](const Question &other) {
                      return other.order.id == order.id;
                  });
            if (same != m_waiting.end()) {
                // The later question is the one whose asker is there.
                same->answered = std::move(answered);
                return;
            }
            const SteadyMs due = m_options.clock->steady() + m_options.delay;
            m_waiting.push_back({order, std::move(answered), due});
        }
        m_wake.notify_all();
    }

private:
    struct Question {
        BankOrder order;
        Answered answered;
        SteadyMs due = 0;
    };

    static EmbeddedBankOptions completed(EmbeddedBankOptions options)
    {
        if (!options.clock)
            options.clock = std::make_shared<SystemClock>();
        if (!options.outbox)
            options.outbox = std::make_shared<Outbox>(options.folder, options.clock);
        return options;
    }

    bool recall(TransferId id, const std::string &text)
    {
        const auto word = wordOf(text);
        if (word)
            m_words[keyOf(id)] = *word;
        return word.has_value();
    }

    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_ending) {
            // All wait equally long, so the first one is due first.
            if (m_waiting.empty() || m_waiting.front().due > m_options.clock->steady()) {
                const auto due = m_waiting.empty() ? std::optional<SteadyMs>()
                                                   : std::make_optional(m_waiting.front().due);
                m_options.clock->wait(m_wake, lock, due);
                continue;
            }
            Question question = std::move(m_waiting.front());
            m_waiting.pop_front();
            lock.unlock();
            if (const auto word = wordOn(question.order))
                question.answered(*word);
            lock.lock();
        }
    }

    /// Nothing where it cannot be written down.
    std::optional<BankWord> wordOn(const BankOrder &order)
    {
        const auto known = m_words.find(keyOf(order.id));
        if (known != m_words.end())
            return known->second;
        const bool refuses = !order.card || m_options.refusal == BankRefusal::All
            || m_options.refusal == (order.incoming ? BankRefusal::In : BankRefusal::Out);
        const BankWord word = refuses ? BankWord::Refused : BankWord::Done;
        try {
            m_ledger.add(order.id, textOf(order, word));
        } catch (const std::exception &error) {
            note(std::string("the bank cannot write its ledger: ") + error.what());
            return std::nullopt;
        }
        m_words[keyOf(order.id)] = word;
        tell(order, word);
        return word;
    }

    void tell(const BankOrder &order, BankWord word)
    {
        std::string text = order.incoming ? "转入" : "转出";
        text += yuan(order.amount) + "元";
        if (order.card)
            text += "，卡号尾号" + order.card->tail;
        text += word == BankWord::Done ? "，已完成" : "，已拒绝";
        text += "，编号" + keyText(order.id);
        try {
            m_options.outbox->send("bank", text);
        } catch (const std::exception &error) {
            // What was done counts; the outbox only tells of it.
            note(std::string("the bank's word is missing in the outbox: ") + error.what());
        }
    }

    void note(const std::string &line)
    {
        if (m_options.notice)
            m_options.notice(line);
    }

    const EmbeddedBankOptions m_options;
    // On the thread alone, once it runs.
    std::map<IdKey, BankWord> m_words; ///< as the ledger has them
    WordLedger m_ledger;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Question> m_waiting;
    bool m_ending = false;
    std::thread m_thread;
};

EmbeddedBank::EmbeddedBank(EmbeddedBankOptions options)
    : m_counter(std::make_unique<Counter>(std::move(options)))
{
}

EmbeddedBank::~EmbeddedBank() = default;

void EmbeddedBank::ask(const BankOrder &order, Answered answered)
{
    m_counter->ask(order, std::move(answered));
}

} // namespace zvx
