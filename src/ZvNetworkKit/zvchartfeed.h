#pragma once

#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubtimeline.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QString>

#include <memory>

// Keeps the figures of one chart as the exchange has them.
//
// It follows the engine's current collection and the server in view by itself: where one of them
// changes, what stood is dropped at once, and no answer about it lands any more. While it is active
// it asks for what has changed whenever the cache says that the collection did, at most once in
// `shortestDistance`, and for everything where a session has begun. An answer that cannot be used
// leaves what stands. All signals come from the event loop.
class ZVNETWORKKIT_EXPORT ZvChartFeed : public QObject
{
    Q_OBJECT

public:
    enum Chart { TimeLine, DayKLine, WeekKLine, MonthKLine };
    Q_ENUM(Chart)

    enum State {
        Waiting, // asked for, or to be asked for; nothing stands
        Ready,
        NoData, // the exchange has none; of a composite row and without a collection, too
        Stale // figures stand, and it is not known whether they still hold
    };
    Q_ENUM(State)

    static constexpr int shortestDistance = 1000; // milliseconds between two questions
    static constexpr int usualBars = 1000; // asked for at a time
    static constexpr int mostBars = 5000; // that the exchange gives at a time
    static constexpr int mostMinutes = 5000; // likewise

    explicit ZvChartFeed(QObject *parent = nullptr);
    ~ZvChartFeed() override;

    // TimeLine at first.
    void setChart(Chart chart);
    Chart chart() const;

    // A feed asks for nothing until it is active; one that becomes active again catches up.
    void setActive(bool active);
    bool isActive() const;

    // Asks for the bars before the oldest one that stands. Nothing while such a question is under
    // way, where all of them stand, shortly after one has failed, and for a time line.
    void askEarlier();

    // The collection that all below is about.
    QString collectionId() const;
    State state() const;

    // Milliseconds since the figures were last known to hold; -1 where none stand.
    qint64 ageMs() const;

    // What stands; empty for the other kind of chart. In state NoData a time line may know its
    // previous close and hours all the same.
    const ZvUBTimeLine &timeLine() const;
    const ZvUBKLine &kLine() const;

signals:
    void replaced(); // everything is new: another collection, server, chart or session; first data

    // From this minute or bar on figures changed or were appended; a time line's hours may be
    // others.
    void grown(int firstChanged);
    void prepended(int count); // so many earlier bars stand in front now
    void stateChanged();

private:
    class Private;
    std::unique_ptr<Private> d;
};
