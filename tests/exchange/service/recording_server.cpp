#include "exchange/service/recording_server.h"

#include "exchange/service/raw_client.h"

#include <future>

namespace zvxtest {

using namespace zvx;

namespace {

HttpServer::Options optionsWith(const HttpLimits &limits)
{
    HttpServer::Options options;
    options.limits = limits;
    return options;
}

} // namespace

RecordingServer::RecordingServer(const HttpLimits &limits) : m_server(optionsWith(limits), *this)
{
    m_server.start();
}

RecordingServer::~RecordingServer()
{
    m_server.stop();
}

RecordingServer::Talk RecordingServer::talk(const std::vector<std::string> &pieces, End end)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_handled.clear();
    }
    RawClient client(m_server.port());
    for (const std::string &piece : pieces) {
        client.send(piece);
        if (&piece != &pieces.back())
            awaitTurns();
    }
    if (end == Closing)
        client.endSending();
    Talk talk;
    while (const auto answer = client.answer(RawClient::Wait(5'000))) {
        if (answer->status >= 200)
            talk.answers.push_back(answer->status);
    }
    talk.closed = client.isClosed(RawClient::Wait(0));
    const std::lock_guard<std::mutex> lock(m_mutex);
    talk.handled = m_handled;
    return talk;
}

void RecordingServer::handle(HttpRequest request, HttpResponder responder)
{
    std::string text = request.method + ' ' + request.path;
    for (const auto &[name, value] : request.query.all())
        text += " [" + name + '=' + value + ']';
    text += " {" + request.authorization + "} {" + request.contentType + "} {" + request.body + '}';
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_handled.push_back(std::move(text));
    }
    responder.answer(HttpAnswer::of(200, m_body));
}

HttpAnswer RecordingServer::refuse(const HttpFault &fault)
{
    return HttpAnswer::of(fault.status, "");
}

/// The first turn of the server's thread may have begun before the bytes came, the second one found
/// them.
void RecordingServer::awaitTurns()
{
    for (int turn = 0; turn < 2; ++turn) {
        std::promise<void> reached;
        m_server.post([&reached] { reached.set_value(); });
        reached.get_future().wait();
    }
}

std::string describe(const RecordingServer::Talk &talk)
{
    std::string text = "answers:";
    for (const int status : talk.answers)
        text += ' ' + std::to_string(status);
    for (const std::string &request : talk.handled)
        text += "; handled: " + request;
    return text + (talk.closed ? "; closed" : "; open");
}

} // namespace zvxtest
