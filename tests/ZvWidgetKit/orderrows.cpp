#include "orderrows.h"

#include <QAbstractItemModel>
#include <QStringList>

#include <limits>

namespace zvtest {
namespace {

const QString longName = QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版");

} // namespace

ZvUBRevokeItem openOrder(int number)
{
    ZvUBRevokeItem::Data data;
    data.orderNumber = number;
    data.direction = number % 2 == 1 ? zvub::Buy : zvub::Sell;
    data.collectionId = QStringLiteral("1001");
    data.code = QStringLiteral("600137");
    data.name = QStringLiteral("庚申猴票");
    data.key = QStringLiteral("key-%1").arg(number);
    data.price = 1000 + number;
    data.quantity = 10;
    data.filled = 3;
    data.amount = 3 * data.price;
    data.frozen = 7 * data.price;
    data.state = ZvUBEntrustItem::PartlyFilled;
    data.time = 1577840400000;
    return ZvUBRevokeItem(data);
}

QList<ZvUBRevokeItem> openOrders(const QList<int> &numbers)
{
    QList<ZvUBRevokeItem> orders;
    for (const int number : numbers)
        orders << openOrder(number);
    return orders;
}

ZvUBDeliveryRecordItem::Data deliveryData(int number)
{
    ZvUBDeliveryRecordItem::Data data;
    data.deliveryId = QStringLiteral("d%1").arg(number);
    data.orderNumber = QStringLiteral("T%1").arg(number);
    data.collectionId = QStringLiteral("1001");
    data.code = QStringLiteral("600137");
    data.name = QStringLiteral("藏品%1").arg(number);
    data.quantity = number;
    data.fee = 1200;
    data.time = 1577840400000;
    data.consignee = QStringLiteral("张三");
    data.phone = QStringLiteral("13912345678");
    data.address = QStringLiteral("杭州市西湖区一号");
    data.state = ZvUBDeliveryRecordItem::Reviewing;
    return data;
}

QList<ZvUBDeliveryRecordItem> deliveries(const QList<int> &numbers)
{
    QList<ZvUBDeliveryRecordItem> records;
    for (const int number : numbers)
        records << ZvUBDeliveryRecordItem(deliveryData(number));
    return records;
}

ZvUBRevokeItem longestOpenOrder(int number, bool isTicked)
{
    ZvUBRevokeItem::Data data = openOrder(number).data();
    data.orderNumber = std::numeric_limits<int>::max() - number;
    data.code = QStringLiteral("88888888");
    data.name = longName;
    data.price = 13107199;
    data.quantity = std::numeric_limits<int>::max();
    data.filled = 1234567890;
    data.amount = 899999999999999999;
    data.frozen = 899999999999999999;
    ZvUBRevokeItem item(data);
    item.setUserChecked(isTicked);
    return item;
}

ZvUBDeliveryRecordItem longestDelivery(int number, int state)
{
    ZvUBDeliveryRecordItem::Data data = deliveryData(number);
    data.orderNumber = QStringLiteral("T2020010199999999%1").arg(number);
    data.code = QStringLiteral("88888888");
    data.name = longName;
    data.quantity = std::numeric_limits<int>::max();
    data.fee = 899999999999999999;
    data.address = QStringLiteral("内蒙古自治区呼伦贝尔市鄂伦春自治旗大杨树镇向阳路一百二十八号");
    data.consignee = QStringLiteral("阿卜杜热西提·买买提");
    data.phone = QStringLiteral("008613912345678");
    data.state = state;
    return ZvUBDeliveryRecordItem(data);
}

QString columnOf(const QAbstractItemModel *model, int column)
{
    QStringList texts;
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->index(row, column).data().toString();
    return texts.join(QLatin1Char(' '));
}

QString tickedRows(const QAbstractItemModel *model)
{
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, 0).data(Qt::CheckStateRole) == Qt::Checked)
            rows << QString::number(row);
    }
    return rows.join(QLatin1Char(' '));
}

} // namespace zvtest
