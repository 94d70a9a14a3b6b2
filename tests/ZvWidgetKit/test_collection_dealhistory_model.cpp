#include "ZvWidgetKit/collection_dealhistory_model.h"
#include "dealrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QSignalSpy>
#include <QtTest/QtTest>

using zvtest::deal;
using zvtest::deals;

class CollectionDealHistoryModelTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewModelHasColumnsAndNoRows()
    {
        const Collection_DealHistory_model model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), ZvUBDealItem::dataCountForModelUse());
    }

    void countsIgnoreTheParent()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(3));
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.rowCount(model.index(0, 0)), 3);
        QCOMPARE(model.columnCount(model.index(0, 0)), ZvUBDealItem::dataCountForModelUse());
    }

    void textsAreTheItems()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(4));
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < model.columnCount(); ++column)
                QCOMPARE(model.index(row, column).data().toString(),
                         deal(row + 1).displayDataForModelUse(column));
        }
        QCOMPARE(model.index(2, 0).data().toString(), QStringLiteral("09:30:03"));
        QCOMPARE(model.index(2, 1).data().toString(), QStringLiteral("100.05"));
        QCOMPARE(model.index(2, 2).data().toString(), QStringLiteral("3"));
        QCOMPARE(model.index(2, 3).data().toString(), QStringLiteral("买入"));
    }

    void coloursAreTheItems_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QColor>("price");
        QTest::addColumn<QColor>("quantity");
        QTest::newRow("rises, bought") << 3 << QColor(Qt::red) << QColor(Qt::red);
        QTest::newRow("falls, sold") << 4 << QColor(Qt::green) << QColor(Qt::green);
        QTest::newRow("stands") << 5 << QColor(Qt::white) << QColor(Qt::white);
    }

    void coloursAreTheItems()
    {
        QFETCH(int, number);
        QFETCH(QColor, price);
        QFETCH(QColor, quantity);
        Collection_DealHistory_model model;
        model.setDealList(deals(1, number));
        const auto colour = [&](int column) {
            const QVariant value = model.index(0, column).data(9);
            return value.type() == QVariant::Color ? value.value<QColor>() : QColor();
        };
        QCOMPARE(colour(0), QColor(Qt::white));
        QCOMPARE(colour(1), price);
        QCOMPARE(colour(2), quantity);
        QCOMPARE(colour(3), quantity);
    }

    void timesStandLeftAndFiguresRight()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(1));
        QCOMPARE(model.index(0, 0).data(7).toInt(), 0x81);
        for (int column = 1; column < model.columnCount(); ++column)
            QCOMPARE(model.index(0, column).data(7).toInt(), 0x82);
    }

    void otherRolesAndPlacesHaveNoData()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(2));
        for (const int role : {1, 2, 3, 4, 5, 6, 8, 10, 13, 256})
            QVERIFY2(!model.index(0, 0).data(role).isValid(), qPrintable(QString::number(role)));
        for (const int role : {0, 7, 9}) {
            QVERIFY(!model.data(QModelIndex(), role).isValid());
            QVERIFY(!model.data(model.index(-1, 0), role).isValid());
            QVERIFY(!model.data(model.index(0, -1), role).isValid());
        }
    }

    void anIndexOfDealsThatAreGoneHasNoData()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(5));
        const QModelIndex last = model.index(4, 0);
        model.setDealList(deals(2));
        QVERIFY(!model.data(last, 0).isValid());
    }

    void headers()
    {
        const Collection_DealHistory_model model;
        const QStringList expected = ZvUBDealItem::headerListForModelUse();
        for (int section = 0; section < model.columnCount(); ++section) {
            QCOMPARE(model.headerData(section, Qt::Horizontal, 0).toString(), expected.at(section));
            QCOMPARE(model.headerData(section, Qt::Horizontal, 7).toInt(),
                     section == 0 ? 0x81 : 0x82);
            QCOMPARE(model.headerData(section, Qt::Horizontal, 8).value<QColor>(),
                     QColor(Qt::black));
            QCOMPARE(model.headerData(section, Qt::Horizontal, 9).value<QColor>(),
                     QColor(Qt::white));
        }
        for (const int role : {1, 2, 6, 13, 256})
            QVERIFY(!model.headerData(0, Qt::Horizontal, role).isValid());
        for (const int role : {0, 7, 8, 9})
            QVERIFY(!model.headerData(0, Qt::Vertical, role).isValid());
        QVERIFY(!model.headerData(-1, Qt::Horizontal, 0).isValid());
        QVERIFY(!model.headerData(model.columnCount(), Qt::Horizontal, 0).isValid());
    }

    void everyListIsOneReset()
    {
        Collection_DealHistory_model model;
        model.setDealList(deals(2));
        QStringList story;
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this,
                [&] { story << QStringLiteral("before: ") + zvtest::shownDeals(&model); });
        connect(&model, &QAbstractItemModel::modelReset, this,
                [&] { story << QStringLiteral("after: ") + zvtest::shownDeals(&model); });
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setDealList(deals(3, 7));
        model.setDealList(deals(3, 7));
        model.setDealList({});
        QCOMPARE(story,
                 (QStringList{"before: 1 2", "after: 7 8 9", "before: 7 8 9", "after: 7 8 9",
                              "before: 7 8 9", "after: "}));
        QCOMPARE(inserted.count() + removed.count() + changed.count(), 0);
    }

    void modelKeepsTheRulesOfModels()
    {
        Collection_DealHistory_model model;
        zvtest::FlatIdentityProxy proxy(&model);
        const QAbstractItemModelTester tester(
            &proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const int count : {0, 5, 5, 200, 1, 0})
            model.setDealList(deals(count));
        QCOMPARE(model.rowCount(), 0);
    }
};

ZV_TEST(CollectionDealHistoryModelTest)
#include "test_collection_dealhistory_model.moc"
