#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/dealwidget_revoke_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_revoke_tableview.h"
#include "messageboxes.h"
#include "orderrows.h"
#include "record.h"
#include "support/testregistry.h"
#include "tablepagebench.h"
#include "wheel.h"

#include <QFile>
#include <QHeaderView>
#include <QPointer>
#include <QRegularExpression>
#include <QScrollBar>
#include <QtTest/QtTest>

#include <memory>

using zvtest::boxesIn;
using zvtest::columnOf;
using zvtest::notices;
using zvtest::openOrders;
using zvtest::ShownBox;
using zvtest::tickedRows;

namespace {

constexpr int NumberColumn = 2;

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QString asks(int page, int size)
{
    return QStringLiteral("ZvServerEngine::sendRequest_RevokeList(%1, %2)").arg(page).arg(size);
}

QString takesBack(const QString &ids)
{
    return QStringLiteral("ZvServerActionResult::sendRequest_trade_revoke([%1])").arg(ids);
}

QString turn(const char *direction, int page, int size)
{
    return QStringLiteral("<time> ==> %1\n<time> ==> RequestPage: %2\n%3")
        .arg(QLatin1String(direction))
        .arg(page)
        .arg(asks(page, size));
}

QString paragraph(const QString &text)
{
    return QStringLiteral("<p align='center'>%1</p>").arg(text);
}

// A view that stands alone, as the bench takes a page.
class Bench : public zvtest::TablePageBench<DealWidget_Revoke_TableView>
{
public:
    Bench() { view()->resize(700, 100); }

    DealWidget_Revoke_TableView *view() const { return page.get(); }

    // What pages and kit said, with each time of day as "<time>".
    QString said()
    {
        static const QRegularExpression time(QStringLiteral("(^|\n)\\d\\d:\\d\\d:\\d\\d\\d"));
        return m_record.take().replace(time, QStringLiteral("\\1<time>"));
    }

    QString shown() const { return columnOf(view()->model(), NumberColumn); }
    void tick(const QList<int> &rows)
    {
        for (const int row : rows)
            QVERIFY(
                view()->model()->setData(view()->model()->index(row, 0), 2, Qt::CheckStateRole));
    }
    void turnWheel(int delta) { QVERIFY(zvtest::turnWheel(view()->viewport(), delta)); }
    void call(const char *slot)
    {
        QVERIFY2(QMetaObject::invokeMethod(view(), slot, Qt::DirectConnection), slot);
    }

private:
    zvtest::Record m_record;
};

} // namespace

class RevokeTableViewTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Bench> m_bench;
    DealWidget_Revoke_TableView *view() const { return m_bench->view(); }

    // The view with orders on it, and nothing said yet.
    void fill(const QList<int> &numbers)
    {
        view()->selectOrders(1, 10);
        cache()->storeRevokeList(openOrders(numbers));
        m_bench->said();
    }

private slots:
    void init()
    {
        m_bench = std::make_unique<Bench>();
        cache()->storeRevokeList({});
        m_bench->said();
    }

    void cleanup() { m_bench.reset(); }

    void tableIsSetUpAsRequired()
    {
        QVERIFY(qobject_cast<DealWidget_Revoke_tableDelegate *>(view()->itemDelegate()));
        QVERIFY(!view()->model()->QObject::parent());
        QVERIFY(view()->verticalHeader()->isHidden());
        QVERIFY(!view()->showGrid());
        QCOMPARE(view()->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view()->selectionMode(), QAbstractItemView::MultiSelection);
        QHeaderView *header = view()->horizontalHeader();
        QCOMPARE(header->count(), 17);
        for (int section = 0; section < header->count(); ++section) {
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
            QCOMPARE(view()->isColumnHidden(section),
                     section == 1 || section == 10 || section == 13);
        }
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        const QMap<int, int> widths{{0, 50}, {2, 200}, {3, 100}, {4, 200},
                                    {5, 50}, {6, 100}, {15, 200}};
        for (auto width = widths.cbegin(); width != widths.cend(); ++width)
            QCOMPARE(view()->columnWidth(width.key()), width.value());
        QCOMPARE(view()->verticalHeader()->defaultSectionSize(), 22);
        cache()->storeRevokeList(openOrders({1}));
        QCOMPARE(view()->rowHeight(0), 22);

        QCOMPARE(view()->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"));
        QCOMPARE(
            header->styleSheet(),
            QStringLiteral("QHeaderView::section {height:30px;background-color: #101114;"
                           "border-top: none;border-bottom:none;border-right:1px solid #161618;"
                           "border-left:none;}"
                           "QHeaderView{height: 24px;background-color: #101114;"
                           "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}"));
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString bars = QString::fromUtf8(sheet.readAll());
        QCOMPARE(view()->verticalScrollBar()->styleSheet(), bars);
        QCOMPARE(view()->horizontalScrollBar()->styleSheet(), bars);
    }

    void nothingIsAskedBeforeTheTableIsShown() { QCOMPARE(m_bench->said(), QString()); }

    // The header takes one row away; below eleven rows it is ten.
    void thePageIsAsLongAsTheTable_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("size");
        QTest::newRow("low") << 100 << 10;
        QTest::newRow("eleven rows") << 242 << 10;
        QTest::newRow("one pixel below twelve") << 263 << 10;
        QTest::newRow("twelve rows") << 264 << 11;
        QTest::newRow("high") << 460 << 19;
    }

    void thePageIsAsLongAsTheTable()
    {
        QFETCH(int, height);
        QFETCH(int, size);
        m_bench->show(QSize(700, height));
        QCOMPARE(m_bench->said(), asks(1, size));
    }

    void eachShowReloads()
    {
        m_bench->show(QSize(700, 264));
        cache()->storeRevokeList(openOrders({9}));
        view()->hide();
        QCOMPARE(m_bench->said(), asks(1, 11));
        m_bench->show(QSize(700, 460));
        QCOMPARE(m_bench->said(), asks(1, 19));
        // What was on view stays until the answer.
        QCOMPARE(m_bench->shown(), QStringLiteral("9"));
    }

    void aCallerNamesPageAndLeastSize()
    {
        view()->resize(700, 264);
        view()->selectOrders(3, 10);
        view()->selectOrders(1, 12);
        view()->selectOrders(1, 11);
        view()->selectOrders(2, 1);
        QCOMPARE(m_bench->said(),
                 QStringList({asks(3, 11), asks(1, 12), asks(1, 11), asks(2, 11)}).join('\n'));
    }

    void turnsReuseTheSizeOfTheQuery()
    {
        m_bench->show(QSize(700, 264));
        view()->resize(700, 600);
        m_bench->said();
        view()->pageDown();
        QCOMPARE(m_bench->said(), turn("Down", 2, 11));
        view()->pageUp();
        QCOMPARE(m_bench->said(), turn("Up", 1, 11));
    }

    void turnsBeforeAnyQueryAskForTen()
    {
        view()->pageDown();
        QCOMPARE(m_bench->said(), turn("Down", 2, 10));
    }

    void anAnswerMakesTheRequestedPageCurrent()
    {
        fill({9, 8});
        view()->pageDown();
        view()->pageDown(); // without an answer, the page on view is still the first one
        m_bench->said();
        cache()->storeRevokeList(openOrders({7, 6}));
        QCOMPARE(m_bench->shown(), QStringLiteral("7 6"));
        view()->pageDown();
        QCOMPARE(m_bench->said(), turn("Down", 3, 10));
        cache()->storeRevokeList(openOrders({5}));
        view()->pageUp();
        QCOMPARE(m_bench->said(), turn("Up", 2, 10));
    }

    void anEmptyAnswerToAQueryEmptiesTheTable()
    {
        fill({9, 8});
        view()->selectOrders(4, 10);
        cache()->storeRevokeList({});
        QCOMPARE(m_bench->shown(), QString());
        m_bench->said();
        view()->pageDown();
        QCOMPARE(m_bench->said(), turn("Down", 2, 10));
    }

    void aPagePastTheLastOneLeavesTheTable()
    {
        fill({9, 8});
        view()->pageDown();
        m_bench->said();
        cache()->storeRevokeList({});
        QCOMPARE(m_bench->shown(), QStringLiteral("9 8"));
        view()->pageDown();
        QCOMPARE(m_bench->said(), turn("Down", 2, 10));
    }

    // An empty answer counts as one to a query once only.
    void theQueryEndsWithItsAnswer()
    {
        view()->selectOrders(1, 10);
        cache()->storeRevokeList(openOrders({9}));
        cache()->storeRevokeList({});
        QCOMPARE(m_bench->shown(), QStringLiteral("9"));
        view()->selectOrders(1, 10);
        cache()->storeRevokeList({});
        cache()->storeRevokeList(openOrders({8}));
        cache()->storeRevokeList({});
        QCOMPARE(m_bench->shown(), QStringLiteral("8"));
    }

    void theFifthNotchTurnsThePage()
    {
        fill({9});
        m_bench->show(QSize(700, 264));
        m_bench->said();
        for (int notch = 0; notch < 4; ++notch)
            m_bench->turnWheel(-120);
        QCOMPARE(m_bench->said(), QString());
        m_bench->turnWheel(-120);
        QCOMPARE(m_bench->said(), turn("Down", 2, 11));
        for (int notch = 0; notch < 4; ++notch)
            m_bench->turnWheel(-120);
        QCOMPARE(m_bench->said(), QString());
        m_bench->turnWheel(120); // the way has turned; the notch is lost
        for (int notch = 0; notch < 4; ++notch)
            m_bench->turnWheel(120);
        QCOMPARE(m_bench->said(), QString());
        m_bench->turnWheel(120);
        QCOMPARE(m_bench->said(), turn("Up", 1, 11));
    }

    void theWheelDoesNotScroll()
    {
        QList<int> many;
        for (int number = 1; number <= 60; ++number)
            many << number;
        m_bench->show(QSize(700, 264));
        fill(many);
        QScrollBar *bar = view()->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 5);
        bar->setValue(5);
        m_bench->turnWheel(-120);
        QCOMPARE(bar->value(), 5);
    }

    void withdrawals_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("ids");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("emptyText");
        QTest::newRow("selected") << "slot_revokeSelected"
                                  << "4, 7"
                                  << "确认撤掉选中？"
                                  << "当前没有选中要撤销的委托！";
        QTest::newRow("all") << "slot_revokeAll"
                             << "9, 4, 8, 7"
                             << "确认撤掉全部？"
                             << "当前委托列表为空！";
        QTest::newRow("sells") << "slot_revokeSells"
                               << "4, 8"
                               << "确认撤卖？"
                               << "当前没有任何卖出委托！";
        QTest::newRow("buys") << "slot_revokeBuys"
                              << "9, 7"
                              << "确认撤买？"
                              << "当前没有任何买入委托！";
        QTest::newRow("last") << "slot_revokeLast"
                              << "9"
                              << "确认撤掉最后一笔？"
                              << "当前委托列表为空！";
    }

    void withdrawals()
    {
        QFETCH(QString, slot);
        QFETCH(QString, ids);
        QFETCH(QString, question);
        QFETCH(QString, emptyText);
        const QByteArray name = slot.toUtf8();

        const QList<ShownBox> none = boxesIn([&] { m_bench->call(name); });
        QCOMPARE(none.size(), 0);
        QCOMPARE(m_bench->said(), QString());
        QCOMPARE(notices(), QStringList{emptyText});

        fill({9, 4, 8, 7});
        m_bench->tick({3, 1});
        const QList<ShownBox> boxes
            = boxesIn([&] { m_bench->call(name); }, [&] { QCOMPARE(m_bench->said(), QString()); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).text, paragraph(question));
        QCOMPARE(boxes.at(0).buttons,
                 (QStringList{QStringLiteral("确认"), QStringLiteral("取消")}));
        QCOMPARE(boxes.at(0).title, QStringLiteral("撤单前信息确认"));
        QCOMPARE(boxes.at(0).titleHeight, 40);
        QVERIFY(!boxes.at(0).hasParent);
        QCOMPARE(m_bench->said(), takesBack(ids));
        QCOMPARE(notices(), QStringList{emptyText});
        // The rows stay until the answer.
        QCOMPARE(m_bench->shown(), QStringLiteral("9 4 8 7"));
    }

    void aCancelledQuestionSendsNothing_data() { withdrawals_data(); }
    void aCancelledQuestionSendsNothing()
    {
        QFETCH(QString, slot);
        fill({9, 4, 8, 7});
        m_bench->tick({3, 1});
        const QList<ShownBox> boxes
            = boxesIn([&] { m_bench->call(slot.toUtf8()); }, {}, QStringLiteral("取消"));
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(m_bench->said(), QString());
        QCOMPARE(tickedRows(view()->model()), QStringLiteral("1 3"));
    }

    void aQuestionThatIsClosedSendsNothing_data() { withdrawals_data(); }
    void aQuestionThatIsClosedSendsNothing()
    {
        QFETCH(QString, slot);
        fill({9, 4, 8, 7});
        m_bench->tick({3, 1});
        for (const bool byItsCross : {false, true}) {
            const QList<ShownBox> boxes = boxesIn([&] { m_bench->call(slot.toUtf8()); },
                                                  [&] { zvtest::closeBox(byItsCross); });
            QCOMPARE(boxes.size(), 1);
            QCOMPARE(m_bench->said(), QString());
            QCOMPARE(tickedRows(view()->model()), QStringLiteral("1 3"));
        }
    }

    void onlyThePageOnViewIsMeant()
    {
        fill({9, 8});
        view()->pageDown();
        cache()->storeRevokeList(openOrders({7}));
        m_bench->said();
        boxesIn([&] { m_bench->call("slot_revokeAll"); });
        QCOMPARE(m_bench->said(), takesBack("7"));
    }

    void whatWasAskedIsSentThoughTheListChanges()
    {
        fill({9, 8});
        boxesIn([&] { m_bench->call("slot_revokeAll"); },
                [&] { cache()->storeRevokeList(openOrders({5})); });
        QCOMPARE(m_bench->said(), takesBack("9, 8"));
        QCOMPARE(m_bench->shown(), QStringLiteral("5"));
    }

    void aTableThatEndsBehindTheQuestionSendsNothing()
    {
        fill({9});
        boxesIn([&] { QMetaObject::invokeMethod(view(), "slot_revokeAll"); },
                [&] { m_bench->page.reset(); });
        QCOMPARE(m_bench->said(), QString());
    }

    void aSuccessCutsTheTableAndTellsIt()
    {
        fill({9, 4, 8, 7});
        m_bench->tick({1, 3});
        boxesIn([&] { m_bench->call("slot_revokeSelected"); });
        m_bench->said();
        const QList<ShownBox> boxes = boxesIn(
            [&] {
                m_bench->exchange()->answer(zvPath_trade_revoke, ZvScriptedTransport::ok("{}"));
                m_bench->settle();
            },
            [&] { QCOMPARE(m_bench->shown(), QStringLiteral("9 8")); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).text, paragraph(QStringLiteral("撤单成功")));
        QCOMPARE(boxes.at(0).buttons, QStringList{QStringLiteral("确认")});
        QCOMPARE(boxes.at(0).title, QStringLiteral("提示"));
        QCOMPARE(boxes.at(0).titleHeight, 40);
        QVERIFY(!boxes.at(0).hasParent);
        QCOMPARE(m_bench->shown(), QStringLiteral("9 8"));
        QCOMPARE(m_bench->said(), QString()); // no new list is asked for
    }

    void aRefusalLeavesTheTable_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("text");
        QTest::newRow("with words") << "委托已成交，不能撤单"
                                    << "委托已成交，不能撤单";
        QTest::newRow("with signs of rich text") << "价格<1&2"
                                                 << "价格&lt;1&amp;2";
        QTest::newRow("without words") << ""
                                       << "撤单失败";
    }

    void aRefusalLeavesTheTable()
    {
        QFETCH(QString, message);
        QFETCH(QString, text);
        fill({9, 8});
        view()->sendRevoke({9});
        const QList<ShownBox> boxes
            = boxesIn([&] { emit zvtest::actions()->signal_trade_revoke_failed(message); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).text, paragraph(text));
        QCOMPARE(boxes.at(0).buttons, QStringList{QStringLiteral("确认")});
        QCOMPARE(boxes.at(0).title, QStringLiteral("提示"));
        QCOMPARE(m_bench->shown(), QStringLiteral("9 8"));

        // The ids are forgotten: a success that belongs to nothing cuts nothing.
        boxesIn([&] { emit zvtest::actions()->signal_trade_revoke_succeed(); });
        QCOMPARE(m_bench->shown(), QStringLiteral("9 8"));
    }

    void aSecondWithdrawalTakesThePlaceOfTheFirst()
    {
        fill({9, 8, 7});
        view()->sendRevoke({9});
        view()->sendRevoke({8});
        QCOMPARE(m_bench->said(), takesBack("9") + '\n' + takesBack("8"));
        boxesIn([&] { emit zvtest::actions()->signal_trade_revoke_succeed(); });
        QCOMPARE(m_bench->shown(), QStringLiteral("9 7"));
        boxesIn([&] { emit zvtest::actions()->signal_trade_revoke_succeed(); });
        QCOMPARE(m_bench->shown(), QStringLiteral("9 7"));
    }

    void aTableThatIsEmptiedStaysEmpty()
    {
        fill({9});
        view()->sendRevoke({9});
        boxesIn([&] { emit zvtest::actions()->signal_trade_revoke_succeed(); });
        QCOMPARE(m_bench->shown(), QString());
        QCOMPARE(m_bench->said(), takesBack("9"));
    }

    void aTableMayEndBehindTheBoxOfAnEnding_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("success") << true;
        QTest::newRow("refusal") << false;
    }

    void aTableMayEndBehindTheBoxOfAnEnding()
    {
        QFETCH(bool, succeeds);
        fill({9});
        view()->sendRevoke({9});
        const QList<ShownBox> boxes = boxesIn(
            [&] {
                if (succeeds)
                    emit zvtest::actions()->signal_trade_revoke_succeed();
                else
                    emit zvtest::actions()->signal_trade_revoke_failed(QString());
            },
            [&] { m_bench->page.reset(); });
        QCOMPARE(boxes.size(), 1);
    }

    void clicksAndKeysTurnTicks()
    {
        m_bench->show(QSize(1366, 300));
        fill({9, 8, 7});
        QVERIFY(QTest::qWaitForWindowActive(view()));
        const auto box = [&](int row) {
            return view()->visualRect(view()->model()->index(row, 0)).center() + QPoint(3, 0);
        };
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, box(1));
        QCOMPARE(tickedRows(view()->model()), QStringLiteral("1"));
        view()->setFocus();
        QTest::keyClick(view(), Qt::Key_Space);
        QCOMPARE(tickedRows(view()->model()), QString());
        QTest::keyClick(view(), Qt::Key_Down);
        QTest::keyClick(view(), Qt::Key_Space);
        QCOMPARE(tickedRows(view()->model()), QStringLiteral("2"));
        m_bench->call("slot_selectAll");
        QCOMPARE(tickedRows(view()->model()), QStringLiteral("0 1 2"));
        m_bench->call("slot_deselectAll");
        QCOMPARE(tickedRows(view()->model()), QString());
    }

    void ticksOfAPageThatWasLeftAreForgotten()
    {
        fill({9, 8});
        m_bench->tick({0, 1});
        view()->pageDown();
        cache()->storeRevokeList(openOrders({7, 6}));
        QCOMPARE(tickedRows(view()->model()), QString());
        view()->pageUp();
        cache()->storeRevokeList(openOrders({9, 8}));
        QCOMPARE(tickedRows(view()->model()), QString());
    }

    void theDelegateEndsWithTheView()
    {
        const QPointer<QAbstractItemDelegate> delegate = view()->itemDelegate();
        QVERIFY(delegate);
        m_bench->page.reset();
        QVERIFY(!delegate);
    }

    void slotsStandInTheirOrder()
    {
        const QMetaObject &meta = DealWidget_Revoke_TableView::staticMetaObject;
        QCOMPARE(meta.superClass(), &QTableView::staticMetaObject);
        QByteArrayList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            methods << meta.method(i).methodSignature();
        QCOMPARE(methods,
                 (QByteArrayList{"slot_revokeListChanged()", "slot_revokeSucceed()",
                                 "slot_revokeFailed(QString)", "slot_revokeSelected()",
                                 "slot_revokeAll()", "slot_revokeSells()", "slot_revokeBuys()",
                                 "slot_revokeLast()", "slot_selectAll()", "slot_deselectAll()"}));
    }
};

ZV_TEST(RevokeTableViewTest)
#include "test_dealwidget_revoke_tableview.moc"
