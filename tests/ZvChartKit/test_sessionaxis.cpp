#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/sessionaxis.h"
#include "support/testregistry.h"

using namespace chartsamples;
using zvplot::SessionAxis;

class SessionAxisTest : public QObject
{
    Q_OBJECT

private:
    static ZvUBTimeLine openLine(std::initializer_list<int> dealtMinutes)
    {
        ZvUBTimeLine line;
        line.spans = {{morning - 600 * minute, 0}};
        for (const int at : dealtMinutes) {
            ZvUBMinute dealt;
            dealt.time = morning + at * minute;
            dealt.price = dealt.average = 10;
            line.minutes.append(dealt);
        }
        return line;
    }

private slots:
    void theWholeSessionStandsFromTheFirstMinute()
    {
        const SessionAxis axis(timeLine(0));
        QCOMPARE(axis.places(), 240);
        QCOMPARE(SessionAxis(timeLine(100)).places(), 240);
        QVERIFY(SessionAxis(timeLine(1)) == axis);
    }

    void theBreakIsJoined()
    {
        const SessionAxis axis(timeLine(240));
        QCOMPARE(axis.placeOf(morning), 0);
        QCOMPARE(axis.placeOf(morning + 119 * minute + 59999), 119);
        QCOMPARE(axis.placeOf(afternoon), 120);
        QCOMPARE(axis.placeOf(afternoon - minute), 119); // within the break
        QCOMPARE(axis.placeOf(afternoon + 119 * minute), 239);
        QCOMPARE(axis.placeOf(afternoon + 120 * minute), -1);
        QCOMPARE(axis.placeOf(morning - 1), -1);
        QCOMPARE(axis.timeOf(119), morning + 119 * minute);
        QCOMPARE(axis.timeOf(120), afternoon);
        QCOMPARE(axis.stretches().size(), std::size_t(2));
    }

    void anOpenSpanGrowsFromItsFirstMinute()
    {
        const SessionAxis young(openLine({0, 3}));
        QCOMPARE(young.places(), SessionAxis::shortestOpen);
        QCOMPARE(young.timeOf(0), morning);
        QCOMPARE(young.placeOf(morning + 3 * minute), 3);

        const SessionAxis older(openLine({0, 40, 59, 60}));
        QCOMPARE(older.places(), 90);
        QCOMPARE(older.timeOf(0), morning);
        QCOMPARE(SessionAxis(openLine({0, 40, 59, 60, 89})).places(), 90);
        QCOMPARE(SessionAxis(openLine({0, 40, 59, 60, 90})).places(), 120);
    }

    void aLongPauseIsJoinedLikeABreak()
    {
        const SessionAxis axis(openLine({0, 30, 91, 100}));
        QCOMPARE(axis.stretches().size(), std::size_t(2));
        QCOMPARE(axis.placeOf(morning + 30 * minute), 30);
        QCOMPARE(axis.placeOf(morning + 91 * minute), 31);
        QCOMPARE(axis.placeOf(morning + 60 * minute), 30);
        QCOMPARE(axis.timeOf(31), morning + 91 * minute);
        QCOMPARE(axis.places(), 60);
        QCOMPARE(SessionAxis(openLine({0, 30, 90, 100})).stretches().size(), std::size_t(1));
    }

    void withoutHoursOrDeals()
    {
        QCOMPARE(SessionAxis(ZvUBTimeLine()).places(), 0);
        QCOMPARE(SessionAxis(ZvUBTimeLine()).placeOf(morning), -1);
        QCOMPARE(SessionAxis(ZvUBTimeLine()).timeOf(3), 0);
        QCOMPARE(SessionAxis(openLine({})).places(), SessionAxis::shortestOpen);
        ZvUBTimeLine line = openLine({5, 6});
        line.spans.clear();
        QCOMPARE(SessionAxis(line).timeOf(0), morning + 5 * minute);
    }

    void wrongHoursAreBounded()
    {
        ZvUBTimeLine line;
        line.spans = {{morning, morning - minute}, {morning, morning + (qint64(1) << 50)}};
        QCOMPARE(SessionAxis(line).places(), SessionAxis::mostMinutes);
    }
};

ZV_TEST(SessionAxisTest)
#include "test_sessionaxis.moc"
