#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "loginbench.h"
#include "messageboxes.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QTimer>
#include <QtTest/QtTest>

#include <memory>

namespace {

using Result = ZvServerActionResult;
using zvtest::boxesIn;
using zvtest::ShownBox;

Result *server()
{
    return Result::getZvServerActionResultInstance();
}

const QString reason = QStringLiteral("验证码<b>错误</b> %1 100%");
const QString freeText = QStringLiteral("获取验证码");
const QString greyStyle = QStringLiteral(
    "QPushButton{color:rgb(255,255,255);background-color:#aaaaaa; border-width:1px;"
    "border-style:soli; border-radius:4px}");

const QString registerCode = QStringLiteral("pushButton_register_getVerificationCode");
const QString changeCode = QStringLiteral("pushButton_changePassword_getVerificationCode");

QString waiting(int seconds)
{
    return QStringLiteral("重新发送(%1)").arg(seconds);
}

} // namespace

class LoginDialogAnswersTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::LoginBench> m_bench;

    LoginDialog *dialog() const { return m_bench->dialog; }
    QPushButton *button(const QString &name) const { return m_bench->button(name); }
    QLineEdit *edit(const QString &name) const { return m_bench->edit(name); }

    void changeTo(const QString &slot)
    {
        QVERIFY(QMetaObject::invokeMethod(dialog(), slot.toLatin1().constData()));
    }

    // As the kit does it: by its own signal. A failure carries `reason`.
    static void answer(const QString &signal)
    {
        const QByteArray name = signal.toLatin1();
        QVERIFY(signal.endsWith(QLatin1String("_failed"))
                    ? QMetaObject::invokeMethod(server(), name.constData(), Q_ARG(QString, reason))
                    : QMetaObject::invokeMethod(server(), name.constData()));
    }

    // The register page's timer is the first.
    QTimer *timer(int index) const
    {
        return dialog()->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly).at(index);
    }

    // Lets a second pass for one countdown; the timer itself sleeps.
    void tick(int index) { QVERIFY(QMetaObject::invokeMethod(timer(index), "timeout")); }

    void putToSleep(int index)
    {
        QVERIFY(timer(index)->isActive());
        QCOMPARE(timer(index)->interval(), 1000);
        QVERIFY(!timer(index)->isSingleShot());
        timer(index)->setInterval(24 * 60 * 60 * 1000);
    }

    // Everything that an answer might change, as one text.
    QString state() const
    {
        QStringList parts{m_bench->label("label_page_title")->text()};
        for (const QString &name : zvtest::loginEditNames)
            parts << edit(name)->text();
        for (const QString &name : zvtest::loginButtonNames)
            parts << button(name)->text() << button(name)->styleSheet()
                  << QString::number(button(name)->isEnabled());
        for (int i = 0; i < 2; ++i)
            parts << QString::number(timer(i)->isActive());
        return parts.join('\n');
    }

    void fillAll()
    {
        for (const QString &name : zvtest::loginEditNames)
            edit(name)->setText(QStringLiteral("13800138000"));
    }

private slots:
    void init()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        m_bench = std::make_unique<zvtest::LoginBench>();
    }

    void cleanup() { m_bench.reset(); }

    // Failures.

    void failureIsShownAndChangesNothing_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("signal_register_failed") << "changeToPage_register";
        QTest::newRow("signal_register_sendCode_failed") << "changeToPage_register";
        QTest::newRow("signal_changePasswd_sendCode_failed") << "changeToPage_updatePasswd";
        QTest::newRow("signal_changePasswd_failed") << "changeToPage_updatePasswd";
    }

    void failureIsShownAndChangesNothing()
    {
        QFETCH(QString, page);
        changeTo(page);
        fillAll();
        const QString before = state();
        const QList<ShownBox> boxes = boxesIn([] { answer(QTest::currentDataTag()); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, "<p align='center'>" + reason + "</p>");
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(state(), before);
    }

    void failureLeavesARunningCountdownAlone()
    {
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        putToSleep(0);
        tick(0);
        const QString before = state();
        boxesIn([] { answer(QStringLiteral("signal_register_sendCode_failed")); });
        QCOMPARE(state(), before);
        QCOMPARE(button(registerCode)->text(), waiting(59));
    }

    void failedSignInForgetsThePassword()
    {
        fillAll();
        QString passwordDuringTheBox;
        const QList<ShownBox> boxes
            = boxesIn([] { answer(QStringLiteral("signal_login_failed")); },
                      [&] { passwordDuringTheBox = edit("lineEdit_login_password")->text(); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, "<p align='center'>" + reason + "</p>");
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(passwordDuringTheBox, QStringLiteral("13800138000"));
        for (const QString &name : zvtest::loginEditNames)
            QCOMPARE(edit(name)->text().isEmpty(), name == "lineEdit_login_password");
        QVERIFY(dialog()->isVisible());
    }

    void refusalOfTheExchangeReachesTheUser()
    {
        m_bench->fill({{"lineEdit_login_phoneNumber", "13800138000"},
                       {"lineEdit_login_password", "secret1"}});
        const QList<ShownBox> boxes = boxesIn([this] {
            m_bench->click("pushButton_login");
            m_bench->exchange()->answer(
                zvPath_login,
                ZvScriptedTransport::refusal("refused", QStringLiteral("密码错误"), "password"));
            QSignalSpy failed(server(), &Result::signal_login_failed);
            QVERIFY(failed.wait());
        });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>密码错误</p>"));
        QCOMPARE(edit("lineEdit_login_password")->text(), QString());
        QCOMPARE(edit("lineEdit_login_phoneNumber")->text(), QStringLiteral("13800138000"));
    }

    // Successes.

    void successEndsOnTheLoginPage_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("cleared");
        QTest::newRow("signal_register_succeed")
            << "changeToPage_register"
            << "<p align='center'>注册成功</p>"
            << QStringList{"lineEdit_register_PhoneNumber_referee", "lineEdit_register_PhoneNumber",
                           "lineEdit_register_password", "lineEdit_register_confirmPassword",
                           "lineEdit_register_verificationCode"};
        QTest::newRow("signal_changePasswd_succeed")
            << "changeToPage_updatePasswd"
            << "<p align='center'>修改密码成功</p>"
            << QStringList{"lineEdit_changePassword_PhoneNumber",
                           "lineEdit_changePassword_password",
                           "lineEdit_changePassword_confirmPassword",
                           "lineEdit_changePassword_verificationCode"};
    }

    void successEndsOnTheLoginPage()
    {
        QFETCH(QString, page);
        QFETCH(QString, text);
        QFETCH(QStringList, cleared);
        changeTo(page);
        fillAll();
        QStringList order;
        for (const QString &name : zvtest::loginEditNames)
            connect(edit(name), &QLineEdit::textChanged, this, [&, name] {
                order << name;
                // The page changes after the last one.
                QVERIFY(m_bench->stack()->currentIndex() != 0);
            });
        QString stateDuringTheBox;
        const QString before = state();
        const QList<ShownBox> boxes = boxesIn([] { answer(QTest::currentDataTag()); },
                                              [&] { stateDuringTheBox = state(); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, text);
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(stateDuringTheBox, before);
        QCOMPARE(order, cleared);
        for (const QString &name : zvtest::loginEditNames)
            QCOMPARE(edit(name)->text().isEmpty(), cleared.contains(name));
        QCOMPARE(m_bench->stack()->currentIndex(), 0);
        QCOMPARE(m_bench->label("label_page_title")->text(), QStringLiteral("用户登录"));
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_login"));
        QCOMPARE(dialog()->focusWidget(), edit("lineEdit_login_phoneNumber"));
    }

    void signInStartsTheEngineTellsThePoolAndCloses()
    {
        ZvWidgetSignalSLotPool *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
        zvtest::CallTrace trace;
        QSignalSpy told(pool, &ZvWidgetSignalSLotPool::signal_login_succeed);
        QSignalSpy finished(dialog(), &QDialog::finished);
        QStringList callsWhenTold;
        bool wasOpenWhenTold = false;
        QObject listener;
        connect(pool, &ZvWidgetSignalSLotPool::signal_login_succeed, &listener, [&] {
            callsWhenTold = trace.take();
            wasOpenWhenTold = dialog()->isVisible();
        });
        answer(QStringLiteral("signal_login_succeed"));
        QCOMPARE(callsWhenTold, QStringList("ZvServerEngine::startLoggedEngine()"));
        QVERIFY(wasOpenWhenTold);
        QCOMPARE(told.count(), 1);
        QVERIFY(!dialog()->isVisible());
        QVERIFY(ZvServerEngine::getZvServerEngineInstance()->isLogged);
        QCOMPARE(trace.take(), QStringList());
        QVERIFY(!QApplication::activeModalWidget());
    }

    void signInThroughTheExchangeEndsExec()
    {
        dialog()->hide();
        m_bench->fill({{"lineEdit_login_phoneNumber", "13800138000"},
                       {"lineEdit_login_password", "secret1"}});
        m_bench->exchange()->always(zvPath_login, [](const ZvRequest &) {
            return ZvScriptedTransport::ok("{\"token\": \"t1\"}");
        });
        QTimer::singleShot(0, dialog(), [this] { m_bench->click("pushButton_login"); });
        QTimer guard;
        guard.setSingleShot(true);
        connect(&guard, &QTimer::timeout, dialog(), [this] { dialog()->done(-1); });
        guard.start(20000);
        int result = -1;
        const QList<ShownBox> boxes = boxesIn([&] { result = dialog()->exec(); });
        QCOMPARE(boxes.size(), 0);
        QCOMPARE(result, int(QDialog::Rejected)); // closed, neither accepted nor ended by the guard
        QVERIFY(ZvServerEngine::getZvServerEngineInstance()->isLogged);
    }

    // Countdowns.

    void countdownRunsFromSixtyToFree_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("other");
        QTest::newRow("signal_register_sendCode_succeed") << registerCode << 0 << changeCode;
        QTest::newRow("signal_changePasswd_sendCode_succeed") << changeCode << 1 << registerCode;
    }

    void countdownRunsFromSixtyToFree()
    {
        QFETCH(QString, name);
        QFETCH(int, index);
        QFETCH(QString, other);
        const QString style = button(name)->styleSheet();
        for (int round = 0; round < 2; ++round) { // it can be run again
            answer(QTest::currentDataTag());
            QVERIFY(!button(name)->isEnabled());
            QCOMPARE(button(name)->text(), waiting(60));
            QCOMPARE(button(name)->styleSheet(), greyStyle);
            putToSleep(index);
            for (int second = 59; second >= 1; --second) {
                tick(index);
                QCOMPARE(button(name)->text(), waiting(second));
                QVERIFY(!button(name)->isEnabled());
                QVERIFY(timer(index)->isActive());
            }
            tick(index);
            QCOMPARE(button(name)->text(), freeText);
            QVERIFY(button(name)->isEnabled());
            QCOMPARE(button(name)->styleSheet(), style);
            QVERIFY(!timer(index)->isActive());
        }
        QVERIFY(button(other)->isEnabled());
        QCOMPARE(button(other)->text(), freeText);
        QVERIFY(!timer(1 - index)->isActive());
    }

    void bothCountdownsRunAtOnce()
    {
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        putToSleep(0);
        for (int i = 0; i < 5; ++i)
            tick(0);
        answer(QStringLiteral("signal_changePasswd_sendCode_succeed"));
        putToSleep(1);
        tick(1);
        tick(0);
        QCOMPARE(button(registerCode)->text(), waiting(54));
        QCOMPARE(button(changeCode)->text(), waiting(59));
        for (int i = 0; i < 54; ++i)
            tick(0);
        QVERIFY(button(registerCode)->isEnabled());
        QCOMPARE(button(changeCode)->text(), waiting(59));
        QVERIFY(timer(1)->isActive());
    }

    void secondAnswerBeginsAnew()
    {
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        putToSleep(0);
        for (int i = 0; i < 40; ++i)
            tick(0);
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        QCOMPARE(button(registerCode)->text(), waiting(60));
        putToSleep(0);
    }

    void countdownGoesOnBehindOtherPages()
    {
        changeTo("changeToPage_register");
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        putToSleep(0);
        answer(QStringLiteral("signal_changePasswd_sendCode_succeed"));
        putToSleep(1);
        for (const char *page :
             {"changeToPage_login", "changeToPage_updatePasswd", "changeToPage_register"}) {
            changeTo(page);
            tick(0);
            tick(1);
        }
        QCOMPARE(button(registerCode)->text(), waiting(57));

        // Neither success stops it.
        boxesIn([] { answer(QStringLiteral("signal_register_succeed")); });
        boxesIn([] { answer(QStringLiteral("signal_changePasswd_succeed")); });
        for (int index = 0; index < 2; ++index) {
            QVERIFY(timer(index)->isActive());
            tick(index);
        }
        changeTo("changeToPage_register");
        QCOMPARE(button(registerCode)->text(), waiting(56));
        QCOMPARE(button(changeCode)->text(), waiting(56));
        QVERIFY(!button(registerCode)->isEnabled());
    }

    void countdownGoesOnUnderABox()
    {
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        timer(0)->setInterval(1); // the true timer, a thousand times as fast
        const QList<ShownBox> boxes = boxesIn(
            [] { answer(QStringLiteral("signal_register_failed")); },
            [this] {
                QTRY_VERIFY(button(registerCode)->isEnabled());
                QVERIFY(qobject_cast<BreltFramlessMessageBox *>(QApplication::activeModalWidget()));
            });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(button(registerCode)->text(), freeText);
    }

    void lockedCodeButtonAsksForNothing()
    {
        changeTo("changeToPage_register");
        edit("lineEdit_register_PhoneNumber")->setText(QStringLiteral("13800138000"));
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        putToSleep(0);
        zvtest::CallTrace trace;
        m_bench->click(registerCode);
        QCOMPARE(trace.take(), QStringList());
    }

    void countdownEndsWithTheDialog()
    {
        answer(QStringLiteral("signal_register_sendCode_succeed"));
        const QPointer<QTimer> countdown = timer(0);
        delete m_bench->dialog;
        QVERIFY(!countdown);
        answer(QStringLiteral("signal_register_sendCode_succeed")); // nobody hears it
    }

    // The dialog ends while its box is open.

    void dialogMayDieUnderItsBox_data()
    {
        QTest::addColumn<QString>("signal");
        for (const char *signal :
             {"signal_login_failed", "signal_register_succeed", "signal_changePasswd_succeed",
              "signal_register_failed", "signal_register_sendCode_failed",
              "signal_changePasswd_failed", "signal_changePasswd_sendCode_failed"})
            QTest::newRow(signal) << QString(signal);
    }

    void dialogMayDieUnderItsBox()
    {
        QFETCH(QString, signal);
        const QList<ShownBox> boxes
            = boxesIn([&signal] { answer(signal); }, [this] { delete m_bench->dialog; });
        QCOMPARE(boxes.size(), 1);
        QVERIFY(!m_bench->dialog);
    }

    void signInMayComeWhileTheBoxOfAFailureIsOpen()
    {
        // Two clicks send two requests: the first one fails, and the second one signs in.
        dialog()->setAttribute(Qt::WA_DeleteOnClose);
        const QList<ShownBox> boxes = boxesIn([] { answer(QStringLiteral("signal_login_failed")); },
                                              [this] {
                                                  answer(QStringLiteral("signal_login_succeed"));
                                                  QTRY_VERIFY(!m_bench->dialog);
                                              });
        QCOMPARE(boxes.size(), 1);
        QVERIFY(ZvServerEngine::getZvServerEngineInstance()->isLogged);
    }

    void listenerMayTakeTheDialogAway()
    {
        QObject listener;
        connect(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                &ZvWidgetSignalSLotPool::signal_login_succeed, &listener,
                [this] { delete m_bench->dialog; });
        answer(QStringLiteral("signal_login_succeed"));
        QVERIFY(!m_bench->dialog);
    }

    void everyAnswerIsHeardOnce()
    {
        // One connection each: a second one would show a second box.
        for (const char *signal :
             {"signal_login_failed", "signal_register_sendCode_failed", "signal_register_failed",
              "signal_changePasswd_sendCode_failed", "signal_changePasswd_failed",
              "signal_register_succeed", "signal_changePasswd_succeed"})
            QCOMPARE(boxesIn([signal] { answer(signal); }).size(), 1);
    }
};

ZV_TEST(LoginDialogAnswersTest)
#include "test_logindialog_answers.moc"
