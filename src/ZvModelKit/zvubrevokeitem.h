#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubshared.h"

#include <QString>
#include <QStringList>

// An open order that can be taken back, with the user's tick. Column 0 is the tick and has no text;
// columns 1, 10 and 13 are for machines and hidden; the last header is empty.
class ZVMODELKIT_EXPORT ZvUBRevokeItem
{
public:
    using Data = ZvUBEntrustItem::Data;

    ZvUBRevokeItem();
    explicit ZvUBRevokeItem(const Data &data);

    const Data &data() const { return m_row->data; }

    // Equal orders with equal ticks.
    bool operator==(const ZvUBRevokeItem &other) const
    {
        return m_checked == other.m_checked
            && (m_row.isSameAs(other.m_row) || data() == other.data());
    }
    bool operator!=(const ZvUBRevokeItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const { return m_row->text(column); }

    // The number of the order, which a withdrawal names; not the collection's, whatever it is
    // called.
    int getCollectionID() const { return data().orderNumber; }

    // 1 for a buy, 2 for a sale.
    int getTypeID() const { return data().direction; }

    bool getUserChecked() const { return m_checked; }
    void setUserChecked(bool checked) { m_checked = checked; }

private:
    using Row = ZvUBRow<Data, 17>;
    ZvUBShared<Row> m_row;
    bool m_checked = false;
};

Q_DECLARE_TYPEINFO(ZvUBRevokeItem, Q_MOVABLE_TYPE);
