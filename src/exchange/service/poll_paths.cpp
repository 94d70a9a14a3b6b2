#include "exchange/service/poll_paths.h"

#include "exchange/service/market_board.h"
#include "exchange/service/parameters.h"
#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"

#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace zvx {

namespace {

constexpr std::int64_t longestWait = 25'000;

} // namespace

PollPaths::PollPaths(const WireAnswers &answers, std::size_t bound, PollHub::Alarm alarm)
    : m_answers(answers), m_hub(
                              bound,
                              [this](MarketBoard &board, const SyncQuestion &question) {
                                  return answerTo(board, question);
                              },
                              std::move(alarm))
{
}

void PollPaths::handle(PathCall call, const SessionGate &gate)
{
    const HttpRequest &request = call.request;
    ParameterReader read(request.query);
    if (!read.protocolFits(ParameterReader::Required)) {
        call.responder.answer(m_answers.misread(read));
        return;
    }
    SyncQuestion question;
    std::optional<PollSession> session;
    if (!request.authorization.empty()) {
        auto asked = gate.ask(request);
        if (auto *over = std::get_if<HttpAnswer>(&asked)) {
            call.responder.answer(std::move(*over));
            return;
        }
        const SignedIn &who = std::get<SignedIn>(asked);
        question.account = who.account;
        session = PollSession{&gate, who.session, Secret(request.authorization)};
    }
    const std::string *boot = request.query.find("boot");
    const bool comparable = !boot || *boot == m_answers.envelope().boot();
    for (std::size_t i = 0; i < topicCount; ++i) {
        const auto held = read.integer(topicName(static_cast<Topic>(i)), 0, INT64_MAX);
        if (held)
            question.held[i] = comparable ? static_cast<std::uint64_t>(*held) : 0;
    }
    const auto wait = read.integer("wait", 0, longestWait).value_or(0);
    question.limit = static_cast<std::size_t>(
        read.integer("limit", 0, mostLatestDeals).value_or(usualLatestDeals));
    const auto collection = read.collection();
    if (!read.fault().empty()) {
        call.responder.answer(m_answers.badParameter(read.fault()));
        return;
    }
    if (collection) {
        question.row = call.board.rowOf(*collection);
        question.unknownCollection = !question.row;
    }
    if (wait == 0 || call.board.differs(question)) {
        call.responder.answer(answerTo(call.board, question));
    } else if (m_hub.isFull()) {
        call.responder.answer(m_answers.busy());
    } else {
        m_hub.park(call.board, question, std::move(call.responder),
                   std::chrono::steady_clock::now() + std::chrono::milliseconds(wait),
                   std::move(session));
    }
}

HttpAnswer PollPaths::answerTo(MarketBoard &board, const SyncQuestion &question) const
{
    static const HttpFragment end = std::make_shared<const std::string>("}}}");
    HttpAnswer answer;
    answer.body.push_back(std::make_shared<const std::string>(
        m_answers.envelope().open(WireStatus::Ok) + ",\"data\":{\"topics\":{"));
    board.appendTopics(question, answer.body);
    answer.body.push_back(end);
    return answer;
}

} // namespace zvx
