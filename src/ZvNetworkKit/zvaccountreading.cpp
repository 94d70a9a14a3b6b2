#include "ZvNetworkKit/zvaccountreading.h"

#include "ZvNetworkKit/zvjsonreading.h"

#include <QRegularExpression>
#include <QSet>

namespace zvread {

using Node = ZvJsonNode;

namespace {

constexpr qint64 wholeRate = 1000000; // parts per million

// Ids of one list: an account has one entry for each collection.
class EachOnce
{
public:
    QString take(const Node &node, const char *key)
    {
        const QString id = collectionIdIn(node, key);
        if (id.startsWith(QLatin1Char('-')) || m_ids.contains(id))
            refuse("negative or twice", key);
        m_ids.insert(id);
        return id;
    }

private:
    QSet<QString> m_ids;
};

ZvUBCapItem holding(const Node &object, EachOnce &ids)
{
    ZvUBCapItem::Data item;
    item.collectionId = ids.take(member(object, "collection"), "collection");
    item.code = text(object, "code");
    item.name = text(object, "name");
    item.quantity = amount(object, "quantity");
    item.sellable = integer(object, "sellable", 0, item.quantity);
    item.cost = amount(object, "cost");
    item.latest = figure(object, "latest");
    return ZvUBCapItem(item);
}

ZvUBGatherItem gatherItem(const Node &object, EachOnce &ids)
{
    ZvUBGatherItem::Data item;
    item.collectionId = ids.take(member(object, "collection"), "collection");
    item.code = text(object, "code");
    item.name = text(object, "name");
    item.buyQuantity = amount(object, "buyQuantity");
    item.buyAmount = amount(object, "buyAmount");
    item.buyFee = amount(object, "buyFee");
    item.sellQuantity = amount(object, "sellQuantity");
    item.sellAmount = amount(object, "sellAmount");
    item.sellFee = amount(object, "sellFee");
    item.sellProfit = balance(object, "sellProfit");
    return ZvUBGatherItem(item);
}

} // namespace

ZvUBMyAcount account(const Node &data)
{
    ZvUBMyAcount::Data read;
    read.accountNumber = text(data, "account");
    if (read.accountNumber.isEmpty())
        refuse("empty", "account");
    read.phone = text(data, "phone");
    read.name = text(data, "name");
    read.poundage = integer(data, "poundage", 0, wholeRate);
    EachOnce ids;
    for (const Node &entry : array(data, "poundageOf")) {
        const std::vector<Node> &pair = arrayIn(entry, "poundageOf");
        if (pair.size() != 2)
            refuse("no pair of collection and rate", "poundageOf");
        const QString id = ids.take(pair[0], "poundageOf");
        read.poundageOf.insert(id, integerIn(pair[1], "poundageOf", 0, wholeRate));
    }
    return ZvUBMyAcount(read);
}

ZvUBCapInfo cap(const Node &data)
{
    ZvUBCapInfo::Data read;
    read.heldMarketValue = amount(data, "heldMarketValue");
    read.profit = balance(data, "profit");
    read.availableMoney = amount(data, "available");
    read.frozenMoney = amount(data, "frozen");
    read.totalAssets = amount(data, "total");
    EachOnce ids;
    for (const Node &entry : array(data, "items"))
        read.items.append(holding(entry, ids));
    return ZvUBCapInfo(read);
}

ZvUBGatherInfo gather(const Node &data)
{
    QList<ZvUBGatherItem> items;
    EachOnce ids;
    for (const Node &entry : array(data, "items"))
        items.append(gatherItem(entry, ids));
    return ZvUBGatherInfo(ZvUBGatherInfo::sumOf(items));
}

QString token(const Node &object, const char *key)
{
    static const QRegularExpression form(QStringLiteral("\\A[A-Za-z0-9._~+/=-]{1,512}\\z"));
    const QString read = text(object, key);
    if (!form.match(read).hasMatch())
        refuse("not fit for a header", key);
    return read;
}

QStringList collectionIds(const Node &node, const char *key)
{
    QStringList read;
    EachOnce ids;
    for (const Node &entry : arrayIn(node, key))
        read.append(ids.take(entry, key));
    return read;
}

} // namespace zvread
