// The only source that includes Asio and Beast: they cost more compile time than all the rest.
#include "exchange/service/http_server.h"

#include "exchange/accounts/secret.h"
#include "exchange/service/request_head.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unordered_set>

namespace zvx {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::system::error_code;
using net::ip::tcp;
using Clock = std::chrono::steady_clock;

// Tied to the one context, they do without the general executor's indirections.
using Executor = net::io_context::executor_type;
using Socket = net::basic_stream_socket<tcp, Executor>;
using Acceptor = net::basic_socket_acceptor<tcp, Executor>;

constexpr std::size_t readStep = 16 * 1024;
constexpr std::size_t smallBody = 4 * 1024;

const char *reasonOf(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 410:
        return "Gone";
    case 413:
        return "Payload Too Large";
    case 500:
        return "Internal Server Error";
    case 501:
        return "Not Implemented";
    case 503:
        return "Service Unavailable";
    default:
        return "Answer";
    }
}

std::string peerOf(const Socket &socket)
{
    error_code error;
    const net::ip::address address = socket.remote_endpoint(error).address();
    if (error || address.is_v4())
        return error ? std::string() : address.to_string();
    const net::ip::address_v6 six = address.to_v6();
    return six.is_v4_mapped()
        ? net::ip::make_address_v4(net::ip::v4_mapped, six).to_string()
        : net::ip::address_v6(six.to_bytes()).to_string(); // without the name of an interface
}

/// Whether a header block, whole or not, can never become a right one.
bool isSpoiled(std::string_view bytes)
{
    for (std::size_t at = bytes.find('\n'); at != std::string_view::npos;
         at = bytes.find('\n', at + 1)) {
        if (at == 0 || bytes[at - 1] != '\r')
            return true;
    }
    return bytes.find('\0') != std::string_view::npos;
}

} // namespace

class HttpServer::Impl
{
public:
    Impl(const Options &options, HttpHandler &handler);
    ~Impl() { stop(); }
    void start();
    void stop();

    class Connection;
    class Sink;

    void accept();
    void accepted(Socket socket);
    void sweep();
    void closeAll();
    void noteAnswer(int status) { ++counters.answers[std::clamp(status / 100, 0, 5)]; }

    HttpLimits limits;
    std::optional<HostNames> hosts;
    HttpHandler &handler;
    HttpCounters counters;
    net::io_context context{1};
    Acceptor acceptor{context};
    net::steady_timer sweeper{context};
    net::steady_timer pause{context};
    std::chrono::milliseconds sweepStep;
    std::uint16_t port = 0;
    bool stopping = false;
    Clock::time_point stopBy;
    std::unordered_set<std::shared_ptr<Connection>> connections;
    std::atomic<bool> stopAsked{false};
    std::thread thread;
};

/// One client. It lives in the server's set until it is closed, and all its work runs on the
/// server's thread; `m_deadline` is compared by the server's sweep, which is cheaper than a timer
/// per request.
class HttpServer::Impl::Connection : public std::enable_shared_from_this<Connection>
{
public:
    Connection(Impl &server, Socket socket)
        : m_server(server), m_socket(std::move(socket)), m_peer(peerOf(m_socket))
    {
    }

    void start()
    {
        enter(Phase::Reading, m_server.limits.request);
        pump();
    }

    /// Tells a client that there is no room and closes.
    void turnAway()
    {
        enter(Phase::Waiting, m_server.limits.answer);
        refuse({503, "too many connections"});
    }

    void checkDeadline(Clock::time_point now)
    {
        if (now < m_deadline)
            return;
        if (m_phase == Phase::Reading)
            ++m_server.counters.cutByDeadline;
        close();
    }

    /// The server ends: an idle client is closed now, the others after their answer.
    void windDown()
    {
        m_closeAfter = true;
        if (m_phase == Phase::Reading || m_phase == Phase::Idle)
            close();
    }

    void close()
    {
        if (m_phase == Phase::Closed)
            return;
        m_phase = Phase::Closed;
        error_code ignored;
        m_socket.close(ignored);
        auto gone = std::move(m_gone);
        m_gone = nullptr;
        if (gone)
            gone();
        --m_server.counters.open;
        m_server.connections.erase(shared_from_this());
    }

    void answer(std::uint64_t request, HttpAnswer answer)
    {
        if (m_phase != Phase::Waiting || request != m_request)
            return;
        m_gone = nullptr;
        send(std::move(answer));
    }

    void lose(std::uint64_t request)
    {
        if (m_phase != Phase::Waiting || request != m_request)
            return;
        m_gone = nullptr;
        refuse({500, "no answer was given"});
    }

    void watch(std::uint64_t request, std::function<void()> gone)
    {
        if (request != m_request || m_phase == Phase::Closed)
            net::post(m_server.context, std::move(gone));
        else if (m_phase == Phase::Waiting)
            m_gone = std::move(gone);
    }

private:
    enum class Phase { Idle, Reading, Waiting, Writing, Draining, Closed };
    using Parser = http::request_parser<http::string_body>;

    void enter(Phase phase, std::chrono::milliseconds bound)
    {
        m_phase = phase;
        m_deadline = Clock::now() + bound;
    }

    /// Keeps one read under way. While an answer is awaited it only finds out whether the client
    /// leaves; what a pipelining client sends meanwhile is kept, up to a bound.
    void pump()
    {
        if (m_reading || m_phase == Phase::Closed || m_inputEnded)
            return;
        const std::size_t bound = m_server.limits.header + m_server.limits.body;
        if (m_phase == Phase::Waiting && m_buffer.size() >= bound)
            return;
        m_reading = true;
        // Not into the buffer: requests are taken out of it while this is under way, and what it
        // has made room for would no longer be behind what it holds.
        m_socket.async_read_some(net::buffer(m_incoming),
                                 [self = shared_from_this()](error_code error, std::size_t bytes) {
                                     self->m_reading = false;
                                     self->received(error, bytes);
                                 });
    }

    void received(error_code error, std::size_t bytes)
    {
        if (m_phase == Phase::Closed)
            return;
        if (error) {
            m_inputEnded = true;
            ended(error);
            return;
        }
        m_buffer.commit(net::buffer_copy(m_buffer.prepare(bytes), net::buffer(m_incoming, bytes)));
        // Passwords and tokens came through here.
        wipe(m_incoming.data(), bytes);
        if (m_phase == Phase::Draining) {
            m_drained += bytes;
            m_buffer.consume(m_buffer.size());
            if (m_drained > 16 * m_server.limits.body)
                close();
            else
                pump();
            return;
        }
        if (m_phase == Phase::Idle)
            enter(Phase::Reading, m_server.limits.request);
        if (m_phase == Phase::Reading)
            advance();
        else if (m_phase == Phase::Waiting)
            pump();
    }

    void ended(error_code error)
    {
        m_closeAfter = true;
        // A client that only ended its sending side may still wait for its answer; one that
        // watches for a change, or whose connection broke, is gone.
        const bool halfClosed = error == net::error::eof && !m_gone;
        if (halfClosed && (m_phase == Phase::Waiting || m_phase == Phase::Writing))
            return;
        close();
    }

    /// Goes on with the request whose bytes have come so far.
    void advance()
    {
        if (!m_parser) {
            if (!readHead())
                return;
            if (!m_head.hasBody()) {
                takeHead();
                dispatch();
                return;
            }
            beginBody();
        }
        error_code error;
        const net::mutable_buffer bytes = m_buffer.data();
        const std::size_t used = m_parser->put(bytes, error);
        // Passwords and tokens came through here.
        wipe(bytes.data(), used);
        m_buffer.consume(used);
        if (error == http::error::need_more) {
            pump();
        } else if (error == http::error::body_limit) {
            refuse({413, "body over its bound"});
        } else if (error) {
            refuse({400, error.message()});
        } else if (m_parser->is_done()) {
            dispatch();
        } else {
            pump();
        }
    }

    /// True when the header block is whole and right; otherwise all that follows is arranged.
    bool readHead()
    {
        const std::string_view bytes(static_cast<const char *>(m_buffer.data().data()),
                                     m_buffer.size());
        const std::size_t end = bytes.find("\r\n\r\n");
        const bool isWhole = end != std::string_view::npos;
        const std::string_view block = isWhole ? bytes.substr(0, end + 4) : bytes;
        // Looked at before all else, and within the bound alone: so it does not matter to the
        // verdict how much of the block has come at once.
        if (isSpoiled(block.substr(0, m_server.limits.header))) {
            refuse({400, "line end in header"});
            return false;
        }
        if (!isWhole) {
            if (bytes.size() > m_server.limits.header)
                refuse({413, "header over its bound"});
            else
                pump();
            return false;
        }
        auto head = readRequestHead(block, m_server.limits);
        if (const auto *fault = std::get_if<HttpFault>(&head)) {
            refuse(*fault);
            return false;
        }
        m_head = std::move(std::get<RequestHead>(head));
        if (m_server.hosts && !m_server.hosts->accept(m_head.host)) {
            refuse({400, "Host names another machine"});
            return false;
        }
        m_headSize = block.size();
        return true;
    }

    void takeHead()
    {
        // A token came through here.
        wipe(m_buffer.data().data(), m_headSize);
        m_buffer.consume(m_headSize);
    }

    void beginBody()
    {
        m_parser.emplace();
        m_parser->eager(true);
        m_parser->header_limit(static_cast<std::uint32_t>(m_server.limits.header));
        m_parser->body_limit(m_server.limits.body);
        if (m_head.expectsContinue && m_buffer.size() == m_headSize)
            m_socket.async_write_some(net::buffer(goOn),
                                      [self = shared_from_this()](auto, auto) {});
    }

    void dispatch();
    void refuse(const HttpFault &fault)
    {
        ++m_server.counters.refused;
        m_parser.reset();
        m_head = RequestHead();
        HttpAnswer answer = m_server.handler.refuse(fault);
        answer.close = true;
        send(std::move(answer));
    }

    void send(HttpAnswer answer)
    {
        m_closeAfter = m_closeAfter || answer.close || !m_head.keepAlive;
        m_server.noteAnswer(answer.status);
        std::size_t length = 0;
        for (const HttpFragment &part : answer.body)
            length += part->size();
        m_text.clear();
        m_text.append("HTTP/1.1 ").append(std::to_string(answer.status));
        m_text.append(" ").append(reasonOf(answer.status));
        m_text.append("\r\nContent-Type: ").append(answer.contentType);
        m_text.append("\r\nContent-Length: ").append(std::to_string(length));
        m_text.append("\r\nCache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n");
        if (!answer.allow.empty())
            m_text.append("Allow: ").append(answer.allow).append("\r\n");
        if (!answer.contentSecurity.empty()) {
            m_text.append("Content-Security-Policy: ").append(answer.contentSecurity);
            m_text.append("\r\nReferrer-Policy: no-referrer\r\nX-Frame-Options: DENY\r\n");
        }
        m_text.append(m_closeAfter ? "Connection: close\r\n\r\n"
                                   : "Connection: keep-alive\r\n\r\n");
        // A body behind the answer to HEAD would be read as the next answer.
        if (m_head.method != "HEAD")
            m_body = std::move(answer.body);
        m_server.counters.bytesOut += m_text.size() + (m_body.empty() ? 0 : length);
        enter(Phase::Writing, m_server.limits.answer);
        write(length);
    }

    void write(std::size_t length)
    {
        // Copying a few hundred bytes costs less than handing many pieces to the kernel, which
        // nearly always takes them at once.
        if (length <= smallBody) {
            for (const HttpFragment &part : m_body)
                m_text.append(*part);
            m_body.clear();
            error_code error;
            const std::size_t taken = m_socket.write_some(net::buffer(m_text), error);
            if (!error && taken == m_text.size()) {
                sent(error);
                return;
            }
            writeOn(net::buffer(m_text) + taken);
            return;
        }
        std::vector<net::const_buffer> buffers;
        buffers.reserve(m_body.size() + 1);
        buffers.push_back(net::buffer(m_text));
        for (const HttpFragment &part : m_body)
            buffers.push_back(net::buffer(*part));
        writeOn(buffers);
    }

    template <class Buffers>
    void writeOn(const Buffers &buffers)
    {
        net::async_write(
            m_socket, buffers,
            [self = shared_from_this()](error_code error, std::size_t) { self->sent(error); });
    }

    void sent(error_code error)
    {
        if (m_phase == Phase::Closed)
            return;
        m_body.clear();
        m_parser.reset();
        if (error) {
            close();
        } else if (m_closeAfter) {
            drain();
        } else if (m_buffer.size() > 0) {
            enter(Phase::Reading, m_server.limits.request);
            // In its turn: a client that sends many requests at once is not alone.
            net::post(m_server.context, [self = shared_from_this()] {
                if (self->m_phase == Phase::Reading)
                    self->advance();
            });
        } else {
            enter(Phase::Idle, m_server.limits.idle);
            pump();
        }
    }

    /// Ends our side first and reads the rest away: closing over unread bytes would reset the
    /// connection, and the client would lose the answer that says why.
    void drain()
    {
        error_code error;
        m_socket.shutdown(tcp::socket::shutdown_send, error);
        if (error || m_inputEnded) {
            close();
            return;
        }
        enter(Phase::Draining, m_server.limits.linger);
        m_buffer.consume(m_buffer.size());
        pump();
    }

    static constexpr char goOnText[] = "HTTP/1.1 100 Continue\r\n\r\n";
    static constexpr std::string_view goOn{goOnText, sizeof goOnText - 1};

    Impl &m_server;
    Socket m_socket;
    const std::string m_peer;
    std::array<char, readStep> m_incoming; ///< what is being read
    beast::flat_buffer m_buffer; ///< what has come and was not taken yet
    std::optional<Parser> m_parser;
    RequestHead m_head;
    std::size_t m_headSize = 0;
    std::string m_text; ///< head of the answer, with its body where that is small
    std::vector<HttpFragment> m_body;
    std::function<void()> m_gone;
    Phase m_phase = Phase::Reading;
    Clock::time_point m_deadline;
    std::uint64_t m_request = 0;
    std::size_t m_drained = 0;
    bool m_reading = false;
    bool m_inputEnded = false;
    bool m_closeAfter = false;
};

/// Carries one answer to its connection. It may outlive the connection and the server: both are
/// then gone quietly.
class HttpServer::Impl::Sink : public HttpResponseSink
{
public:
    Sink(Impl &server, std::weak_ptr<Connection> connection, std::uint64_t request)
        : m_executor(server.context.get_executor()), m_connection(std::move(connection)),
          m_request(request)
    {
    }

    void answer(HttpAnswer answer) override
    {
        const auto connection = m_connection.lock();
        if (!connection)
            return;
        if (m_executor.running_in_this_thread()) {
            connection->answer(m_request, std::move(answer));
        } else {
            net::post(m_executor,
                      [connection, request = m_request, answer = std::move(answer)]() mutable {
                          connection->answer(request, std::move(answer));
                      });
        }
    }

    void watch(std::function<void()> gone) override
    {
        if (const auto connection = m_connection.lock())
            connection->watch(m_request, std::move(gone));
    }

    void lose() override
    {
        if (const auto connection = m_connection.lock())
            net::post(m_executor, [connection, request = m_request] { connection->lose(request); });
    }

private:
    Executor m_executor;
    std::weak_ptr<Connection> m_connection;
    std::uint64_t m_request;
};

void HttpServer::Impl::Connection::dispatch()
{
    ++m_server.counters.requests;
    ++m_request;
    auto query = HttpParameters::parse(m_head.query());
    if (!query) {
        refuse({400, "parameters in address"});
        return;
    }
    HttpRequest request;
    request.method = m_head.method;
    request.path = m_head.path();
    request.query = std::move(*query);
    request.host = m_head.host;
    request.authorization = std::move(m_head.authorization);
    request.contentType = std::move(m_head.contentType);
    if (m_parser)
        request.body = std::move(m_parser->get().body());
    request.peer = m_peer;
    // An answer that is awaited has its own bound, that of the poll or of the command; the deadline
    // of the connection starts again with the writing.
    m_phase = Phase::Waiting;
    m_deadline = Clock::time_point::max();
    const auto self = shared_from_this();
    m_server.handler.handle(std::move(request),
                            HttpResponder(std::make_shared<Sink>(m_server, self, m_request)));
    if (m_phase == Phase::Waiting)
        pump();
}

HttpServer::Impl::Impl(const Options &options, HttpHandler &handlerOfAll)
    : limits(options.limits), hosts(options.hosts), handler(handlerOfAll),
      sweepStep(std::clamp(std::min(limits.request, limits.linger) / 4,
                           std::chrono::milliseconds(10), std::chrono::milliseconds(500)))
{
    error_code error;
    const auto address = net::ip::make_address(options.address, error);
    if (error)
        throw std::runtime_error("not a numeric address to listen on: " + options.address);
    const tcp::endpoint endpoint(address, options.port);
    acceptor.open(endpoint.protocol(), error);
    if (!error)
        acceptor.set_option(net::socket_base::reuse_address(true), error);
    if (!error)
        acceptor.bind(endpoint, error);
    if (!error)
        acceptor.listen(net::socket_base::max_listen_connections, error);
    if (error)
        throw std::runtime_error("cannot listen on " + options.address + " port "
                                 + std::to_string(options.port) + ": " + error.message());
    port = acceptor.local_endpoint().port();
}

void HttpServer::Impl::start()
{
    accept();
    sweep();
    thread = std::thread([this] { context.run(); });
}

void HttpServer::Impl::accept()
{
    acceptor.async_accept([this](error_code error, Socket socket) {
        if (stopping || error == net::error::operation_aborted)
            return;
        if (!error) {
            accepted(std::move(socket));
            accept();
            return;
        }
        // Out of descriptors, most likely: go on when some may have been given back.
        pause.expires_after(std::chrono::milliseconds(100));
        pause.async_wait([this](error_code cancelled) {
            if (!cancelled && !stopping)
                accept();
        });
    });
}

void HttpServer::Impl::accepted(Socket socket)
{
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    socket.non_blocking(true, ignored);
    // A few more than the bound, so that these can be told; beyond that a close must do.
    constexpr std::size_t told = 64;
    if (connections.size() >= limits.connections + told) {
        ++counters.turnedAway;
        return;
    }
    const bool room = connections.size() < limits.connections;
    const auto connection = std::make_shared<Connection>(*this, std::move(socket));
    connections.insert(connection);
    ++counters.open;
    if (room) {
        ++counters.connections;
        connection->start();
    } else {
        ++counters.turnedAway;
        connection->turnAway();
    }
}

void HttpServer::Impl::sweep()
{
    sweeper.expires_after(sweepStep);
    sweeper.async_wait([this](error_code error) {
        if (error)
            return;
        const auto now = Clock::now();
        // A closing connection leaves the set and may run a watcher that closes another one.
        std::vector<std::shared_ptr<Connection>> all(connections.begin(), connections.end());
        for (const auto &connection : all)
            connection->checkDeadline(now);
        if (stopping && (connections.empty() || now >= stopBy))
            closeAll();
        else
            sweep();
    });
}

void HttpServer::Impl::closeAll()
{
    std::vector<std::shared_ptr<Connection>> all(connections.begin(), connections.end());
    for (const auto &connection : all)
        connection->close();
    context.stop();
}

void HttpServer::Impl::stop()
{
    if (!stopAsked.exchange(true)) {
        net::post(context, [this] {
            stopping = true;
            stopBy = Clock::now() + std::min(limits.answer, std::chrono::milliseconds(2000));
            error_code ignored;
            acceptor.close(ignored);
            pause.cancel();
            std::vector<std::shared_ptr<Connection>> all(connections.begin(), connections.end());
            for (const auto &connection : all)
                connection->windDown();
            sweepStep = std::chrono::milliseconds(10);
            sweeper.cancel();
            sweep();
        });
    }
    if (thread.joinable())
        thread.join();
}

HttpServer::HttpServer(const Options &options, HttpHandler &handler)
    : m_impl(std::make_unique<Impl>(options, handler))
{
}

HttpServer::~HttpServer() = default;

void HttpServer::start()
{
    m_impl->start();
}

std::uint16_t HttpServer::port() const
{
    return m_impl->port;
}

const HttpCounters &HttpServer::counters() const
{
    return m_impl->counters;
}

void HttpServer::post(std::function<void()> task)
{
    net::post(m_impl->context, std::move(task));
}

void HttpServer::callAt(std::chrono::steady_clock::time_point time, std::function<void()> task)
{
    net::post(m_impl->context, [this, time, task = std::move(task)]() mutable {
        auto timer = std::make_shared<net::steady_timer>(m_impl->context, time);
        timer->async_wait([timer, task = std::move(task)](error_code error) {
            if (!error)
                task();
        });
    });
}

void HttpServer::stop()
{
    m_impl->stop();
}

} // namespace zvx
