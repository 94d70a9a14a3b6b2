#pragma once

#include "ZvModelKit/zvubtradeitem.h"
#include "ZvWidgetKit/tickedtablemodel.h"

// Orders that are written down and not sent, the newest on top. They live here and nowhere else.
class DealWidget_PrePay_TableModel : public TickedTableModel<ZvUBTradeItem *>
{
    Q_OBJECT

public:
    explicit DealWidget_PrePay_TableModel(QObject *parent = nullptr);
    ~DealWidget_PrePay_TableModel() override;

    // Puts a copy of an order on top.
    void addTradeItem(const ZvUBTradeItem &item);

    // A copy of the order of a row, which must be there; its key is that of the order.
    ZvUBTradeItem itemAt(int row) const;

    // The rows with a tick, the last one first: who removes them one by one finds the others in
    // their places.
    QList<int> checkedRows() const;

    void removeCheckedRows();

    // Removes the first order of this key; without one it does nothing.
    void removeByMd5(QString md5);

    // Marks the first order of this key as refused, with the words of the exchange; its row and its
    // tick stay. Without such an order it does nothing.
    void markFailed(QString md5, QString msg);

public slots:
    void selectAll();
    void deselectAll();

protected:
    const QList<ZvUBTradeItem *> &items() const override { return m_itemList; }
    QString text(ZvUBTradeItem *const &item, int column) const override;
    QColor foreground(ZvUBTradeItem *const &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
    bool isTicked(ZvUBTradeItem *const &item) const override;
    void setTicked(int row, bool ticked) override;

private:
    int rowOf(const QString &md5) const;
    void insertItem(int row, const ZvUBTradeItem &item);
    void removeItem(int row);

    QList<ZvUBTradeItem *> m_itemList; // owned
};
