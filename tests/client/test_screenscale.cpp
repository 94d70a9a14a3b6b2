#include "client/screenscale.h"

#include "support/testregistry.h"

#include <QtTest/QtTest>

class ScreenScaleTest : public QObject
{
    Q_OBJECT

private slots:
    void scalesOfDesktopsAreMeant_data()
    {
        QTest::addColumn<qreal>("scale");
        QTest::addColumn<bool>("isByChance");
        QTest::newRow("none") << 1.0 << false;
        QTest::newRow("least") << 1.25 << false;
        QTest::newRow("most") << 3.0 << false;
        QTest::newRow("smaller") << 0.75 << false;
        QTest::newRow("361 mm for 1366 pixels") << 96.1121 / 96 << true;
        QTest::newRow("100 dots per inch") << 100.0 / 96 << true;
        QTest::newRow("92 dots per inch") << 92.0 / 96 << true;
    }
    void scalesOfDesktopsAreMeant()
    {
        QFETCH(qreal, scale);
        QTEST(screenscale::isByChance(scale), "isByChance");
    }
};

ZV_TEST(ScreenScaleTest)
#include "test_screenscale.moc"
