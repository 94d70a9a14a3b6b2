#include "client/accountbutton.h"

#include "plainwindow.h"
#include "shownwindows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTextDocument>
#include <QVBoxLayout>
#include <QtTest/QtTest>

namespace {

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

ZvUBMyAcount account(const QString &phone, const QString &name = QString())
{
    ZvUBMyAcount::Data data;
    data.phone = phone;
    data.name = name;
    return ZvUBMyAcount(data);
}

const QString endsSession = QStringLiteral("ZvServerEngine::startUnloggedEngine()");

} // namespace

// The account at the edge of the window, while there is one.
class AccountButtonTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::PlainWindow> m_window;
    QPointer<AccountButton> m_button;

    void signIn()
    {
        zvtest::PlainWindow::setSignedIn(true);
        pool()->slot_login_succeed();
    }

    // Takes an entry of the menu, which is open.
    void choose(const QString &entry)
    {
        QMenu *menu = m_button->findChild<QMenu *>();
        for (QAction *action : menu->actions()) {
            if (action->text() == entry)
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(action).center());
        }
    }

private slots:
    void init()
    {
        m_window = std::make_unique<zvtest::PlainWindow>();
        auto *layout = new QVBoxLayout(m_window.get());
        m_button = new AccountButton;
        layout->addWidget(new QLineEdit);
        layout->addWidget(m_button);
        m_window->open();
    }
    void cleanup() { m_window.reset(); }

    void signedOutThereIsNone()
    {
        QVERIFY(m_button->isHidden());
        signIn();
        QVERIFY(m_button->isVisible());
        QVERIFY(m_button->focusPolicy() & Qt::TabFocus);
    }

    void withoutAWindowItOpensNone()
    {
        zvtest::PlainWindow::setSignedIn(true);
        QWidget owner;
        const AccountButton inside(&owner);
        QVERIFY(!inside.isVisible());
        QVERIFY(!inside.isHidden());
    }

    void keysOpenTheMenu()
    {
        signIn();
        QTest::keyClick(m_window->findChild<QLineEdit *>(), Qt::Key_Tab);
        QVERIFY(m_button->hasFocus());
        QTest::keyClick(m_button, Qt::Key_Space);
        QTRY_VERIFY(m_button->findChild<QMenu *>()->isVisible());
        m_button->findChild<QMenu *>()->close();
    }

    void clickLeavesTheFocus()
    {
        m_window->findChild<QLineEdit *>()->setFocus();
        signIn();
        QTest::mouseClick(m_button, Qt::LeftButton);
        QVERIFY(m_window->findChild<QLineEdit *>()->hasFocus());
        m_button->findChild<QMenu *>()->close();
    }

    void signedInItNamesTheAccount_data()
    {
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::newRow("name") << "13900000001"
                              << "张三"
                              << "张三";
        QTest::newRow("phone") << "13900000001"
                               << ""
                               << "139****0001";
        QTest::newRow("short phone") << "1390001"
                                     << ""
                                     << "1390001";
        QTest::newRow("neither") << ""
                                 << ""
                                 << "已登录";
        QTest::newRow("no mnemonic") << "13900000001"
                                     << "A&B"
                                     << "A&&B";
    }
    void signedInItNamesTheAccount()
    {
        QFETCH(QString, phone);
        QFETCH(QString, name);
        QFETCH(QString, text);
        cache()->storeMyAccount(ZvUBMyAcount());
        signIn();
        QCOMPARE(m_button->text(), QStringLiteral("已登录"));
        cache()->storeMyAccount(account(phone, name));
        QCOMPARE(m_button->text(), text);
        QCOMPARE(m_button->accessibleName(), QStringLiteral("账户 ") + text.replace("&&", "&"));
    }

    void longNamesAreCutAndToldInFull()
    {
        const QString name(60, QChar(0x5F20));
        signIn();
        cache()->storeMyAccount(account("13900000001", name));
        QVERIFY(m_button->text().endsWith(QChar(0x2026)));
        QVERIFY(m_button->sizeHint().width() < 220);
        QVERIFY(m_button->toolTip().contains(name));
    }

    void namesAreNoMarkup()
    {
        const QString name = QStringLiteral("<b>张</b>");
        signIn();
        cache()->storeMyAccount(account("13900000001", name));
        QTextDocument shown;
        shown.setHtml(m_button->toolTip());
        QVERIFY2(shown.toPlainText().startsWith(name), qPrintable(m_button->toolTip()));
    }

    void nameIsOfTheAccountThatIsSignedIn()
    {
        // The account is there before its sign-in is told.
        cache()->storeSignIn(account("13900000001", "张三"));
        QVERIFY(m_button->isHidden());
        signIn();
        QCOMPARE(m_button->text(), QStringLiteral("张三"));
        m_button->findChild<QMenu *>()->actions().last()->trigger();
        QVERIFY(m_button->isHidden());
        // A late answer about the account that has left changes nothing.
        cache()->storeMyAccount(account("13900000001", "张三"));
        QVERIFY(m_button->isHidden());
        QCOMPARE(m_button->text(), QString());
        cache()->storeSignIn(account("13900000002", "李四"));
        signIn();
        QCOMPARE(m_button->text(), QStringLiteral("李四"));
    }

    void menuSignsOut()
    {
        signIn();
        QTest::mouseClick(m_button, Qt::LeftButton);
        QMenu *menu = m_button->findChild<QMenu *>();
        QTRY_VERIFY(menu->isVisible());
        // Above the button, which stands at the lower edge of the window.
        QVERIFY(menu->geometry().bottom() < m_button->mapToGlobal(QPoint()).y());
        QSignalSpy left(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace);
        zvtest::CallTrace trace;
        choose("退出登录");
        QCOMPARE(trace.take(), QStringList{endsSession});
        QVERIFY(!engine()->isLogged);
        QVERIFY(m_button->isHidden());
        // Everybody else in the house hears of it.
        QCOMPARE(left.count(), 1);
    }

    void menuAsksForATransfer()
    {
        signIn();
        QSignalSpy wanted(m_button, &AccountButton::transferWanted);
        QTest::mouseClick(m_button, Qt::LeftButton);
        QTRY_VERIFY(m_button->findChild<QMenu *>()->isVisible());
        choose("出/入金");
        QCOMPARE(wanted.count(), 1);
        QVERIFY(engine()->isLogged);
    }

    void menuHoldsWhatASignedInUserMayDo()
    {
        QStringList texts;
        for (const QAction *action : m_button->findChild<QMenu *>()->actions())
            texts << action->text();
        QCOMPARE(texts, QStringList({"出/入金", "", "退出登录"}));
    }

    void anOpenMenuEndsWithTheSession()
    {
        signIn();
        QTest::mouseClick(m_button, Qt::LeftButton);
        QMenu *menu = m_button->findChild<QMenu *>();
        QTRY_VERIFY(menu->isVisible());
        zvtest::PlainWindow::setSignedIn(false);
        pool()->slot_loggedOtherPlace();
        QVERIFY(!menu->isVisible());
    }

    void theEndOfTheSessionIsTheTradingHalfsToSay()
    {
        signIn();
        zvtest::CallTrace trace;
        cache()->storeLoggedOtherPlace("您的账户已在别处登录");
        QCOMPARE(trace.take(), QStringList());
        QVERIFY(zvtest::shownWindows<BreltFramlessMessageBox>().isEmpty());
        QVERIFY(engine()->isLogged);
    }

    void aSignInElsewhereInTheHouseIsSeen()
    {
        // What the trading side does when the session ends.
        signIn();
        zvtest::PlainWindow::setSignedIn(false);
        pool()->slot_loggedOtherPlace();
        QVERIFY(m_button->isHidden());
    }
};

ZV_TEST(AccountButtonTest)
#include "test_accountbutton.moc"
