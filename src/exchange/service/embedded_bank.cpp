#include "exchange/service/embedded_bank.h"

#include "exchange/accounts/outbox.h"
#include "exchange/service/key_text.h"
#include "exchange/store/clock.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fstream>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {

namespace {

namespace fs = std::filesystem;

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

/// The words that were given, in a file to which lines are added.
class Ledger
{
public:
    explicit Ledger(const fs::path &file) : m_path(file)
    {
        m_file = ::open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (m_file < 0 || ::fchmod(m_file, 0600) != 0)
            fail();
        try {
            read();
        } catch (...) {
            ::close(m_file);
            throw;
        }
    }
    ~Ledger() { ::close(m_file); }
    Ledger(const Ledger &) = delete;
    Ledger &operator=(const Ledger &) = delete;

    std::optional<BankWord> find(TransferId id) const
    {
        const auto found = m_words.find(keyOf(id));
        return found == m_words.end() ? std::nullopt : std::make_optional(found->second);
    }

    /// On the disk when this returns. Throws std::system_error, and the word is not in the file.
    void add(const BankOrder &order, BankWord word)
    {
        const std::string line = keyText(order.id) + (order.incoming ? " in " : " out ")
            + std::to_string(order.amount.value())
            + (word == BankWord::Done ? " done\n" : " refused\n");
        append(line);
        m_words[keyOf(order.id)] = word;
    }

private:
    [[noreturn]] void fail() const
    {
        throw std::system_error(errno, std::generic_category(), m_path.string());
    }

    void read()
    {
        std::ifstream in(m_path, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        const std::string all = text.str();
        // The service may have died within the last line: nobody has heard that word.
        m_size = static_cast<off_t>(all.rfind('\n') + 1);
        if (static_cast<std::size_t>(m_size) != all.size()
            && (::ftruncate(m_file, m_size) != 0 || ::fsync(m_file) != 0))
            fail();
        std::istringstream lines(all.substr(0, static_cast<std::size_t>(m_size)));
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            std::string id;
            std::string way;
            std::string amount;
            std::string word;
            words >> id >> way >> amount >> word;
            const auto parsed = ActionKey::fromText(id);
            if (!parsed || (word != "done" && word != "refused"))
                throw std::runtime_error(m_path.string()
                                         + " holds a line that is no word of the bank");
            m_words[keyOf(*parsed)] = word == "done" ? BankWord::Done : BankWord::Refused;
        }
    }

    void append(std::string_view rest)
    {
        const std::size_t size = rest.size();
        while (!rest.empty()) {
            const ssize_t written = ::write(m_file, rest.data(), rest.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0) {
                const int reason = written < 0 ? errno : ENOSPC;
                takeBack();
                errno = reason;
                fail();
            }
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
        if (::fsync(m_file) != 0) {
            const int reason = errno;
            takeBack();
            errno = reason;
            fail();
        }
        m_size += static_cast<off_t>(size);
    }

    /// A word that may not be on the disk must not be read at the next start either.
    void takeBack()
    {
        if (::ftruncate(m_file, m_size) != 0) {
            // The next start reads a word that nobody has heard, and the exchange asks for it.
        }
    }

    fs::path m_path;
    int m_file = -1;
    off_t m_size = 0;
    std::map<IdKey, BankWord> m_words;
};

} // namespace

/// Where questions wait for their time, and the thread that answers them.
class EmbeddedBank::Counter
{
public:
    explicit Counter(EmbeddedBankOptions options)
        : m_options(completed(std::move(options))), m_ledger(m_options.folder / kFileName),
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
        if (const auto known = m_ledger.find(order.id))
            return known;
        const bool refuses = !order.card || m_options.refusal == BankRefusal::All
            || m_options.refusal == (order.incoming ? BankRefusal::In : BankRefusal::Out);
        const BankWord word = refuses ? BankWord::Refused : BankWord::Done;
        try {
            m_ledger.add(order, word);
        } catch (const std::exception &error) {
            note(std::string("the bank cannot write its ledger: ") + error.what());
            return std::nullopt;
        }
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
    Ledger m_ledger; ///< on the thread alone
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
