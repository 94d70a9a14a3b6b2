#include "randomevents/randommarket.h"

#include "randomevents/names.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QDate>

namespace randomevents {

namespace {

constexpr int firstId = 1001;
constexpr int collections = 40;
constexpr qint64 largest = 9'000'000'000'000'000; // that the protocol knows
constexpr qint64 newYear = 1'577'808'000'000; // 2020 at the exchange, in ms
constexpr qint64 minuteMs = 60'000;

QByteArray quoted(const QString &text)
{
    QByteArray escaped = text.toUtf8();
    escaped.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n").replace('\t', "\\t");
    return '"' + escaped + '"';
}

QByteArray pair(const QByteArray &first, const QByteArray &second)
{
    return '[' + first + ", " + second + ']';
}

} // namespace

QStringList RandomMarket::prefixes()
{
    return {QStringLiteral("/lc/youbika/"), QStringLiteral("/lc/qianbi/"),
            QStringLiteral("/lc/feicui/")};
}

QString RandomMarket::anyId()
{
    if (m_chance.happens(10))
        return m_chance.oneOf<QString>({QString(), QStringLiteral("-1"), QStringLiteral("999999"),
                                        QStringLiteral("no number")});
    return QString::number(firstId + m_chance.below(collections));
}

void RandomMarket::beginAnew()
{
    m_boot = 'b' + QByteArray::number(m_chance.below(1000));
    m_version = 1;
    m_rows = 0;
}

QByteArray RandomMarket::answerTo(const ZvRequest &request)
{
    const QByteArray data = dataFor(request); // may raise the version
    return "{\"protocol\": 1, \"status\": \"ok\", \"boot\": \"" + m_boot + "\", \"time\": " + time()
        + ", \"version\": " + QByteArray::number(m_version) + ", \"data\": " + data + '}';
}

QByteArray RandomMarket::refusal()
{
    const auto reason = m_chance.oneOf<const char *>(
        {"closed", "money", "holdings", "pending", "unknown-key", "no-card", "wrong-code"});
    return "{\"protocol\": 1, \"status\": \"refused\", \"boot\": \"" + m_boot + "\", \"time\": "
        + time() + ", \"message\": " + word() + ", \"reason\": \"" + reason + "\"}";
}

QByteArray RandomMarket::endOfSession()
{
    return QByteArray("{\"protocol\": 1, \"status\": \"")
        + m_chance.oneOf<const char *>({"elsewhere", "session"}) + "\", \"boot\": \"" + m_boot
        + "\", \"time\": " + time() + ", \"message\": " + word() + '}';
}

QByteArray
RandomMarket::object(std::initializer_list<std::pair<const char *, QByteArray>> fields) const
{
    QByteArrayList texts;
    for (const auto &[name, value] : fields)
        texts << QByteArray("\"") + name + "\": " + value;
    return '{' + texts.join(", ") + '}';
}

QByteArray RandomMarket::list(int most, const std::function<QByteArray(int)> &make)
{
    const int count = m_chance.happens(12) ? 0 : m_chance.between(1, most);
    if (count == 0)
        ++m_counts[kEmptyList];
    QByteArrayList entries;
    for (int i = 0; i < count; ++i)
        entries << make(i);
    return '[' + entries.join(", ") + ']';
}

QByteArray RandomMarket::figure()
{
    return m_chance.happens(8) ? QByteArrayLiteral("null") : amount();
}

QByteArray RandomMarket::amount()
{
    if (m_chance.happens(4)) {
        ++m_counts[kExtreme];
        return QByteArray::number(
            m_chance.oneOf<qint64>({0, 1, largest, largest - 1, 2'147'483'648, 4'294'967'297}));
    }
    return QByteArray::number(m_chance.below(m_chance.oneOf({10, 1'000, 200'000, 100'000'000})));
}

qint64 RandomMarket::price()
{
    if (m_chance.happens(2)) {
        ++m_counts[kExtreme];
        return m_chance.oneOf<qint64>({1, largest});
    }
    return m_chance.between(1, m_chance.oneOf({100, 20'000, 5'000'000}));
}

QByteArray RandomMarket::number(int least, int most)
{
    return QByteArray::number(m_chance.between(least, most));
}

QByteArray RandomMarket::truth()
{
    return m_chance.happens(60) ? "true" : "false";
}

QByteArray RandomMarket::word()
{
    static const QList<QString> words{
        QStringLiteral("庚申猴票"),
        QStringLiteral("藏品"),
        QStringLiteral("A"),
        QString(),
        QStringLiteral("<b>粗</b> & <img src='x'>"),
        QStringLiteral("一行\n又一行"),
        QStringLiteral("%1 %2 %n"),
        QStringLiteral("\u202e反了"),
        QString(300, QChar(0x957f)),
        QStringLiteral("\U0001f409\U0001f409 龙"),
    };
    return quoted(m_chance.oneOf(words));
}

QByteArray RandomMarket::time()
{
    return QByteArray::number(newYear + m_chance.below(86'400) * qint64(1000));
}

QByteArray RandomMarket::id(int i) const
{
    return quoted(QString::number(firstId + i % collections));
}

QByteArray RandomMarket::row(int i)
{
    return object(
        {{"id", id(i)},
         {"code", quoted(QString::number(100'000 + firstId + i))},
         {"name", word()},
         {"type", number(0, 4)},
         {"listed", figure()},
         {"introduction",
          quoted(m_chance.oneOf<QString>({QString(), QStringLiteral("http://127.0.0.1:9/i")}))},
         {"latest", figure()},
         {"previousClose", figure()},
         {"open", figure()},
         {"high", figure()},
         {"low", figure()},
         {"bid", figure()},
         {"ask", figure()},
         {"bidQuantity", figure()},
         {"askQuantity", figure()},
         {"volume", figure()},
         {"amount", figure()}});
}

QByteArray RandomMarket::rows()
{
    m_rows = 0;
    const QByteArray told = list(collections, [this](int i) {
        m_rows = i + 1;
        return row(i);
    });
    return object({{"rows", told}});
}

QByteArray RandomMarket::changes(qint64 base)
{
    const auto change = [this](int) {
        const QByteArray name = m_chance.oneOf<const char *>(
            {"latest", "bid", "ask", "volume", "amount", "high", "low", "previousClose", "open"});
        return pair(number(0, std::max(0, m_rows - 1)), "{\"" + name + "\": " + figure() + '}');
    };
    const QByteArray told = m_rows > 0 ? list(8, change) : QByteArrayLiteral("[]");
    return object({{"version", QByteArray::number(m_version)},
                   {"base", QByteArray::number(base)},
                   {"changes", told}});
}

QByteArray RandomMarket::brief()
{
    return object({{"collections", list(collections, [this](int i) {
                        return object({{"id", id(i)},
                                       {"code", quoted(QString::number(100'000 + firstId + i))},
                                       {"name", word()},
                                       {"initials", R"(["cp", "a"])"}});
                    })}});
}

QByteArray RandomMarket::deal(int i)
{
    return object({{"sequence", QByteArray::number(i + 1)},
                   {"time", time()},
                   {"price", amount()},
                   {"quantity", amount()},
                   {"side", number(1, 2)}});
}

QByteArray RandomMarket::levels()
{
    return list(5, [this](int) { return pair(figure(), figure()); });
}

QByteArray RandomMarket::bar(int i)
{
    const QByteArray day = QDate(2019, 1, 1).addDays(i).toString(Qt::ISODate).toLatin1();
    const qint64 low = price();
    const qint64 high = std::max(low, price());
    const auto between = [&] {
        return QByteArray::number(m_chance.oneOf<qint64>({low, high, low + (high - low) / 3}));
    };
    return '['
        + QByteArrayList{'"' + day + '"',
                         between(),
                         QByteArray::number(high),
                         QByteArray::number(low),
                         between(),
                         amount(),
                         amount()}
              .join(", ")
        + ']';
}

QByteArray RandomMarket::minute(int i)
{
    return '['
        + QByteArrayList{QByteArray::number(newYear + i * minuteMs), QByteArray::number(price()),
                         QByteArray::number(price()), amount()}
              .join(", ")
        + ']';
}

QByteArray RandomMarket::order(int i)
{
    const int quantity = m_chance.between(1, 1'000);
    const int filled = m_chance.happens(50) ? 0 : m_chance.between(0, quantity);
    return object({{"order", QByteArray::number(i + 1)},
                   {"time", time()},
                   {"collection", id(i)},
                   {"code", word()},
                   {"name", word()},
                   {"side", number(1, 2)},
                   {"price", amount()},
                   {"quantity", QByteArray::number(quantity)},
                   {"filled", QByteArray::number(filled)},
                   {"averagePrice", figure()},
                   {"amount", filled > 0 ? QByteArray::number(price()) : QByteArrayLiteral("0")},
                   {"fee", amount()},
                   {"frozen", amount()},
                   {"state", number(1, 6)},
                   {"key", "null"}});
}

QByteArray RandomMarket::holding(int i)
{
    const int quantity = m_chance.between(0, 100'000);
    return object({{"collection", id(i)},
                   {"code", quoted(QString::number(100'000 + firstId + i))},
                   {"name", word()},
                   {"quantity", QByteArray::number(quantity)},
                   {"sellable", number(0, quantity)},
                   {"cost", amount()},
                   {"latest", figure()}});
}

QByteArray RandomMarket::account()
{
    return object(
        {{"account", quoted(QString::number(80'001 + m_chance.below(3)))},
         {"phone", quoted(QStringLiteral("13800000000"))},
         {"name", word()},
         {"poundage", number(0, 5'000)},
         {"poundageOf", list(3, [this](int i) { return pair(id(i), number(0, 5'000)); })}});
}

QByteArray RandomMarket::take(int i)
{
    return object({{"id", quoted(QString(32, QLatin1Char('a' + char(i % 6))))},
                   {"number", quoted(QString::number(i))},
                   {"time", time()},
                   {"collection", id(i)},
                   {"code", word()},
                   {"name", word()},
                   {"quantity", amount()},
                   {"state", number(1, 5)},
                   {"person", word()},
                   {"phone", word()},
                   {"address", word()},
                   {"carrier", word()},
                   {"tracking", word()},
                   {"sent", figure()}});
}

// Of what the poll watches, some topics have news.
QByteArray RandomMarket::topics(const ZvRequest &request)
{
    QByteArrayList told;
    for (const auto &parameter : request.parameters) {
        const QByteArray name = parameter.first.toLatin1();
        const QByteArray entry = m_chance.happens(35) ? topic(name, request) : QByteArray();
        if (!entry.isEmpty())
            told << '"' + name + "\": " + entry;
    }
    return object({{"topics", '{' + told.join(", ") + '}'}});
}

QByteArray RandomMarket::topic(const QByteArray &name, const ZvRequest &request)
{
    struct Topic {
        const char *name;
        const QString &path;
        bool isGap; // that alone is told of it
    };
    static const Topic known[]{{"market", zvPath_market, false},
                               {"message", zvPath_message, false},
                               {"check", zvPath_market_check, false},
                               {"composite", zvPath_market_composite, false},
                               {"brief", zvPath_market_collection, true},
                               {"type", zvPath_collection_type, true},
                               {"list", zvPath_market_list, true},
                               {"item", zvPath_collection_item, false},
                               {"trade", zvPath_collection_trade, false},
                               {"latest", zvPath_market_latest_list, false},
                               {"cap", zvPath_cap, true}};
    for (const Topic &each : known) {
        if (name != each.name)
            continue;
        const qint64 base = request.parameter(QString::fromLatin1(name)).toLongLong();
        ++m_version;
        if (name == "list" && m_chance.happens(80))
            return changes(base);
        const QByteArray version = QByteArray::number(m_version);
        if (each.isGap)
            return object({{"version", version}, {"gap", "true"}});
        if (&each.path == &zvPath_collection_item && m_chance.happens(3))
            return object({{"version", "0"}, {"unknown", "true"}});
        ZvRequest asked = request;
        asked.path = each.path;
        return object({{"version", version}, {"data", dataFor(asked)}});
    }
    return {};
}

QByteArray RandomMarket::dataFor(const ZvRequest &request)
{
    const QString &path = request.path;
    const QByteArray collection = quoted(request.parameter(QStringLiteral("collection")));
    const auto listed = [this](const char *name, int most, QByteArray (RandomMarket::*make)(int)) {
        return object({{name, list(most, [this, make](int i) { return (this->*make)(i); })}});
    };
    if (path == zvPath_sync)
        return topics(request);
    if (path == zvPath_market) {
        const QStringList all = prefixes();
        return object({{"servers", list(all.size(), [this, &all](int i) {
                            return object({{"name", word()}, {"prefix", quoted(all.at(i))}});
                        })}});
    }
    if (path == zvPath_message) {
        return object(
            {{"messages", list(6, [this](int) {
                  return object({{"text", word()}, {"link", R"("http://127.0.0.1:9/message")"}});
              })}});
    }
    if (path == zvPath_market_check)
        return object(
            {{"open", truth()}, {"tradingDay", R"("2020-01-01")"}, {"session", number(1, 3)}});
    if (path == zvPath_market_composite)
        return m_chance.happens(20) ? QByteArrayLiteral("null") : row(0).replace(id(0), "\"-1\"");
    if (path == zvPath_market_collection)
        return brief();
    if (path == zvPath_market_list)
        return rows();
    if (path == zvPath_collection_type) {
        return object({{"types", list(5, [this](int i) {
                            return object({{"id", QByteArray::number(i)}, {"name", word()}});
                        })}});
    }
    if (path == zvPath_collection_item)
        return object({{"id", collection},
                       {"latest", figure()},
                       {"previousClose", figure()},
                       {"open", figure()},
                       {"high", figure()},
                       {"low", figure()},
                       {"volume", figure()},
                       {"amount", figure()},
                       {"listed", figure()},
                       {"outer", figure()},
                       {"inner", figure()},
                       {"buyQuantity", figure()},
                       {"sellQuantity", figure()}});
    if (path == zvPath_collection_trade)
        return object({{"id", collection},
                       {"code", word()},
                       {"name", word()},
                       {"latest", figure()},
                       {"previousClose", figure()},
                       {"lowerLimit", figure()},
                       {"upperLimit", figure()},
                       {"sells", levels()},
                       {"buys", levels()}});
    if (path == zvPath_market_latest_list || path == zvPath_market_detail) {
        const QString page = request.parameter(QStringLiteral("page"));
        return object({{"id", collection},
                       {"page", page.isEmpty() ? QByteArrayLiteral("1") : page.toLatin1()},
                       {"deals", list(30, [this](int i) { return deal(i); })}});
    }
    if (path == zvPath_market_jit)
        return object({{"id", collection},
                       {"tradingDay", R"("2020-01-01")"},
                       {"session", number(1, 3)},
                       {"previousClose", figure()},
                       {"spans", '[' + pair(QByteArray::number(newYear), "null") + ']'},
                       {"minutes", list(240, [this](int i) { return minute(i); })}});
    if (path == zvPath_market_day || path == zvPath_market_week || path == zvPath_market_month)
        return object({{"id", collection},
                       {"session", number(1, 3)},
                       {"bars", list(200, [this](int i) { return bar(i); })}});
    if (path == zvPath_login) {
        ++m_counts[kSignedIn];
        return object({{"token", "\"t" + number(1, 1'000'000) + '"'}, {"account", account()}});
    }
    if (path == zvPath_myaccount)
        return account();
    if (path == zvPath_cap)
        return object({{"heldMarketValue", amount()},
                       {"profit",
                        (m_chance.happens(50) ? QByteArray() : QByteArrayLiteral("-"))
                            + number(1, 1'000'000)},
                       {"available", amount()},
                       {"frozen", amount()},
                       {"total", amount()},
                       {"items", list(20, [this](int i) { return holding(i); })}});
    if (path == zvPath_myaccount_gather)
        return object({{"items", list(20, [this](int i) {
                            return object({{"collection", id(i)},
                                           {"code", word()},
                                           {"name", word()},
                                           {"buyQuantity", amount()},
                                           {"buyAmount", amount()},
                                           {"buyFee", amount()},
                                           {"sellQuantity", amount()},
                                           {"sellAmount", amount()},
                                           {"sellFee", amount()},
                                           {"sellProfit", amount()}});
                        })}});
    if (path == zvPath_myaccount_optional)
        return object({{"collections", list(10, [this](int i) { return id(i); })}});
    if (path == zvPath_revoke || path == zvPath_myaccount_entrust
        || path == zvPath_myaccount_his_entrust)
        return listed("orders", 20, &RandomMarket::order);
    if (path == zvPath_myaccount_trade)
        return object({{"deals", list(20, [this](int i) {
                            const qint64 each = m_chance.below(100'000);
                            const int quantity = m_chance.below(1'000);
                            return object({{"sequence", QByteArray::number(i)},
                                           {"time", time()},
                                           {"side", number(1, 2)},
                                           {"collection", id(i)},
                                           {"code", word()},
                                           {"name", word()},
                                           {"price", QByteArray::number(each)},
                                           {"quantity", QByteArray::number(quantity)},
                                           {"amount", QByteArray::number(each * quantity)},
                                           {"fee", amount()}});
                        })}});
    if (path == zvPath_myaccount_take_list)
        return listed("takes", 20, &RandomMarket::take);
    if (path == zvPath_hold_list && request.hasParameter(QStringLiteral("mine")))
        return object({{"applications", list(20, [this](int i) {
                            return object({{"number", QByteArray::number(i)},
                                           {"time", time()},
                                           {"collection", id(i)},
                                           {"code", word()},
                                           {"name", word()},
                                           {"price", amount()},
                                           {"quantity", amount()},
                                           {"granted", figure()},
                                           {"state", number(0, 3)}});
                        })}});
    if (path == zvPath_hold_list)
        return object({{"collections", list(20, [this](int i) {
                            return object({{"collection", id(i)},
                                           {"code", word()},
                                           {"name", word()},
                                           {"price", amount()},
                                           {"quantity", amount()},
                                           {"from", R"("2020-01-01")"},
                                           {"to", R"("2020-01-05")"}});
                        })}});
    if (path == zvPath_pay_list)
        return object({{"flows", list(20, [this](int i) {
                            return object({{"number", QByteArray::number(i)},
                                           {"time", time()},
                                           {"in", truth()},
                                           {"amount", amount()},
                                           {"state", number(0, 2)},
                                           {"balance", amount()}});
                        })}});
    if (path == zvPath_pay_hx && request.hasParameter(QStringLiteral("addresses")))
        return object(
            {{"in", R"("http://127.0.0.1:9/in")"}, {"out", R"("http://127.0.0.1:9/out")"}});
    if (path == zvPath_pay_hx && m_chance.happens(50))
        return object({{"bound", "true"},
                       {"picturePrefix", R"("qrc:/icons/")"},
                       {"pictureName", m_chance.happens(50) ? R"("appicon")" : R"("none")"},
                       {"pictureSuffix", R"("png")"},
                       {"tail", R"("6789")"}});
    if (path == zvPath_pay_hx)
        return object({{"bound", "false"}, {"code", R"("abc-DEF_123")"}});
    if (path == zvPath_pay_send)
        return object({{"first", "\"1\""}, {"second", "\"2\""}});
    return object({{"order", number(1, 1'000)}, {"revoked", number(1, 20)}, {"id", "\"1\""}});
}

} // namespace randomevents
