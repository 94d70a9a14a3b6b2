#include "ZvWidgetKit/ticketorder.h"

#include "support/testregistry.h"

#include <QtTest/QtTest>

#include <limits>

namespace {

const TicketOrder usualOrder{QStringLiteral("600137"), QStringLiteral("庚申猴票"), 10.0F, 10};

TicketLimits usualLimits()
{
    return {{QStringLiteral("600137"), QStringLiteral("A1")},
            {QStringLiteral("庚申猴票"), QStringLiteral("辛酉鸡票")},
            8.97F,
            11.03F,
            10};
}

} // namespace

// An order before it leaves: what may be wrong with it, what it says, how much the money buys.
class TicketOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void faults_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("price");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("fault");
        const QString code = "请输入正确的商品代码!";
        const QString name = "请输入正确的商品名称!";
        const QString price = "请输入正确的商品价格!";
        const QString count = "请输入正确的商品数量!";
        QTest::newRow("right") << "600137"
                               << "庚申猴票" << 10.0 << 10 << "";
        QTest::newRow("not belonging together") << "600137"
                                                << "辛酉鸡票" << 10.0 << 1 << "";
        QTest::newRow("unknown code") << "600999"
                                      << "庚申猴票" << 10.0 << 1 << code;
        QTest::newRow("empty code") << ""
                                    << "庚申猴票" << 10.0 << 1 << code;
        QTest::newRow("part of a code") << "60013"
                                        << "庚申猴票" << 10.0 << 1 << code;
        QTest::newRow("code in another case") << "a1"
                                              << "庚申猴票" << 10.0 << 1 << code;
        QTest::newRow("unknown name") << "600137"
                                      << "猴票" << 10.0 << 1 << name;
        QTest::newRow("lower limit") << "600137"
                                     << "庚申猴票" << 8.97 << 1 << "";
        QTest::newRow("below it") << "600137"
                                  << "庚申猴票" << 8.96 << 1 << price;
        QTest::newRow("upper limit") << "600137"
                                     << "庚申猴票" << 11.03 << 1 << "";
        QTest::newRow("above it") << "600137"
                                  << "庚申猴票" << 11.04 << 1 << price;
        QTest::newRow("one") << "600137"
                             << "庚申猴票" << 10.0 << 1 << "";
        QTest::newRow("none") << "600137"
                              << "庚申猴票" << 10.0 << 0 << count;
        QTest::newRow("one too many") << "600137"
                                      << "庚申猴票" << 10.0 << 11 << count;
        QTest::newRow("all wrong") << "x"
                                   << "x" << 0.0 << 0 << code;
        QTest::newRow("all but the code") << "A1"
                                          << "x" << 0.0 << 0 << name;
        QTest::newRow("price and count") << "A1"
                                         << "庚申猴票" << 0.0 << 0 << price;
    }

    void faults()
    {
        QFETCH(QString, code);
        QFETCH(QString, name);
        QFETCH(double, price);
        QFETCH(int, count);
        QTEST(faultOf({code, name, float(price), count}, usualLimits()), "fault");
    }

    void nothingIsKnownYet()
    {
        QCOMPARE(faultOf(usualOrder, {}), QStringLiteral("请输入正确的商品代码!"));
    }

    void confirmation_data()
    {
        QTest::addColumn<float>("price");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("line");
        const QString gap = "&nbsp;&nbsp;&nbsp;&nbsp;";
        QTest::newRow("usual") << 10.0F << 10 << "价格:10" + gap + "数量：10";
        QTest::newRow("float") << 100.03F << 1 << "价格:100.03" + gap + "数量：1";
        QTest::newRow("six digits") << 12345.67F << 7 << "价格:12345.7" + gap + "数量：7";
        QTest::newRow("exponent") << 1234567.0F << 100000000
                                  << "价格:1.23457e+06" + gap + "数量：100000000";
        QTest::newRow("small") << 0.01F << 1 << "价格:0.01" + gap + "数量：1";
    }

    void confirmation()
    {
        QFETCH(float, price);
        QFETCH(int, count);
        QFETCH(QString, line);
        TicketOrder order = usualOrder;
        order.price = price;
        order.count = count;
        QCOMPARE(confirmationOf(order),
                 QStringLiteral("<p align='center'>商品ID:&nbsp;&nbsp;&nbsp;&nbsp;600137</p>"
                                "<p align='center'>庚申猴票</p><p align='center'>")
                     + line + QStringLiteral("</p>"));
    }

    // Such names would otherwise take what is meant for the next paragraph, or be read as marks.
    void namesAreShownAsTheyAre()
    {
        TicketOrder order = usualOrder;
        order.code = QStringLiteral("%2%1");
        order.name = QStringLiteral("%1<b>&%2");
        QCOMPARE(confirmationOf(order),
                 QStringLiteral("<p align='center'>商品ID:&nbsp;&nbsp;&nbsp;&nbsp;%2%1</p>"
                                "<p align='center'>%1&lt;b&gt;&amp;%2</p>"
                                "<p align='center'>价格:10&nbsp;&nbsp;&nbsp;&nbsp;数量：10</p>"));
    }

    void buyable_data()
    {
        QTest::addColumn<double>("money");
        QTest::addColumn<double>("price");
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("count");
        const int most = std::numeric_limits<int>::max();
        const int least = std::numeric_limits<int>::min();
        // A piece at 10.00 costs 10.03.
        QTest::newRow("ten") << 100.30 << 10.0 << 0.003 << 10;
        QTest::newRow("a fen less") << 100.29 << 10.0 << 0.003 << 9;
        QTest::newRow("one") << 10.04 << 10.0 << 0.003 << 1;
        // The money is a float, and that of 10.03 is a little less.
        QTest::newRow("one, as a float") << 10.03 << 10.0 << 0.003 << 0;
        QTest::newRow("none") << 10.02 << 10.0 << 0.003 << 0;
        // 10.01 and its fee are 10.04003: the fen begins anew.
        QTest::newRow("rounded up") << 100.49 << 10.01 << 0.003 << 9;
        QTest::newRow("rounded up, enough") << 100.50 << 10.01 << 0.003 << 10;
        QTest::newRow("no fee") << 100.00 << 10.0 << 0.0 << 10;
        QTest::newRow("no fee, a fen less") << 99.99 << 10.0 << 0.0 << 9;
        QTest::newRow("a fee too small to be one") << 100.00 << 10.0 << 1e-13 << 10;
        QTest::newRow("the smallest fee") << 100.00 << 10.0 << 1e-6 << 9;
        QTest::newRow("the smallest piece") << 1.0 << 0.01 << 0.003 << 50;
        QTest::newRow("nothing") << 0.0 << 10.0 << 0.003 << 0;
        QTest::newRow("less than one owed") << -10.0 << 10.0 << 0.003 << 0;
        QTest::newRow("one owed") << -10.04 << 10.0 << 0.003 << -1;
        QTest::newRow("more than counts") << 9e16 << 0.01 << 0.003 << most;
        QTest::newRow("more owed than counts") << -9e16 << 0.01 << 0.003 << least;
    }

    void buyable()
    {
        QFETCH(double, money);
        QFETCH(double, price);
        QFETCH(double, rate);
        QTEST(buyableCount(float(money), float(price), rate), "count");
    }
};

ZV_TEST(TicketOrderTest)
#include "test_ticketorder.moc"
