#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Many clients of one HTTP server on 127.0.0.1, each on a connection that stays open, all of them
// served by the calling thread. Lean, so that it leaves the machine to the server.
class HttpFleet
{
public:
    struct Answer {
        int status = 0;
        std::string_view body; // valid in the callback
        std::size_t bytes = 0; // with its head
        // When its last bytes reached this machine's end of the connection, in nanoseconds of the
        // wall clock: however late this thread reads it. 0 without stamps.
        std::int64_t arrived = 0;
    };
    using Answered = std::function<void(std::size_t client, const Answer &answer)>;
    enum Stamps { WithoutStamps, WithStamps };

    // Connects all clients. Throws std::runtime_error.
    HttpFleet(std::uint16_t port, std::size_t clients, Stamps stamps = WithoutStamps);
    ~HttpFleet();
    HttpFleet(const HttpFleet &) = delete;
    HttpFleet &operator=(const HttpFleet &) = delete;

    std::size_t size() const { return m_clients.size(); }

    // Called for each whole answer; may send the client's next request.
    Answered answered;

    // Sends a whole request; a client has one under way at most.
    void send(std::size_t client, std::string_view request);

    // Takes what comes until the condition holds, and throws when that takes longer than `bound` or
    // a connection ends.
    void turnUntil(const std::function<bool()> &isDone,
                   std::chrono::milliseconds bound = std::chrono::milliseconds(30'000));

private:
    struct Client {
        int file = -1;
        std::string received;
    };

    void turn(int milliseconds);
    void read(std::size_t client);
    std::size_t take(std::size_t client, std::string_view bytes);

    std::vector<Client> m_clients;
    int m_poll = -1;
    bool m_hasStamps;
    std::int64_t m_arrived = 0;
    std::string m_buffer;
};

// A request as the client program sends it.
std::string getRequest(const std::string &address, const std::string &token = {});
std::string postRequest(const std::string &address, const std::string &form,
                        const std::string &token = {});

// One GET on a connection of its own: its body. Throws where the status is not 200.
std::string fetchBody(std::uint16_t port, const std::string &address);
