#pragma once

#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvWidgetKit/tickedtablemodel.h"

// One page of the orders that can be taken back, with their ticks. The ids are what a withdrawal
// names, in the order of the rows.
class DealWidget_Revoke_tableModel : public TickedTableModel<ZvUBRevokeItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Revoke_tableModel(QObject *parent = nullptr);
    ~DealWidget_Revoke_tableModel() override;

    // Shows these orders in place of all others; the ticks of those are forgotten.
    void setItemList(const QList<ZvUBRevokeItem> &list);

    void selectAll();
    void deselectAll();

    QList<int> checkedIDs() const;
    QList<int> allIDs() const;
    QList<int> sellIDs() const;
    QList<int> buyIDs() const;
    QList<int> lastID() const; // of the newest order, the top row; of an empty table none

    // Takes the orders with these ids out of the table.
    void removeIDs(const QList<int> &ids);

protected:
    const QList<ZvUBRevokeItem> &items() const override { return m_itemList; }
    QString text(const ZvUBRevokeItem &item, int column) const override;
    QColor foreground(const ZvUBRevokeItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
    QVariant headerText(int section) const override;
    bool isTicked(const ZvUBRevokeItem &item) const override;
    void setTicked(int row, bool ticked) override;

private:
    QList<ZvUBRevokeItem> m_itemList;
};
