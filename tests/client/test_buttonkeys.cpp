#include "shownwindows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"
#include "windowbench.h"

#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QButtonGroup>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QtTest/QtTest>

#include <algorithm>

using zvtest::WindowBench;

// Keys for the buttons that the Tab key does not reach.
class ButtonKeysTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowBench> m_bench;
    MainWindow *m_window = nullptr;

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
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(m_window->windowHandle(), Qt::Key(key), modifiers);
    }
    // Of a row of choices the chosen one is, and the arrow keys go on from there.
    static bool isReachedByTab(const QAbstractButton *button)
    {
        const QButtonGroup *row = button->group();
        const QAbstractButton *stop = row && row->exclusive() ? row->checkedButton() : nullptr;
        return (stop ? stop : button)->focusPolicy() & Qt::TabFocus;
    }
    LoginDialog *dialog() const { return zvtest::shownWindow<LoginDialog>(); }

private slots:
    void init()
    {
        m_bench = std::make_unique<WindowBench>(QSize(1366, 768));
        m_window = m_bench->window.get();
        m_bench->show();
    }
    void cleanup() { m_bench.reset(); }

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

    // Every button that is on the screen can be had without the mouse.
    void whatTheTabKeyPassesByHasAKey_data()
    {
        QTest::addColumn<int>("page"); // the digit of its key
        QTest::newRow("table") << int(Qt::Key_1);
        QTest::newRow("time line") << int(Qt::Key_2);
        QTest::newRow("K line") << int(Qt::Key_3);
        QTest::newRow("deals") << 0;
    }
    void whatTheTabKeyPassesByHasAKey()
    {
        QFETCH(int, page);
        WindowBench::fill();
        WindowBench::signIn();
        press(page == 0 ? int(Qt::Key_2) : page, Qt::ControlModifier);
        if (page == 0)
            ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_marketDeatil_clicked();
        press(Qt::Key_F4);
        QStringList keyed;
        for (const QShortcut *shortcut : m_window->findChildren<QShortcut *>())
            keyed << QStringLiteral("(%1)").arg(shortcut->key().toString());
        const auto hasKey = [&](const QWidget *button) {
            const QString tip = button->toolTip();
            return std::any_of(keyed.cbegin(), keyed.cend(),
                               [&](const QString &each) { return tip.endsWith(each); });
        };
        int count = 0;
        QStringList missing;
        for (const QAbstractButton *button : m_window->findChildren<QAbstractButton *>()) {
            if (!button->isVisible() || isReachedByTab(button))
                continue;
            ++count;
            if (!hasKey(button))
                missing << QStringLiteral("%1 %2 %3")
                               .arg(QLatin1String(button->metaObject()->className()),
                                    button->objectName(), button->text());
        }
        QVERIFY(count > 20);
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join('\n')));
    }

    void theWayIn()
    {
        press(Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(dialog());
        dialog()->close();
        QTRY_VERIFY(!dialog());
        // It opens from within a field as well, and for somebody who is signed in.
        WindowBench::signIn();
        auto *price = trading()->findChild<QDoubleSpinBox *>("doubleSpinBox_buysellPrice");
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
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
        WindowBench::signIn();
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
        WindowBench::signIn();
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
        WindowBench::signIn();
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
