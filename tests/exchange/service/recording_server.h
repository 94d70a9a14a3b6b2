#pragma once

#include "exchange/service/http_server.h"

#include <mutex>
#include <string>
#include <vector>

namespace zvxtest {

/// A server on a socket that answers every request at once with 200 and one body, which is empty at
/// first, and keeps in mind what it was asked.
class RecordingServer : private zvx::HttpHandler
{
public:
    explicit RecordingServer(const zvx::HttpLimits &limits = {});
    ~RecordingServer() override;

    /// What became of the bytes of one connection.
    struct Talk {
        std::vector<int> answers; ///< final statuses, in order
        std::vector<std::string> handled; ///< the requests as the handler got them
        bool closed = false; ///< by the server, within five seconds

        bool operator==(const Talk &other) const
        {
            return answers == other.answers && handled == other.handled && closed == other.closed;
        }
    };
    enum End { Closing, Staying };

    /// Sends the pieces over a connection of their own, each when the server has read the last one;
    /// then ends the sending side or stays.
    Talk talk(const std::vector<std::string> &pieces, End end = Closing);

    /// Before the first request.
    void setBody(std::string body) { m_body = std::move(body); }

    zvx::HttpServer &server() { return m_server; }

private:
    void handle(zvx::HttpRequest request, zvx::HttpResponder responder) override;
    zvx::HttpAnswer refuse(const zvx::HttpFault &fault) override;
    void awaitTurns();

    /// One that is not empty would be mistaken for more by whoever does not know HEAD.
    std::string m_body;
    std::mutex m_mutex;
    std::vector<std::string> m_handled;
    zvx::HttpServer m_server;
};

/// The talk in one line, for failures.
std::string describe(const RecordingServer::Talk &talk);

} // namespace zvxtest
