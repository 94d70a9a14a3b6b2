#pragma once

#include "ZvModelKit/zvubobject.h"

#include <QByteArray>

#include <random>
#include <vector>

// A market that moves as it is told, and the answers of a service that holds it.
//
// A tick changes bid, ask and both their quantities of a number of rows: four cells a row. Every
// run with the same seed moves alike.
class Market
{
public:
    // Whether a tick may move rows past each other when they are sorted by their bids.
    enum class Move { KeepsOrder, BreaksOrder };

    Market(int rows, quint32 seed);

    void tick(int changedRows, Move move);

    int size() const { return static_cast<int>(m_rows.size()); }
    const ZvUBObject::Data &row(int index) const { return m_rows[at(index)]; }

    // The version of the rows; each tick adds one.
    qint64 version() const { return m_version; }

    // The `data` of market/list.html.
    QByteArray listData() const;

    // The `data` of a poll that holds the rows as they were before the last tick.
    QByteArray changesData() const;

    // The `data` of a poll in which nothing differs.
    static QByteArray nothingNew() { return QByteArrayLiteral("{\"topics\": {}}"); }

private:
    static std::size_t at(int index) { return static_cast<std::size_t>(index); }
    int random(int least, int most);
    void changeRow(int index, Move move);

    std::mt19937 m_random;
    std::vector<ZvUBObject::Data> m_rows;
    std::vector<int> m_bases; // fen: no two are closer than `spacing`, in no order
    std::vector<int> m_order; // all row indexes; a tick changes a random choice of them
    std::vector<int> m_changed; // by the last tick
    qint64 m_version = 1;
};
