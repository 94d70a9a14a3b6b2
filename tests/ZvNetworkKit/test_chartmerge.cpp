#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvchartmerge.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

using zvchart::Laid;
using zvchart::Period;

namespace {

// "0:1000 1:1010" is a minute at 10.00 and the next one at 10.10; a price stands for all figures.
ZvUBTimeLine timeLine(const QString &minutes, int session = 1)
{
    ZvUBTimeLine line;
    line.collectionId = QStringLiteral("1001");
    line.tradingDay = QStringLiteral("2020-01-01");
    line.session = session;
    line.previousClose = 9.9;
    line.spans = {{0, 0}};
    for (const QString &entry : minutes.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const double price = entry.section(QLatin1Char(':'), 1).toInt() / 100.0;
        const qint64 time = entry.section(QLatin1Char(':'), 0, 0).toLongLong() * 60000;
        line.minutes.append({time, price, price, 5});
    }
    return line;
}

QString text(const ZvUBTimeLine &line)
{
    QStringList entries;
    for (const ZvUBMinute &minute : line.minutes) {
        entries.append(
            QStringLiteral("%1:%2").arg(minute.time / 60000).arg(qRound(minute.price * 100)));
    }
    return entries.join(QLatin1Char(' '));
}

// "2019-12-31:1000" is a bar that closed at 10.00.
ZvUBKLine kLine(const QString &bars, int session = 1)
{
    ZvUBKLine line;
    line.collectionId = QStringLiteral("1001");
    line.session = session;
    for (const QString &entry : bars.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        ZvUBBar bar;
        bar.day = entry.section(QLatin1Char(':'), 0, 0);
        bar.close = entry.section(QLatin1Char(':'), 1).toInt() / 100.0;
        line.bars.append(bar);
    }
    return line;
}

QString text(const ZvUBKLine &line)
{
    QStringList entries;
    for (const ZvUBBar &bar : line.bars)
        entries.append(QStringLiteral("%1:%2").arg(bar.day).arg(qRound(bar.close * 100)));
    return entries.join(QLatin1Char(' '));
}

QString text(const Laid &laid)
{
    switch (laid.kind) {
    case Laid::Same:
        return QStringLiteral("same");
    case Laid::Grown:
        return QStringLiteral("grown %1").arg(laid.firstChanged);
    case Laid::Gap:
        return QStringLiteral("gap");
    case Laid::Older:
        return QStringLiteral("older");
    }
    return QString();
}

} // namespace

// What becomes of a chart's figures when a part of them is told anew.
class ChartMergeTest : public QObject
{
    Q_OBJECT

private slots:
    void minutes_data()
    {
        QTest::addColumn<QString>("held");
        QTest::addColumn<QString>("tail");
        QTest::addColumn<QString>("laid");
        QTest::addColumn<QString>("result");
        QTest::newRow("nothing new") << "0:1000 1:1010"
                                     << "1:1010"
                                     << "same"
                                     << "0:1000 1:1010";
        QTest::newRow("the last one grew") << "0:1000 1:1010"
                                           << "1:1020"
                                           << "grown 1"
                                           << "0:1000 1:1020";
        QTest::newRow("one more") << "0:1000 1:1010"
                                  << "1:1010 4:990"
                                  << "grown 2"
                                  << "0:1000 1:1010 4:990";
        QTest::newRow("both") << "0:1000"
                              << "0:1001 1:1002 2:1003"
                              << "grown 0"
                              << "0:1001 1:1002 2:1003";
        QTest::newRow("nothing at all") << "0:1000"
                                        << ""
                                        << "gap"
                                        << "0:1000";
        QTest::newRow("begins later") << "0:1000 1:1010"
                                      << "2:1000"
                                      << "gap"
                                      << "0:1000 1:1010";
        QTest::newRow("begins earlier") << "0:1000 1:1010"
                                        << "0:1000 1:1010"
                                        << "gap"
                                        << "0:1000 1:1010";
    }

    void minutes()
    {
        QFETCH(QString, held);
        QFETCH(QString, tail);
        QFETCH(QString, laid);
        QFETCH(QString, result);
        ZvUBTimeLine line = timeLine(held);
        QCOMPARE(text(zvchart::layTail(line, timeLine(tail))), laid);
        QCOMPARE(text(line), result);
    }

    void minutesOfOtherSessions()
    {
        ZvUBTimeLine line = timeLine("0:1000", 5);
        QCOMPARE(text(zvchart::layTail(line, timeLine("0:1000 1:1010", 6))), QString("gap"));
        QCOMPARE(text(zvchart::layTail(line, timeLine("0:1000 1:1010", 4))), QString("older"));
        QCOMPARE(text(line), QString("0:1000"));
    }

    void otherHeadIsAGap()
    {
        ZvUBTimeLine line = timeLine("0:1000");
        ZvUBTimeLine tail = timeLine("0:1000 1:1010");
        tail.previousClose = 9.8;
        QCOMPARE(text(zvchart::layTail(line, tail)), QString("gap"));
        tail = timeLine("0:1000 1:1010");
        tail.tradingDay = QStringLiteral("2020-01-02");
        QCOMPARE(text(zvchart::layTail(line, tail)), QString("gap"));
        QCOMPARE(line, timeLine("0:1000"));
    }

    void otherHoursTouchTheLastMinute()
    {
        ZvUBTimeLine line = timeLine("0:1000 1:1010");
        ZvUBTimeLine tail = timeLine("1:1010");
        tail.spans = {{0, 120000}};
        QCOMPARE(text(zvchart::layTail(line, tail)), QString("grown 1"));
        QCOMPARE(line.spans, tail.spans);
        tail.minutes.append({300000, 10.0, 10.0, 1});
        QCOMPARE(text(zvchart::layTail(line, tail)), QString("grown 2"));
    }

    void minutesAreNotHeldForEver()
    {
        ZvUBTimeLine line = timeLine("0:1000");
        int whole = 0;
        for (int minute = 1; minute < 3 * ZvChartFeed::mostMinutes && whole == 0; ++minute) {
            ZvUBTimeLine tail = timeLine(QString());
            tail.minutes = {line.minutes.last(), {minute * qint64(60000), 1.0, 1.0, 1}};
            if (zvchart::layTail(line, tail).kind == Laid::Gap)
                whole = minute;
        }
        QVERIFY(whole > ZvChartFeed::mostMinutes);
        QVERIFY(line.minutes.size() <= 2 * ZvChartFeed::mostMinutes);
    }

    void bars_data()
    {
        QTest::addColumn<int>("period");
        QTest::addColumn<QString>("held");
        QTest::addColumn<QString>("tail");
        QTest::addColumn<QString>("laid");
        QTest::addColumn<QString>("result");
        const int day = int(Period::Day);
        const int week = int(Period::Week);
        const int month = int(Period::Month);
        const QString two = QStringLiteral("2019-12-30:1000 2019-12-31:1010");
        QTest::newRow("nothing new") << day << two << two << "same" << two;
        QTest::newRow("the last one grew") << day << two << "2019-12-30:1000 2019-12-31:1020"
                                           << "grown 1"
                                           << "2019-12-30:1000 2019-12-31:1020";
        QTest::newRow("a new one") << day << two << "2019-12-31:1010 2020-01-01:990"
                                   << "grown 2" << two + " 2020-01-01:990";
        QTest::newRow("a new one, and the last one grew")
            << day << two << "2019-12-31:1011 2020-01-01:990"
            << "grown 1"
            << "2019-12-30:1000 2019-12-31:1011 2020-01-01:990";
        QTest::newRow("the only one") << day << "2020-01-01:1000"
                                      << "2020-01-01:1001"
                                      << "grown 0"
                                      << "2020-01-01:1001";
        QTest::newRow("one became two") << day << "2019-12-31:1000"
                                        << "2019-12-31:1000 2020-01-01:990"
                                        << "grown 1"
                                        << "2019-12-31:1000 2020-01-01:990";
        QTest::newRow("none") << day << two << ""
                              << "gap" << two;
        QTest::newRow("both are new") << day << two << "2020-01-01:990 2020-01-02:990"
                                      << "gap" << two;
        QTest::newRow("the last one is gone") << day << two << "2019-12-29:900 2019-12-30:1000"
                                              << "gap" << two;
        QTest::newRow("one between them") << day << "2019-12-27:1000 2019-12-31:1010"
                                          << "2019-12-27:1000 2019-12-30:1005"
                                          << "gap"
                                          << "2019-12-27:1000 2019-12-31:1010";

        // 2019-12-30 is a Monday; the week and the month that grow bear another day every day.
        const QString weeks = QStringLiteral("2019-12-27:1000 2019-12-30:1010");
        QTest::newRow("a week grew by a day") << week << weeks << "2019-12-27:1000 2020-01-01:1020"
                                              << "grown 1"
                                              << "2019-12-27:1000 2020-01-01:1020";
        QTest::newRow("a week ended") << week << weeks << "2020-01-03:1020 2020-01-06:1030"
                                      << "grown 1"
                                      << "2019-12-27:1000 2020-01-03:1020 2020-01-06:1030";
        QTest::newRow("Sunday and Monday") << week << "2019-12-29:1000"
                                           << "2019-12-29:1000 2019-12-30:1010"
                                           << "grown 1"
                                           << "2019-12-29:1000 2019-12-30:1010";
        QTest::newRow("Sunday is of the week before Monday's")
            << week << "2019-12-29:1000 2019-12-30:1010"
            << "2019-12-29:1000 2019-12-30:1020"
            << "grown 1"
            << "2019-12-29:1000 2019-12-30:1020";
        QTest::newRow("Tuesday is of Monday's week") << week << "2019-12-30:1000"
                                                     << "2019-12-31:1010"
                                                     << "grown 0"
                                                     << "2019-12-31:1010";
        QTest::newRow("Sunday is of Saturday's week") << week << "2019-12-28:1000"
                                                      << "2019-12-29:1010"
                                                      << "grown 0"
                                                      << "2019-12-29:1010";
        QTest::newRow("a month grew by a day") << month << "2019-11-29:1000 2019-12-02:1010"
                                               << "2019-11-29:1000 2019-12-31:1020"
                                               << "grown 1"
                                               << "2019-11-29:1000 2019-12-31:1020";
        QTest::newRow("a month of another year") << month << "2018-12-03:1000"
                                                 << "2018-12-31:1000 2019-12-02:1010"
                                                 << "grown 0"
                                                 << "2018-12-31:1000 2019-12-02:1010";
    }

    void bars()
    {
        QFETCH(int, period);
        QFETCH(QString, held);
        QFETCH(QString, tail);
        QFETCH(QString, laid);
        QFETCH(QString, result);
        ZvUBKLine line = kLine(held);
        QCOMPARE(text(zvchart::layTail(line, kLine(tail), Period(period))), laid);
        QCOMPARE(text(line), result);
    }

    void barsOfOtherSessions()
    {
        const QString last = QStringLiteral("2020-01-01:1000");
        ZvUBKLine line = kLine(last, 5);
        const ZvUBKLine newer = kLine(last, 6);
        const ZvUBKLine older = kLine(last, 4);
        QCOMPARE(text(zvchart::layTail(line, newer, Period::Day)), QString("gap"));
        QCOMPARE(text(zvchart::layTail(line, older, Period::Day)), QString("older"));
        QCOMPARE(line, kLine(last, 5));
    }

    void earlierBars_data()
    {
        QTest::addColumn<int>("period");
        QTest::addColumn<QString>("front");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("result");
        const QString held = QStringLiteral("2020-01-02:1000");
        QTest::newRow("none") << int(Period::Day) << "" << 0 << held;
        QTest::newRow("two") << int(Period::Day) << "2019-12-31:1 2020-01-01:2" << 2
                             << "2019-12-31:1 2020-01-01:2 " + held;
        QTest::newRow("later ones")
            << int(Period::Day) << "2020-01-01:2 2020-01-03:3" << -1 << held;
        QTest::newRow("a part of the first week")
            << int(Period::Week) << "2019-12-27:1 2020-01-01:2" << 1 << "2019-12-27:1 " + held;
        QTest::newRow("a part of the first month")
            << int(Period::Month) << "2019-12-27:1 2020-01-01:2" << 1 << "2019-12-27:1 " + held;
    }

    void earlierBars()
    {
        QFETCH(int, period);
        QFETCH(QString, front);
        QFETCH(int, count);
        QFETCH(QString, result);
        ZvUBKLine line = kLine(QStringLiteral("2020-01-02:1000"));
        QCOMPARE(zvchart::layFront(line, kLine(front), Period(period)), count);
        QCOMPARE(text(line), result);
    }

    // A copy that a chart has taken stays as it was.
    void copiesAreLeftAlone()
    {
        ZvUBTimeLine line = timeLine("0:1000 1:1010");
        const ZvUBTimeLine copy = line;
        zvchart::layTail(line, timeLine("1:1011 2:1020"));
        QCOMPARE(text(copy), QString("0:1000 1:1010"));
    }
};

ZV_TEST(ChartMergeTest)
#include "test_chartmerge.moc"
