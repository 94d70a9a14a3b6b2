#pragma once

#include "ZvModelKit/zvubgatheritem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// The account's deals of the day, summed, a row a collection.
class DealWidget_BuySell_DealTableModel : public ItemTableModel<ZvUBGatherItem>
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_DealTableModel(QObject *parent = nullptr);
    ~DealWidget_BuySell_DealTableModel() override;

    // Shows these sums in place of all others.
    void setItemList(const QList<ZvUBGatherItem> &list);

    // The collection of a row; empty where there is no such row.
    QString collectionId(int row) const;

protected:
    const QList<ZvUBGatherItem> &items() const override { return m_itemList; }
    QString text(const ZvUBGatherItem &item, int column) const override;
    QColor foreground(const ZvUBGatherItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;

private:
    QList<ZvUBGatherItem> m_itemList;
};
