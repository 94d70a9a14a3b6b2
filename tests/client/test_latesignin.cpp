#include "client/accountbutton.h"
#include "client/signin.h"

#include "ZvNetworkKit/kitbench.h"
#include "plainwindow.h"
#include "shownwindows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest/QtTest>

namespace {

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

const QString begins = QStringLiteral("ZvServerEngine::startLoggedEngine()");

} // namespace

// The sign-in whose dialog was closed before the exchange answered: it counts.
class LateSignInTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    std::unique_ptr<zvtest::PlainWindow> m_window;
    AccountButton *m_button = nullptr;
    SignIn *m_signIn = nullptr;
    std::unique_ptr<QSignalSpy> m_told;

    ZvScriptedTransport *exchange() const { return m_kit->exchange; }

    LoginDialog *dialog() const { return zvtest::shownWindow<LoginDialog>(); }

    // Opens the dialog and sends a sign-in, which waits for its answer.
    void send(const QString &phone)
    {
        m_signIn->open();
        QVERIFY(dialog());
        QTest::keyClicks(dialog()->findChild<QLineEdit *>("lineEdit_login_phoneNumber"), phone);
        QTest::keyClicks(dialog()->findChild<QLineEdit *>("lineEdit_login_password"), "secret1");
        QTest::mouseClick(dialog()->findChild<QPushButton *>("pushButton_login"), Qt::LeftButton);
    }

    void closeDialog()
    {
        const QPointer<LoginDialog> open = dialog();
        QTest::mouseClick(open->findChild<QPushButton *>("pushButton_close"), Qt::LeftButton);
        QTRY_VERIFY(!open);
    }

    void answer(const QByteArray &token, const QByteArray &number)
    {
        exchange()->answer(zvPath_login,
                           ZvScriptedTransport::ok(KitBench::signedIn(token, number)));
        m_kit->settle();
    }

    QByteArray tokenInUse() const
    {
        engine()->sendRequest_Cap();
        m_kit->settle();
        return exchange()->lastRequest(zvPath_cap).token;
    }

private slots:
    void init()
    {
        static int runs = 0;
        m_kit = std::make_unique<KitBench>();
        m_kit->startOn(QStringLiteral("/ch/late%1/").arg(++runs));
        m_window = std::make_unique<zvtest::PlainWindow>();
        m_button = new AccountButton;
        m_signIn = new SignIn(m_window.get());
        (new QVBoxLayout(m_window.get()))->addWidget(m_button);
        m_window->open();
        m_told
            = std::make_unique<QSignalSpy>(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed);
    }

    void cleanup()
    {
        m_told.reset();
        m_window.reset();
        m_kit->endActions();
        m_kit.reset();
    }

    void countsAfterTheDialogIsGone()
    {
        send("13900000001");
        QCOMPARE(exchange()->openCount(zvPath_login), 1);
        closeDialog();
        QVERIFY(!engine()->isLogged);
        zvtest::CallTrace trace;
        answer("token-a", "80001");
        QVERIFY(engine()->isLogged);
        QCOMPARE(trace.take().filter(begins), QStringList{begins});
        QCOMPARE(m_told->count(), 1);
        QCOMPARE(m_button->text(), QStringLiteral("张三"));
        QCOMPARE(tokenInUse(), QByteArray("token-a"));
        QVERIFY(!dialog());
    }

    void countsOnceWhereTheDialogIsStillThere_data()
    {
        QTest::addColumn<bool>("isClosed");
        QTest::newRow("open") << false;
        QTest::newRow("closed and not yet gone") << true;
    }
    void countsOnceWhereTheDialogIsStillThere()
    {
        QFETCH(bool, isClosed);
        send("13900000001");
        zvtest::CallTrace trace;
        const QPointer<LoginDialog> open = dialog();
        if (isClosed)
            open->close();
        QVERIFY(open);
        answer("token-a", "80001");
        QVERIFY(engine()->isLogged);
        QCOMPARE(trace.take().filter(begins), QStringList{begins});
        QCOMPARE(m_told->count(), 1);
        QTRY_VERIFY(!open);
    }

    void aLateRefusalIsTheEndOfIt()
    {
        send("13900000001");
        closeDialog();
        exchange()->answer(zvPath_login,
                           ZvScriptedTransport::refusal("refused", QStringLiteral("密码错误")));
        m_kit->settle();
        QVERIFY(!engine()->isLogged);
        QVERIFY(!zvtest::shownWindow<BreltFramlessMessageBox>());
        QCOMPARE(m_told->count(), 0);
        QVERIFY(m_button->isHidden());
    }

    void theNextDialogClosesWithIt()
    {
        send("13900000001");
        closeDialog();
        m_signIn->open();
        const QPointer<LoginDialog> next = dialog();
        QVERIFY(next);
        zvtest::CallTrace trace;
        answer("token-a", "80001");
        QVERIFY(engine()->isLogged);
        QCOMPARE(trace.take().filter(begins), QStringList{begins});
        QTRY_VERIFY(!next);
    }

    void theLastOneOfTwoIsTheOneInUse()
    {
        send("13900000001");
        closeDialog();
        send("13900000002");
        zvtest::CallTrace trace;
        answer("token-a", "80001");
        QTRY_VERIFY(!dialog());
        answer("token-b", "80002");
        QVERIFY(engine()->isLogged);
        // The engine begins anew for the second account.
        QCOMPARE(trace.take().filter(begins), (QStringList{begins, begins}));
        QCOMPARE(tokenInUse(), QByteArray("token-b"));
        QCOMPARE(m_told->count(), 2);
    }
};

ZV_TEST(LateSignInTest)
#include "test_latesignin.moc"
