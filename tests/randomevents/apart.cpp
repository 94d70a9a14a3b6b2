#include "randomevents/apart.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace randomevents {

namespace {

constexpr std::size_t longestText = 200;
constexpr std::size_t longestFailure = 4'000;
constexpr std::size_t longestCounts = 32'000;
constexpr unsigned toldEvents = 12;
constexpr unsigned patience = 300; // seconds without a next event

// Both processes see it.
struct Shared {
    unsigned events;
    std::array<std::array<char, longestText>, toldEvents> last;
    std::array<char, longestFailure> failure;
    std::array<char, longestCounts> counts;
};

template <std::size_t size>
void put(std::array<char, size> &to, const std::string &text)
{
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(to.data(), text.data(), length);
    to[length] = '\0';
}

class SharedJournal : public Journal
{
public:
    SharedJournal()
    {
        void *memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw std::runtime_error("no memory to share");
        m_shared = static_cast<Shared *>(memory);
    }
    ~SharedJournal() override { ::munmap(m_shared, sizeof(Shared)); }
    SharedJournal(const SharedJournal &) = delete;
    SharedJournal &operator=(const SharedJournal &) = delete;

    void note(const std::string &event) override
    {
        put(m_shared->last[m_shared->events++ % toldEvents], event);
        ::alarm(patience);
    }

    [[noreturn]] void fail(const std::string &why) override
    {
        put(m_shared->failure, why);
        std::_Exit(EXIT_FAILURE);
    }

    void keep(const campaign::Counts &counts)
    {
        std::ostringstream lines;
        for (const auto &[what, count] : counts)
            lines << count << ' ' << what << '\n';
        put(m_shared->counts, lines.str());
    }

    void addTo(campaign::Counts &counts) const
    {
        std::istringstream lines(m_shared->counts.data());
        std::int64_t count = 0;
        std::string what;
        while (lines >> count && std::getline(lines.ignore(), what))
            counts[what] += count;
    }

    campaign::Failure failure(int status) const
    {
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
            return std::nullopt;
        std::string text = m_shared->failure.data();
        if (text.empty() && WIFSIGNALED(status))
            text = WTERMSIG(status) == SIGALRM
                ? "it hangs"
                : "it died of " + std::string(::strsignal(WTERMSIG(status)));
        else if (text.empty())
            text = "it ended with " + std::to_string(WEXITSTATUS(status))
                + (m_shared->counts[0] ? ", after its last event" : "");
        text += "\nthe last events:";
        const unsigned told = std::min(m_shared->events, toldEvents);
        for (unsigned i = m_shared->events - told; i < m_shared->events; ++i)
            text += "\n  " + std::to_string(i + 1) + "  " + m_shared->last[i % toldEvents].data();
        return text;
    }

private:
    Shared *m_shared;
};

} // namespace

campaign::Failure liveApart(const std::function<void(Journal &, campaign::Counts &)> &life,
                            campaign::Counts &counts)
{
    SharedJournal journal;
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no second process");
    if (child == 0) {
        campaign::Counts own;
        life(journal, own);
        ::alarm(patience);
        journal.keep(own);
        std::exit(EXIT_SUCCESS); // and looks for leaks
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    journal.addTo(counts);
    return journal.failure(status);
}

} // namespace randomevents
