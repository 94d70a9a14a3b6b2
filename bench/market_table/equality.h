#pragma once

#include <QStringList>

#include <vector>

class Collection_TableView;
class Market;
class QAbstractItemModel;
class QTableView;

// Keeps watch over what has to hold whatever a tick costs. Each check adds a sentence for what does
// not hold; a run with any of them has no figures worth reading.
class Equality
{
public:
    // `market` sorted by the number of a column, rows of equal numbers as they stood before.
    Equality(const Market &market, int sortColumn);

    // Selects a row in the middle of the first screen and keeps it in mind.
    void select(Collection_TableView &view);

    // After each tick of the market: rows in order, ties where they were, all texts those of the
    // twin's model, the same row selected, the table scrolled to where it was.
    void check(const Collection_TableView &view, const QAbstractItemModel &stockRows);

    // True when the rows that `shown` shows are in the order of the numbers alone.
    bool isSorted(const QAbstractItemModel &shown) const;

    // The frame of the table is to the pixel the one of a stock view without style sheet whose
    // delegate draws cells as the base class does, with the background of the selected row below
    // and the triangle beside it.
    void checkFrame(Collection_TableView &view, const QString &state);

    const QStringList &failures() const { return m_failures; }

private:
    void fail(const QString &sentence);
    double number(int row) const;
    void advance();

    const Market &m_market;
    int m_sortColumn;
    std::vector<int> m_order; // rows of the market, the first on screen first
    QString m_selectedId;
    int m_scrolledTo = 0;
    QStringList m_failures;
};
