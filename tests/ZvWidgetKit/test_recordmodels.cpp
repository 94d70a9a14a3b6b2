#include "ZvWidgetKit/dealwidget_buysell_captablemodel.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtablemodel.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tablemodel.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tablemodel.h"
#include "ZvWidgetKit/dealwidget_select_delegate_tablemodel.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tablemodel.h"
#include "recordrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

namespace {

constexpr int Centred = 0x84;
constexpr int Right = 0x82;

// A model, and what is expected of it. Alignment and colours are a letter a column: c centred,
// r right; y yellow, w white, R red, G green.
struct Member {
    QString name;
    std::shared_ptr<QAbstractTableModel> model;
    std::function<void(int count, int first)> fill;
    std::function<QString(int number, int column)> text;
    QStringList headers;
    QString alignment;
    QMap<int, QString> colours; // by number of the item
};

QList<Member> makeMembers()
{
    QList<Member> members;
    auto deals = std::make_shared<DealWidget_Select_DealRecord_TableModel>();
    members.append({QStringLiteral("deals"),
                    deals,
                    [set = deals.get()](int count, int first) {
                        set->setRecordList(zvtest::rowsOf(zvtest::dealRecord, count, first));
                    },
                    [](int number, int column) {
                        return zvtest::dealRecord(number).displayDataForModelUse(column);
                    },
                    ZvUBDealRecordItem::headerListForModelUse(),
                    QStringLiteral("ccrrrrrrr"),
                    {{1, QStringLiteral("yyRwwwwww")}, {2, QStringLiteral("yyGwwwwww")}}});
    auto orders = std::make_shared<DealWidget_Select_Delegate_TableModel>();
    members.append(
        {QStringLiteral("orders"),
         orders,
         [set = orders.get()](int count, int first) {
             set->setRecordList(zvtest::rowsOf(zvtest::order, count, first));
         },
         [](int number, int column) { return zvtest::order(number).displayData(column); },
         ZvUBEntrustItem::headerList(),
         QStringLiteral("ccccrrrrrrrrrrrr"),
         {{1, QStringLiteral("yyyyRwwwwwwwwwww")}, {2, QStringLiteral("yyyyGwwwwwwwwwww")}}});
    auto applications = std::make_shared<DealWidget_Select_ApplyRecord_TableModel>();
    members.append({QStringLiteral("applications"),
                    applications,
                    [set = applications.get()](int count, int first) {
                        set->setRecordList(zvtest::rowsOf(zvtest::application, count, first));
                    },
                    [](int number, int column) {
                        return zvtest::application(number).displayDataForModelUse(column);
                    },
                    ZvUBApplyItem::headerListForModelUse(),
                    QStringLiteral("ccrrrrrrr"),
                    {{1, QStringLiteral("yywwwwwww")}, {2, QStringLiteral("yywwwwwww")}}});
    auto money = std::make_shared<DealWidget_Select_MoneyFlow_TableModel>();
    members.append({QStringLiteral("money"),
                    money,
                    [set = money.get()](int count, int first) {
                        set->setRecordList(zvtest::rowsOf(zvtest::moneyFlow, count, first));
                    },
                    [](int number, int column) {
                        return zvtest::moneyFlow(number).displayDataForModelUse(column);
                    },
                    ZvUBMoneyFlowItem::headerListForModelUse(),
                    QStringLiteral("crcccc"),
                    {{1, QStringLiteral("wwwRww")}, {2, QStringLiteral("wwwGww")}}});
    auto holdings = std::make_shared<DealWidget_BuySell_CapTableModel>();
    members.append({QStringLiteral("holdings"),
                    holdings,
                    [set = holdings.get()](int count, int first) {
                        set->setItemList(zvtest::rowsOf(zvtest::holding, count, first));
                    },
                    [](int number, int column) {
                        return zvtest::holding(number).displayDataForModelUse(column);
                    },
                    ZvUBCapItem::headerListForModelUse(),
                    QStringLiteral("ccrrrrrrrrrr"),
                    {{1, QStringLiteral("yywwwwwwGGww")},
                     {2, QStringLiteral("yywwwwwwwwww")},
                     {3, QStringLiteral("yywwwwwwRRww")}}});
    // Its red and green are of a softer kind, which letters of their own stand for.
    auto sums = std::make_shared<DealWidget_BuySell_DealTableModel>();
    members.append({QStringLiteral("sums of the day"),
                    sums,
                    [set = sums.get()](int count, int first) {
                        set->setItemList(zvtest::rowsOf(zvtest::daySum, count, first));
                    },
                    [](int number, int column) {
                        return zvtest::daySum(number).displayDataForModelUse(column);
                    },
                    ZvUBGatherItem::headerListForModelUse(),
                    QStringLiteral("ccrrrrrrrrrrr"),
                    {{1, QStringLiteral("yywwwwwwwwggw")},
                     {2, QStringLiteral("yywwwwwwwwwww")},
                     {3, QStringLiteral("yywwwwwwwwssw")}}});
    return members;
}

char letterOf(const QVariant &value)
{
    if (value.type() != QVariant::Color)
        return '?';
    static const QList<QPair<QColor, char>> letters{
        {QColor(Qt::yellow), 'y'}, {QColor(Qt::white), 'w'},   {QColor(Qt::red), 'R'},
        {QColor(Qt::green), 'G'},  {QColor(231, 60, 60), 's'}, {QColor(56, 176, 65), 'g'},
    };
    for (const auto &letter : letters) {
        if (value.value<QColor>() == letter.first)
            return letter.second;
    }
    return '?';
}

} // namespace

// The models of the five record pages, of the holdings and of the day's sums.
class RecordModelsTest : public QObject
{
    Q_OBJECT

private:
    QList<Member> m_members;

    void addMembers()
    {
        QTest::addColumn<int>("place");
        for (int place = 0; place < m_members.size(); ++place)
            QTest::newRow(qPrintable(m_members.at(place).name)) << place;
    }
    const Member &member() const
    {
        QFETCH(int, place);
        return m_members.at(place);
    }

private slots:
    void initTestCase() { m_members = makeMembers(); }

    void init()
    {
        for (const Member &each : qAsConst(m_members))
            each.fill(0, 1);
    }

    void aNewTableIsEmptyButHasHeaders_data() { addMembers(); }
    void aNewTableIsEmptyButHasHeaders()
    {
        const Member &its = member();
        QCOMPARE(its.model->rowCount(), 0);
        QCOMPARE(its.model->columnCount(), its.alignment.size());
        QCOMPARE(its.headers.size(), its.alignment.size());
    }

    void textsAreTheItems_data() { addMembers(); }
    void textsAreTheItems()
    {
        const Member &its = member();
        its.fill(4, 5);
        QCOMPARE(its.model->rowCount(), 4);
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < its.model->columnCount(); ++column)
                QCOMPARE(its.model->index(row, column).data(0).toString(),
                         its.text(5 + row, column));
        }
        QVERIFY(!its.text(5, 1).isEmpty());
    }

    void coloursAreAsRequired_data() { addMembers(); }
    void coloursAreAsRequired()
    {
        const Member &its = member();
        for (auto colours = its.colours.cbegin(); colours != its.colours.cend(); ++colours) {
            its.fill(1, colours.key());
            QString letters;
            for (int column = 0; column < its.model->columnCount(); ++column)
                letters += QLatin1Char(letterOf(its.model->index(0, column).data(9)));
            QCOMPARE(letters, colours.value());
        }
    }

    void alignmentsAreAsRequired_data() { addMembers(); }
    void alignmentsAreAsRequired()
    {
        const Member &its = member();
        its.fill(2, 1);
        for (int column = 0; column < its.model->columnCount(); ++column) {
            const int expected = its.alignment.at(column) == QLatin1Char('c') ? Centred : Right;
            QCOMPARE(its.model->index(1, column).data(7).toInt(), expected);
            QCOMPARE(its.model->headerData(column, Qt::Horizontal, 7).toInt(), expected);
        }
    }

    void headersAreAsRequired_data() { addMembers(); }
    void headersAreAsRequired()
    {
        const Member &its = member();
        for (int section = 0; section < its.headers.size(); ++section) {
            QCOMPARE(its.model->headerData(section, Qt::Horizontal, 0).toString(),
                     its.headers.at(section));
            QCOMPARE(its.model->headerData(section, Qt::Horizontal, 8).value<QColor>(),
                     QColor(Qt::black));
            QCOMPARE(its.model->headerData(section, Qt::Horizontal, 9).value<QColor>(),
                     QColor(Qt::white));
        }
        for (const int role : {1, 2, 6, 13, 256})
            QVERIFY(!its.model->headerData(0, Qt::Horizontal, role).isValid());
        for (const int role : {0, 7, 8, 9}) {
            QVERIFY(!its.model->headerData(0, Qt::Vertical, role).isValid());
            QVERIFY(!its.model->headerData(-1, Qt::Horizontal, role).isValid());
        }
        QVERIFY(!its.model->headerData(its.headers.size(), Qt::Horizontal, 0).isValid());
    }

    void otherRolesAndPlacesHaveNoData_data() { addMembers(); }
    void otherRolesAndPlacesHaveNoData()
    {
        const Member &its = member();
        its.fill(2, 1);
        for (const int role : {1, 2, 3, 4, 5, 6, 8, 10, 13, 256})
            QVERIFY2(!its.model->index(0, 0).data(role).isValid(),
                     qPrintable(QString::number(role)));
        for (const int role : {0, 7, 9}) {
            QVERIFY(!its.model->data(QModelIndex(), role).isValid());
            QVERIFY(!its.model->data(its.model->index(-1, 0), role).isValid());
            QVERIFY(!its.model->data(its.model->index(0, -1), role).isValid());
        }
    }

    void anIndexOfRowsThatAreGoneHasNoData_data() { addMembers(); }
    void anIndexOfRowsThatAreGoneHasNoData()
    {
        const Member &its = member();
        its.fill(5, 1);
        const QModelIndex last = its.model->index(4, 0);
        its.fill(2, 1);
        QVERIFY(!its.model->data(last, 0).isValid());
    }

    void countsDoNotLookAtTheParent_data() { addMembers(); }
    void countsDoNotLookAtTheParent()
    {
        const Member &its = member();
        its.fill(3, 1);
        const QModelIndex parent = its.model->index(1, 1);
        QCOMPARE(its.model->rowCount(parent), 3);
        QCOMPARE(its.model->columnCount(parent), its.headers.size());
    }

    void everyListIsOneReset_data() { addMembers(); }
    void everyListIsOneReset()
    {
        const Member &its = member();
        its.fill(2, 1);
        QStringList story;
        const QAbstractItemModel *model = its.model.get();
        QObject context;
        connect(model, &QAbstractItemModel::modelAboutToBeReset, &context,
                [&] { story << QStringLiteral("from %1").arg(model->rowCount()); });
        connect(model, &QAbstractItemModel::modelReset, &context,
                [&] { story << QStringLiteral("to %1").arg(model->rowCount()); });
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        its.fill(3, 7);
        its.fill(0, 1);
        QCOMPARE(story, (QStringList{"from 2", "to 3", "from 3", "to 0"}));
        QCOMPARE(inserted.count() + removed.count() + changed.count(), 0);
    }

    // The views are told although nothing is assigned.
    void aListThatSharesItsDataIsAResetToo()
    {
        const auto resets = [](QAbstractItemModel *model, const std::function<void()> &set) {
            set();
            QSignalSpy begun(model, &QAbstractItemModel::modelAboutToBeReset);
            QSignalSpy ended(model, &QAbstractItemModel::modelReset);
            set();
            set();
            return QList<int>{begun.count(), ended.count(), model->rowCount()};
        };
        const QList<int> expected{2, 2, 4};
        DealWidget_Select_DealRecord_TableModel deals;
        const auto dealList = zvtest::rowsOf(zvtest::dealRecord, 4);
        QCOMPARE(resets(&deals, [&] { deals.setRecordList(dealList); }), expected);
        DealWidget_Select_Delegate_TableModel orders;
        const auto orderList = zvtest::rowsOf(zvtest::order, 4);
        QCOMPARE(resets(&orders, [&] { orders.setRecordList(orderList); }), expected);
        DealWidget_Select_ApplyRecord_TableModel applications;
        const auto applicationList = zvtest::rowsOf(zvtest::application, 4);
        QCOMPARE(resets(&applications, [&] { applications.setRecordList(applicationList); }),
                 expected);
        DealWidget_Select_MoneyFlow_TableModel money;
        const auto moneyList = zvtest::rowsOf(zvtest::moneyFlow, 4);
        QCOMPARE(resets(&money, [&] { money.setRecordList(moneyList); }), expected);
        DealWidget_BuySell_CapTableModel holdings;
        const auto holdingList = zvtest::rowsOf(zvtest::holding, 4);
        QCOMPARE(resets(&holdings, [&] { holdings.setItemList(holdingList); }), expected);
        DealWidget_BuySell_DealTableModel sums;
        const auto sumList = zvtest::rowsOf(zvtest::daySum, 4);
        QCOMPARE(resets(&sums, [&] { sums.setItemList(sumList); }), expected);
    }

    // What a caller does to its own list afterwards is not shown.
    void theListIsTheModelsOwn()
    {
        QList<ZvUBCapItem> list = zvtest::rowsOf(zvtest::holding, 2);
        DealWidget_BuySell_CapTableModel model;
        model.setItemList(list);
        list.clear();
        QCOMPARE(model.rowCount(), 2);
    }

    void sidesThatAreNoneAreGreen()
    {
        ZvUBDealRecordItem::Data deal;
        DealWidget_Select_DealRecord_TableModel deals;
        ZvUBEntrustItem::Data order;
        DealWidget_Select_Delegate_TableModel orders;
        for (const int side : {0, 2, 3, -1}) {
            deal.direction = order.direction = side;
            deals.setRecordList({ZvUBDealRecordItem(deal)});
            orders.setRecordList({ZvUBEntrustItem(order)});
            QCOMPARE(letterOf(deals.index(0, 2).data(9)), 'G');
            QCOMPARE(letterOf(orders.index(0, 4).data(9)), 'G');
        }
    }

    void moneyInIsWhateverIsNotZero()
    {
        ZvUBMoneyFlowItem::Data flow;
        DealWidget_Select_MoneyFlow_TableModel model;
        for (const int moneyIn : {1, 2, -1}) {
            flow.moneyIn = moneyIn;
            model.setRecordList({ZvUBMoneyFlowItem(flow)});
            QCOMPARE(letterOf(model.index(0, 3).data(9)), 'R');
        }
    }

    void profitsAreColouredBySign_data()
    {
        QTest::addColumn<qint64>("latest");
        QTest::addColumn<qint64>("cost");
        QTest::addColumn<QString>("colours"); // of profit and rate
        QTest::newRow("a fen won") << qint64(10001) << qint64(10000) << "RR";
        QTest::newRow("a fen lost") << qint64(9999) << qint64(10000) << "GG";
        QTest::newRow("even") << qint64(10000) << qint64(10000) << "ww";
        QTest::newRow("no price") << zvub::noValue << qint64(10000) << "ww";
        QTest::newRow("without cost") << qint64(10000) << qint64(0) << "Rw";
        QTest::newRow("a rate that rounds to zero") << qint64(13107199) << qint64(13107198) << "Rw";
    }
    void profitsAreColouredBySign()
    {
        QFETCH(qint64, latest);
        QFETCH(qint64, cost);
        QFETCH(QString, colours);
        ZvUBCapItem::Data data;
        data.quantity = 1;
        data.latest = latest;
        data.cost = cost;
        DealWidget_BuySell_CapTableModel model;
        model.setItemList({ZvUBCapItem(data)});
        QCOMPARE(QString(QLatin1Char(letterOf(model.index(0, 8).data(9))))
                     + QLatin1Char(letterOf(model.index(0, 9).data(9))),
                 colours);
    }

    void aSellProfitBelowAYuanIsWhite_data()
    {
        QTest::addColumn<qint64>("fen");
        QTest::addColumn<QString>("colour");
        QTest::newRow("nothing") << qint64(0) << "w";
        QTest::newRow("a fen") << qint64(1) << "w";
        QTest::newRow("99 fen") << qint64(99) << "w";
        QTest::newRow("a yuan") << qint64(100) << "s";
        QTest::newRow("a fen lost") << qint64(-1) << "w";
        QTest::newRow("99 fen lost") << qint64(-99) << "w";
        QTest::newRow("a yuan lost") << qint64(-100) << "g";
        QTest::newRow("more than an int holds") << qint64(900000000000000) << "s";
        QTest::newRow("less than an int holds") << qint64(-900000000000000) << "g";
    }
    void aSellProfitBelowAYuanIsWhite()
    {
        QFETCH(qint64, fen);
        QFETCH(QString, colour);
        ZvUBGatherItem::Data data;
        data.sellProfit = fen;
        DealWidget_BuySell_DealTableModel model;
        model.setItemList({ZvUBGatherItem(data)});
        QCOMPARE(QString(QLatin1Char(letterOf(model.index(0, 11).data(9)))), colour);
    }

    void modelsKeepTheRulesOfModels_data() { addMembers(); }
    void modelsKeepTheRulesOfModels()
    {
        const Member &its = member();
        zvtest::FlatIdentityProxy proxy(its.model.get());
        const QAbstractItemModelTester tester(
            &proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const int count : {0, 5, 5, 200, 1, 0})
            its.fill(count, 1);
        QCOMPARE(its.model->rowCount(), 0);
    }
};

ZV_TEST(RecordModelsTest)
#include "test_recordmodels.moc"
