#pragma once

#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubtimeline.h"
#include "ZvNetworkKit/zvscriptedtransport.h"

#include <cmath>

namespace chartsamples {

inline QByteArray fen(double yuan)
{
    return QByteArray::number(std::llround(yuan * 100));
}

// Figures as the exchange would send them.
inline QByteArray answerOf(const ZvUBTimeLine &line)
{
    QByteArrayList spans;
    for (const ZvUBTradingSpan &span : line.spans)
        spans << "[" + QByteArray::number(span.begin) + ", " + QByteArray::number(span.end) + "]";
    QByteArrayList minutes;
    for (const ZvUBMinute &dealt : line.minutes)
        minutes << "[" + QByteArray::number(dealt.time) + ", " + fen(dealt.price) + ", "
                + fen(dealt.average) + ", " + QByteArray::number(dealt.volume) + "]";
    return ZvScriptedTransport::ok("{\"id\": \"" + line.collectionId.toLatin1()
                                   + "\", \"tradingDay\": \"2020-01-02\", \"session\": 1, "
                                     "\"previousClose\": "
                                   + fen(line.previousClose) + ", \"spans\": [" + spans.join(", ")
                                   + "], \"minutes\": [" + minutes.join(", ") + "]}");
}

inline QByteArray answerOf(const ZvUBKLine &line)
{
    QByteArrayList bars;
    for (const ZvUBBar &bar : line.bars)
        bars << "[\"" + bar.day.toLatin1() + "\", " + fen(bar.open) + ", " + fen(bar.high) + ", "
                + fen(bar.low) + ", " + fen(bar.close) + ", " + QByteArray::number(bar.volume)
                + ", " + fen(bar.amount) + "]";
    return ZvScriptedTransport::ok("{\"id\": \"" + line.collectionId.toLatin1()
                                   + "\", \"session\": 1, \"bars\": [" + bars.join(", ") + "]}");
}

} // namespace chartsamples
