#pragma once

#include "ZvModelKit/zvubcapitem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// The account's holdings, a row a collection.
class DealWidget_BuySell_CapTableModel : public ItemTableModel<ZvUBCapItem>
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_CapTableModel(QObject *parent = nullptr);
    ~DealWidget_BuySell_CapTableModel() override;

    // Shows these holdings in place of all others.
    void setItemList(const QList<ZvUBCapItem> &list);

    // The collection of a row; empty where there is no such row.
    QString collectionId(int row) const;

protected:
    const QList<ZvUBCapItem> &items() const override { return m_itemList; }
    QString text(const ZvUBCapItem &item, int column) const override;
    QColor foreground(const ZvUBCapItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;

private:
    QList<ZvUBCapItem> m_itemList;
};
