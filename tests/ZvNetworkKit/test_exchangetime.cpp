#include "ZvNetworkKit/zvexchangetime.h"
#include "support/testregistry.h"

#include <QDateTime>
#include <QtTest/QtTest>

#include <ctime>

// The exchange's wall time on machines all over the world.
class ExchangeTimeTest : public QObject
{
    Q_OBJECT

private slots:
    void showsTheExchangesWallTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        for (const char *zone : {"UTC", "Asia/Shanghai", "America/New_York", "Asia/Kolkata"})
            QTest::newRow(zone) << QByteArray(zone);
    }

    void showsTheExchangesWallTime()
    {
        QFETCH(QByteArray, zone);
        setZone(zone);
        const QDateTime instant(QDate(2020, 1, 1), QTime(1, 0, 5), Qt::UTC);
        const int number = zvDisplayedSeconds(instant.toMSecsSinceEpoch(), QDate());
        const QDateTime shown = asTheStatusBarReads(number);
        QCOMPARE(shown.date(), QDate(2020, 1, 1));
        QCOMPARE(shown.time(), QTime(9, 0, 5));
        // Late in the evening of UTC it is the next day at the exchange.
        const QDateTime late(QDate(2020, 1, 1), QTime(20, 30), Qt::UTC);
        QCOMPARE(asTheStatusBarReads(zvDisplayedSeconds(late.toMSecsSinceEpoch(), QDate())),
                 QDateTime(QDate(2020, 1, 2), QTime(4, 30)));
        restoreZone();
    }

    void businessDateStandsForTheDay()
    {
        const QDateTime instant(QDate(2026, 11, 21), QTime(5, 6, 7), Qt::UTC);
        const int number = zvDisplayedSeconds(instant.toMSecsSinceEpoch(), QDate(2020, 1, 1));
        QCOMPARE(asTheStatusBarReads(number), QDateTime(QDate(2020, 1, 1), QTime(13, 6, 7)));
    }

    void stopsAtTheEndsOfWhatAnIntHolds()
    {
        QVERIFY(zvDisplayedSeconds(-5, QDate()) >= 0);
        QCOMPARE(zvDisplayedSeconds(99999999999999, QDate()), std::numeric_limits<int>::max());
        QCOMPARE(zvDisplayedSeconds(0, QDate(1901, 1, 1)), 0);
    }

private:
    static QDateTime asTheStatusBarReads(int number)
    {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        return QDateTime::fromTime_t(uint(number));
        QT_WARNING_POP
    }

    void setZone(const QByteArray &zone)
    {
        m_zone = qgetenv("TZ");
        qputenv("TZ", zone);
        tzset();
    }

    void restoreZone()
    {
        qputenv("TZ", m_zone);
        tzset();
    }

    QByteArray m_zone;
};

ZV_TEST(ExchangeTimeTest)
#include "test_exchangetime.moc"
