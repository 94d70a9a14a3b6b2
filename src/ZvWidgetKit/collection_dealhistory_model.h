#pragma once

#include "ZvModelKit/zvubdealitem.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

// The newest deals of one collection, a row a deal. Texts and colours are those of the items.
class Collection_DealHistory_model : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit Collection_DealHistory_model(QObject *parent = nullptr);
    ~Collection_DealHistory_model() override;

    // Neither looks at the parent: the table has one level, and its users ask for no other.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Shows these deals in place of all others, by a reset.
    void setDealList(QList<ZvUBDealItem> deals);

private:
    QStringList m_headers;
    int m_columnCount;
    QList<ZvUBDealItem> m_deals;
};
