#pragma once

#include "ZvChartKit/chartcolours.h"
#include "ZvChartKit/charttext.h"

#include <QRect>

#include <array>

namespace zvplot {

// A row of words above a pane: names and figures in the colours of their curves.
struct Legend {
    struct Entry {
        ChartText text;
        Ink ink = Ink::Strong;
    };

    // The text to write the next entry into.
    ChartText &next(Ink ink)
    {
        Entry &entry = entries[count < entries.size() ? count++ : count - 1];
        entry = Entry();
        entry.ink = ink;
        return entry.text;
    }

    std::array<Entry, 6> entries;
    std::size_t count = 0;
};

// The box that tells the figures of the bar under the crosshair.
struct ValueBox {
    static constexpr int mostRows = 9;

    struct Row {
        QStringView name;
        ChartText value;
        Ink ink = Ink::Strong;
    };

    ChartText &next(QStringView name, Ink ink = Ink::Strong)
    {
        Row &row = rows[count < rows.size() ? count++ : count - 1];
        row = Row();
        row.name = name;
        row.ink = ink;
        return row.value;
    }

    std::array<Row, mostRows> rows;
    std::size_t count = 0;
};

// A figure on an axis: of the last price, or of the crosshair.
struct AxisLabel {
    QRect rect;
    ChartText text;
    Ink ground = Ink::Raised;
    Ink ink = Ink::Strong;
};

} // namespace zvplot
