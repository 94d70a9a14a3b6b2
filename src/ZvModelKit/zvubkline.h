#pragma once

#include <QString>
#include <QVector>

#include <tuple>

// One bar of a K line: what was dealt on a day, in a week or in a month.
struct ZvUBBar {
    QString day; // "2019-12-31"; of a week or a month, the last day that it holds
    double open = 0.0; // yuan
    double high = 0.0;
    double low = 0.0;
    double close = 0.0;
    qint64 volume = 0; // pieces
    double amount = 0.0; // yuan

    auto fields() const { return std::tie(day, open, high, low, close, volume, amount); }
    bool operator==(const ZvUBBar &other) const { return fields() == other.fields(); }
    bool operator!=(const ZvUBBar &other) const { return !(*this == other); }
};

Q_DECLARE_TYPEINFO(ZvUBBar, Q_MOVABLE_TYPE);

// The bars of a collection, the oldest first; the last one still grows. A plain value: copies share
// the bars.
struct ZvUBKLine {
    QString collectionId;
    int session = 0; // of the market, the one that the last bar grows in
    QVector<ZvUBBar> bars;

    auto fields() const { return std::tie(collectionId, session, bars); }
    bool operator==(const ZvUBKLine &other) const { return fields() == other.fields(); }
    bool operator!=(const ZvUBKLine &other) const { return !(*this == other); }
};
