#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"
#include "orderrows.h"
#include "pagelog.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QMetaMethod>
#include <QPersistentModelIndex>
#include <QtTest/QtTest>

using zvtest::columnOf;
using zvtest::tickedRows;

namespace {

constexpr int CodeColumn = 1;
constexpr int StateColumn = 7;
constexpr int Columns = 8;

ZvUBTradeItem order(const QString &code, int direction = 1)
{
    ZvUBTradeItem item;
    item.code = code;
    item.name = QStringLiteral("藏品") + code;
    item.direction = direction;
    item.price = 12.5F;
    item.count = 30;
    item.createTime = QStringLiteral("09:30:01");
    return item;
}

// Adds orders of these codes, the first one first: the last one stands on top.
QStringList fill(DealWidget_PrePay_TableModel *model, const QStringList &codes)
{
    QStringList keys;
    for (const QString &code : codes) {
        const ZvUBTradeItem item = order(code);
        keys << item.md5;
        model->addTradeItem(item);
    }
    return keys;
}

void tick(DealWidget_PrePay_TableModel *model, const QList<int> &rows)
{
    for (const int row : rows)
        QVERIFY(model->setData(model->index(row, 0), Qt::Checked, Qt::CheckStateRole));
}

// What a model tells its views about its rows, with the codes on view at that moment.
class RowStory
{
public:
    explicit RowStory(const QAbstractItemModel *model) : m_model(model)
    {
        using Model = QAbstractItemModel;
        note(&Model::rowsAboutToBeInserted, QStringLiteral("inserting"));
        note(&Model::rowsInserted, QStringLiteral("inserted"));
        note(&Model::rowsAboutToBeRemoved, QStringLiteral("removing"));
        note(&Model::rowsRemoved, QStringLiteral("removed"));
        QObject::connect(model, &Model::modelReset, &m_context,
                         [this] { m_lines << QStringLiteral("reset"); });
        QObject::connect(
            model, &Model::dataChanged, &m_context,
            [this](const QModelIndex &from, const QModelIndex &to, const QVector<int> &roles) {
                m_lines << QStringLiteral("changed %1,%2 to %3,%4%5")
                               .arg(from.row())
                               .arg(from.column())
                               .arg(to.row())
                               .arg(to.column())
                               .arg(roles == QVector<int>{Qt::CheckStateRole}
                                        ? QString()
                                        : QStringLiteral(" of other roles"));
            });
    }

    QStringList take() { return std::exchange(m_lines, {}); }

private:
    template <typename Signal>
    void note(Signal signal, const QString &word)
    {
        QObject::connect(m_model, signal, &m_context,
                         [this, word](const QModelIndex &, int first, int last) {
                             m_lines << QStringLiteral("%1 %2-%3: %4")
                                            .arg(word)
                                            .arg(first)
                                            .arg(last)
                                            .arg(columnOf(m_model, CodeColumn));
                         });
    }

    const QAbstractItemModel *m_model;
    QStringList m_lines;
    QObject m_context;
};

} // namespace

class PrePayTableModelTest : public QObject
{
    Q_OBJECT

private slots:
    void theNewestOrderStandsOnTop()
    {
        DealWidget_PrePay_TableModel model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), Columns);
        RowStory story(&model);
        fill(&model, {"a", "b"});
        QCOMPARE(story.take(),
                 (QStringList{"inserting 0-0: ", "inserted 0-0: a", "inserting 0-0: a",
                              "inserted 0-0: b a"}));
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);
        QCOMPARE(model.columnCount(model.index(0, 0)), Columns);
    }

    void itemsAreCopies()
    {
        DealWidget_PrePay_TableModel model;
        ZvUBTradeItem item = order("a");
        model.addTradeItem(item);
        item.code = QStringLiteral("changed");
        QCOMPARE(columnOf(&model, CodeColumn), QStringLiteral("a"));
        ZvUBTradeItem copy = model.itemAt(0);
        QCOMPARE(copy.md5, item.md5);
        QCOMPARE(copy.price, 12.5F);
        QCOMPARE(copy.count, 30);
        copy.code = QStringLiteral("changed");
        QCOMPARE(columnOf(&model, CodeColumn), QStringLiteral("a"));
    }

    void cellsShowTheTextsOfTheOrders()
    {
        DealWidget_PrePay_TableModel model;
        model.addTradeItem(order("a", 1));
        model.addTradeItem(order("b", 2));
        model.addTradeItem(order("c", 0));
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < Columns; ++column) {
                const QModelIndex index = model.index(row, column);
                QCOMPARE(index.data(), QVariant(model.itemAt(row).displayDataForModelUse(column)));
                QColor colour = Qt::white;
                if (column <= 2)
                    colour = Qt::yellow;
                else if (column == 3)
                    colour = model.itemAt(row).direction == 1 ? Qt::red : Qt::green;
                QCOMPARE(index.data(Qt::ForegroundRole), QVariant(colour));
                const int alignment
                    = int(Qt::AlignVCenter | (column <= 2 ? Qt::AlignHCenter : Qt::AlignRight));
                QCOMPARE(index.data(Qt::TextAlignmentRole), QVariant(alignment));
                QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole),
                         QVariant(alignment));
                QCOMPARE(index.data(Qt::CheckStateRole),
                         column == 0 ? QVariant(int(Qt::Unchecked)) : QVariant());
                QVERIFY(!index.data(Qt::EditRole).isValid());
                QVERIFY(!index.data(Qt::BackgroundRole).isValid());
            }
        }
        QVERIFY(!model.data(QModelIndex()).isValid());
        QVERIFY(!model.data(model.index(3, 0)).isValid());
    }

    void header()
    {
        const DealWidget_PrePay_TableModel model;
        const QStringList headers = ZvUBTradeItem::headerListForModelUse();
        for (int section = 0; section < Columns; ++section) {
            QCOMPARE(model.headerData(section, Qt::Horizontal), QVariant(headers.at(section)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::BackgroundRole),
                     QVariant(QColor(Qt::black)));
            QCOMPARE(model.headerData(section, Qt::Horizontal, Qt::ForegroundRole),
                     QVariant(QColor(Qt::white)));
            QVERIFY(!model.headerData(section, Qt::Vertical).isValid());
            QVERIFY(!model.headerData(section, Qt::Horizontal, Qt::UserRole).isValid());
        }
        QVERIFY(!model.headerData(Columns, Qt::Horizontal).isValid());
    }

    void onlyTheFirstColumnHasTicks()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a"});
        const Qt::ItemFlags plain = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        for (int column = 0; column < Columns; ++column) {
            const QModelIndex index = model.index(0, column);
            QCOMPARE(model.flags(index), column == 0 ? plain | Qt::ItemIsUserCheckable : plain);
            QCOMPARE(model.setData(index, 2, Qt::CheckStateRole), column == 0);
            QVERIFY(!model.setData(index, 2, Qt::EditRole));
        }
        QCOMPARE(model.flags(QModelIndex()), Qt::ItemFlags(Qt::NoItemFlags));
        QVERIFY(model.itemAt(0).checked);
        QVERIFY(model.setData(model.index(0, 0), true, Qt::CheckStateRole));
        QVERIFY(!model.itemAt(0).checked);
    }

    void checkedRowsComeFromTheLastToTheFirst()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a", "b", "c", "d"});
        QCOMPARE(model.checkedRows(), QList<int>());
        tick(&model, {0, 3, 1});
        QCOMPARE(model.checkedRows(), (QList<int>{3, 1, 0}));
    }

    void ticksMoveWithTheirRows()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a", "b"});
        tick(&model, {0});
        fill(&model, {"c", "d"});
        QCOMPARE(columnOf(&model, CodeColumn), QStringLiteral("d c b a"));
        QCOMPARE(tickedRows(&model), QStringLiteral("2"));
    }

    void allRowsAreTickedAndCleared()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a", "b"});
        RowStory story(&model);
        zvtest::PageLog log;
        const QStringList each{"changed 0,0 to 0,0", "changed 1,0 to 1,0"};
        model.selectAll();
        QCOMPARE(log.take(), QStringList{QStringLiteral("全选")});
        QCOMPARE(story.take(), each);
        QCOMPARE(tickedRows(&model), QStringLiteral("0 1"));
        model.deselectAll();
        QCOMPARE(log.take(), QStringList());
        QCOMPARE(story.take(), each);
        QCOMPARE(tickedRows(&model), QString());
    }

    void theWordIsSaidBeforeTheTicks()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a"});
        zvtest::PageLog log;
        QStringList before;
        connect(&model, &QAbstractItemModel::dataChanged, this, [&] { before = log.take(); });
        model.selectAll();
        QCOMPARE(before, QStringList{QStringLiteral("全选")});
    }

    void anEmptyTableIsTickedWithAWordOnly()
    {
        DealWidget_PrePay_TableModel model;
        zvtest::PageLog log;
        model.selectAll();
        model.deselectAll();
        model.removeCheckedRows();
        QCOMPARE(log.take(), QStringList{QStringLiteral("全选")});
    }

    void tickedRowsAreRemovedFromTheLastOn()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a", "b", "c", "d"});
        tick(&model, {0, 2, 3});
        const QPersistentModelIndex stays(model.index(1, CodeColumn));
        RowStory story(&model);
        model.removeCheckedRows();
        QCOMPARE(story.take(),
                 (QStringList{"removing 3-3: d c b a", "removed 3-3: d c b", "removing 2-2: d c b",
                              "removed 2-2: d c", "removing 0-0: d c", "removed 0-0: c"}));
        QCOMPARE(stays.row(), 0);
        QCOMPARE(stays.data().toString(), QStringLiteral("c"));
        model.removeCheckedRows();
        QCOMPARE(story.take(), QStringList());
    }

    void anAnswerRemovesTheFirstRowOfItsKey()
    {
        DealWidget_PrePay_TableModel model;
        const QStringList keys = fill(&model, {"a", "b", "c"});
        RowStory story(&model);
        model.removeByMd5(keys.at(1));
        QCOMPARE(story.take(), (QStringList{"removing 1-1: c b a", "removed 1-1: c a"}));
        model.removeByMd5(keys.at(1));
        model.removeByMd5(QStringLiteral("unknown"));
        model.removeByMd5(QString());
        QCOMPARE(story.take(), QStringList());

        ZvUBTradeItem twin = model.itemAt(1);
        twin.code = QStringLiteral("twin");
        model.addTradeItem(twin);
        model.removeByMd5(twin.md5);
        QCOMPARE(columnOf(&model, CodeColumn), QStringLiteral("c a"));
    }

    void aRefusedRowKeepsItsPlaceAndItsTick()
    {
        DealWidget_PrePay_TableModel model;
        const QStringList keys = fill(&model, {"a", "b", "c"});
        tick(&model, {1});
        RowStory story(&model);
        model.markFailed(keys.at(1), QStringLiteral("可用资金不足"));
        QCOMPARE(story.take(),
                 (QStringList{"removing 1-1: c b a", "removed 1-1: c a", "inserting 1-1: c a",
                              "inserted 1-1: c b a"}));
        QCOMPARE(tickedRows(&model), QStringLiteral("1"));
        const ZvUBTradeItem failed = model.itemAt(1);
        QCOMPARE(failed.state, 3);
        QCOMPARE(failed.message, QStringLiteral("可用资金不足"));
        QCOMPARE(failed.md5, keys.at(1));
        QVERIFY(model.index(1, StateColumn).data().toString().contains(failed.message));
        for (const int row : {0, 2}) {
            QCOMPARE(model.itemAt(row).state, 1);
            QCOMPARE(model.itemAt(row).message, QString());
        }

        // It can be refused again, and removed by its key in the end.
        model.markFailed(keys.at(1), QStringLiteral("已休市"));
        QCOMPARE(model.itemAt(1).message, QStringLiteral("已休市"));
        story.take();
        model.markFailed(QStringLiteral("unknown"), QStringLiteral("x"));
        QCOMPARE(story.take(), QStringList());
        model.removeByMd5(keys.at(1));
        QCOMPARE(columnOf(&model, CodeColumn), QStringLiteral("c a"));
    }

    void theFirstOfTwoRowsIsMarked()
    {
        DealWidget_PrePay_TableModel model;
        fill(&model, {"a"});
        model.addTradeItem(model.itemAt(0));
        model.markFailed(model.itemAt(0).md5, QStringLiteral("x"));
        QCOMPARE(model.itemAt(0).state, 3);
        QCOMPARE(model.itemAt(1).state, 1);
    }

    void equalOrdersAreTwoRows()
    {
        DealWidget_PrePay_TableModel model;
        const QStringList keys = fill(&model, {"a", "a"});
        QVERIFY(keys.at(0) != keys.at(1));
        model.removeByMd5(keys.at(0));
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.itemAt(0).md5, keys.at(1));
    }

    void modelKeepsTheRulesOfModels()
    {
        DealWidget_PrePay_TableModel model;
        zvtest::FlatIdentityProxy proxy(&model);
        const QAbstractItemModelTester tester(
            &proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QStringList keys = fill(&model, {"a", "b", "c", "d"});
        model.selectAll();
        model.markFailed(keys.at(0), QStringLiteral("x"));
        model.markFailed(keys.at(3), QStringLiteral("x"));
        model.removeByMd5(keys.at(2));
        model.deselectAll();
        tick(&model, {0, 2});
        model.removeCheckedRows();
        QCOMPARE(columnOf(&proxy, CodeColumn), QStringLiteral("b"));
    }

    void tickingAllAtOnceAreSlots()
    {
        const QMetaObject &meta = DealWidget_PrePay_TableModel::staticMetaObject;
        QCOMPARE(meta.className(), "DealWidget_PrePay_TableModel");
        QCOMPARE(meta.superClass(), &QAbstractTableModel::staticMetaObject);
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
        QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("selectAll()"));
        QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(),
                 QByteArray("deselectAll()"));
    }
};

ZV_TEST(PrePayTableModelTest)
#include "test_dealwidget_prepay_tablemodel.moc"
