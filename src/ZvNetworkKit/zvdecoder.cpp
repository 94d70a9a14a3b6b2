#include "ZvNetworkKit/zvdecoder.h"

#include "ZvNetworkKit/zvaccountreading.h"
#include "ZvNetworkKit/zvchartreading.h"
#include "ZvNetworkKit/zvjsonreading.h"
#include "ZvNetworkKit/zvrecordreading.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <limits>

namespace {

using namespace zvread;
using Node = ZvJsonNode;

QList<QPair<QString, QString>> readServers(const Node &data)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:/[A-Za-z0-9][A-Za-z0-9_-]{0,63}){1,4}/\\z"));
    QList<QPair<QString, QString>> servers;
    for (const Node &entry : array(data, "servers")) {
        const QString prefix = text(entry, "prefix");
        if (!form.match(prefix).hasMatch())
            refuse("no server prefix", "prefix");
        servers.append({text(entry, "name"), prefix});
    }
    return servers;
}

QList<QPair<QString, QString>> readMessages(const Node &data)
{
    QList<QPair<QString, QString>> messages;
    for (const Node &entry : array(data, "messages"))
        messages.append({text(entry, "text"), webAddress(text(entry, "link"))});
    return messages;
}

ZvMarketCheck readCheck(const Node &data)
{
    ZvMarketCheck check;
    check.open = boolean(data, "open");
    check.tradingDay = QDate::fromString(text(data, "tradingDay"), Qt::ISODate);
    if (!check.tradingDay.isValid())
        refuse("no date", "tradingDay");
    check.session = static_cast<int>(integer(data, "session", 0, std::numeric_limits<int>::max()));
    return check;
}

QList<QPair<QString, int>> readTypes(const Node &data)
{
    QList<QPair<QString, int>> types;
    for (const Node &entry : array(data, "types")) {
        const qint64 id = integer(entry, "id", 0, std::numeric_limits<int>::max());
        types.append({text(entry, "name"), static_cast<int>(id)});
    }
    return types;
}

ZvUBBriefInfo readBrief(const Node &data)
{
    ZvUBBriefInfo::Data brief;
    for (const Node &entry : array(data, "collections")) {
        ZvUBBriefItem::Data item;
        item.collectionId = collectionId(entry, "id");
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        for (const Node &reading : array(entry, "initials"))
            item.initials.append(textIn(reading, "initials"));
        brief.items.append(ZvUBBriefItem(item));
    }
    return ZvUBBriefInfo(brief);
}

// The fields of a market row on the wire and where each one goes.
struct RowField {
    const char *key;
    void (*read)(const Node &node, const char *key, ZvUBObject::Data &row);
};

template <qint64 ZvUBObject::Data::*Figure>
void readFigure(const Node &node, const char *key, ZvUBObject::Data &row)
{
    row.*Figure = figureIn(node, key);
}

template <QString ZvUBObject::Data::*Text>
void readText(const Node &node, const char *key, ZvUBObject::Data &row)
{
    row.*Text = textIn(node, key);
}

using Row = ZvUBObject::Data;

const RowField rowFields[] = {
    {"id",
     [](const Node &node, const char *key, Row &row) {
         row.collectionId = collectionIdIn(node, key);
     }},
    {"code", readText<&Row::code>},
    {"name", readText<&Row::name>},
    {"type",
     [](const Node &node, const char *key, Row &row) {
         row.type = static_cast<int>(integerIn(node, key, 0, std::numeric_limits<int>::max()));
     }},
    {"listed", readFigure<&Row::listed>},
    {"introduction",
     [](const Node &node, const char *key, Row &row) {
         row.introduction = webAddress(textIn(node, key));
     }},
    {"latest", readFigure<&Row::latest>},
    {"previousClose", readFigure<&Row::previousClose>},
    {"open", readFigure<&Row::open>},
    {"high", readFigure<&Row::high>},
    {"low", readFigure<&Row::low>},
    {"bid", readFigure<&Row::bid>},
    {"ask", readFigure<&Row::ask>},
    {"bidQuantity", readFigure<&Row::bidQuantity>},
    {"askQuantity", readFigure<&Row::askQuantity>},
    {"volume", readFigure<&Row::volume>},
    {"amount", readFigure<&Row::amount>},
};

ZvUBObject::Data readRow(const Node &object)
{
    ZvUBObject::Data row;
    for (const RowField &field : rowFields)
        field.read(member(object, field.key), field.key, row);
    return row;
}

void readRowChanges(const Node &object, ZvUBObject::Data &row)
{
    if (object.kind != Node::Object)
        refuse("no object in", "changes");
    for (const RowField &field : rowFields) {
        const Node *node = object.find(field.key);
        if (node)
            field.read(*node, field.key, row);
    }
}

std::optional<ZvUBObject> readComposite(const Node &data)
{
    if (data.kind == Node::Null)
        return std::nullopt;
    const ZvUBObject::Data row = readRow(data);
    if (!row.collectionId.startsWith(QLatin1Char('-')))
        refuse("a composite row needs a negative number", "id");
    return ZvUBObject(row);
}

ZvOfCollection<ZvUBProItem> readItem(const Node &data)
{
    ZvUBProItem::Data item;
    item.collectionId = collectionId(data, "id");
    item.open = figure(data, "open");
    item.high = figure(data, "high");
    item.low = figure(data, "low");
    item.volume = sum(data, "volume");
    item.amount = sum(data, "amount");
    item.listed = figure(data, "listed");
    item.outer = sum(data, "outer");
    item.inner = sum(data, "inner");
    item.buyQuantity = sum(data, "buyQuantity");
    item.sellQuantity = sum(data, "sellQuantity");
    return {item.collectionId, ZvUBProItem(item)};
}

ZvUBTopFive::Levels readLevels(const Node &data, const char *key)
{
    ZvUBTopFive::Levels levels;
    const std::vector<Node> &entries = array(data, key);
    if (entries.size() > levels.size())
        refuse("more than five levels", key);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::vector<Node> &pair = arrayIn(entries[i], key);
        if (pair.size() != 2)
            refuse("no pair of price and quantity", key);
        levels[i].price = figureIn(pair[0], key);
        levels[i].quantity = figureIn(pair[1], key);
    }
    return levels;
}

ZvOfCollection<ZvUBTopFive> readTrade(const Node &data)
{
    ZvUBTopFive::Data quote;
    quote.collectionId = collectionId(data, "id");
    quote.code = text(data, "code");
    quote.name = text(data, "name");
    quote.latest = figure(data, "latest");
    quote.previousClose = figure(data, "previousClose");
    quote.lowerLimit = figure(data, "lowerLimit");
    quote.upperLimit = figure(data, "upperLimit");
    quote.sells = readLevels(data, "sells");
    quote.buys = readLevels(data, "buys");
    return {quote.collectionId, ZvUBTopFive(quote)};
}

ZvUBDealItem::Data readDeal(const Node &object)
{
    ZvUBDealItem::Data deal;
    deal.sequence = integer(object, "sequence", 0, figureBound);
    deal.time = integer(object, "time", 0, figureBound);
    deal.price = integer(object, "price", 0, figureBound);
    deal.quantity = integer(object, "quantity", 0, figureBound);
    deal.direction = static_cast<int>(integer(object, "side", 1, 2));
    return deal;
}

struct Deals {
    QString collectionId;
    QList<ZvUBDealItem::Data> deals;
};

Deals readLatest(const Node &data)
{
    Deals latest;
    latest.collectionId = collectionId(data, "id");
    for (const Node &entry : array(data, "deals"))
        latest.deals.append(readDeal(entry));
    return latest;
}

ZvEnvelope readEnvelope(const Node &root)
{
    static const QStringList statuses{
        QStringLiteral("ok"),          QStringLiteral("refused"),  QStringLiteral("protocol"),
        QStringLiteral("bad-request"), QStringLiteral("session"),  QStringLiteral("elsewhere"),
        QStringLiteral("not-found"),   QStringLiteral("method"),   QStringLiteral("too-large"),
        QStringLiteral("busy"),        QStringLiteral("unserved"), QStringLiteral("failed")};

    ZvEnvelope envelope;
    envelope.status = text(root, "status");
    if (!statuses.contains(envelope.status))
        refuse("unknown word in", "status");
    const qint64 protocol = integer(root, "protocol", 0, std::numeric_limits<int>::max());
    if (protocol != 1 && envelope.status != QLatin1String("protocol"))
        refuse("another number in", "protocol");
    envelope.boot = text(root, "boot");
    envelope.time = integer(root, "time", 0, figureBound);
    if (const Node *node = root.find("version"))
        envelope.version = integerIn(*node, "version", 0, std::numeric_limits<qint64>::max());
    if (const Node *node = root.find("reason"))
        envelope.reason = textIn(*node, "reason");
    if (envelope.status != QLatin1String("ok"))
        envelope.message = text(root, "message");
    return envelope;
}

// Reads one entry of a poll: its data by `read`, or the word that stands for them.
template <typename Value, typename Read>
ZvTopic<Value> readTopic(const Node &topics, const char *key, Read read)
{
    const Node *entry = topics.find(key);
    if (!entry)
        return std::nullopt;
    ZvTopicPart<Value> part;
    part.version = version(*entry);
    if (const Node *data = entry->find("data"))
        part.data = read(*data);
    else if (entry->find("gap"))
        part.gap = boolean(*entry, "gap");
    else if (entry->find("unknown"))
        part.unknown = boolean(*entry, "unknown");
    else
        refuse("neither data nor gap in", key);
    return part;
}

template <typename Value>
ZvTopic<Value> whole(qint64 number, Value value)
{
    ZvTopicPart<Value> part;
    part.version = number;
    part.data = std::move(value);
    return part;
}

} // namespace

// What the decoder knows between two answers.
struct ZvDecoder::State {
    // The market in view as of `version`.
    int exchange = 0;
    QString server;
    QString boot;
    qint64 version = 0;
    ZvMarketList list;

    // By collection; colours the deals, which come without it.
    QHash<QString, qint64> previousClose;

    bool isOf(const ZvDecodeTask &task, const ZvEnvelope &envelope) const
    {
        return exchange == task.exchange && server == task.server && boot == envelope.boot
            && version > 0;
    }

    // Reading and keeping are two steps: what a refused answer said is not kept.
    struct Kept {
        std::optional<ZvMarketList> rows;
        qint64 version = 0;
        QHash<QString, qint64> previousClose;
    };

    qint64 referenceOf(const QString &id, const Kept &kept) const;
    ZvMarketList laidOver(const QList<ZvUBObject::Data> &rows, bool isSameServer) const;
    ZvTopic<ZvMarketList> snapshot(const Node &data, qint64 number, const ZvDecodeTask &task,
                                   const ZvEnvelope &envelope, Kept &kept) const;
    ZvTopic<ZvMarketList> changes(const Node &entry, const ZvDecodeTask &task,
                                  const ZvEnvelope &envelope, Kept &kept) const;
    ZvOfCollection<QList<ZvUBDealItem>> dealsOf(const Deals &deals, const Kept &kept) const;
    ZvDealPage pageOf(const Node &data, const Kept &kept) const;
    void readPoll(const Node &data, const ZvDecodeTask &task, ZvReply &reply, Kept &kept) const;
    void readOne(const Node &data, const ZvDecodeTask &task, ZvReply &reply, Kept &kept) const;
};

qint64 ZvDecoder::State::referenceOf(const QString &id, const Kept &kept) const
{
    if (kept.previousClose.contains(id))
        return kept.previousClose.value(id);
    return previousClose.value(id, zvub::noValue);
}

// Rows that are as they were keep their memory, so that the pages see at a glance what changed.
ZvMarketList ZvDecoder::State::laidOver(const QList<ZvUBObject::Data> &rows,
                                        bool isSameServer) const
{
    QList<ZvUBObject> items;
    items.reserve(rows.size());
    for (const ZvUBObject::Data &row : rows) {
        const int index = isSameServer ? list.indexOf.value(row.collectionId, -1) : -1;
        items.append(index < 0 ? ZvUBObject(row) : list.rows.at(index).updated(row));
    }
    return ZvMarketList(items);
}

ZvTopic<ZvMarketList> ZvDecoder::State::snapshot(const Node &data, qint64 number,
                                                 const ZvDecodeTask &task,
                                                 const ZvEnvelope &envelope, Kept &kept) const
{
    QList<ZvUBObject::Data> rows;
    QSet<QString> ids;
    for (const Node &entry : array(data, "rows")) {
        rows.append(readRow(entry));
        const QString &id = rows.last().collectionId;
        if (id.startsWith(QLatin1Char('-')) || ids.contains(id))
            refuse("negative or twice", "id");
        ids.insert(id);
        kept.previousClose.insert(id, rows.last().previousClose);
    }
    // A poll may have brought newer rows while this answer was under way.
    if (isOf(task, envelope) && number < version)
        return whole(version, list);
    kept.rows = laidOver(rows, server == task.server);
    kept.version = number;
    return whole(number, *kept.rows);
}

ZvTopic<ZvMarketList> ZvDecoder::State::changes(const Node &entry, const ZvDecodeTask &task,
                                                const ZvEnvelope &envelope, Kept &kept) const
{
    ZvTopicPart<ZvMarketList> part;
    part.version = zvread::version(entry);
    const qint64 base = integer(entry, "base", 0, std::numeric_limits<qint64>::max());
    const std::vector<Node> &entries = array(entry, "changes");

    const bool isKnown = isOf(task, envelope);
    if (isKnown && part.version <= version)
        return std::nullopt; // overtaken by a snapshot
    if (!isKnown || base != version) {
        part.gap = true;
        return part;
    }
    QList<ZvUBObject> rows = list.rows;
    for (const Node &change : entries) {
        const std::vector<Node> &pair = arrayIn(change, "changes");
        if (pair.size() != 2)
            refuse("no pair of index and fields in", "changes");
        const auto index
            = static_cast<int>(integerIn(pair[0], "changes", 0, std::max(0, rows.size() - 1)));
        if (rows.isEmpty())
            refuse("an index without rows in", "changes");
        ZvUBObject::Data data = rows.at(index).data();
        const QString id = data.collectionId;
        readRowChanges(pair[1], data);
        if (data.collectionId != id)
            refuse("a row became another one in", "changes");
        rows.replace(index, rows.at(index).updated(data));
        kept.previousClose.insert(id, data.previousClose);
    }
    kept.rows = list.withRows(rows);
    kept.version = part.version;
    part.data = kept.rows;
    return part;
}

ZvOfCollection<QList<ZvUBDealItem>> ZvDecoder::State::dealsOf(const Deals &deals,
                                                              const Kept &kept) const
{
    ZvOfCollection<QList<ZvUBDealItem>> result;
    result.collectionId = deals.collectionId;
    const qint64 reference = referenceOf(deals.collectionId, kept);
    for (ZvUBDealItem::Data deal : deals.deals) {
        deal.previousClose = reference;
        result.value.append(ZvUBDealItem(deal));
    }
    return result;
}

ZvDealPage ZvDecoder::State::pageOf(const Node &data, const Kept &kept) const
{
    const auto latest = dealsOf(readLatest(data), kept);
    const qint64 page = integer(data, "page", 1, std::numeric_limits<int>::max());
    return {latest.collectionId, static_cast<int>(page), latest.value};
}

void ZvDecoder::State::readPoll(const Node &data, const ZvDecodeTask &task, ZvReply &reply,
                                Kept &kept) const
{
    const Node &topics = member(data, "topics");
    if (topics.kind != Node::Object)
        refuse("no object in", "topics");

    using Pairs = QList<QPair<QString, QString>>;
    reply.market = readTopic<Pairs>(topics, "market", readServers);
    reply.message = readTopic<Pairs>(topics, "message", readMessages);
    reply.check = readTopic<ZvMarketCheck>(topics, "check", readCheck);
    reply.composite = readTopic<std::optional<ZvUBObject>>(topics, "composite", readComposite);
    reply.brief = readTopic<ZvUBBriefInfo>(topics, "brief", readBrief);
    reply.type = readTopic<QList<QPair<QString, int>>>(topics, "type", readTypes);
    if (const Node *entry = topics.find("list")) {
        if (const Node *rows = entry->find("data"))
            reply.list = snapshot(*rows, zvread::version(*entry), task, reply.envelope, kept);
        else if (entry->find("changes"))
            reply.list = changes(*entry, task, reply.envelope, kept);
        else
            reply.list = readTopic<ZvMarketList>(topics, "list",
                                                 [](const Node &) { return ZvMarketList(); });
    }
    reply.item = readTopic<ZvOfCollection<ZvUBProItem>>(topics, "item", [&kept](const Node &node) {
        kept.previousClose.insert(collectionId(node, "id"), figure(node, "previousClose"));
        return readItem(node);
    });
    reply.trade
        = readTopic<ZvOfCollection<ZvUBTopFive>>(topics, "trade", [&kept](const Node &node) {
              kept.previousClose.insert(collectionId(node, "id"), figure(node, "previousClose"));
              return readTrade(node);
          });
    reply.latest = readTopic<ZvOfCollection<QList<ZvUBDealItem>>>(
        topics, "latest",
        [this, &kept](const Node &node) { return dealsOf(readLatest(node), kept); });
    reply.cap = readTopic<ZvUBCapInfo>(topics, "cap", zvread::cap);
}

void ZvDecoder::State::readOne(const Node &data, const ZvDecodeTask &task, ZvReply &reply,
                               Kept &kept) const
{
    const qint64 number = reply.envelope.version;
    switch (task.shape) {
    case ZvDecodeTask::Envelope:
    case ZvDecodeTask::Action:
    case ZvDecodeTask::SignIn:
    case ZvDecodeTask::Poll:
        break;
    case ZvDecodeTask::Market:
        reply.market = whole(number, readServers(data));
        break;
    case ZvDecodeTask::Message:
        reply.message = whole(number, readMessages(data));
        break;
    case ZvDecodeTask::Check:
        reply.check = whole(number, readCheck(data));
        break;
    case ZvDecodeTask::Composite:
        reply.composite = whole(number, readComposite(data));
        break;
    case ZvDecodeTask::Brief:
        reply.brief = whole(number, readBrief(data));
        break;
    case ZvDecodeTask::Type:
        reply.type = whole(number, readTypes(data));
        break;
    case ZvDecodeTask::List:
        reply.list = snapshot(data, number, task, reply.envelope, kept);
        break;
    case ZvDecodeTask::Item:
        reply.item = whole(number, readItem(data));
        break;
    case ZvDecodeTask::Trade:
        reply.trade = whole(number, readTrade(data));
        break;
    case ZvDecodeTask::Latest:
        reply.latest = whole(number, dealsOf(readLatest(data), kept));
        break;
    case ZvDecodeTask::Account:
        reply.account = zvread::account(data);
        break;
    case ZvDecodeTask::Cap:
        if (number == 0) // nothing that a poll could go on from
            refuse("missing or 0", "version");
        reply.cap = whole(number, zvread::cap(data));
        break;
    case ZvDecodeTask::Gather:
        reply.gather = zvread::gather(data);
        break;
    case ZvDecodeTask::Favourites:
        reply.favourites = collectionIds(member(data, "collections"), "collections");
        break;
    case ZvDecodeTask::TimeLine:
        reply.timeLine = zvread::timeLine(data);
        break;
    case ZvDecodeTask::KLine:
        reply.kLine = zvread::kLine(data);
        break;
    case ZvDecodeTask::Detail:
        reply.detail = pageOf(data, kept);
        break;
    case ZvDecodeTask::BankCard:
        reply.bankCard = zvread::bankCard(data);
        break;
    case ZvDecodeTask::MoneyAddresses:
        reply.moneyAddresses = zvread::moneyAddresses(data);
        break;
    case ZvDecodeTask::OpenApplications:
        reply.applications = zvread::openApplications(data);
        break;
    case ZvDecodeTask::Applications:
        reply.applications = zvread::applications(data);
        break;
    case ZvDecodeTask::MoneyFlows:
        reply.moneyFlows = zvread::moneyFlows(data);
        break;
    case ZvDecodeTask::OpenOrders:
        reply.openOrders = zvread::openOrders(data);
        break;
    case ZvDecodeTask::Orders:
        reply.orders = zvread::orders(data);
        break;
    case ZvDecodeTask::DealRecords:
        reply.dealRecords = zvread::dealRecords(data);
        break;
    case ZvDecodeTask::Deliveries:
        reply.deliveries = zvread::deliveries(data);
        break;
    }
}

namespace {

// The answer of an action: texts and whole numbers by name.
void readAction(const Node &data, ZvReply &reply)
{
    if (data.kind != Node::Object)
        refuse("no object in", "data");
    for (const Node &entry : data.items) {
        const QString key = QString::fromStdString(entry.key);
        if (entry.kind == Node::Text) {
            reply.texts.insert(key, entry.text);
        } else if (entry.kind == Node::Integer) {
            reply.texts.insert(key, QString::number(entry.integer));
        }
    }
}

// A sign-in that cannot be used is an answer all the same: to ask the exchange again what it said
// would help nobody.
void readSignIn(const Node &data, ZvReply &reply)
{
    ZvSignIn signIn;
    try {
        signIn.token = token(data, "token");
        if (const Node *node = data.find("account"))
            signIn.account = account(*node);
    } catch (const ZvRefusal &refusal) {
        signIn = ZvSignIn();
        signIn.flaw = refusal.reason;
    }
    reply.signIn = signIn;
}

} // namespace

ZvDecoder::ZvDecoder() : m_state(std::make_unique<State>()) { }

ZvDecoder::~ZvDecoder() = default;

bool ZvDecoder::decode(const QByteArray &body, const ZvDecodeTask &task, ZvReply &reply,
                       QString &error)
{
    if (body.size() > bodyBound) {
        error = QStringLiteral("longer than %1 bytes").arg(bodyBound);
        return false;
    }
    Node root;
    if (!Node::parse(body, depthBound, root, error))
        return false;
    try {
        ZvReply read;
        State::Kept kept;
        read.envelope = readEnvelope(root);
        if (read.envelope.status == QLatin1String("ok")) {
            if (task.shape == ZvDecodeTask::Poll)
                m_state->readPoll(member(root, "data"), task, read, kept);
            else if (task.shape == ZvDecodeTask::Action)
                readAction(member(root, "data"), read);
            else if (task.shape == ZvDecodeTask::SignIn)
                readSignIn(member(root, "data"), read);
            else if (task.shape != ZvDecodeTask::Envelope)
                m_state->readOne(member(root, "data"), task, read, kept);
        }
        if (kept.rows) {
            m_state->exchange = task.exchange;
            m_state->server = task.server;
            m_state->boot = read.envelope.boot;
            m_state->version = kept.version;
            m_state->list = *kept.rows;
        }
        for (auto it = kept.previousClose.cbegin(); it != kept.previousClose.cend(); ++it)
            m_state->previousClose.insert(it.key(), it.value());
        reply = std::move(read);
        return true;
    } catch (const ZvRefusal &refusal) {
        error = refusal.reason;
        return false;
    }
}
