#include "exchange/service/market_paths.h"

#include "exchange/service/json_text.h"
#include "exchange/service/market_board.h"
#include "exchange/service/parameters.h"
#include "exchange/service/wire_answers.h"

#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace zvx {

namespace {

/// What a client is told of its own releases.
constexpr std::string_view newestClient = ZVX_VERSION;
constexpr std::string_view oldestClient = "0.1.0";

/// The topic that a path tells as a whole.
std::optional<Topic> topicOf(PathKind kind)
{
    switch (kind) {
    case PathKind::Market:
        return Topic::Market;
    case PathKind::Message:
        return Topic::Message;
    case PathKind::Check:
        return Topic::Check;
    case PathKind::Composite:
        return Topic::Composite;
    case PathKind::Brief:
        return Topic::Brief;
    case PathKind::Type:
        return Topic::Type;
    case PathKind::List:
        return Topic::List;
    default:
        return std::nullopt;
    }
}

} // namespace

MarketPaths::MarketPaths(const WireAnswers &answers) : m_answers(answers) { }

void MarketPaths::handle(PathCall call) const
{
    HttpAnswer answer = answerTo(call);
    call.responder.answer(std::move(answer));
}

HttpAnswer MarketPaths::answerTo(const PathCall &call) const
{
    if (call.kind == PathKind::Update)
        return update();
    ParameterReader read(call.request.query);
    if (!read.protocolFits())
        return m_answers.misread(read);
    if (const std::optional<Topic> topic = topicOf(call.kind))
        return m_answers.done(call.board.whole(*topic));
    return ofCollection(call, read);
}

HttpAnswer MarketPaths::ofCollection(const PathCall &call, ParameterReader &read) const
{
    const auto collection = read.collection();
    const auto limit = call.kind == PathKind::Latest ? read.integer("limit", 0, mostLatestDeals)
                                                     : std::optional<std::int64_t>();
    if (!read.fault().empty())
        return m_answers.badParameter(read.fault());
    if (!collection)
        return m_answers.badParameter("collection");
    const auto row = call.board.rowOf(*collection);
    if (!row)
        return m_answers.unknownCollection();
    const Topic topic = call.kind == PathKind::Item ? Topic::Item
        : call.kind == PathKind::Trade              ? Topic::Trade
                                                    : Topic::Latest;
    return m_answers.done(call.board.ofCollection(
        topic, *row, static_cast<std::size_t>(limit.value_or(usualLatestDeals))));
}

HttpAnswer MarketPaths::update() const
{
    JsonText json;
    json.raw("\"version\":1").key("data").open('{');
    json.key("version").text(newestClient).key("minimum").text(oldestClient);
    json.key("protocol").number(protocolNumber).key("text").text("").close('}');
    return m_answers.done(std::make_shared<const std::string>(json.take()));
}

} // namespace zvx
