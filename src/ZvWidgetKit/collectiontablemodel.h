#pragma once

#include "ZvModelKit/zvubobject.h"

#include <QAbstractTableModel>
#include <QBitArray>
#include <QImage>
#include <QList>
#include <QModelIndex>
#include <QStringList>

#include <functional>

// The model of the market table: a row is a collection. A number that changes flashes for a second.
class CollectionTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using Emission = std::function<void()>;
    using EmissionWrapper
        = std::function<void(const QList<QModelIndex> &changed, const Emission &emission)>;

    explicit CollectionTableModel(QObject *parent = nullptr);
    ~CollectionTableModel() override;

    // Neither looks at the parent: the table has one level, and its users ask for no other.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Takes the rows of a poll. Another number of rows resets the model. Otherwise the numbers are
    // compared cell by cell, whatever collection a row holds: where none differs and none flashes,
    // the rows stay as they are and nothing is emitted; else the list replaces the rows and every
    // flashing cell is announced.
    void setMarketList(QList<ZvUBObject> newList);

    // Calls `wrapper` in place of each announcement of changed cells, after the rows are replaced.
    // It gets the cells and the announcement as a function, and has to call that once. Who sorts
    // the rows needs it: by then all of them are new, and to be told cell by cell is too late to
    // keep an order.
    void setEmissionWrapper(EmissionWrapper wrapper);

    // The id of the collection in the row of `index`; empty for an invalid index.
    QString collectionId(const QModelIndex &index) const;

    // The address of the collection's introduction, empty when it has none or `index` is invalid.
    QString introductionUrl(const QModelIndex &index) const;

    // The collection in a row from 0 up to the row count.
    const ZvUBObject &item(int row) const { return m_items.at(row); }

    // The number of a cell of this model, as its edit role gives it, without the QVariant.
    float number(const QModelIndex &index) const
    {
        return m_items.at(index.row()).editDataForModelUse(index.column());
    }

private:
    void collectChanges(const QList<ZvUBObject> &newList);
    void announceChanges();
    void endFlash();
    bool isFlashing(const QModelIndex &index) const;
    QVariant foreground(const ZvUBObject &item, int column) const;
    QVariant triangle(const ZvUBObject &item, int column) const;
    QString text(const QModelIndex &index, int column) const;

    QList<ZvUBObject> m_items;
    QStringList m_headers;
    QImage m_imageUp;
    QImage m_imageDown;
    QList<QModelIndex> m_flashIndexes;
    QBitArray m_flashMap; // the cells of m_flashIndexes, row by row; empty when none flashes
    EmissionWrapper m_emissionWrapper;
};
