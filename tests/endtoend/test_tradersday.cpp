#include "client/accountbutton.h"
#include "client/keyboardsprite.h"
#include "client/mainwindow.h"
#include "client/programlook.h"
#include "client/startscreen.h"

#include "endtoend/album.h"
#include "endtoend/chartpage.h"
#include "endtoend/deliveryform.h"
#include "endtoend/marketpage.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "endtoend/wiretrader.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/small_money_inout.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/zvplatformselectdialog.h"
#include "ZvWidgetKit/zvsplashscreen.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QTableView>
#include <QTimer>
#include <QtTest/QtTest>

#include <algorithm>

using endtoend::Album;
using endtoend::BoxReader;
using endtoend::DeliveryForm;
using endtoend::notice;
using endtoend::paragraph;
using endtoend::patience;
using endtoend::TradingPanel;
using endtoend::WireTrader;

namespace {

constexpr QSize windowSize(1366, 768);

const QString server = QStringLiteral("/ch/youpiao/");
const QString secondServer = QStringLiteral("/ch/qianbi/");

// A cheap collection of which the demo account has a hundred pieces.
const QString collection = QStringLiteral("1042");
const QString code = QStringLiteral("101042");
const QString goods = QStringLiteral("02年风力电站全品");
const char *const initials = "fldzqp"; // the year left out

const QString phone = QStringLiteral("13912340001");
const QString password = QStringLiteral("qing-shi-7");
constexpr int bankCodeDigits = 6;

constexpr int codeColumn = 1; // of the market table
constexpr int rateColumn = 5;
constexpr int collections = 262;
constexpr int wholeMarket = collections + 1; // with the composite

const char *const holdingsTable = "DealWidget_BuySell_CapTableView";
const char *const preparedTable = "DealWidget_PrePay_TableView";
const char *const openTable = "DealWidget_Revoke_TableView";
const char *const deliveryTable = "DealWidget_Delivery_TableView";
const char *const deliveryRecords = "DealWidget_Select_DeliveryRecord_TableView";

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

bool isSignedIn()
{
    return ZvServerEngine::getZvServerEngineInstance()->isLogged;
}

QString yuan(qint64 fen)
{
    return QStringLiteral("%1.%2").arg(fen / 100).arg(fen % 100, 2, 10, QLatin1Char('0'));
}

qint64 fenOf(const QString &yuan)
{
    return qRound64(yuan.toDouble() * 100);
}

template <typename Window>
Window *shown()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *window = qobject_cast<Window *>(widget);
        if (window && window->isVisible())
            return window;
    }
    return nullptr;
}

// Runs `open` and, once a dialog of this class is up, `use`; the dialog may run an event loop of
// its own. Closes it where `use` has left it open. False where none comes.
template <typename Dialog, typename Open, typename Use>
bool useDialog(Open open, Use use)
{
    bool wasUsed = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        const QPointer<Dialog> dialog = shown<Dialog>();
        if (!dialog)
            return;
        watch.stop(); // `use` runs the event loop, too
        use(dialog);
        if (dialog)
            dialog->close();
        wasUsed = true;
    });
    watch.start(20);
    open();
    return endtoend::until([&] { return wasUsed; });
}

// As the program dresses itself at its start.
void dress()
{
    programlook::dress(*qApp);
    programlook::followPlatform(*qApp);
}

// How many pixels differ in the column in which most do.
int tallestChange(const QImage &before, const QImage &after)
{
    int most = 0;
    for (int x = 0; x < after.width(); ++x) {
        int changed = 0;
        for (int y = 0; y < after.height(); ++y)
            changed += before.pixel(x, y) != after.pixel(x, y) ? 1 : 0;
        most = qMax(most, changed);
    }
    return most;
}

} // namespace

// One day of one trader, from the choice of the platform to the evening, on a market that lives: by
// mouse and keys alone, with a look into the books of the exchange after each deed, and with a
// picture of each station. The steps build on each other, in the order in which they stand.
class TradersDayTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_exchange.start(
            m_state, 0, 12,
            {QStringLiteral("--demo"), QStringLiteral("--prepare-delay"), QStringLiteral("3600")}));
        m_seller = std::make_unique<WireTrader>(m_exchange.address(), server);
        QVERIFY(m_seller->signIn(QStringLiteral("13800000000"), QStringLiteral("demo888888")));
        WireTrader newcomer(m_exchange.address(), server);
        QVERIFY2(newcomer.openAccount(m_state, phone, password), qPrintable(newcomer.sentence()));
        m_book = std::make_unique<WireTrader>(m_exchange.address(), server);
        qInfo("pictures of the day: %s", qPrintable(m_album.folder()));
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_panel.reset();
        m_window.reset();
    }

    void choosesThePlatform()
    {
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        dress();
        bool isChosen = false;
        QVERIFY(useDialog<ZvPlatformSelectDialog>([&] { isChosen = StartScreen::choosePlatform(); },
                                                  [&](ZvPlatformSelectDialog *dialog) {
                                                      look("platform", dialog);
                                                      click(dialog->findChild<QAbstractButton *>(
                                                          "pushButton_CH"));
                                                  }));
        QVERIFY(isChosen);
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::ChengHu);
        dress();
    }

    void seesTheMarketCome()
    {
        StartScreen start;
        start.show();
        look("splash", shown<ZvSplashScreen>());
        m_window = std::make_unique<MainWindow>();
        m_panel = std::make_unique<TradingPanel>(*m_window);
        m_table = endtoend::marketTable(*m_window);
        connect(&start, &StartScreen::over, m_window.get(), [&] {
            m_window->resize(windowSize);
            m_window->show();
            start.leaveTo(m_window.get());
        });
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(m_window->isVisible());
        QTRY_VERIFY(!shown<ZvSplashScreen>());
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(endtoend::showWholeMarket(*m_window));
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), wholeMarket, patience);
        QVERIFY(!isSignedIn());
        look("market");
    }

    void looksAtOneType()
    {
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("大版")));
        QTRY_VERIFY_WITH_TIMEOUT(codes().size() < collections, patience);
        const QStringList ofType = codes().filter(QRegularExpression(QStringLiteral("^104")));
        QCOMPARE(codes(), ofType);
        QVERIFY(ofType.size() > 10);
        look("type");
    }

    void sortsByTheRateOfChange()
    {
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("行情")));
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), wholeMarket, patience);
        QHeaderView *header = m_table->horizontalHeader();
        const QPoint place(header->sectionViewportPosition(rateColumn)
                               + header->sectionSize(rateColumn) / 2,
                           header->height() / 2);
        // The first click sorts by the column, and the second turns the order around.
        const auto isSorted = [header] {
            return header->sortIndicatorSection() == rateColumn
                && header->sortIndicatorOrder() == Qt::DescendingOrder;
        };
        for (int turn = 0; turn < 2 && !isSorted(); ++turn)
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QVERIFY(isSorted());
        // Once there is something to sort.
        QTRY_VERIFY_WITH_TIMEOUT(m_table->model()->index(0, rateColumn).data().toString()
                                     != QStringLiteral("--"),
                                 patience);
        QVERIFY(isFalling());
        m_table->scrollToTop();
        look("sorted");
    }

    void keepsAFavourite()
    {
        const QPoint place = placeOf(code);
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseClick(m_window->windowHandle(), Qt::RightButton, {},
                          m_table->viewport()->mapTo(m_window.get(), place));
        const QPointer<QMenu> menu = m_table->findChild<QMenu *>();
        QVERIFY(menu);
        QTRY_VERIFY(menu->isVisible());
        look("menu");
        take(menu, QStringLiteral("添加自选"));
        QTRY_VERIFY(!menu);
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("自选")));
        QTRY_COMPARE(codes(), QStringList(code));
        look("favourites");
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("行情")));
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), wholeMarket, patience);
    }

    void findsItByItsInitials()
    {
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, placeOf("101001"));
        const auto *sprite = m_window->findChild<KeyboardSprite *>();
        QVERIFY(sprite->isHidden());
        for (const char *letter = initials; *letter; ++letter)
            QTest::keyClick(m_window->focusWidget(), *letter);
        QVERIFY(sprite->isVisible());
        look("sprite");
        press(Qt::Key_Return);
        QVERIFY(sprite->isHidden());
        QCOMPARE(endtoend::pageInFront(*m_window), endtoend::ChartPage);
        QTRY_COMPARE_WITH_TIMEOUT(endtoend::shownCode(*m_window), code, patience);
        QTRY_COMPARE_WITH_TIMEOUT(ticketCode(), code, patience);
    }

    void readsTheTimeLine()
    {
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
        QCOMPARE(feed()->chart(), ZvChartFeed::TimeLine);
        QCOMPARE(feed()->timeLine().collectionId, collection);
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->says("label_upperLimitPrice_value").toDouble() > 0,
                                 patience);
        look("time-line");
    }

    void turnsToTheDaysAndReadsABar()
    {
        press(Qt::Key_F5);
        QCOMPARE(feed()->chart(), ZvChartFeed::DayKLine);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
        QCOMPARE(feed()->kLine().collectionId, collection);
        QVERIFY(feed()->kLine().bars.size() > 20);
        look("days");
        auto *canvas = m_window->findChild<QWidget *>("chartCanvas");
        QVERIFY(canvas);
        const QImage before = canvas->grab().toImage();
        const QPoint place(canvas->width() / 2, canvas->height() / 3);
        QTest::mouseMove(m_window->windowHandle(), canvas->mapTo(m_window.get(), place));
        QTRY_VERIFY(tallestChange(before, canvas->grab().toImage()) > canvas->height() / 2);
        look("crosshair");
        press(Qt::Key_F5);
        QCOMPARE(feed()->chart(), ZvChartFeed::TimeLine);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
    }

    void signsInFromTheStatusBar()
    {
        click(barButton<StatusBar>(QStringLiteral("登录")));
        const QPointer<LoginDialog> dialog = m_window->findChild<LoginDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        QTest::keyClicks(dialog->findChild<QLineEdit *>("lineEdit_login_phoneNumber"), phone);
        QTest::keyClicks(dialog->findChild<QLineEdit *>("lineEdit_login_password"), password);
        look("sign-in");
        click(dialog->findChild<QAbstractButton *>("pushButton_login"));
        QTRY_VERIFY_WITH_TIMEOUT(!dialog, patience);
        lookIntoTheBooks();
        QTRY_VERIFY_WITH_TIMEOUT(bars(true), patience);
        look("signed-in");
    }

    void movesMoneyIn()
    {
        auto *button = m_window->findChild<AccountButton *>();
        auto *menu = button->findChild<QMenu *>();
        const bool wasUsed = useDialog<Small_Money_InOut>(
            [&] {
                click(button);
                QTRY_VERIFY(menu->isVisible());
                look("account");
                take(menu, QStringLiteral("出/入金"));
            },
            [&](Small_Money_InOut *dialog) {
                auto *ask = dialog->findChild<QAbstractButton *>("pushButton_getValidataCode");
                const auto *available = dialog->findChild<QLabel *>("label_available_value");
                look("money");
                click(ask);
                QTRY_VERIFY_WITH_TIMEOUT(!ask->isEnabled(), patience);
                auto *amount = dialog->findChild<QAbstractSpinBox *>("doubleSpinBox_moneyValue");
                amount->setFocus();
                amount->selectAll();
                QTest::keyClicks(amount, "5000.5");
                auto *field = dialog->findChild<QLineEdit *>("lineEdit_validateCode_value");
                field->setFocus();
                QTest::keyClicks(field, endtoend::lastCode(m_state, phone, bankCodeDigits));
                look("money-typed");
                const QString before = available->text();
                click(dialog->findChild<QAbstractButton *>("pushButton_ok"));
                QTRY_COMPARE_WITH_TIMEOUT(notice(), QStringLiteral("入金成功"), patience);
                QTRY_VERIFY_WITH_TIMEOUT(available->text() != before, patience);
                look("money-in");
                click(dialog->findChild<QAbstractButton *>("toolButton_close"));
            });
        QVERIFY(wasUsed);
        QVERIFY(!shown<Small_Money_InOut>());
        m_moved += 500050;
        theFiguresAreThoseOfTheBooks();
    }

    void buys()
    {
        m_panel->open("pushButton_purchase");
        const QString price = m_panel->says("label_upperLimitPrice_value");
        QVERIFY2(m_seller->sell(collection, fenOf(price), 5) > 0, qPrintable(m_seller->sentence()));
        type(price, 5);
        const BoxReader boxes([this] { look("purchase-asked"); });
        m_panel->order();
        QCOMPARE(boxes.texts().size(), 1);
        QVERIFY(boxes.texts().first().contains(goods));
        QTRY_COMPARE_WITH_TIMEOUT(notice(), QStringLiteral("买入委托成功"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(m_book->holding(collection), qMakePair(5, 5), patience);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(holdingsTable, 0), QStringList(code), patience);
        theFiguresAreThoseOfTheBooks();
        QVERIFY(m_book->cap().value("available").toInt() < m_moved);
        look("bought");
    }

    void preparesAnOrder()
    {
        m_panel->open("pushButton_prePay");
        type(m_panel->says("label_priceLimit_value"), 3);
        m_panel->order();
        QCOMPARE(m_panel->column(preparedTable, 1), QStringList(code));
        QCOMPARE(m_panel->column(preparedTable, 7), QStringList(QStringLiteral("未发送")));
        // Kept here, and nowhere else.
        QCOMPARE(m_book->openOrders().size(), 0);
        look("prepared");
    }

    void sendsIt()
    {
        const qint64 price = fenOf(m_panel->says("label_priceLimit_value"));
        tick(preparedTable);
        const BoxReader boxes([this] { look("sending-asked"); });
        m_panel->click("DealWidget_BuySell", "pushButton_sendPrePayItem");
        QCOMPARE(boxes.texts(), QStringList(paragraph(QStringLiteral("发送选中的预埋单？"))));
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->column(preparedTable, 1).isEmpty(), patience);
        const QJsonArray orders = m_book->openOrders();
        QCOMPARE(orders.size(), 1);
        QCOMPARE(orders.first().toObject().value("price").toInt(), int(price));
        QCOMPARE(orders.first().toObject().value("quantity").toInt(), 3);
        theFiguresAreThoseOfTheBooks();
        look("sent");
    }

    void revokesIt()
    {
        m_panel->open("pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(openTable, 3), QStringList(code), patience);
        tick(openTable);
        look("open-orders");
        const BoxReader boxes([this] { look("revocation"); });
        m_panel->click("DealWidget_Revoke", "pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->column(openTable, 3).isEmpty(), patience);
        QCOMPARE(m_book->openOrders().size(), 0);
        m_panel->open("pushButton_purchase");
        theFiguresAreThoseOfTheBooks();
        look("revoked");
    }

    void takesPiecesOut()
    {
        m_panel->open("pushButton_deliveryHandling");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(deliveryTable, 0), QStringList(code), patience);
        look("deliverable");
        BoxReader boxes([this] { look("delivery-asked"); });
        QVERIFY(DeliveryForm::useIn([this] { clickCell(deliveryTable, 11); },
                                    [this](const DeliveryForm &form) {
                                        QCOMPARE(form.says("label_name_value"), goods);
                                        form.typePieces(2);
                                        form.type(QStringLiteral("林晓月"),
                                                  QStringLiteral("13911112222"),
                                                  QStringLiteral("和平路1号 301室"));
                                        look("delivery-form");
                                        form.send();
                                        QTRY_VERIFY_WITH_TIMEOUT(!form.isOpen(), patience);
                                    }));
        QCOMPARE(boxes.texts(), QStringList(paragraph(QStringLiteral("提货申请成功！"))));
        QTRY_COMPARE_WITH_TIMEOUT(m_book->holding(collection), qMakePair(5, 3), patience);
    }

    void findsTheDeliveryInTheRecords()
    {
        m_panel->open("pushButton_select");
        m_panel->open("pushButton_select_deliveryRecord");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(deliveryRecords, 2), QStringList(code), patience);
        QCOMPARE(m_panel->column(deliveryRecords, 11), QStringList(QStringLiteral("待审核")));
        look("delivery-records");
    }

    void locksAndUnlocks()
    {
        click(barButton<StatusBar>(QStringLiteral("锁定交易")));
        QWidget *lock = half("Transaction_Lock");
        QVERIFY(lock && lock->isVisible());
        look("locked");
        const auto *hint = lock->findChild<QLabel *>();
        const QString asked = hint->text();
        tryPassword(lock, QStringLiteral("not-the-one"));
        QTRY_VERIFY_WITH_TIMEOUT(hint->text() != asked, patience);
        QVERIFY2(hint->text().endsWith(QStringLiteral(" 请重新输入密码")),
                 qPrintable(hint->text()));
        QVERIFY(lock->isVisible());
        look("wrong-password");
        tryPassword(lock, password);
        QTRY_VERIFY_WITH_TIMEOUT(!lock->isVisible(), patience);
        lookIntoTheBooks();
        theFiguresAreThoseOfTheBooks();
        look("unlocked");
    }

    void changesTheServer()
    {
        press(Qt::Key_Escape);
        QCOMPARE(endtoend::pageInFront(*m_window), endtoend::TablePage);
        QAbstractButton *button = endtoend::serverButton(*m_window, secondServer);
        QVERIFY(button);
        QTRY_VERIFY(button->isVisible() && button->isEnabled());
        click(button);
        QTRY_VERIFY_WITH_TIMEOUT(!codes().isEmpty() && codes().first().startsWith('2'), patience);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->says("label_availableMoneyValue"),
                                  QStringLiteral("0.00"), patience);
        QVERIFY(m_panel->column(holdingsTable, 0).isEmpty());
        look("other-server");
    }

    void isSignedOutByAnotherSignIn()
    {
        const BoxReader boxes([this] {
            QVERIFY(!isSignedIn());
            look("signed-in-elsewhere");
        });
        QCOMPARE(endtoend::signIn(m_exchange.address(), secondServer, phone, password)
                     .value("status")
                     .toString(),
                 QStringLiteral("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QTRY_VERIFY_WITH_TIMEOUT(bars(false), patience);
        look("signed-out");
    }

    void signsInAgainFromTheTitleBar()
    {
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        QTRY_VERIFY_WITH_TIMEOUT(bars(true), patience);
        QAbstractButton *button = endtoend::serverButton(*m_window, server);
        QTRY_VERIFY(button->isEnabled());
        click(button);
        lookIntoTheBooks();
        theFiguresAreThoseOfTheBooks();
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(holdingsTable, 0), QStringList(code), patience);
        look("evening");
    }

private:
    void look(const char *station) { look(station, m_window.get()); }
    void look(const char *station, QWidget *window)
    {
        const QString fault = m_album.take(QLatin1String(station), window);
        QVERIFY2(fault.isEmpty(), qPrintable(fault));
    }

    static void click(QAbstractButton *button)
    {
        QVERIFY(button && button->isVisible() && button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    void press(Qt::Key key) const { QTest::keyClick(m_window->focusWidget(), key); }

    static void take(QMenu *menu, const QString &entry)
    {
        for (QAction *action : menu->actions()) {
            if (action->text() == entry) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
        }
        QVERIFY2(false, qPrintable(entry));
    }

    QStringList codes() const { return endtoend::textsOfColumn(*m_window, codeColumn); }

    QPoint placeOf(const QString &ofCode) const
    {
        const QModelIndex cell = m_table->model()->index(codes().indexOf(ofCode), codeColumn);
        m_table->scrollTo(cell);
        return m_table->visualRect(cell).center();
    }

    // The rates of the table fall from top to bottom.
    bool isFalling() const
    {
        const QAbstractItemModel *model = m_table->model();
        for (int row = 1; row < model->rowCount(); ++row) {
            if (model->index(row - 1, rateColumn).data(Qt::EditRole).toFloat()
                < model->index(row, rateColumn).data(Qt::EditRole).toFloat())
                return false;
        }
        return true;
    }

    ZvChartFeed *feed() const { return endtoend::feedOf(*m_window); }
    QString ticketCode() const
    {
        return m_panel->inTicket<QComboBox>("comboBox_goodsCode")->currentText();
    }

    // Into the ticket. What can be bought is reckoned anew at the price buttons.
    void type(const QString &price, int count) const
    {
        m_panel->type(yuan(fenOf(price) - 1), QString::number(count));
        m_panel->click("DealWidget_BuySell", "pushButton_price_add");
        QTRY_COMPARE(m_panel->inTicket<QAbstractSpinBox>("doubleSpinBox_buysellPrice")->text(),
                     price);
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->says("label_canBuySellValue").toInt() >= count, patience);
    }

    // A cell of the first row.
    void clickCell(const char *table, int column) const
    {
        QTableView *view = m_panel->table(table);
        QVERIFY(view && view->isVisible());
        const QModelIndex cell = view->model()->index(0, column);
        view->scrollTo(cell);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(cell).center());
    }

    void tick(const char *table) const
    {
        clickCell(table, 0);
        QCOMPARE(m_panel->table(table)->model()->index(0, 0).data(Qt::CheckStateRole).toInt(),
                 int(Qt::Checked));
    }

    // With the window's own session.
    void lookIntoTheBooks() const
    {
        QVERIFY(isSignedIn());
        m_book->useSession(
            ZvServerAccessManager::getZvServerAccessManagerInstance()->link()->token());
    }

    // To the fen: what was moved in, less what deals cost and open orders hold.
    void theFiguresAreThoseOfTheBooks() const
    {
        const auto reckoned = [this] {
            qint64 left = m_moved;
            for (const QJsonValue &each : m_book->ordersOfToday()) {
                const QJsonObject order = each.toObject();
                left -= order.value("amount").toInt() + order.value("fee").toInt()
                    + order.value("frozen").toInt();
            }
            return left;
        };
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->says("label_availableMoneyValue"), yuan(reckoned()),
                                  patience);
        QCOMPARE(qint64(m_book->cap().value("available").toDouble()), reckoned());
    }

    template <typename Bar>
    QAbstractButton *barButton(const QString &text) const
    {
        for (auto *button : m_window->findChild<Bar *>()->template findChildren<QPushButton *>()) {
            if (button->text() == text)
                return button;
        }
        return nullptr;
    }

    // True where both bars say so.
    bool bars(bool isIn) const
    {
        const QAbstractButton *again = barButton<TitleBar>(QStringLiteral("重新登录"));
        const QAbstractButton *first = barButton<TitleBar>(QStringLiteral("登录"));
        const QAbstractButton *status = barButton<StatusBar>(QStringLiteral("登录"));
        const QAbstractButton *lock = barButton<StatusBar>(QStringLiteral("锁定交易"));
        const QString number = ZvServerCache::getZvServerCacheInstance()->myAccount.accountNumber();
        const auto labels = m_window->findChild<StatusBar *>()->findChildren<QLabel *>();
        const bool isNamed = std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) {
            return label->isVisible() && label->text() == QStringLiteral("交易商：") + number;
        });
        return isSignedIn() == isIn && bool(again) == isIn && bool(first) != isIn
            && status->isVisible() != isIn && lock->isVisible() == isIn && isNamed == isIn;
    }

    QWidget *half(const char *className) const
    {
        for (QWidget *widget : m_window->findChildren<QWidget *>()) {
            if (qstrcmp(widget->metaObject()->className(), className) == 0)
                return widget;
        }
        return nullptr;
    }

    static void tryPassword(const QWidget *lock, const QString &word)
    {
        QTest::keyClicks(lock->findChild<QLineEdit *>(), word);
        QTest::mouseClick(lock->findChild<QPushButton *>(), Qt::LeftButton);
    }

    Album m_album{QCoreApplication::applicationDirPath()
                  + QStringLiteral("/../tests/pictures-of-a-day")};
    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<WireTrader> m_seller; // the demo account, which has pieces
    std::unique_ptr<WireTrader> m_book; // looks on with the window's own session
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TradingPanel> m_panel;
    QTableView *m_table = nullptr;
    qint64 m_moved = 0; // fen, in the course of the day
};

ZV_TEST(TradersDayTest)
#include "test_tradersday.moc"
