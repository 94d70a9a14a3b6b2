#include "ZvChartKit/zv_collectioncharts.h"
#include "support/testregistry.h"

// The chart as a host has it: four pages, and what they ask of the exchange.
class CollectionChartsTest : public QObject
{
    Q_OBJECT

private slots:
    void redIsUpUntilTurnedAround()
    {
        Zv_CollectionCharts charts;
        QVERIFY(charts.isRedUp());
        charts.setRedUp(false);
        QVERIFY(!charts.isRedUp());
    }
};

ZV_TEST(CollectionChartsTest)
#include "test_zv_collectioncharts.moc"
