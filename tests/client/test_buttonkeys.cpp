#include "client/mainwindow.h"

#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDoubleSpinBox>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QtTest/QtTest>

namespace {

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

} // namespace

// Keys for the buttons that the Tab key does not reach.
class ButtonKeysTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> m_window;

    QWidget *trading() const { return m_window->findChild<Transaction_Widget *>(); }
    QPushButton *column(const char *name) const
    {
        return trading()->findChild<QPushButton *>(QLatin1String(name));
    }
    QPushButton *buttonOf(const QWidget *area, const QString &words) const
    {
        for (QPushButton *button : area->findChildren<QPushButton *>()) {
            if (button->text() == words || button->accessibleName() == words)
                return button;
        }
        return nullptr;
    }
    QString page() const
    {
        const QWidget *all = nullptr;
        for (const QStackedWidget *stack : trading()->findChildren<QStackedWidget *>()) {
            if (qstrcmp(stack->metaObject()->className(), "DealWidget_AllWidgets") == 0)
                all = stack->currentWidget();
        }
        return all ? QString::fromLatin1(all->metaObject()->className()) : QString();
    }
    void signIn() const
    {
        engine()->isLogged = true;
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_login_succeed();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(m_window->windowHandle(), Qt::Key(key), modifiers);
    }
    LoginDialog *dialog() const
    {
        for (auto *found : m_window->findChildren<LoginDialog *>()) {
            if (found->isVisible())
                return found;
        }
        return nullptr;
    }

private slots:
    void init()
    {
        access()->setTransport(std::make_unique<ZvScriptedTransport>());
        static int windows = 0;
        access()->setUrlPrefix(QStringLiteral("/keys/%1/").arg(++windows));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        engine()->startUnloggedEngine();
        access()->stop();
        access()->setTransport(nullptr);
    }

    void everyKeyIsTakenOnceAndNamed()
    {
        QStringList keys;
        for (const QShortcut *shortcut : m_window->findChildren<QShortcut *>())
            keys << shortcut->key().toString();
        QCOMPARE(keys.size(), 28);
        QCOMPARE(keys.removeDuplicates(), 0);
        QStringList tips;
        for (const QPushButton *button : m_window->findChildren<QPushButton *>())
            tips << button->toolTip();
        for (const QString &key : keys)
            QVERIFY2(!tips.filter(QStringLiteral("(%1)").arg(key)).isEmpty(), qPrintable(key));
    }

    void theWayIn()
    {
        press(Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(dialog());
        dialog()->close();
        QTRY_VERIFY(!dialog());
        // It opens from within a field as well, and for somebody who is signed in.
        signIn();
        auto *price = trading()->findChild<QDoubleSpinBox *>("doubleSpinBox_buysellPrice");
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        price->setFocus();
        press(Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(dialog());
    }

    void theWindow()
    {
        press(Qt::Key_F11);
        QVERIFY(m_window->isMaximized());
        press(Qt::Key_F11);
        QVERIFY(!m_window->isMaximized());
        press(Qt::Key_M, Qt::ControlModifier);
        QVERIFY(m_window->isMinimized());
        m_window->showNormal();
        press(Qt::Key_Q, Qt::ControlModifier);
        QVERIFY(!m_window->isVisible());
    }

    void theTradingHalfHidesAndLocksOnlyWhereItsButtonsAre()
    {
        const auto *pages
            = trading()->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly);
        press(Qt::Key_T, Qt::ControlModifier);
        QVERIFY(trading()->isVisible());
        press(Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(pages->currentIndex(), 0);
        signIn();
        press(Qt::Key_T, Qt::ControlModifier);
        QVERIFY(!trading()->isVisible());
        QVERIFY(buttonOf(m_window->findChild<StatusBar *>(), QStringLiteral("显示交易")));
        press(Qt::Key_T, Qt::ControlModifier);
        QVERIFY(trading()->isVisible());
        press(Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(pages->currentIndex(), 1);
    }

    void theTitleRowOfTheMarket_data()
    {
        QTest::addColumn<int>("digit");
        QTest::addColumn<QString>("call");
        QTest::newRow("table") << int(Qt::Key_1) << "ZvServerEngine::changedToMarketList()";
        QTest::newRow("time line") << int(Qt::Key_2) << "ZvServerEngine::changedToTimeLine()";
        QTest::newRow("day") << int(Qt::Key_3) << "ZvServerEngine::changedToDayKLine()";
        QTest::newRow("week") << int(Qt::Key_4) << "ZvServerEngine::changedToWeekKLine()";
        QTest::newRow("month") << int(Qt::Key_5) << "ZvServerEngine::changedToMonthKLine()";
    }
    void theTitleRowOfTheMarket()
    {
        QFETCH(int, digit);
        QFETCH(QString, call);
        zvtest::CallTrace trace;
        press(digit, Qt::ControlModifier);
        QVERIFY2(trace.take().contains(call), qPrintable(call));
        // The keys stay where they were, and no digit reaches the keyboard sprite.
        QVERIFY(m_window->focusWidget());
    }

    void moneyKeysComeWithTheAccount()
    {
        const QString call = QStringLiteral("getURL_INOUT");
        zvtest::CallTrace trace;
        press(Qt::Key_8, Qt::ControlModifier);
        QVERIFY(trace.take().filter(call).isEmpty());
        signIn();
        trace.take();
        press(Qt::Key_8, Qt::ControlModifier);
        QVERIFY(!trace.take().filter(call).isEmpty());
    }

    void theColumnOfTheTradingHalf_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("page");
        QTest::newRow("sell") << int(Qt::Key_F2) << "pushButton_sell"
                              << "DealWidget_BuySell";
        QTest::newRow("revoke") << int(Qt::Key_F3) << "pushButton_withdrawal"
                                << "DealWidget_Revoke";
        QTest::newRow("queries") << int(Qt::Key_F4) << "pushButton_select"
                                 << "DealWidget_Select_DealRecord";
        QTest::newRow("prepare") << int(Qt::Key_F7) << "pushButton_prePay"
                                 << "DealWidget_BuySell";
        QTest::newRow("deliver") << int(Qt::Key_F8) << "pushButton_deliveryHandling"
                                 << "DealWidget_Delivery";
    }
    void theColumnOfTheTradingHalf()
    {
        QFETCH(int, key);
        QFETCH(QString, button);
        QFETCH(QString, page);
        press(key);
        QVERIFY(column(qPrintable(button))->isChecked());
        QVERIFY(!column("pushButton_purchase")->isChecked());
        QCOMPARE(this->page(), page);
        press(Qt::Key_F1);
        QVERIFY(column("pushButton_purchase")->isChecked());
        QCOMPARE(this->page(), QStringLiteral("DealWidget_BuySell"));
    }

    void theQueriesHaveKeysWhileTheyAreOpen()
    {
        press(Qt::Key_6, Qt::AltModifier);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        press(Qt::Key_F4);
        const QList<QPair<int, QString>> pages{
            {Qt::Key_2, QStringLiteral("DealWidget_Select_DelegateToday")},
            {Qt::Key_3, QStringLiteral("DealWidget_Select_DelegateRecord")},
            {Qt::Key_4, QStringLiteral("DealWidget_Select_ApplyRecord")},
            {Qt::Key_5, QStringLiteral("DealWidget_Select_DeliveryRecord")},
            {Qt::Key_6, QStringLiteral("DealWidget_Select_MoneyFlow")},
            {Qt::Key_1, QStringLiteral("DealWidget_Select_DealRecord")},
        };
        for (const auto &each : pages) {
            press(each.first, Qt::AltModifier);
            QCOMPARE(page(), each.second);
        }
    }

    void aLockedColumnIsOutOfReach()
    {
        signIn();
        press(Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        press(Qt::Key_F3);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
    }

    void aDialogKeepsTheKeys()
    {
        press(Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(dialog());
        press(Qt::Key_F3);
        press(Qt::Key_F11);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        QVERIFY(!m_window->isMaximized());
    }
};

ZV_TEST(ButtonKeysTest)
#include "test_buttonkeys.moc"
