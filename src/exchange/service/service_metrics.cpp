#include "exchange/service/service_metrics.h"

#include "exchange/accounts/account_desk.h"
#include "exchange/service/delivery_desk.h"
#include "exchange/service/http_server.h"
#include "exchange/service/metrics_text.h"
#include "exchange/service/money_desk.h"
#include "exchange/service/query_pool.h"
#include "exchange/store/exchange.h"

#include <string_view>

namespace zvx {

void addHttp(MetricsText &text, const HttpCounters &http)
{
    text.add("zvexchange_connections_total", http.connections);
    text.add("zvexchange_connections_open", http.open);
    text.add("zvexchange_connections_turned_away_total", http.turnedAway);
    text.add("zvexchange_connections_cut_total", http.cutByDeadline);
    text.add("zvexchange_requests_total", http.requests);
    text.add("zvexchange_requests_refused_total", http.refused);
    text.add("zvexchange_bytes_sent_total", http.bytesOut);
    for (int hundred = 2; hundred <= 5; ++hundred)
        text.add("zvexchange_answers_total", http.answers[hundred], "status",
                 std::to_string(hundred) + "xx");
}

void addQueries(MetricsText &text, const QueryPool &queries)
{
    text.add("zvexchange_queries_total", queries.counters().answered);
    text.add("zvexchange_queries_turned_away_total", queries.counters().turnedAway);
    text.add("zvexchange_query_queue_depth", queries.waiting());
}

void addAccounts(MetricsText &text, const std::string &platform, const AccountDesk &desk)
{
    const auto add = [&](std::string_view name, std::uint64_t value) {
        text.add(name, value, "platform", platform);
    };
    const AccountCounters &counters = desk.counters();
    add("zvexchange_account_requests_total", counters.requests);
    add("zvexchange_account_requests_turned_away_total", counters.turnedAway);
    add("zvexchange_account_commits_total", counters.commits);
    add("zvexchange_account_queue_depth", desk.waiting());
    add("zvexchange_sessions_live", desk.liveSessions());
    add("zvexchange_sign_ins_total", counters.signIns);
    add("zvexchange_wrong_passwords_total", counters.wrongPasswords);
    add("zvexchange_wrong_codes_total", counters.wrongCodes);
    add("zvexchange_limited_requests_total", counters.refusedByLimit);
    add("zvexchange_text_messages_total", counters.texts);
    add("zvexchange_text_messages_failed_total", counters.textsFailed);
}

void addMoney(MetricsText &text, const MoneyDesk &desk)
{
    const MoneyCounters &counters = desk.counters();
    text.add("zvexchange_transfers_total", counters.moneyIn, "way", "in");
    text.add("zvexchange_transfers_total", counters.moneyOut, "way", "out");
    text.add("zvexchange_transfers_refused_total", counters.refused, "by", "rule");
    text.add("zvexchange_transfers_refused_total", counters.refusedByBank, "by", "bank");
    text.add("zvexchange_transfers_turned_away_total", counters.turnedAway);
    text.add("zvexchange_transfers_under_way", desk.underWay());
    text.add("zvexchange_bank_questions_total", counters.asked);
    text.add("zvexchange_bank_questions_repeated_total", counters.askedAgain);
    text.add("zvexchange_bank_idle_answers_total", counters.idleAnswers);
}

void addDeliveries(MetricsText &text, const DeliveryDesk &desk)
{
    const DeliveryCounters &counters = desk.counters();
    text.add("zvexchange_deliveries_total", counters.requested, "step", "requested");
    text.add("zvexchange_deliveries_total", counters.cancelled, "step", "cancelled");
    text.add("zvexchange_deliveries_total", counters.sent, "step", "sent");
    text.add("zvexchange_deliveries_refused_total", counters.refused, "by", "rule");
    text.add("zvexchange_deliveries_refused_total", counters.refusedByCarrier, "by", "carrier");
    text.add("zvexchange_deliveries_turned_away_total", counters.turnedAway);
    text.add("zvexchange_deliveries_under_way", desk.underWay());
    text.add("zvexchange_carrier_questions_repeated_total", counters.askedAgain);
}

void addMarket(MetricsText &text, const MarketServer &market)
{
    const auto add = [&](std::string_view name, std::uint64_t value) {
        text.add(name, value, "market", market.prefix());
    };
    const WriterCounters &writer = market.writer().counters();
    add("zvexchange_commands_total", writer.commands);
    add("zvexchange_commands_turned_away_total", writer.refusedFull);
    add("zvexchange_commits_total", writer.commits);
    add("zvexchange_checkpoints_total", writer.checkpoints);
    add("zvexchange_publications_total", writer.publications);
    add("zvexchange_deals_total", writer.deals);
    add("zvexchange_queue_depth", market.writer().waiting());
}

} // namespace zvx
