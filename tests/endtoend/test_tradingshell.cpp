#include "client/mainwindow.h"

#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "endtoend/wiretrader.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

#include <utility>

using endtoend::BoxReader;
using endtoend::patience;
using endtoend::TradingPanel;
using endtoend::WireTrader;

namespace {

const QString firstServer = QStringLiteral("/lc/youbika/");
const QString secondServer = QStringLiteral("/lc/chajiu/");
const QString phone = QStringLiteral("13800000000");
const QString password = QStringLiteral("demo888888");

// A page of the panel, the button that brings it, and its table.
struct Page {
    const char *button;
    const char *pageClass;
    const char *tableClass;
};
const Page pages[] = {
    {"pushButton_purchase", "DealWidget_BuySell", "DealWidget_BuySell_CapTableView"},
    {"pushButton_withdrawal", "DealWidget_Revoke", "DealWidget_Revoke_TableView"},
    {"pushButton_deliveryHandling", "DealWidget_Delivery", "DealWidget_Delivery_TableView"},
    {"pushButton_select_historyDeal", "DealWidget_Select_DealRecord",
     "DealWidget_Select_DealRecord_TableView"},
    {"pushButton_select_currentDelegate", "DealWidget_Select_DelegateToday",
     "DealWidget_Select_Delegate_today_TableView"},
    {"pushButton_select_historyDelegate", "DealWidget_Select_DelegateRecord",
     "DealWidget_Select_Delegate_history_TableView"},
    {"pushButton_select_purchaseApplyRecord", "DealWidget_Select_ApplyRecord",
     "DealWidget_Select_ApplyRecord_TableView"},
    {"pushButton_select_deliveryRecord", "DealWidget_Select_DeliveryRecord",
     "DealWidget_Select_DeliveryRecord_TableView"},
    {"pushButton_select_inputOutputRecord", "DealWidget_Select_MoneyFlow",
     "DealWidget_Select_MoneyFlow_TableView"},
};

// How many rows the account has on each of them, at the two servers.
const QList<int> rowsAtFirst{8, 1, 8, 1, 2, 2, 1, 1, 1};
const QList<int> rowsAtSecond{8, 3, 8, 0, 3, 3, 2, 2, 1};

// What is asked for when all pages start anew, in this order.
const QStringList reloads{
    QStringLiteral("RevokeList"),           QStringLiteral("Select_DealRecord"),
    QStringLiteral("Select_DelegateToday"), QStringLiteral("Select_DelegateRecord"),
    QStringLiteral("Select_ApplyRecord"),   QStringLiteral("Select_DeliveryRecord"),
    QStringLiteral("Select_MoneyFlow")};

const QString signInSent = QStringLiteral("sign-in sent");
const QString pollSignedIn = QStringLiteral("poll signed in");
const QString pollSignedOut = QStringLiteral("poll signed out");
const QString poolSignedIn = QStringLiteral("pool signed in");
const QString poolSignedOut = QStringLiteral("pool signed out");
const QString boxShown = QStringLiteral("box");

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

// The word for a call of the kit that has to do with sign-ins or fills a list of the panel; "" for
// all others.
QString wordOf(const QString &call)
{
    static const QRegularExpression list(
        QStringLiteral("^ZvServerEngine::sendRequest_(RevokeList|Select_\\w+)\\("));
    const QRegularExpressionMatch match = list.match(call);
    if (match.hasMatch())
        return match.captured(1);
    if (call.startsWith(QLatin1String("ZvServerActionResult::sendRequest_login(")))
        return signInSent;
    if (call.startsWith(QLatin1String("ZvServerEngine::startLoggedEngine(")))
        return pollSignedIn;
    if (call.startsWith(QLatin1String("ZvServerEngine::startUnloggedEngine(")))
        return pollSignedOut;
    return QString();
}

// What happens while it lives, in its order: the calls above, what the pool tells, and what is
// noted by hand.
class Course
{
public:
    Course()
    {
        QObject::connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, &m_scope,
                         [this] { note(poolSignedIn); });
        QObject::connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, &m_scope,
                         [this] { note(poolSignedOut); });
    }

    void note(const QString &word)
    {
        takeCalls();
        m_words << word;
    }

    // The words since the start or the last call.
    QStringList take()
    {
        takeCalls();
        return std::exchange(m_words, {});
    }

private:
    void takeCalls()
    {
        for (const QString &call : m_trace.take()) {
            const QString word = wordOf(call);
            if (!word.isEmpty())
                m_words << word;
        }
    }

    zvtest::CallTrace m_trace;
    QStringList m_words;
    QObject m_scope;
};

} // namespace

// The frame of the trading half in the real window: what a sign-in, the lock, a change of server
// and a sign-in from elsewhere do to it and to its nine pages, and in which order. The steps build
// on each other, in the order in which they stand.
class TradingShellTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(writeApplications());
        QVERIFY(m_exchange.start(m_state, 0, 0,
                                 {QStringLiteral("--demo"), QStringLiteral("--catalogue"),
                                  QStringLiteral(ZV_SMALL_CATALOGUE),
                                  QStringLiteral("--prepare-delay"), QStringLiteral("3600")}));
        fillTheAccount();
        m_window = std::make_unique<MainWindow>();
        m_panel = std::make_unique<TradingPanel>(*m_window);
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void aSignInAsksForAllListsAndFillsThePages()
    {
        bring(pages[8]);
        // What the user has set on a page is what it asks for.
        auto *type = m_panel->in<QComboBox>(pages[8].pageClass, "comboBox_type");
        QTest::keyClick(type, Qt::Key_End);
        bring(pages[2]);
        Course course;
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        QCOMPARE(course.take(),
                 QStringList(signInSent) + reloads + QStringList({pollSignedIn, poolSignedIn}));
        QCOMPARE(page(), QString(pages[0].pageClass));
        lookThrough(rowsAtFirst);
    }

    void aWrongPasswordUnlocksNothing()
    {
        bring(pages[8]);
        lock();
        QVERIFY(isLocked());
        Course course;
        tryPassword(QStringLiteral("wrong-pass-1"));
        const QString askAgain = QStringLiteral(" 请重新输入密码");
        QVERIFY2(endtoend::until([&] { return hint().endsWith(askAgain); }), qPrintable(hint()));
        QVERIFY2(hint() != askAgain, "the service gave no reason");
        QCOMPARE(course.take(), QStringList(signInSent));
        QVERIFY(isLocked());
        QVERIFY(engine()->isLogged);
        QCOMPARE(page(), QString(pages[8].pageClass));
    }

    void thePasswordUnlocksAndAllStartsAnew()
    {
        Course course;
        tryPassword(password);
        QVERIFY2(endtoend::until([&] { return !isLocked(); }), qPrintable(hint()));
        unlockedWith(course.take());
        QCOMPARE(page(), QString(pages[0].pageClass));
        lookThrough(rowsAtFirst);
    }

    // From each page there or back again.
    void aChangeOfServerAsksAnewAndLeavesThePage()
    {
        bool isSecond = false;
        for (const Page &each : pages) {
            bring(each);
            isSecond = !isSecond;
            QAbstractButton *button
                = endtoend::serverButton(*m_window, isSecond ? secondServer : firstServer);
            QVERIFY(button);
            QTRY_VERIFY(button->isEnabled());
            Course course;
            QTest::mouseClick(button, Qt::LeftButton);
            QCOMPARE(course.take(), reloads);
            QCOMPARE(page(), QString(each.pageClass));
            const int place = int(&each - pages);
            QTRY_COMPARE_WITH_TIMEOUT(rows(each), (isSecond ? rowsAtSecond : rowsAtFirst).at(place),
                                      patience);
            QVERIFY(course.take().isEmpty());
        }
        QVERIFY(isSecond);
        lookThrough(rowsAtSecond);
        // What the account has there are other collections.
        for (const QString &code : m_panel->column(pages[2].tableClass, 0))
            QVERIFY2(code.startsWith(QLatin1String("31")), qPrintable(code));
    }

    void aSignInElsewhereStopsThePollThenTellsThenThePool()
    {
        bring(pages[2]);
        Course course;
        const BoxReader boxes([&] {
            course.note(boxShown);
            QVERIFY(!engine()->isLogged);
        });
        QVERIFY(!endtoend::signIn(m_exchange.address(), secondServer, phone, password).isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QCOMPARE(course.take(), (QStringList{pollSignedOut, boxShown, poolSignedOut}));
        // The panel is left as it stood, and all of it can still be looked at. Two pages ask by
        // themselves, and nobody is told once more that nobody is signed in.
        QVERIFY(!isLocked());
        QCOMPARE(page(), QString(pages[2].pageClass));
        for (const Page &each : pages)
            bring(each);
        QCOMPARE(course.take(), (QStringList{reloads.at(0), reloads.at(5)}));
        askOnceMore();
        QCOMPARE(boxes.texts().size(), 1);
        QVERIFY(!engine()->isLogged);
    }

    void theNextSignInBringsTheBuyPageBack()
    {
        Course course;
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        QCOMPARE(course.take(),
                 QStringList(signInSent) + reloads + QStringList({pollSignedIn, poolSignedIn}));
        QCOMPARE(page(), QString(pages[0].pageClass));
        lookThrough(rowsAtSecond);
    }

    // The lock stays, and its password signs in again.
    void aSignInElsewhereUnderTheLock()
    {
        bring(pages[1]);
        lock();
        Course course;
        const BoxReader boxes([&] { course.note(boxShown); });
        QVERIFY(!endtoend::signIn(m_exchange.address(), secondServer, phone, password).isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QCOMPARE(course.take(), (QStringList{pollSignedOut, boxShown, poolSignedOut}));
        QVERIFY(isLocked());
        tryPassword(password);
        QVERIFY2(endtoend::until([&] { return !isLocked(); }), qPrintable(hint()));
        unlockedWith(course.take());
        QVERIFY(engine()->isLogged);
        lookThrough(rowsAtSecond);
    }

private:
    QWidget *half() const
    {
        for (QWidget *widget : m_window->findChildren<QWidget *>()) {
            if (qstrcmp(widget->metaObject()->className(), "Transaction_Widget") == 0)
                return widget;
        }
        return nullptr;
    }
    QStackedWidget *stackOf(const char *parentClass) const
    {
        for (auto *stack : half()->findChildren<QStackedWidget *>()) {
            if (qstrcmp(stack->parentWidget()->metaObject()->className(), parentClass) == 0
                || qstrcmp(stack->metaObject()->className(), parentClass) == 0)
                return stack;
        }
        return nullptr;
    }
    QString page() const
    {
        const QWidget *front = stackOf("DealWidget_AllWidgets")->currentWidget();
        return QString::fromLatin1(front->metaObject()->className());
    }
    bool isLocked() const { return stackOf("Transaction_Widget")->currentIndex() == 1; }
    void lock() { QVERIFY(QMetaObject::invokeMethod(half(), "slot_showTransctionLock")); }
    QWidget *locked() const { return stackOf("Transaction_Widget")->widget(1); }
    QString hint() const { return locked()->findChild<QLabel *>()->text(); }
    void tryPassword(const QString &text)
    {
        QTest::keyClicks(locked()->findChild<QLineEdit *>(), text);
        QTest::mouseClick(locked()->findChild<QPushButton *>(), Qt::LeftButton);
    }

    // The pool and the engine hear of it as of any sign-in; who of the listeners asks first is the
    // host's affair.
    static void unlockedWith(QStringList words)
    {
        QCOMPARE(words.takeFirst(), signInSent);
        QVERIFY(words.indexOf(poolSignedIn) > words.indexOf(pollSignedIn));
        QCOMPARE(words.removeAll(poolSignedIn), 1);
        QCOMPARE(words.removeAll(pollSignedIn), 1);
        QCOMPARE(words, reloads);
    }

    // Brings a page to the front by its button, out of the queries where it stands there.
    void bring(const Page &wanted)
    {
        const auto *button = m_panel->in<QAbstractButton>("Transaction_Deal", wanted.button);
        QVERIFY(button);
        if (!button->isVisible())
            m_panel->open("pushButton_select");
        m_panel->open(wanted.button);
        QCOMPARE(page(), QString(wanted.pageClass));
        QVERIFY(m_panel->table(wanted.tableClass)->isVisible());
    }

    int rows(const Page &of) const { return m_panel->column(of.tableClass, 0).size(); }

    // Each page in its turn shows what the account has.
    void lookThrough(const QList<int> &wanted)
    {
        for (const Page &each : pages) {
            bring(each);
            const int place = int(&each - pages);
            QVERIFY2(endtoend::until([&] { return rows(each) == wanted.at(place); }),
                     qPrintable(QStringLiteral("%1 has %2 rows").arg(page()).arg(rows(each))));
        }
    }

    // Waits until what was asked before has been answered.
    void askOnceMore()
    {
        QSignalSpy types(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_CollectionType_Changed);
        engine()->sendRequest_Collection_Type();
        QVERIFY(types.wait(patience));
    }

    // What could be applied for at the two servers, and was.
    bool writeApplications() const
    {
        const auto application = [](int number) {
            return QJsonObject{{"number", number},
                               {"phone", phone},
                               {"time", "2020-01-01 09:30:00"},
                               {"collection", 9000 + number},
                               {"code", QString::number(900000 + number)},
                               {"name", "春晓大版"},
                               {"price", 1000},
                               {"quantity", 100},
                               {"state", "pending"}};
        };
        const QJsonObject markets{
            {firstServer, QJsonObject{{"applications", QJsonArray{application(1)}}}},
            {secondServer,
             QJsonObject{{"applications", QJsonArray{application(2), application(3)}}}}};
        QFile file(m_state.file(QStringLiteral("applications.json")));
        return file.open(QIODevice::WriteOnly)
            && file.write(QJsonDocument(QJsonObject{{"format", 1}, {"markets", markets}}).toJson())
            > 0;
    }

    // Orders, a deal and deliveries, other ones at each server.
    void fillTheAccount()
    {
        WireTrader buyer(m_exchange.address(), firstServer);
        QVERIFY2(buyer.moveIn(m_state, QStringLiteral("13912340001"), QStringLiteral("qing-shi-7"),
                              10000),
                 qPrintable(buyer.sentence()));
        WireTrader demo(m_exchange.address(), firstServer);
        QVERIFY(demo.signIn(phone, password));
        QVERIFY(demo.sell(QStringLiteral("2100"), 1000, 2) > 0);
        QVERIFY2(buyer.buy(QStringLiteral("2100"), 1000, 2) > 0, qPrintable(buyer.sentence()));
        QVERIFY(demo.sell(QStringLiteral("2100"), 1100, 3) > 0);
        QVERIFY2(take(demo, QStringLiteral("2101")), qPrintable(demo.sentence()));
        WireTrader second(m_exchange.address(), secondServer);
        QVERIFY(second.signIn(phone, password));
        for (const qint64 price : {1000, 1050, 1100})
            QVERIFY(second.sell(QStringLiteral("3100"), price, 1) > 0);
        for (const char *collection : {"3100", "3101"})
            QVERIFY2(take(second, QLatin1String(collection)), qPrintable(second.sentence()));
    }

    static bool take(WireTrader &owner, const QString &collection)
    {
        return owner
            .post(QStringLiteral("trade/take.html"),
                  {{QStringLiteral("collection"), collection},
                   {QStringLiteral("quantity"), QStringLiteral("1")},
                   {QStringLiteral("person"), QStringLiteral("林晓月")},
                   {QStringLiteral("phone"), phone},
                   {QStringLiteral("address"), QStringLiteral("和平路1号")}})
            .contains(QStringLiteral("id"));
    }

    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TradingPanel> m_panel;
};

ZV_TEST(TradingShellTest)
#include "test_tradingshell.moc"
