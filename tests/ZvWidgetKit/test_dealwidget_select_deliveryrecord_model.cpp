#include "ZvWidgetKit/dealwidget_select_deliveryrecord_model.h"
#include "orderrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QSignalSpy>
#include <QtTest/QtTest>

using zvtest::columnOf;
using zvtest::deliveries;

namespace {

constexpr int Columns = 14;
constexpr int OrderColumn = 1;
const QList<int> centredColumns{0, 1, 2, 3, 7, 8, 11, 12};

int alignment(bool isCentred)
{
    return int(Qt::AlignVCenter | (isCentred ? Qt::AlignHCenter : Qt::AlignRight));
}

} // namespace

class DeliveryRecordModelTest : public QObject
{
    Q_OBJECT

private slots:
    void cellsShowTheTextsOfTheRecords()
    {
        DealWidget_Select_DeliveryRecord_Model model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), Columns);
        const QList<ZvUBDeliveryRecordItem> records = deliveries({7, 8});
        model.setRecordList(records);
        QCOMPARE(model.rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < Columns; ++column) {
                const QModelIndex index = model.index(row, column);
                QCOMPARE(index.data(), QVariant(records.at(row).displayData(column)));
                QCOMPARE(index.data(Qt::ForegroundRole),
                         QVariant(QColor(column <= 3 ? Qt::yellow : Qt::white)));
                QCOMPARE(index.data(Qt::TextAlignmentRole),
                         QVariant(alignment(centredColumns.contains(column))));
                for (const int role : {int(Qt::EditRole), int(Qt::BackgroundRole),
                                       int(Qt::CheckStateRole), int(Qt::UserRole)})
                    QVERIFY(!index.data(role).isValid());
            }
        }
        QVERIFY(!model.data(QModelIndex()).isValid());
        QVERIFY(!model.data(model.index(2, 0)).isValid());
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);
    }

    void header()
    {
        const DealWidget_Select_DeliveryRecord_Model model;
        const QStringList headers = ZvUBDeliveryRecordItem::headerList();
        QCOMPARE(headers.size(), Columns);
        for (int section = 0; section < Columns; ++section) {
            QCOMPARE(model.headerData(section, Qt::Horizontal), QVariant(headers.at(section)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::TextAlignmentRole),
                     QVariant(alignment(section == 13 || centredColumns.contains(section))));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::BackgroundRole),
                     QVariant(QColor(Qt::black)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::ForegroundRole),
                     QVariant(QColor(Qt::white)));
            QVERIFY(!model.headerData(section, Qt::Vertical).isValid());
            QVERIFY(!model.headerData(section, Qt::Horizontal, Qt::UserRole).isValid());
        }
        // Beyond the list a section is empty, not without an answer.
        QCOMPARE(model.headerData(Columns, Qt::Horizontal), QVariant(QString()));
        QCOMPARE(model.headerData(1000, Qt::Horizontal), QVariant(QString()));
        QVERIFY(!model.headerData(-1, Qt::Horizontal).isValid());
    }

    void fieldsOfARow()
    {
        ZvUBDeliveryRecordItem::Data sent = zvtest::deliveryData(8);
        sent.state = ZvUBDeliveryRecordItem::Sent;
        DealWidget_Select_DeliveryRecord_Model model;
        model.setRecordList(deliveries({7}) << ZvUBDeliveryRecordItem(sent));
        QCOMPARE(model.getState(0), 2);
        QCOMPARE(model.getState(1), 4);
        QCOMPARE(model.getOrderNumber(1), QStringLiteral("T8"));
        QCOMPARE(model.getCollectionName(0), QStringLiteral("藏品7"));
        QCOMPARE(model.getQuantity(0), QStringLiteral("7"));
        QCOMPARE(model.getDeliveryId(0), QStringLiteral("d7"));
    }

    void aRowThatIsNotThereHasNothingToCancel()
    {
        DealWidget_Select_DeliveryRecord_Model model;
        model.setRecordList(deliveries({7}));
        for (const int row : {-1, 1, 1000}) {
            QVERIFY(model.getState(row) != 2);
            QCOMPARE(model.getDeliveryId(row), QString());
            QCOMPARE(model.getOrderNumber(row), QString());
            QCOMPARE(model.getCollectionName(row), QString());
        }
    }

    void eachListComesByAReset()
    {
        DealWidget_Select_DeliveryRecord_Model model;
        QSignalSpy begun(&model, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy ended(&model, &QAbstractItemModel::modelReset);
        const QList<ZvUBDeliveryRecordItem> records = deliveries({7, 8});
        model.setRecordList(records);
        model.setRecordList(records); // shared already, and told all the same
        QCOMPARE(begun.count(), 2);
        QCOMPARE(ended.count(), 2);
        QCOMPARE(columnOf(&model, OrderColumn), QStringLiteral("T7 T8"));
    }

    void modelKeepsTheRulesOfModels()
    {
        DealWidget_Select_DeliveryRecord_Model model;
        zvtest::FlatIdentityProxy proxy(&model);
        const QAbstractItemModelTester tester(
            &proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setRecordList(deliveries({7, 8, 9}));
        model.setRecordList(deliveries({1}));
        model.setRecordList({});
        QCOMPARE(proxy.rowCount(), 0);
    }

    void classesStandBelowTheirQtClass()
    {
        const QMetaObject &meta = DealWidget_Select_DeliveryRecord_Model::staticMetaObject;
        QCOMPARE(meta.superClass(), &QAbstractTableModel::staticMetaObject);
        QCOMPARE(meta.methodCount(), meta.methodOffset());
    }
};

ZV_TEST(DeliveryRecordModelTest)
#include "test_dealwidget_select_deliveryrecord_model.moc"
