#include "ZvWidgetKit/dealwidget_revoke_tablemodel.h"
#include "orderrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QtTest/QtTest>

using zvtest::columnOf;
using zvtest::openOrders;
using zvtest::tickedRows;

namespace {

constexpr int NumberColumn = 2;
constexpr int Columns = 17;

// What a model tells its views, a line an emission.
class Told
{
public:
    explicit Told(QAbstractItemModel *model)
    {
        QObject::connect(model, &QAbstractItemModel::modelAboutToBeReset, &m_context,
                         [this] { m_lines << QStringLiteral("begin reset"); });
        QObject::connect(model, &QAbstractItemModel::modelReset, &m_context,
                         [this] { m_lines << QStringLiteral("end reset"); });
        QObject::connect(
            model, &QAbstractItemModel::dataChanged, &m_context,
            [this](const QModelIndex &from, const QModelIndex &to, const QVector<int> &roles) {
                QStringList texts;
                for (const int role : roles)
                    texts << QString::number(role);
                m_lines << QStringLiteral("%1,%2 to %3,%4 roles %5")
                               .arg(from.row())
                               .arg(from.column())
                               .arg(to.row())
                               .arg(to.column())
                               .arg(texts.join(QLatin1Char(' ')));
            });
    }

    QStringList take() { return std::exchange(m_lines, {}); }

private:
    QStringList m_lines;
    QObject m_context;
};

} // namespace

class RevokeTableModelTest : public QObject
{
    Q_OBJECT

private slots:
    void cellsShowTheTextsOfTheOrders()
    {
        DealWidget_Revoke_tableModel model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), Columns);
        const QList<ZvUBRevokeItem> orders = openOrders({8, 7});
        model.setItemList(orders);
        QCOMPARE(model.rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < Columns; ++column)
                QCOMPARE(model.index(row, column).data(),
                         QVariant(orders.at(row).displayDataForModelUse(column)));
        }
        QCOMPARE(columnOf(&model, NumberColumn), QStringLiteral("8 7"));
        // The table has one level, whatever parent it is asked for.
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);
        QCOMPARE(model.columnCount(model.index(0, 0)), Columns);
    }

    void coloursAndAlignments()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({7, 8}));
        for (int column = 0; column < Columns; ++column) {
            for (int row = 0; row < 2; ++row) {
                QColor colour = Qt::white;
                if (column <= 4)
                    colour = Qt::yellow;
                else if (column == 5)
                    colour = row == 0 ? Qt::red : Qt::green;
                const QModelIndex index = model.index(row, column);
                QCOMPARE(index.data(Qt::ForegroundRole), QVariant(colour));
                const int expected
                    = int(Qt::AlignVCenter | (column <= 4 ? Qt::AlignHCenter : Qt::AlignRight));
                QCOMPARE(index.data(Qt::TextAlignmentRole), QVariant(expected));
                QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole),
                         QVariant(expected));
            }
        }
    }

    void aDirectionThatIsNoSaleIsRed()
    {
        ZvUBRevokeItem::Data data;
        data.direction = 0;
        DealWidget_Revoke_tableModel model;
        model.setItemList({ZvUBRevokeItem(data)});
        QCOMPARE(model.index(0, 5).data(Qt::ForegroundRole), QVariant(QColor(Qt::red)));
        QCOMPARE(model.sellIDs() + model.buyIDs(), QList<int>());
    }

    void header()
    {
        const DealWidget_Revoke_tableModel model;
        const QStringList headers = ZvUBRevokeItem::headerListForModelUse();
        for (int section = 0; section < Columns; ++section) {
            const QVariant text = model.headerData(section, Qt::Horizontal);
            QCOMPARE(text, section == 16 ? QVariant() : QVariant(headers.at(section)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::BackgroundRole),
                     QVariant(QColor(Qt::black)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::ForegroundRole),
                     QVariant(QColor(Qt::white)));
            for (const int role : {int(Qt::EditRole), int(Qt::ToolTipRole), int(Qt::UserRole)})
                QVERIFY(!model.headerData(section, Qt::Horizontal, role).isValid());
            QVERIFY(!model.headerData(section, Qt::Vertical).isValid());
            QVERIFY(!model.headerData(section, Qt::Vertical, Qt::ForegroundRole).isValid());
        }
        QVERIFY(!model.headerData(Columns, Qt::Horizontal).isValid());
        QVERIFY(!model.headerData(-1, Qt::Horizontal).isValid());
    }

    void otherQuestionsHaveNoAnswer()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({7}));
        const QModelIndex stays = model.index(0, 0);
        for (const int role : {int(Qt::EditRole), int(Qt::BackgroundRole), int(Qt::FontRole),
                               int(Qt::ToolTipRole), int(Qt::UserRole)})
            QVERIFY(!stays.data(role).isValid());
        for (const int role : {int(Qt::DisplayRole), int(Qt::CheckStateRole)}) {
            QVERIFY(!model.data(QModelIndex(), role).isValid());
            QVERIFY(!model.data(model.index(1, 0), role).isValid());
        }
        // An index may be older than the list.
        model.setItemList({});
        QVERIFY(!model.data(stays, Qt::DisplayRole).isValid());
        QVERIFY(!model.data(stays, Qt::CheckStateRole).isValid());
        QVERIFY(!model.setData(stays, Qt::Checked, Qt::CheckStateRole));
    }

    void onlyTheFirstColumnHasTicks()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({7}));
        const Qt::ItemFlags plain = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        for (int column = 0; column < Columns; ++column) {
            const QModelIndex index = model.index(0, column);
            QCOMPARE(model.flags(index), column == 0 ? plain | Qt::ItemIsUserCheckable : plain);
            QCOMPARE(index.data(Qt::CheckStateRole),
                     column == 0 ? QVariant(int(Qt::Unchecked)) : QVariant());
            QCOMPARE(model.setData(index, Qt::Checked, Qt::CheckStateRole), column == 0);
        }
        QCOMPARE(model.flags(QModelIndex()), Qt::ItemFlags(Qt::NoItemFlags));
        QVERIFY(!model.setData(QModelIndex(), Qt::Checked, Qt::CheckStateRole));
    }

    void theValueTwoTicksAndEveryOtherClears_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("ticked");
        QTest::newRow("checked") << QVariant(int(Qt::Checked)) << "1";
        QTest::newRow("two") << QVariant(2) << "1";
        QTest::newRow("unchecked") << QVariant(int(Qt::Unchecked)) << "";
        QTest::newRow("partially") << QVariant(int(Qt::PartiallyChecked)) << "";
        QTest::newRow("true") << QVariant(true) << "";
        QTest::newRow("three") << QVariant(3) << "";
        QTest::newRow("nothing") << QVariant() << "";
    }

    void theValueTwoTicksAndEveryOtherClears()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, ticked);
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({9, 8, 7}));
        for (const bool wasTicked : {false, true}) {
            model.setData(model.index(1, 0), wasTicked ? 2 : 0, Qt::CheckStateRole);
            Told told(&model);
            QVERIFY(model.setData(model.index(1, 0), value, Qt::CheckStateRole));
            QCOMPARE(tickedRows(&model), ticked);
            QCOMPARE(told.take(), QStringList{"1,0 to 1,0 roles 10"});
        }
    }

    void otherRolesChangeNothing()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({7}));
        Told told(&model);
        for (const int role : {int(Qt::EditRole), int(Qt::DisplayRole), int(Qt::UserRole)})
            QVERIFY(!model.setData(model.index(0, 0), 2, role));
        QVERIFY(!model.setData(model.index(0, 0), 2));
        QCOMPARE(tickedRows(&model), QString());
        QCOMPARE(told.take(), QStringList());
    }

    void allRowsAreTickedAndCleared()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({9, 8, 7}));
        model.setData(model.index(1, 0), 2, Qt::CheckStateRole);
        Told told(&model);
        const QStringList each{"0,0 to 0,0 roles 10", "1,0 to 1,0 roles 10", "2,0 to 2,0 roles 10"};
        model.selectAll();
        QCOMPARE(tickedRows(&model), QStringLiteral("0 1 2"));
        QCOMPARE(told.take(), each);
        model.deselectAll();
        QCOMPARE(tickedRows(&model), QString());
        QCOMPARE(told.take(), each);
        model.setItemList({});
        told.take();
        model.selectAll();
        model.deselectAll();
        QCOMPARE(told.take(), QStringList());
    }

    void idsComeInTheOrderOfTheRows()
    {
        DealWidget_Revoke_tableModel model;
        QCOMPARE(model.allIDs() + model.checkedIDs() + model.sellIDs() + model.buyIDs()
                     + model.lastID(),
                 QList<int>());
        model.setItemList(openOrders({9, 4, 8, 7}));
        QCOMPARE(model.allIDs(), (QList<int>{9, 4, 8, 7}));
        QCOMPARE(model.sellIDs(), (QList<int>{4, 8}));
        QCOMPARE(model.buyIDs(), (QList<int>{9, 7}));
        QCOMPARE(model.lastID(), QList<int>{9});
        QCOMPARE(model.checkedIDs(), QList<int>());
        model.setData(model.index(3, 0), 2, Qt::CheckStateRole);
        model.setData(model.index(1, 0), 2, Qt::CheckStateRole);
        QCOMPARE(model.checkedIDs(), (QList<int>{4, 7}));
    }

    void removedOrdersLeaveByOneReset()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({9, 4, 8, 7}));
        model.setData(model.index(2, 0), 2, Qt::CheckStateRole);
        Told told(&model);
        QStringList seen;
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this,
                [&] { seen << columnOf(&model, NumberColumn); });
        model.removeIDs({7, 9, 1000});
        QCOMPARE(told.take(), (QStringList{"begin reset", "end reset"}));
        QCOMPARE(seen, QStringList{"9 4 8 7"});
        QCOMPARE(columnOf(&model, NumberColumn), QStringLiteral("4 8"));
        QCOMPARE(tickedRows(&model), QStringLiteral("1"));

        model.removeIDs({});
        QCOMPARE(columnOf(&model, NumberColumn), QStringLiteral("4 8"));
        QCOMPARE(told.take(), (QStringList{"begin reset", "end reset"}));
        model.removeIDs({4, 8});
        QCOMPARE(model.rowCount(), 0);
    }

    void rowsOfOneIdLeaveTogether()
    {
        DealWidget_Revoke_tableModel model;
        model.setItemList(openOrders({7, 8, 7}));
        model.removeIDs({7});
        QCOMPARE(model.allIDs(), QList<int>{8});
    }

    void ticksAreForgottenWithTheirPage()
    {
        DealWidget_Revoke_tableModel model;
        const QList<ZvUBRevokeItem> page = openOrders({9, 8});
        model.setItemList(page);
        model.selectAll();
        Told told(&model);
        // The list of the cache was never ticked, so coming back it has no ticks.
        model.setItemList(page);
        QCOMPARE(told.take(), (QStringList{"begin reset", "end reset"}));
        QCOMPARE(tickedRows(&model), QString());
        QVERIFY(!page.at(0).getUserChecked());
        model.setItemList(page);
        QCOMPARE(told.take(), (QStringList{"begin reset", "end reset"}));
    }

    void classStandsBelowItsQtClass()
    {
        const QMetaObject &meta = DealWidget_Revoke_tableModel::staticMetaObject;
        QCOMPARE(meta.className(), "DealWidget_Revoke_tableModel");
        QCOMPARE(meta.superClass(), &QAbstractTableModel::staticMetaObject);
        QCOMPARE(meta.methodCount(), meta.methodOffset());
    }

    void modelKeepsTheRulesOfModels()
    {
        DealWidget_Revoke_tableModel model;
        zvtest::FlatIdentityProxy proxy(&model);
        const QAbstractItemModelTester tester(
            &proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setItemList(openOrders({9, 8, 7}));
        model.selectAll();
        model.setData(model.index(1, 0), 0, Qt::CheckStateRole);
        model.removeIDs({9});
        model.deselectAll();
        model.setItemList(openOrders({1}));
        model.setItemList({});
        QCOMPARE(proxy.rowCount(), 0);
    }
};

ZV_TEST(RevokeTableModelTest)
#include "test_dealwidget_revoke_tablemodel.moc"
