#include "ZvNetworkKit/zvrecordreading.h"

#include "ZvNetworkKit/zvjsonreading.h"

#include <QRegularExpression>
#include <QSet>

#include <limits>

namespace zvread {

using Node = ZvJsonNode;

namespace {

// The rows of a page; the exchange gives no longer one.
const std::vector<Node> &page(const Node &data, const char *key)
{
    constexpr std::size_t longest = 200;
    const std::vector<Node> &rows = array(data, key);
    if (rows.size() > longest)
        refuse("more rows than a page has", key);
    return rows;
}

// What a code may hold that goes into an address as it stands.
QString urlSafeText(const Node &object, const char *key)
{
    static const QRegularExpression form(QStringLiteral("\\A[A-Za-z0-9_-]{1,256}\\z"));
    const QString read = text(object, key);
    if (!form.match(read).hasMatch())
        refuse("not fit for an address", key);
    return read;
}

QString dueWebAddress(const Node &object, const char *key)
{
    const QString read = text(object, key);
    if (webAddress(read).isEmpty())
        refuse("no web address", key);
    return read;
}

int state(const Node &object, int first, int last)
{
    return static_cast<int>(integer(object, "state", first, last));
}

int direction(const Node &object)
{
    return static_cast<int>(integer(object, "side", zvub::Buy, zvub::Sell));
}

// Of one collection, and so not that of a composite row.
QString tradedCollection(const Node &object)
{
    const QString id = collectionId(object, "collection");
    if (id.startsWith(QLatin1Char('-')))
        refuse("negative", "collection");
    return id;
}

ZvUBEntrustItem::Data order(const Node &object)
{
    using Item = ZvUBEntrustItem;
    Item::Data item;
    item.orderNumber
        = static_cast<int>(integer(object, "order", 1, std::numeric_limits<int>::max()));
    item.time = amount(object, "time");
    item.collectionId = tradedCollection(object);
    item.code = text(object, "code");
    item.name = text(object, "name");
    item.direction = direction(object);
    item.price = amount(object, "price");
    item.quantity = amount(object, "quantity");
    item.filled = integer(object, "filled", 0, item.quantity);
    // The row works its average price out of it; the exchange's own is to the nearest fen.
    item.amount = amount(object, "amount");
    if ((item.amount > 0) != (item.filled > 0))
        refuse("not what was dealt", "amount");
    item.fee = amount(object, "fee");
    item.frozen = amount(object, "frozen");
    item.state = state(object, Item::Open, Item::Refused);
    if (item.state == Item::Withdrawn || item.state == Item::PartlyWithdrawn)
        item.withdrawn = item.quantity - item.filled;
    // Without one where no action placed it.
    const Node &key = member(object, "key");
    item.key = key.kind == Node::Null ? QString() : textIn(key, "key");
    return item;
}

// A page of orders as rows of a kind. None stands there twice: a withdrawal names each once.
template <typename Item>
QList<Item> orderPage(const Node &data)
{
    QList<Item> read;
    QSet<int> numbers;
    for (const Node &entry : page(data, "orders")) {
        const ZvUBEntrustItem::Data item = order(entry);
        if (numbers.contains(item.orderNumber))
            refuse("twice", "order");
        numbers.insert(item.orderNumber);
        read.append(Item(item));
    }
    return read;
}

} // namespace

QList<ZvUBRevokeItem> openOrders(const Node &data)
{
    return orderPage<ZvUBRevokeItem>(data);
}

QList<ZvUBEntrustItem> orders(const Node &data)
{
    return orderPage<ZvUBEntrustItem>(data);
}

QList<ZvUBDealRecordItem> dealRecords(const Node &data)
{
    QList<ZvUBDealRecordItem> read;
    for (const Node &entry : page(data, "deals")) {
        ZvUBDealRecordItem::Data item;
        item.number = amount(entry, "sequence");
        item.time = amount(entry, "time");
        item.direction = direction(entry);
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        item.price = amount(entry, "price");
        item.quantity = amount(entry, "quantity");
        item.fee = amount(entry, "fee");
        // The row works it out of price and quantity.
        if (amount(entry, "amount") != zvub::product(item.price, item.quantity))
            refuse("not price times quantity", "amount");
        read.append(ZvUBDealRecordItem(item));
    }
    return read;
}

QList<ZvUBDeliveryRecordItem> deliveries(const Node &data)
{
    using Item = ZvUBDeliveryRecordItem;
    QList<Item> read;
    for (const Node &entry : page(data, "takes")) {
        Item::Data item;
        item.deliveryId = urlSafeText(entry, "id");
        item.orderNumber = text(entry, "number");
        item.time = amount(entry, "time");
        item.collectionId = tradedCollection(entry);
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        item.quantity = amount(entry, "quantity");
        item.state = state(entry, Item::Cancelled, Item::Refused);
        item.consignee = text(entry, "person");
        item.phone = text(entry, "phone");
        item.address = text(entry, "address");
        read.append(Item(item));
    }
    return read;
}

QList<ZvUBApplyItem> openApplications(const Node &data)
{
    QList<ZvUBApplyItem> read;
    for (const Node &entry : page(data, "collections")) {
        ZvUBApplyItem::Data item;
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        item.price = amount(entry, "price");
        item.quantity = amount(entry, "quantity");
        read.append(ZvUBApplyItem(item));
    }
    return read;
}

QList<ZvUBApplyItem> applications(const Node &data)
{
    QList<ZvUBApplyItem> read;
    for (const Node &entry : page(data, "applications")) {
        ZvUBApplyItem::Data item;
        item.number = amount(entry, "number");
        item.time = amount(entry, "time");
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        item.price = amount(entry, "price");
        item.quantity = amount(entry, "quantity");
        item.allotted = figure(entry, "granted");
        item.state = state(entry, ZvUBApplyItem::Pending, ZvUBApplyItem::Withdrawn);
        read.append(ZvUBApplyItem(item));
    }
    return read;
}

QList<ZvUBMoneyFlowItem> moneyFlows(const Node &data)
{
    QList<ZvUBMoneyFlowItem> read;
    for (const Node &entry : page(data, "flows")) {
        ZvUBMoneyFlowItem::Data item;
        item.number = amount(entry, "number");
        item.time = amount(entry, "time");
        item.moneyIn = boolean(entry, "in") ? 1 : 0;
        item.amount = amount(entry, "amount");
        item.state = state(entry, ZvUBMoneyFlowItem::Pending, ZvUBMoneyFlowItem::Failed);
        read.append(ZvUBMoneyFlowItem(item));
    }
    return read;
}

ZvBankCard bankCard(const Node &data)
{
    ZvBankCard read;
    read.isBound = boolean(data, "bound");
    if (read.isBound) {
        read.picturePrefix = dueWebAddress(data, "picturePrefix");
        read.pictureName = text(data, "pictureName");
        read.pictureSuffix = text(data, "pictureSuffix");
        read.tail = text(data, "tail");
    } else {
        read.code = urlSafeText(data, "code");
    }
    return read;
}

ZvMoneyAddresses moneyAddresses(const Node &data)
{
    return {dueWebAddress(data, "in"), dueWebAddress(data, "out")};
}

} // namespace zvread
