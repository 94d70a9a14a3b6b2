#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace zvx {

/**
 * What keeps the service alive: signals, the starter's pipe, and clients that hold a connection to
 * `attach.sock` in the state folder. Everything is a descriptor that the system closes with its
 * process, so a client that is killed lets go like one that leaves.
 *
 * A connection may also send commands, a line each, and gets a line back.
 *
 * Construct it before any thread is started: it blocks the signals that it waits for.
 */
class Lifeline
{
public:
    struct Options {
        std::filesystem::path folder;
        /// End when nobody is attached any more.
        bool attached = false;
        /// End when the standard input ends.
        bool untilStdinCloses = false;
        /// How long nobody may be attached.
        std::chrono::milliseconds grace{2'000};
        /// How long the first client may take to attach, where the starter left no pipe.
        std::chrono::milliseconds firstClient{15'000};
    };

    enum class End { Signal, NobodyAttached, StandardInput, Asked };

    static constexpr const char *socketName = "attach.sock";

    /// Throws std::runtime_error with one sentence.
    explicit Lifeline(Options options);
    ~Lifeline();
    Lifeline(const Lifeline &) = delete;
    Lifeline &operator=(const Lifeline &) = delete;

    /// Opens `attach.sock`. Call it with the folder's lock held: what an earlier service left
    /// behind is replaced. Throws std::runtime_error with one sentence.
    void listen();

    /// Closes `attach.sock` and removes it. Call it with the folder's lock still held: later it
    /// would remove the socket of the next service. Idempotent.
    void close();

    /// Gives the answer to a command line, without its line end.
    using Control = std::function<std::string(const std::string &command)>;

    /// Waits for a reason to end. `control` runs on this thread.
    End wait(const Control &control);

    /// Lets `wait` return End::Asked. From any thread.
    void end();

    /// Sends one command to the service that runs on a folder and waits for its answer. Throws
    /// std::runtime_error when no service listens there.
    static std::string send(const std::filesystem::path &folder, const std::string &command);

private:
    struct Client {
        int file = -1;
        std::string line;
        bool open = true;
    };

    void accept();
    void read(Client &client, const Control &control);
    bool readStarter();
    std::size_t attached() const;

    Options m_options;
    int m_signals = -1;
    int m_wake = -1;
    int m_listener = -1;
    bool m_starter = false;
    std::vector<Client> m_clients;
};

} // namespace zvx
