#pragma once

#include "ZvWidgetKit/itemtablemodel.h"

// A table whose rows have a tick in column 0. Users set ticks one by one, the page all at once.
// They are no part of what the exchange says, so they change by themselves, as a check state and
// nothing else. It has no meta-object of its own, as its base class.
template <typename Item>
class TickedTableModel : public ItemTableModel<Item>
{
public:
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override
    {
        if (role != Qt::CheckStateRole)
            return ItemTableModel<Item>::data(index, role);
        if (!hasTick(index))
            return {};
        return isTicked(this->items().at(index.row())) ? Qt::Checked : Qt::Unchecked;
    }

    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        if (!index.isValid())
            return Qt::NoItemFlags;
        const Qt::ItemFlags plain = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        return index.column() == TickColumn ? plain | Qt::ItemIsUserCheckable : plain;
    }

    // Takes Qt::CheckStateRole alone: Qt::Checked ticks the row, every other value clears it.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override
    {
        if (role != Qt::CheckStateRole || !hasTick(index))
            return false;
        tick(index.row(), value.toInt() == Qt::Checked);
        return true;
    }

protected:
    using ItemTableModel<Item>::ItemTableModel;

    virtual bool isTicked(const Item &item) const = 0;
    virtual void setTicked(int row, bool ticked) = 0;

    void tickAll(bool ticked)
    {
        for (int row = 0; row < this->rowCount(); ++row)
            tick(row, ticked);
    }

private:
    static constexpr int TickColumn = 0;

    bool hasTick(const QModelIndex &index) const
    {
        return index.isValid() && index.column() == TickColumn && index.row() < this->rowCount();
    }

    void tick(int row, bool ticked)
    {
        setTicked(row, ticked);
        const QModelIndex changed = this->index(row, TickColumn);
        emit this->dataChanged(changed, changed, {Qt::CheckStateRole});
    }
};
