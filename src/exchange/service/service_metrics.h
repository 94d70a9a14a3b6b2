#pragma once

#include <string>

namespace zvx {

class AccountDesk;
class DeliveryDesk;
class MarketServer;
class MetricsText;
class MoneyDesk;
class QueryPool;
struct HttpCounters;

// What each part of the service tells of itself at /metrics.

void addHttp(MetricsText &text, const HttpCounters &http);
void addQueries(MetricsText &text, const QueryPool &queries);
void addAccounts(MetricsText &text, const std::string &platform, const AccountDesk &desk);
void addMoney(MetricsText &text, const MoneyDesk &desk);
void addDeliveries(MetricsText &text, const DeliveryDesk &desk);
void addMarket(MetricsText &text, const MarketServer &market);

} // namespace zvx
