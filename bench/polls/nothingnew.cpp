#include "measures.h"
#include "served.h"

#include "support/report.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::size_t kManyAskers = 64; // clients that ask again and again

// Server CPU of one request, in microseconds.
double cpuOfRequest(const ChildProcess &server, HttpFleet &fleet, const std::string &request,
                    std::size_t count, const std::string &expected)
{
    std::size_t sent = 0;
    std::size_t answers = 0;
    fleet.answered = [&](std::size_t client, const HttpFleet::Answer &answer) {
        if (answer.status != 200 || answer.body.find(expected) == std::string_view::npos)
            throw std::runtime_error("another answer than was expected: "
                                     + std::string(answer.body));
        ++answers;
        if (sent < count) {
            ++sent;
            fleet.send(client, request);
        }
    };
    const double before = server.cpu();
    for (; sent < fleet.size(); ++sent)
        fleet.send(sent, request);
    fleet.turnUntil([&] { return answers == count; });
    return (server.cpu() - before) * 1000 / static_cast<double>(count);
}

// An answer with as many bytes as the service gives to the request, head included.
std::string answerLike(std::uint16_t port, const std::string &request)
{
    HttpFleet one(port, 1);
    std::string body;
    std::size_t bytes = 0;
    one.answered = [&](std::size_t, const HttpFleet::Answer &answer) {
        bytes = answer.bytes;
        body = answer.body;
    };
    one.send(0, request);
    one.turnUntil([&] { return bytes > 0; });
    std::string head
        = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\nX-Fill: ";
    head.append(bytes - body.size() - head.size() - 4, 'x');
    return head + "\r\n\r\n" + body;
}

Pairs compare(const Options &options, Served &served, const std::string &request,
              std::size_t clients)
{
    const std::size_t count = options.quick ? 2'000 : 30'000;
    const std::string nothing = "\"data\":{\"topics\":{}}";
    const BareServer bare(answerLike(served.port(), request), {});
    HttpFleet askers(served.port(), clients);
    HttpFleet bareAskers(bare.port(), clients);
    Pairs cpu;
    for (int round = -1; round < options.rounds; ++round) {
        double ours = 0;
        double twin = 0;
        for (const bool isOurs : {round % 2 == 0, round % 2 != 0}) {
            if (isOurs)
                ours = cpuOfRequest(served.process(), askers, request, count, nothing);
            else
                twin = cpuOfRequest(bare, bareAskers, request, count, nothing);
        }
        if (round >= 0)
            cpu.add(ours, twin);
    }
    return cpu;
}

} // namespace

void measureNothingNew(const Options &options, Report &report, Failures &)
{
    Served served(options, 500, 1, 1);
    const PollState state = caughtUp(served.port(), PollState(0));
    const std::string signedIn = state.request(0, served.token(0));
    const Goal goal = Goal::most(2, "2");
    report.line(
        "server CPU of a poll that finds nothing new, with a session, of one client, beside "
        "a bare epoll loop",
        compare(options, served, signedIn, 1), "us", goal);
    report.line("… of 64 clients at once", compare(options, served, signedIn, kManyAskers), "us",
                goal);
    report.line("… and without a session", compare(options, served, state.request(0), kManyAskers),
                "us");
}
