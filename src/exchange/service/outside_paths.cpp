#include "exchange/service/outside_paths.h"

#include "exchange/service/bank_pictures.h"
#include "exchange/service/market_paths.h"
#include "exchange/service/parameters.h"
#include "exchange/service/wire_answers.h"

#include <utility>

namespace zvx {

namespace {

/// What browsers may do with pages and pictures.
constexpr std::string_view readingMethods = "GET, HEAD";

bool isReading(const HttpRequest &request)
{
    return request.method == "GET" || request.method == "HEAD";
}

} // namespace

OutsidePaths::OutsidePaths(const WireAnswers &answers, const MarketPaths &market,
                           const PlatformRooms &platforms, const AccountRooms &accounts,
                           Health health)
    : m_answers(answers), m_market(market), m_platforms(platforms), m_accounts(accounts),
      m_health(std::move(health))
{
}

void OutsidePaths::handle(HttpRequest request, HttpResponder responder) const
{
    const std::string_view path = request.path;
    const std::size_t second = path.find('/', 1);
    if (second == std::string_view::npos) {
        responder.answer(root(request));
        return;
    }
    const std::string_view folder = path.substr(1, second - 1);
    const std::string_view file = path.substr(second + 1);
    const auto room = m_accounts.find(folder);
    const LinkPage *page = room == m_accounts.end() ? nullptr : room->second->pages.find(file);
    if (page) {
        room->second->pages.handle(*page, std::move(request), std::move(responder));
        return;
    }
    const bool isCode = path == "/cgi-bin/qrcode.html";
    auto picture = folder == "bank" ? bankPicture(file) : std::nullopt;
    if (!isCode && !picture)
        responder.answer(platform(folder, file, request));
    else if (!isReading(request))
        responder.answer(m_answers.wrongMethod(readingMethods));
    else
        responder.answer(isCode ? qrCode(request) : std::move(*picture));
}

HttpAnswer OutsidePaths::qrCode(const HttpRequest &request) const
{
    // Which platform has the code stands in no address: clients know one for all platforms.
    for (const auto &[id, room] : m_accounts) {
        if (auto picture = room->cards.qrCode(request))
            return std::move(*picture);
    }
    return m_answers.unknownCode();
}

HttpAnswer OutsidePaths::root(const HttpRequest &request) const
{
    const bool isHealth = request.path == "/healthz";
    if (!isHealth && request.path != "/metrics")
        return m_answers.notFound();
    if (request.method != "GET")
        return m_answers.wrongMethod("GET");
    const bool hasFailed = m_health.hasFailed();
    HttpAnswer answer = isHealth
        ? HttpAnswer::of(hasFailed ? 503 : 200, hasFailed ? "failed\n" : "ok\n")
        : HttpAnswer::of(200, m_health.metrics());
    answer.contentType = "text/plain; charset=utf-8";
    return answer;
}

HttpAnswer OutsidePaths::platform(std::string_view id, std::string_view rest,
                                  const HttpRequest &request) const
{
    const auto found = m_platforms.find(id);
    if (found == m_platforms.end())
        return m_answers.notFound();
    const PlatformRoom &room = found->second;
    auto page = room.pages.page(rest);
    const bool isUpdate = rest == "update.html";
    if (!page && !isUpdate && rest != "market.html")
        return m_answers.notFound();
    if (page)
        return isReading(request) ? std::move(*page) : m_answers.wrongMethod(readingMethods);
    if (request.method != "GET")
        return m_answers.wrongMethod("GET");
    if (isUpdate)
        return m_market.update();
    ParameterReader read(request.query);
    if (!read.protocolFits())
        return m_answers.misread(read);
    return m_answers.done(room.board->market.text);
}

} // namespace zvx
