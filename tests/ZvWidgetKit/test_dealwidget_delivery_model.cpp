#include "ZvWidgetKit/dealwidget_delivery_model.h"
#include "deliveryrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest/QtTest>

using zvtest::capItem;
using zvtest::Holding;

namespace {

constexpr int inTheMiddle = 0x84;
constexpr int atTheRight = 0x82;

} // namespace

Q_DECLARE_METATYPE(zvtest::Holding)

class DeliveryModelTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewModelHasThirteenColumns()
    {
        const DealWidget_Delivery_Model model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 13);
        QCOMPARE(model.parent(), nullptr);
    }

    void countsIgnoreTheParent()
    {
        DealWidget_Delivery_Model model;
        model.setRecordList({capItem({1, 3, 2}), capItem({2, 3, 2})});
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);
        QCOMPARE(model.columnCount(model.index(0, 0)), 13);
    }

    void headersHoldTheButtonBeforeTheLast()
    {
        const DealWidget_Delivery_Model model;
        QStringList expected = ZvUBCapItem::headerListForModelUse();
        QCOMPARE(expected.size(), 12);
        expected.insert(11, QStringLiteral("操作"));
        for (int section = 0; section < 13; ++section) {
            QCOMPARE(model.headerData(section, Qt::Horizontal, 0).toString(), expected.at(section));
            QCOMPARE(model.headerData(section, Qt::Horizontal, 7).toInt(),
                     section == 0 || section == 1 || section == 11 ? inTheMiddle : atTheRight);
            QCOMPARE(model.headerData(section, Qt::Horizontal, 8).value<QColor>(),
                     QColor(Qt::black));
            QCOMPARE(model.headerData(section, Qt::Horizontal, 9).value<QColor>(),
                     QColor(Qt::white));
            for (const int role : {0, 7, 8, 9})
                QVERIFY(!model.headerData(section, Qt::Vertical, role).isValid());
            for (const int role : {1, 2, 3, 6, 13})
                QVERIFY(!model.headerData(section, Qt::Horizontal, role).isValid());
        }
        QVERIFY(!model.headerData(-1, Qt::Horizontal, 0).isValid());
        QVERIFY(!model.headerData(13, Qt::Horizontal, 0).isValid());
    }

    void textsAreTheItemsButForTheButton()
    {
        DealWidget_Delivery_Model model;
        const ZvUBCapItem item = capItem({7, 30, 12, 29700, 1000});
        model.setRecordList({item});
        for (int column = 0; column < 13; ++column) {
            const QVariant text = model.index(0, column).data();
            QCOMPARE(text.type(), QVariant::String);
            QCOMPARE(text.toString(),
                     column == 11 ? QString() : item.displayDataForModelUse(column));
        }
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("C7"));
        QCOMPARE(model.index(0, 1).data().toString(), QStringLiteral("藏品7"));
        QCOMPARE(model.index(0, 3).data().toInt(), 12);
        QCOMPARE(model.index(0, 10).data().toString(), QStringLiteral("1007"));
        // Under the last header stands the text of this very column, not of the one before.
        QCOMPARE(model.index(0, 12).data().toString(), QStringLiteral("297.00"));
    }

    void coloursTellProfit_data()
    {
        QTest::addColumn<Holding>("holding");
        QTest::addColumn<QColor>("profit");
        QTest::addColumn<QColor>("rate");
        const QColor red(Qt::red);
        const QColor green(Qt::green);
        const QColor white(Qt::white);
        QTest::newRow("wins") << Holding{1, 10, 5, 9000, 1000} << red << red;
        QTest::newRow("loses") << Holding{1, 10, 5, 11000, 1000} << green << green;
        QTest::newRow("even") << Holding{1, 10, 5, 10000, 1000} << white << white;
        QTest::newRow("no price") << Holding{1, 10, 5, 10000, -1} << white << white;
        QTest::newRow("given, no rate") << Holding{1, 10, 5, 0, 1000} << red << white;
    }
    void coloursTellProfit()
    {
        QFETCH(Holding, holding);
        QFETCH(QColor, profit);
        QFETCH(QColor, rate);
        DealWidget_Delivery_Model model;
        model.setRecordList({capItem(holding)});
        for (int column = 0; column < 13; ++column) {
            const QColor expected = column <= 1 ? QColor(Qt::yellow)
                : column == 8                   ? profit
                : column == 9                   ? rate
                                                : QColor(Qt::white);
            QCOMPARE(model.index(0, column).data(9).value<QColor>(), expected);
        }
    }

    void textsStandInTheMiddleAndFiguresRight()
    {
        DealWidget_Delivery_Model model;
        model.setRecordList({capItem({1, 3, 2})});
        for (int column = 0; column < 13; ++column)
            QCOMPARE(model.index(0, column).data(7).toInt(),
                     column <= 1 ? inTheMiddle : atTheRight);
    }

    void otherRolesAndPlacesHaveNoData()
    {
        DealWidget_Delivery_Model model;
        model.setRecordList({capItem({1, 3, 2})});
        for (const int role : {1, 2, 3, 5, 6, 8, 10, 13, 256}) {
            for (const int column : {0, 8, 11})
                QVERIFY(!model.index(0, column).data(role).isValid());
        }
        for (const int role : {0, 7, 9}) {
            QVERIFY(!model.data(QModelIndex(), role).isValid());
            QVERIFY(!model.data(model.index(-1, 0), role).isValid());
            QVERIFY(!model.data(model.index(0, -1), role).isValid());
        }
        const QModelIndex last = model.index(0, 0);
        model.setRecordList({});
        QVERIFY(!model.data(last, 0).isValid());
    }

    void everyListIsOneReset()
    {
        DealWidget_Delivery_Model model;
        QSignalSpy before(&model, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy after(&model, &QAbstractItemModel::modelReset);
        const QList<ZvUBCapItem> list{capItem({1, 3, 2})};
        for (int i = 1; i <= 3; ++i) {
            model.setRecordList(list); // the same data, too
            QCOMPARE(before.count(), i);
            QCOMPARE(after.count(), i);
            QCOMPARE(model.rowCount(), 1);
        }
    }

    void modelKeepsTheRulesOfModels()
    {
        DealWidget_Delivery_Model model;
        zvtest::FlatIdentityProxy proxy(&model);
        QAbstractItemModelTester tester(&proxy,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setRecordList({capItem({1, 3, 2}), capItem({2, 4, 1})});
        model.setRecordList({capItem({3, 3, 3})});
        model.setRecordList({});
    }
};

ZV_TEST(DeliveryModelTest)
#include "test_dealwidget_delivery_model.moc"
