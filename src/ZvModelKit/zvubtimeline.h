#pragma once

#include <QString>
#include <QVector>

#include <tuple>

// One minute of a session in which something was dealt.
struct ZvUBMinute {
    qint64 time = 0; // of the minute's begin, UTC milliseconds since 1970
    double price = 0.0; // yuan; of its last deal
    double average = 0.0; // yuan; of one piece, from the session's start to the minute's end
    qint64 volume = 0; // pieces dealt in it

    auto fields() const { return std::tie(time, price, average, volume); }
    bool operator==(const ZvUBMinute &other) const { return fields() == other.fields(); }
    bool operator!=(const ZvUBMinute &other) const { return !(*this == other); }
};

Q_DECLARE_TYPEINFO(ZvUBMinute, Q_MOVABLE_TYPE);

// A stretch of trading without a break: from `begin` up to `end`, UTC milliseconds since 1970. An
// `end` of 0 is open: a market that never closes.
struct ZvUBTradingSpan {
    qint64 begin = 0;
    qint64 end = 0;

    bool operator==(const ZvUBTradingSpan &other) const
    {
        return begin == other.begin && end == other.end;
    }
    bool operator!=(const ZvUBTradingSpan &other) const { return !(*this == other); }
};

Q_DECLARE_TYPEINFO(ZvUBTradingSpan, Q_MOVABLE_TYPE);

// One session of a collection, minute by minute, the oldest first. A plain value: copies share the
// minutes.
struct ZvUBTimeLine {
    QString collectionId;
    QString tradingDay; // "2020-01-01"
    int session = 0; // counts the sessions of a market
    double previousClose = 0.0; // yuan; 0 where there is none
    QVector<ZvUBTradingSpan> spans; // of the whole session, in order; only the last may be open
    QVector<ZvUBMinute> minutes;

    auto fields() const
    {
        return std::tie(collectionId, tradingDay, session, previousClose, spans, minutes);
    }
    bool operator==(const ZvUBTimeLine &other) const { return fields() == other.fields(); }
    bool operator!=(const ZvUBTimeLine &other) const { return !(*this == other); }
};
