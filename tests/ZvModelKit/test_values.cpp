#include "ZvModelKit/zvubvalues.h"

#include "support/testregistry.h"

#include <QtTest>

#include <limits>

namespace {

constexpr qint64 least = std::numeric_limits<qint64>::min();
constexpr qint64 greatest = std::numeric_limits<qint64>::max();

} // namespace

// The texts and the arithmetic that all items share.
class ValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void money_data();
    void money();
    void aPriceBelowZeroIsMissing();
    void shortMoney_data();
    void shortMoney();
    void percents();
    void quantities();
    void directions();
    void wallTime_data();
    void wallTime();
    void timesOutsideTheCalendarAreMissing();
    void wallTimeIsUtcPlusEightInAnyZone();
    void arithmeticStaysAtTheEnds();
    void ratio_data();
    void ratio();
    void cappedInt();
};

void ValuesTest::money_data()
{
    QTest::addColumn<qint64>("fen");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << qint64(0) << "0.00";
    QTest::newRow("one fen") << qint64(1) << "0.01";
    QTest::newRow("ten fen") << qint64(10) << "0.10";
    QTest::newRow("less than a fen more than nothing, negative") << qint64(-1) << "-0.01";
    QTest::newRow("a yuan") << qint64(100) << "1.00";
    QTest::newRow("negative") << qint64(-123456) << "-1234.56";
    QTest::newRow("the highest price") << qint64(13107199) << "131071.99";
    QTest::newRow("greatest") << greatest << "92233720368547758.07";
    QTest::newRow("least") << least << "-92233720368547758.08";
}

void ValuesTest::money()
{
    QFETCH(qint64, fen);
    QFETCH(QString, text);
    QCOMPARE(zvub::moneyText(fen), text);
    if (fen >= 0) {
        QCOMPARE(zvub::priceText(fen), text);
    }
}

void ValuesTest::aPriceBelowZeroIsMissing()
{
    QCOMPARE(zvub::priceText(zvub::noValue), QString("--"));
    QCOMPARE(zvub::priceText(least), QString("--"));
    QCOMPARE(zvub::missingText(), QString("--"));
}

void ValuesTest::shortMoney_data()
{
    QTest::addColumn<qint64>("fen");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << qint64(0) << "0.00";
    QTest::newRow("the last full figure") << qint64(9999999) << "99999.99";
    QTest::newRow("the first short one") << qint64(10000000) << "10.00万";
    QTest::newRow("rounds half up") << qint64(12345000) << "12.35万";
    QTest::newRow("below ten thousand units") << qint64(999999) * 10000 << "9999.99万";
    QTest::newRow("rounding reaches the next unit") << qint64(9999995000) << "1.00亿";
    QTest::newRow("a hundred million") << qint64(10000000000) << "1.00亿";
    QTest::newRow("rounding reaches the last unit") << qint64(99999950000000) << "1.00万亿";
    QTest::newRow("negative") << qint64(-12345678900) << "-1.23亿";
    QTest::newRow("the bound of amounts") << qint64(9000000000000000) << "90.00万亿";
    QTest::newRow("greatest") << greatest << "92233.72万亿";
    QTest::newRow("least") << least << "-92233.72万亿";
}

void ValuesTest::shortMoney()
{
    QFETCH(qint64, fen);
    QFETCH(QString, text);
    QCOMPARE(zvub::shortMoneyText(fen), text);
}

void ValuesTest::percents()
{
    QCOMPARE(zvub::percentText(0), QString("0.00%"));
    QCOMPARE(zvub::percentText(-5), QString("-0.05%"));
    QCOMPARE(zvub::percentText(least), QString("-92233720368547758.08%"));
}

void ValuesTest::quantities()
{
    QCOMPARE(zvub::quantityText(0), QString("0"));
    QCOMPARE(zvub::quantityText(1234567), QString("1234567"));
    QCOMPARE(zvub::quantityText(greatest), QString("9223372036854775807"));
    QCOMPARE(zvub::quantityText(-1), QString("--"));
}

void ValuesTest::directions()
{
    QCOMPARE(zvub::directionText(1), QString("买入"));
    QCOMPARE(zvub::directionText(2), QString("卖出"));
    QCOMPARE(zvub::directionText(0), QString("--"));
    QCOMPARE(zvub::directionText(-7), QString("--"));
}

void ValuesTest::wallTime_data()
{
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("text");
    QTest::newRow("the first time") << qint64(0) << "1970-01-01 08:00:00";
    QTest::newRow("opening") << qint64(1577842200000) << "2020-01-01 09:30:00";
    QTest::newRow("the day's last second") << qint64(1577807999999) << "2019-12-31 23:59:59";
    QTest::newRow("midnight of the exchange") << qint64(1577808000000) << "2020-01-01 00:00:00";
    QTest::newRow("leap day") << qint64(1456704000000) << "2016-02-29 08:00:00";
    QTest::newRow("the last time") << qint64(253402271999999) << "9999-12-31 23:59:59";
}

void ValuesTest::wallTime()
{
    QFETCH(qint64, time);
    QFETCH(QString, text);
    QCOMPARE(zvub::dateTimeText(time), text);
    QCOMPARE(zvub::clockText(time), text.mid(11));
    // Qt's own calendar agrees.
    QCOMPARE(zvub::exchangeTime(time).toString("yyyy-MM-dd hh:mm:ss"), text);
}

void ValuesTest::timesOutsideTheCalendarAreMissing()
{
    for (qint64 time : {zvub::noValue, least, qint64(253402272000000), greatest}) {
        QCOMPARE(zvub::dateTimeText(time), QString("--"));
        QCOMPARE(zvub::clockText(time), QString("--"));
        QVERIFY(!zvub::exchangeTime(time).isValid());
    }
}

void ValuesTest::wallTimeIsUtcPlusEightInAnyZone()
{
    const QByteArray zone = qgetenv("TZ");
    for (const char *other : {"America/New_York", "UTC", "Asia/Kolkata"}) {
        qputenv("TZ", other);
        tzset();
        QCOMPARE(zvub::dateTimeText(1577842200000), QString("2020-01-01 09:30:00"));
        QCOMPARE(zvub::exchangeTime(1577842200000).time(), QTime(9, 30));
    }
    qputenv("TZ", zone);
    tzset();
}

void ValuesTest::arithmeticStaysAtTheEnds()
{
    QCOMPARE(zvub::product(3, -4), qint64(-12));
    QCOMPARE(zvub::product(greatest, 2), greatest);
    QCOMPARE(zvub::product(least, least), greatest);
    QCOMPARE(zvub::product(greatest, -2), least);
    QCOMPARE(zvub::sum(greatest, 1), greatest);
    QCOMPARE(zvub::sum(least, -1), least);
    QCOMPARE(zvub::sum(2, -3), qint64(-1));
    QCOMPARE(zvub::difference(greatest, -1), greatest);
    QCOMPARE(zvub::difference(least, 1), least);
    QCOMPARE(zvub::difference(2, 3), qint64(-1));
}

void ValuesTest::ratio_data()
{
    QTest::addColumn<qint64>("part");
    QTest::addColumn<qint64>("whole");
    QTest::addColumn<qint64>("scale");
    QTest::addColumn<qint64>("result");
    QTest::newRow("exact") << qint64(1) << qint64(4) << qint64(100) << qint64(25);
    QTest::newRow("half goes up") << qint64(1) << qint64(8) << qint64(100) << qint64(13);
    QTest::newRow("negative half goes down")
        << qint64(-1) << qint64(8) << qint64(100) << qint64(-13);
    QTest::newRow("below half") << qint64(1) << qint64(3) << qint64(100) << qint64(33);
    QTest::newRow("negative whole") << qint64(2) << qint64(-3) << qint64(100) << qint64(-67);
    QTest::newRow("both negative") << qint64(-2) << qint64(-3) << qint64(100) << qint64(67);
    QTest::newRow("nothing") << qint64(0) << qint64(-3) << qint64(100) << qint64(0);
    QTest::newRow("a wide product") << greatest << greatest << qint64(10000) << qint64(10000);
    QTest::newRow("held above") << greatest << qint64(1) << qint64(10000) << greatest;
    QTest::newRow("held below") << least << qint64(1) << qint64(10000) << least;
}

void ValuesTest::ratio()
{
    QFETCH(qint64, part);
    QFETCH(qint64, whole);
    QFETCH(qint64, scale);
    QFETCH(qint64, result);
    QCOMPARE(zvub::roundedRatio(part, whole, scale), result);
}

void ValuesTest::cappedInt()
{
    QCOMPARE(zvub::cappedInt(-5), -5);
    QCOMPARE(zvub::cappedInt(qint64(1) << 31), std::numeric_limits<int>::max());
    QCOMPARE(zvub::cappedInt(least), std::numeric_limits<int>::min());
}

ZV_TEST(ValuesTest)
#include "test_values.moc"
