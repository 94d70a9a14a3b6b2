#include "exchange/service/embedded_bank.h"

#include "exchange/accounts/outbox.h"
#include "exchange/service/appointments.h"
#include "exchange/service/id_order.h"
#include "exchange/service/key_text.h"
#include "exchange/service/word_ledger.h"
#include "exchange/store/clock.h"

#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace zvx {

namespace {

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

/// Where questions wait for their time, and what is said to them.
class EmbeddedBank::Counter
{
public:
    explicit Counter(EmbeddedBankOptions options)
        : m_options(completed(std::move(options))),
          m_ledger(m_options.folder / kFileName,
                   [this](TransferId id, const std::string &text) { return recall(id, text); }),
          m_appointments(m_options.clock, [this](TransferId id) { answer(id); })
    {
    }

    void ask(const BankOrder &order, Answered answered)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto [question, isNew] = m_waiting.try_emplace(order.id);
        // The later question is the one whose asker is there.
        question->second.answered = std::move(answered);
        if (!isNew)
            return;
        question->second.order = order;
        m_appointments.make(order.id, m_options.clock->steady() + m_options.delay);
    }

private:
    struct Question {
        BankOrder order;
        Answered answered;
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
            m_words[id] = *word;
        return word.has_value();
    }

    void answer(TransferId id)
    {
        const Question question = take(id);
        if (const auto word = wordOn(question.order))
            question.answered(*word);
    }

    Question take(TransferId id)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_waiting.find(id);
        Question question = std::move(found->second);
        m_waiting.erase(found);
        return question;
    }

    /// Nothing where it cannot be written down.
    std::optional<BankWord> wordOn(const BankOrder &order)
    {
        const auto known = m_words.find(order.id);
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
        m_words[order.id] = word;
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
    std::map<TransferId, BankWord, IdOrder> m_words; ///< as the ledger has them
    WordLedger m_ledger;
    std::mutex m_mutex;
    std::map<TransferId, Question, IdOrder> m_waiting;
    Appointments m_appointments; ///< ends first
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
