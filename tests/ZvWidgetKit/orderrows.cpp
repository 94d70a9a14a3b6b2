#include "orderrows.h"

#include <QAbstractItemModel>
#include <QStringList>

namespace zvtest {

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
