#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QList>
#include <QStringList>

#include <utility>

// A table of items that know their own texts, a row an item. What a cell or a header answers to
// which role stands here; a member says what its texts, colours and alignments are. It has no
// meta-object of its own, so that each member stands directly below QAbstractTableModel there.
//
// The counts do not look at the parent: the table has one level, and its users ask for no other.
template <typename Item>
class ItemTableModel : public QAbstractTableModel
{
public:
    int rowCount(const QModelIndex & = QModelIndex()) const override { return items().size(); }
    int columnCount(const QModelIndex & = QModelIndex()) const override { return m_columnCount; }

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override
    {
        // An index may be older than the list.
        if (!index.isValid() || index.row() >= items().size())
            return {};
        const Item &item = items().at(index.row());
        switch (role) {
        case Qt::DisplayRole:
            return text(item, index.column());
        case Qt::ForegroundRole:
            return foreground(item, index.column());
        case Qt::TextAlignmentRole:
            return int(alignment(index.column()));
        default:
            return {};
        }
    }

    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override
    {
        if (orientation == Qt::Vertical || section < 0)
            return {};
        switch (role) {
        case Qt::DisplayRole:
            return headerText(section);
        case Qt::TextAlignmentRole:
            return int(headerAlignment(section));
        case Qt::BackgroundRole:
            return QColor(Qt::black);
        case Qt::ForegroundRole:
            return QColor(Qt::white);
        default:
            return {};
        }
    }

protected:
    // One column for each header.
    ItemTableModel(QStringList headerList, QObject *parent)
        : QAbstractTableModel(parent), m_headerList(std::move(headerList)),
          m_columnCount(m_headerList.size())
    {
    }

    ItemTableModel(QStringList headerList, int columnCount, QObject *parent)
        : QAbstractTableModel(parent), m_headerList(std::move(headerList)),
          m_columnCount(columnCount)
    {
    }

    // The rows, and what stands in the cell of an item.
    virtual const QList<Item> &items() const = 0;
    virtual QString text(const Item &item, int column) const = 0;
    virtual QColor foreground(const Item &item, int column) const = 0;
    virtual Qt::Alignment alignment(int column) const = 0;

    // The header of a section; of one beyond the list it is invalid.
    virtual QVariant headerText(int section) const
    {
        return section < m_headerList.size() ? QVariant(m_headerList.at(section)) : QVariant();
    }
    virtual Qt::Alignment headerAlignment(int section) const { return alignment(section); }

    // Puts `list` in place of the rows, by a reset. Where both share their data already, the
    // assignment does nothing by itself; the views are told in any case.
    void replaceItems(QList<Item> &items, const QList<Item> &list)
    {
        beginResetModel();
        items = list;
        endResetModel();
    }

    // Text columns stand in the middle, figures end at the right.
    static constexpr Qt::Alignment centred() { return Qt::AlignCenter; }
    static constexpr Qt::Alignment right() { return Qt::AlignRight | Qt::AlignVCenter; }

    // Red above zero, green below it, white at it.
    static QColor profitColour(double profit)
    {
        return profit > 0 ? Qt::red : profit < 0 ? Qt::green : Qt::white;
    }

    const QStringList m_headerList;
    const int m_columnCount;
};

// A table of records, replaced page by page.
template <typename Item>
class RecordTableModel : public ItemTableModel<Item>
{
public:
    // Shows these records in place of all others.
    void setRecordList(const QList<Item> &list) { this->replaceItems(m_recordList, list); }

protected:
    using ItemTableModel<Item>::ItemTableModel;

    const QList<Item> &items() const final { return m_recordList; }

    QList<Item> m_recordList;
};
