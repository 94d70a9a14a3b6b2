#pragma once

#include "cost.h"

#include "ZvModelKit/zvubobject.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QSortFilterProxyModel>
#include <QTableView>

#include <vector>

// A market table as Qt's own classes give it: the rows are plain numbers, the texts are made when
// they are asked for, and each changed cell is announced by itself.
class StockModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Replaces the rows and announces the cells whose numbers differ.
    void setRows(std::vector<ZvUBObject::Data> rows);

private:
    std::vector<ZvUBObject::Data> m_rows;
};

// The twin of the market table: the whole list in every answer, read by QJsonDocument on the GUI
// thread, in a dynamically sorting proxy below a plain view with a style sheet.
class StockTable
{
public:
    // A visible window of `size`, sorted by `sortColumn`.
    StockTable(QSize size, int sortColumn);

    // Takes an answer to market/list.html; reports the cost, and that of the reading alone.
    Cost take(const QByteArray &body, double *parsing);

    QTableView &view() { return m_view; }

private:
    StockModel m_model;
    QSortFilterProxyModel m_proxy;
    QTableView m_view;
};
