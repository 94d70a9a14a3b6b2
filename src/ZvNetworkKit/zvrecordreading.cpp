#include "ZvNetworkKit/zvrecordreading.h"

#include "ZvNetworkKit/zvjsonreading.h"

#include <QRegularExpression>

namespace zvread {

using Node = ZvJsonNode;

namespace {

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

int state(const Node &object, int last)
{
    return static_cast<int>(integer(object, "state", 0, last));
}

} // namespace

QList<ZvUBApplyItem> openApplications(const Node &data)
{
    QList<ZvUBApplyItem> read;
    for (const Node &entry : array(data, "collections")) {
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
    for (const Node &entry : array(data, "applications")) {
        ZvUBApplyItem::Data item;
        item.number = amount(entry, "number");
        item.time = amount(entry, "time");
        item.code = text(entry, "code");
        item.name = text(entry, "name");
        item.price = amount(entry, "price");
        item.quantity = amount(entry, "quantity");
        item.allotted = figure(entry, "granted");
        item.state = state(entry, ZvUBApplyItem::Withdrawn);
        read.append(ZvUBApplyItem(item));
    }
    return read;
}

QList<ZvUBMoneyFlowItem> moneyFlows(const Node &data)
{
    QList<ZvUBMoneyFlowItem> read;
    for (const Node &entry : array(data, "flows")) {
        ZvUBMoneyFlowItem::Data item;
        item.number = amount(entry, "number");
        item.time = amount(entry, "time");
        item.moneyIn = boolean(entry, "in") ? 1 : 0;
        item.amount = amount(entry, "amount");
        item.state = state(entry, ZvUBMoneyFlowItem::Failed);
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
