#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/transaction_deal.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "messageboxes.h"
#include "record.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QFile>
#include <QHBoxLayout>
#include <QIcon>
#include <QScrollArea>
#include <QScrollBar>
#include <QtTest/QtTest>

using zvtest::boxesIn;
using zvtest::navigationButtons;
using zvtest::ShownBox;
using Pool = ZvWidgetSignalSLotPool;

namespace {

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

const QString buy = QStringLiteral("pushButton_purchase");
const QString sell = QStringLiteral("pushButton_sell");
const QString revoke = QStringLiteral("pushButton_withdrawal");
const QString queries = QStringLiteral("pushButton_select");
const QString prePay = QStringLiteral("pushButton_prePay");
const QString delivery = QStringLiteral("pushButton_deliveryHandling");
const QString dealRecord = QStringLiteral("pushButton_select_historyDeal");
const QString dealToday = QStringLiteral("pushButton_select_currentDeal");
const QString moneyFlow = QStringLiteral("pushButton_select_inputOutputRecord");

// A button of the navigation, the page behind it, and what the button says.
struct Way {
    const char *button;
    const char *page;
    int index;
    const char *text;
};
const Way mainWays[] = {
    {"pushButton_purchase", "DealWidget_BuySell", 0, "买入"},
    {"pushButton_sell", "DealWidget_BuySell", 0, "卖出"},
    {"pushButton_withdrawal", "DealWidget_Revoke", 1, "撤单"},
    {"pushButton_prePay", "DealWidget_BuySell", 0, "预埋"},
    {"pushButton_deliveryHandling", "DealWidget_Delivery", 2, "提货"},
};
const Way subWays[] = {
    {"pushButton_select_historyDeal", "DealWidget_Select_DealRecord", 3, "       成交记录"},
    {"pushButton_select_currentDelegate", "DealWidget_Select_DelegateToday", 4, "       当日委托"},
    {"pushButton_select_currentDeal", "DealWidget_Select_DealRecord", 3, "       当日成交"},
    {"pushButton_select_historyDelegate", "DealWidget_Select_DelegateRecord", 5, "       历史委托"},
    {"pushButton_select_purchaseApplyRecord", "DealWidget_Select_ApplyRecord", 6,
     "       申购记录"},
    {"pushButton_select_deliveryRecord", "DealWidget_Select_DeliveryRecord", 7, "       提货记录"},
    {"pushButton_select_inputOutputRecord", "DealWidget_Select_MoneyFlow", 8, "       出入金记录"},
};

// What a reload asks for, in this order.
const QStringList reloads{
    QStringLiteral("RevokeList"),           QStringLiteral("Select_DealRecord"),
    QStringLiteral("Select_DelegateToday"), QStringLiteral("Select_DelegateRecord"),
    QStringLiteral("Select_ApplyRecord"),   QStringLiteral("Select_DeliveryRecord"),
    QStringLiteral("Select_MoneyFlow")};

// The names of the lists that a record asks for, in the order of the requests.
QStringList listsAskedFor(const QString &record)
{
    static const QRegularExpression request(
        QStringLiteral("^ZvServerEngine::sendRequest_(RevokeList|Select_\\w+)\\("),
        QRegularExpression::MultilineOption);
    QStringList names;
    for (auto it = request.globalMatch(record); it.hasNext();)
        names << it.next().captured(1);
    return names;
}

} // namespace

// The frame of the trading half: the ways to the pages, sign-ins, a sign-in from elsewhere, a
// change of server, and the heights.
class TransactionWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::TransactionBench> m_bench;

    QString page() const { return m_bench->page(); }
    QStringList checked() const { return m_bench->checked(); }
    QPushButton *button(const QString &name) const { return m_bench->button(name); }
    void click(const QString &name) { m_bench->click(name); }

    // A release of the mouse over a button that never saw the press.
    void release(const QString &name, int mouse, const QPoint &place)
    {
        QMouseEvent event(QEvent::MouseButtonRelease, place, Qt::MouseButton(mouse), Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(button(name), &event);
    }

    // Which kind of order the page of orders takes.
    QString ticket() const
    {
        if (m_bench->named<QWidget>("pushButton_enter")->isVisibleTo(m_bench->pages()))
            return QStringLiteral("prepared");
        return button("pushButton_buysell")->text();
    }

    bool hasFilterBar() const
    {
        const QWidget *bar = m_bench->pages()->widget(3)->findChild<QWidget *>("frame_recordPanel");
        return !bar->isHidden();
    }

private slots:
    void init() { m_bench = std::make_unique<zvtest::TransactionBench>(); }
    void cleanup() { m_bench.reset(); }

    // How it stands at the beginning.

    void itStartsUnlockedOnTheBuyPage()
    {
        QVERIFY(!m_bench->isLocked());
        QCOMPARE(m_bench->stack()->count(), 2);
        QCOMPARE(m_bench->stack()->widget(0)->metaObject()->className(), "Transaction_Deal");
        QCOMPARE(m_bench->stack()->widget(1)->metaObject()->className(), "Transaction_Lock");
        QCOMPARE(m_bench->stack()->widget(0)->windowTitle(), QStringLiteral("Form"));
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        QCOMPARE(ticket(), QStringLiteral("买入"));
        QCOMPARE(checked(), (QStringList{buy, dealRecord}));
        QVERIFY(!m_bench->isSelectOpen());
        QCOMPARE(m_bench->shown(), (QStringList{buy, sell, revoke, queries, prePay, delivery}));
    }

    void thePagesAreMadeOnceAndAskForNothing()
    {
        m_bench.reset();
        zvtest::Record record;
        m_bench = std::make_unique<zvtest::TransactionBench>();
        QCOMPARE(listsAskedFor(record.take()), QStringList());
        QStringList classes;
        for (int i = 0; i < m_bench->pages()->count(); ++i)
            classes << m_bench->pages()->widget(i)->metaObject()->className();
        QCOMPARE(classes,
                 (QStringList{"DealWidget_BuySell", "DealWidget_Revoke", "DealWidget_Delivery",
                              "DealWidget_Select_DealRecord", "DealWidget_Select_DelegateToday",
                              "DealWidget_Select_DelegateRecord", "DealWidget_Select_ApplyRecord",
                              "DealWidget_Select_DeliveryRecord", "DealWidget_Select_MoneyFlow"}));
        QList<QWidget *> pages;
        for (int i = 0; i < m_bench->pages()->count(); ++i)
            pages << m_bench->pages()->widget(i);
        for (const Way &way : mainWays)
            click(way.button);
        click(queries);
        emit ZvServerActionResult::getZvServerActionResultInstance()->signal_login_succeed();
        for (int i = 0; i < m_bench->pages()->count(); ++i)
            QCOMPARE(m_bench->pages()->widget(i), pages.at(i));
    }

    void layoutsHaveNoGaps()
    {
        for (const QWidget *widget : {static_cast<QWidget *>(m_bench->trading.get()),
                                      m_bench->named<QWidget>("frame_dealControl"),
                                      static_cast<QWidget *>(m_bench->pages()),
                                      m_bench->named<QWidget>("scrollAreaWidgetContents"),
                                      m_bench->named<QWidget>("frame_dealStyle"),
                                      m_bench->named<QWidget>("frame_select")}) {
            QCOMPARE(widget->layout()->contentsMargins(), QMargins());
            QCOMPARE(widget->layout()->spacing(), 0);
        }
        QVERIFY(qobject_cast<QHBoxLayout *>(m_bench->trading->layout()));
        QVERIFY(
            qobject_cast<QHBoxLayout *>(m_bench->named<QWidget>("frame_dealControl")->layout()));
        QCOMPARE(m_bench->stack()->geometry(), m_bench->trading->rect());
        QCOMPARE(m_bench->named<QWidget>("scrollArea")->geometry(), QRect(0, 0, 124, 307));
        QCOMPARE(m_bench->pages()->mapTo(m_bench->trading.get(), QPoint()), QPoint(124, 0));
        QCOMPARE(m_bench->pages()->size(), QSize(1242, 307));
    }

    void thePageAreaIsBlack()
    {
        const QPalette palette = m_bench->pages()->palette();
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            QCOMPARE(palette.brush(group, QPalette::Window),
                     QBrush(QColor(Qt::black), Qt::SolidPattern));
        }
    }

    void buttonsStandInOrderWithTheirTextsAndIcons()
    {
        click(queries);
        QCoreApplication::processEvents();
        int last = -1;
        for (const QString &name : navigationButtons) {
            if (name == dealToday)
                continue;
            const int y = button(name)->mapTo(m_bench->trading.get(), QPoint()).y();
            QVERIFY2(y > last, qPrintable(name));
            last = y;
            QVERIFY(button(name)->isCheckable());
            QCOMPARE(button(name)->minimumHeight(), 25);
        }
        for (const Way &way : mainWays)
            QCOMPARE(button(way.button)->text(), QString::fromUtf8(way.text));
        for (const Way &way : subWays)
            QCOMPARE(button(way.button)->text(), QString::fromUtf8(way.text));
        QCOMPARE(button(queries)->text(), QStringLiteral("查询"));
        const QMap<QString, QString> icons{{buy, "mairu"},       {sell, "maichu"},
                                           {revoke, "chedan"},   {queries, "chaxun"},
                                           {prePay, "yumaidan"}, {delivery, "tihuo"}};
        for (auto icon = icons.cbegin(); icon != icons.cend(); ++icon) {
            const QImage expected(
                QStringLiteral(":/icons/transaction/icon_%1.png").arg(icon.value()));
            QVERIFY(!expected.isNull());
            const QImage image = button(icon.key())->icon().pixmap(expected.size()).toImage();
            QCOMPARE(image.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                     expected.convertToFormat(QImage::Format_ARGB32_Premultiplied));
        }
    }

    void stylesFollowThePlatform_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("first platform") << 1;
        QTest::newRow("second platform") << 2;
    }
    void stylesFollowThePlatform()
    {
        QFETCH(int, platform);
        m_bench.reset();
        m_bench = std::make_unique<zvtest::TransactionBench>(platform);
        for (const QString &name : {buy, sell, revoke, queries, prePay, delivery})
            QCOMPARE(button(name)->styleSheet(), config()->getStyleOf_DealTypeButton());
        for (const Way &way : subWays)
            QCOMPARE(button(way.button)->styleSheet(), config()->getStyleOf_DealSelectButton());
        QCOMPARE(m_bench->named<QWidget>("frame_dealStyle")->styleSheet(),
                 QStringLiteral("QFrame{background-color:#121417;}"));
        QCOMPARE(m_bench->named<QWidget>("frame_select")->styleSheet(),
                 QStringLiteral("QFrame{border:none;}"));
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(sheet.readAll());
        const auto *area = m_bench->named<QScrollArea>("scrollArea");
        QCOMPARE(area->verticalScrollBar()->styleSheet(), text);
        QCOMPARE(area->horizontalScrollBar()->styleSheet(), text);
        QCOMPARE(area->minimumWidth(), 124);
        QCOMPARE(area->maximumWidth(), 124);
    }

    // The ways.

    void aMainButtonBringsItsPage_data()
    {
        QTest::addColumn<int>("way");
        for (int i = 0; i < 5; ++i)
            QTest::newRow(mainWays[i].button) << i;
    }
    void aMainButtonBringsItsPage()
    {
        QFETCH(int, way);
        click(revoke);
        click(queries);
        const QString name = mainWays[way].button;
        click(name);
        QCOMPARE(page(), QString(mainWays[way].page));
        QCOMPARE(m_bench->pages()->currentIndex(), mainWays[way].index);
        QCOMPARE(checked(), QStringList(name));
        QVERIFY(!m_bench->isSelectOpen());
        QVERIFY(!button(name)->isDown());
        // Once more leaves it as it is.
        click(name);
        QCOMPARE(page(), QString(mainWays[way].page));
        QCOMPARE(checked(), QStringList(name));
    }

    void oneTicketServesThreeButtons()
    {
        click(sell);
        QCOMPARE(ticket(), QStringLiteral("卖出"));
        click(prePay);
        QCOMPARE(ticket(), QStringLiteral("prepared"));
        click(buy);
        QCOMPARE(ticket(), QStringLiteral("买入"));
        click(prePay);
        click(delivery);
        click(sell);
        QCOMPARE(ticket(), QStringLiteral("卖出"));
    }

    void aSubButtonBringsItsPage_data()
    {
        QTest::addColumn<int>("way");
        for (int i = 0; i < 7; ++i)
            QTest::newRow(subWays[i].button) << i;
    }
    void aSubButtonBringsItsPage()
    {
        QFETCH(int, way);
        const QString name = subWays[way].button;
        click(queries);
        click(moneyFlow);
        if (name == dealToday)
            button(name)->setVisible(true);
        click(name);
        QCOMPARE(page(), QString(subWays[way].page));
        QCOMPARE(m_bench->pages()->currentIndex(), subWays[way].index);
        QCOMPARE(checked(), (QStringList{queries, name}));
        QVERIFY(m_bench->isSelectOpen());
        QVERIFY(!button(name)->isDown());
        click(name);
        QCOMPARE(checked(), (QStringList{queries, name}));
    }

    void theRecordOfDealsHasAFilterBarAndTheDealsOfTodayHaveNone()
    {
        click(queries);
        QVERIFY(hasFilterBar());
        button(dealToday)->setVisible(true);
        click(dealToday);
        QVERIFY(!hasFilterBar());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_DealRecord"));
        click(dealRecord);
        QVERIFY(hasFilterBar());
    }

    void theDealsOfTodayAreOutOfReach()
    {
        click(queries);
        QVERIFY(!button(dealToday)->isVisible());
        QStringList expected = navigationButtons;
        expected.removeAll(dealToday);
        QCOMPARE(m_bench->shown(), expected);
        // A sign-in hides them again, should a host have shown them.
        button(dealToday)->setVisible(true);
        m_bench->call("slot_after_login_succeed");
        QVERIFY(button(dealToday)->isHidden());
    }

    void queriesOpenOnTheRecordOfDeals()
    {
        click(queries);
        QVERIFY(m_bench->isSelectOpen());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_DealRecord"));
        QCOMPARE(checked(), (QStringList{queries, dealRecord}));
    }

    void queriesClickedTwiceCloseAndKeepThePage()
    {
        click(queries);
        click(moneyFlow);
        click(queries);
        QVERIFY(!m_bench->isSelectOpen());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
        QCOMPARE(checked(), (QStringList{queries, moneyFlow}));
        click(queries);
        QVERIFY(m_bench->isSelectOpen());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
    }

    void theLastQueryComesBack()
    {
        click(queries);
        click(moneyFlow);
        click(buy);
        QCOMPARE(checked(), QStringList(buy));
        QVERIFY(!m_bench->isSelectOpen());
        click(delivery);
        click(queries);
        QVERIFY(m_bench->isSelectOpen());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
        QCOMPARE(checked(), (QStringList{queries, moneyFlow}));
    }

    // A sub-button does not uncheck the main button; only "查询" leads to the sub-buttons.
    void aSubButtonLeavesTheOtherMainButtonChecked()
    {
        release(moneyFlow, Qt::LeftButton, QPoint(3, 3));
        QCOMPARE(checked(), (QStringList{buy, queries, moneyFlow}));
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
        // Now "查询" is the main button that the next one unchecks.
        click(sell);
        QCOMPARE(checked(), (QStringList{buy, sell}));
    }

    void theReleaseAloneActs_data()
    {
        QTest::addColumn<int>("mouse");
        QTest::addColumn<QPoint>("place");
        QTest::newRow("left, pressed elsewhere") << int(Qt::LeftButton) << QPoint(5, 5);
        QTest::newRow("right") << int(Qt::RightButton) << QPoint(5, 5);
        QTest::newRow("middle") << int(Qt::MiddleButton) << QPoint(5, 5);
        QTest::newRow("dragged out") << int(Qt::LeftButton) << QPoint(-500, 900);
    }
    void theReleaseAloneActs()
    {
        QFETCH(int, mouse);
        QFETCH(QPoint, place);
        release(revoke, mouse, place);
        QCOMPARE(page(), QStringLiteral("DealWidget_Revoke"));
        QCOMPARE(checked(), QStringList(revoke));
        release(queries, mouse, place);
        release(moneyFlow, mouse, place);
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
    }

    void aPressAloneDoesNothing()
    {
        QTest::mousePress(button(sell), Qt::LeftButton);
        QVERIFY(button(sell)->isDown());
        QCOMPARE(ticket(), QStringLiteral("买入"));
        QCOMPARE(checked(), (QStringList{buy, dealRecord}));
        QTest::mouseRelease(button(sell), Qt::LeftButton);
        QVERIFY(!button(sell)->isDown());
        QCOMPARE(ticket(), QStringLiteral("卖出"));
    }

    void clickedIsNeverTold()
    {
        click(queries);
        for (const QString &name : navigationButtons) {
            QSignalSpy clicked(button(name), &QPushButton::clicked);
            QTest::mouseClick(button(name), Qt::LeftButton);
            QCOMPARE(clicked.count(), 0);
        }
    }

    void theKeyboardMarksNothing()
    {
        click(queries);
        for (const QString &name : navigationButtons) {
            QCOMPARE(button(name)->focusPolicy(), Qt::NoFocus);
            const QStringList before = checked();
            const QString front = page();
            QTest::keyClick(button(name), Qt::Key_Space);
            button(name)->click();
            QCOMPARE(checked(), before);
            QCOMPARE(page(), front);
        }
    }

    void otherButtonsKeepTheirRelease()
    {
        auto *deal = m_bench->trading->findChild<Transaction_Deal *>();
        QPushButton other;
        QMouseEvent released(QEvent::MouseButtonRelease, QPoint(1, 1), Qt::LeftButton, Qt::NoButton,
                             Qt::NoModifier);
        QVERIFY(!deal->eventFilter(&other, &released));
        QLabel label;
        QVERIFY(!deal->eventFilter(&label, &released));
        QMouseEvent pressed(QEvent::MouseButtonPress, QPoint(1, 1), Qt::LeftButton, Qt::LeftButton,
                            Qt::NoModifier);
        QVERIFY(!deal->eventFilter(button(sell), &pressed));
        QVERIFY(deal->eventFilter(button(sell), &released));
    }

    void aButtonWithoutAPageDoesNothing()
    {
        auto *deal = m_bench->trading->findChild<Transaction_Deal *>();
        click(revoke);
        deal->showPageOfButton(button(queries));
        QCOMPARE(page(), QStringLiteral("DealWidget_Revoke"));
        QPushButton other;
        deal->showPageOfButton(&other);
        deal->showPageOfButton(nullptr);
        QCOMPARE(page(), QStringLiteral("DealWidget_Revoke"));
        QCOMPARE(checked(), QStringList(revoke));
    }

    // Sign-ins.

    void aSignInStartsAnewAndReloads()
    {
        click(queries);
        click(moneyFlow);
        m_bench->call("slot_showTransctionLock");
        zvtest::Record record;
        emit ZvServerActionResult::getZvServerActionResultInstance()->signal_login_succeed();
        QCOMPARE(listsAskedFor(record.take()), reloads);
        QVERIFY(!m_bench->isLocked());
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        QCOMPARE(ticket(), QStringLiteral("买入"));
        QCOMPARE(checked(), (QStringList{buy, dealRecord}));
        QVERIFY(!m_bench->isSelectOpen());
        // What was used before the sign-in is forgotten.
        click(queries);
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_DealRecord"));
    }

    // The pages are asked before the lock page leaves.
    void aSignInReloadsBeforeThePanelIsSeen()
    {
        m_bench->call("slot_showTransctionLock");
        zvtest::Record record;
        record.noteSignal(m_bench->stack(), &QStackedWidget::currentChanged,
                          QStringLiteral("unlocked"));
        emit ZvServerActionResult::getZvServerActionResultInstance()->signal_login_succeed();
        const QString text = record.take();
        QCOMPARE(listsAskedFor(text.section(QStringLiteral("unlocked"), 0, 0)), reloads);
        QCOMPARE(text.count(QStringLiteral("unlocked")), 1);
    }

    void aRealSignInIsFollowed()
    {
        click(delivery);
        zvtest::Record record;
        m_bench->kit()->signIn("token-1");
        const QStringList lines = record.take().split('\n');
        const int login = lines.indexOf(
            QRegularExpression(QStringLiteral("ZvServerActionResult::sendRequest_login\\(.*")));
        const int first = lines.indexOf(
            QRegularExpression(QStringLiteral("ZvServerEngine::sendRequest_RevokeList\\(.*")));
        QVERIFY(login >= 0);
        QVERIFY(first > login);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
    }

    void aFailedSignInShowsOnTheLockPageAlone()
    {
        click(delivery);
        zvtest::Record record;
        emit ZvServerActionResult::getZvServerActionResultInstance()->signal_login_failed(
            QStringLiteral("密码错误"));
        QCOMPARE(record.take(), QString());
        QVERIFY(!m_bench->isLocked());
        QCOMPARE(page(), QStringLiteral("DealWidget_Delivery"));
        QCOMPARE(m_bench->hint()->text(), QStringLiteral("密码错误 请重新输入密码"));
    }

    // A change of server.

    void aChangeOfServerReloadsAndLeavesThePage()
    {
        click(queries);
        click(moneyFlow);
        m_bench->call("slot_showTransctionLock");
        zvtest::Record record;
        emit pool()->signal_loadTradeData_fromServer();
        QCOMPARE(listsAskedFor(record.take()), reloads);
        QVERIFY(m_bench->isLocked());
        QCOMPARE(page(), QStringLiteral("DealWidget_Select_MoneyFlow"));
        QCOMPARE(checked(), (QStringList{queries, moneyFlow}));
        QVERIFY(m_bench->isSelectOpen());
    }

    // A sign-in from elsewhere.

    void aSignInElsewhereStopsThePollThenTellsThenThePool()
    {
        click(delivery);
        zvtest::Record record;
        record.noteSignal(pool(), &Pool::signal_loggedOtherPlace, QStringLiteral("pool told"));
        const QList<ShownBox> boxes = boxesIn(
            [] { cache()->storeLoggedOtherPlace(QStringLiteral("您的账户已在<b>别处</b>登录")); },
            [&] { record.note(QStringLiteral("box")); });
        const QStringList lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("Engine::|^box|^pool")));
        QCOMPARE(lines, (QStringList{"ZvServerEngine::startUnloggedEngine()", "box", "pool told"}));
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text,
                 QStringLiteral("<p align='center'>您的账户已在<b>别处</b>登录</p>"));
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("错误提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        // The panel stays where it was, with what it showed.
        QVERIFY(!m_bench->isLocked());
        QCOMPARE(page(), QStringLiteral("DealWidget_Delivery"));
    }

    void theTradingHalfMayEndUnderTheBox()
    {
        QSignalSpy told(pool(), &Pool::signal_loggedOtherPlace);
        const QList<ShownBox> boxes
            = boxesIn([] { cache()->storeLoggedOtherPlace(QStringLiteral("别处")); },
                      [this] { m_bench->trading.reset(); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(told.count(), 1);
    }

    // Heights.

    void theHeightFollowsTheMainFrame_data()
    {
        QTest::addColumn<int>("frame");
        QTest::addColumn<int>("height");
        QTest::newRow("low") << 600 << 226;
        QTest::newRow("just small") << 780 << 226;
        QTest::newRow("just large") << 781 << 307;
        QTest::newRow("large") << 2000 << 307;
    }
    void theHeightFollowsTheMainFrame()
    {
        QFETCH(int, frame);
        QFETCH(int, height);
        for (const int before : {700, 900}) {
            pool()->slot_adjustSize(QSize(1000, before));
            pool()->slot_adjustSize(QSize(1000, frame));
            QCOMPARE(m_bench->trading->minimumHeight(), height);
            QCOMPARE(m_bench->trading->height(), height);
            QCOMPARE(m_bench->trading->width(), 1366);
        }
    }
};

ZV_TEST(TransactionWidgetTest)
#include "test_transaction_widget.moc"
