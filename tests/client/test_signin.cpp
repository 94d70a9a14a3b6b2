#include "client/signin.h"

#include "plainwindow.h"
#include "shownwindows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QtTest/QtTest>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

QList<LoginDialog *> dialogs()
{
    return zvtest::shownWindows<LoginDialog>();
}

} // namespace

// The way in: one dialog for each use.
class SignInTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::PlainWindow> m_window;
    SignIn *m_signIn = nullptr;

private slots:
    void init()
    {
        m_window = std::make_unique<zvtest::PlainWindow>();
        m_signIn = new SignIn(m_window.get());
        m_window->open();
    }
    void cleanup() { m_window.reset(); }

    void opensOverTheWindow()
    {
        m_signIn->open();
        QCOMPARE(dialogs().size(), 1);
        const QPointer<LoginDialog> dialog = dialogs().first();
        QVERIFY(dialog->isModal());
        QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
        QCOMPARE(dialog->parentWidget(), m_window.get());
        const QPoint apart = dialog->geometry().center() - m_window->frameGeometry().center();
        QVERIFY2(apart.manhattanLength() <= 2, qPrintable(QString::number(apart.x())));

        dialog->close();
        QTRY_VERIFY(!dialog);
        // And each use has a dialog of its own.
        m_signIn->open();
        QCOMPARE(dialogs().size(), 1);
    }

    void askedTwiceItRaisesTheOneThatIsOpen()
    {
        m_signIn->open();
        const QPointer<LoginDialog> dialog = dialogs().value(0);
        QVERIFY(dialog);
        m_signIn->open();
        QCOMPARE(m_window->findChildren<LoginDialog *>().size(), 1);
        QTRY_COMPARE(QApplication::activeWindow(), dialog.data());
    }

    void askedRightAfterClosingItOpensAnother()
    {
        m_signIn->open();
        const QPointer<LoginDialog> first = dialogs().value(0);
        first->close();
        m_signIn->open();
        QCOMPARE(dialogs().size(), 1);
        QVERIFY(dialogs().first() != first);
    }

    void windowMayEndWithItsDialog()
    {
        m_signIn->open();
        const QPointer<LoginDialog> dialog = dialogs().value(0);
        m_window.reset();
        QVERIFY(!dialog);
    }

    // The box of an ended session is closed late: somebody is signed in again by then.
    void aNewSessionIsToldOnceMoreAfterTheEndOfTheOldOne()
    {
        QSignalSpy told(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed);
        zvtest::PlainWindow::setSignedIn(true);
        zvtest::CallTrace trace;
        pool()->slot_loggedOtherPlace();
        QVERIFY(told.isEmpty()); // not before the others have heard of the end
        QTRY_COMPARE(told.count(), 1);
        QCOMPARE(trace.take(), QStringList());
    }

    void theEndOfASessionIsTheEndOfIt()
    {
        QSignalSpy told(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed);
        pool()->slot_loggedOtherPlace();
        QCoreApplication::processEvents();
        QVERIFY(told.isEmpty());
    }

    void nothingOfTheAccountStaysOnView()
    {
        ZvUBCapInfo::Data money;
        money.availableMoney = 99633874;
        cache()->storeCapInfo(ZvUBCapInfo(money));
        QSignalSpy holdings(cache(), &ZvServerCache::signal_cache_CapInfo_changed);
        QSignalSpy deals(cache(), &ZvServerCache::signal_cache_GatherInfo_changed);

        // While somebody is signed in, they are that account's.
        zvtest::PlainWindow::setSignedIn(true);
        pool()->slot_loggedOtherPlace();
        QCoreApplication::processEvents();
        QCOMPARE(holdings.count(), 0);

        zvtest::PlainWindow::setSignedIn(false);
        pool()->slot_loggedOtherPlace();
        QTRY_COMPARE(holdings.count(), 1);
        QCOMPARE(deals.count(), 1);
        QCOMPARE(cache()->capInfo, ZvUBCapInfo());
    }
};

ZV_TEST(SignInTest)
#include "test_signin.moc"
