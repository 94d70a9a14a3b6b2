#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "loginbench.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

#include <memory>

namespace {

using Texts = QList<QPair<QString, QString>>;

const QString phone = QStringLiteral("13800138000");
const QString referee = QStringLiteral("13911112222");

// The edits of a page by the last part of their names.
Texts onPage(const QString &prefix, const Texts &texts)
{
    Texts full;
    for (const auto &text : texts)
        full.append({prefix + text.first, text.second});
    return full;
}

Texts loginTexts(const QString &number, const QString &password)
{
    return onPage(QStringLiteral("lineEdit_login_"),
                  {{"phoneNumber", number}, {"password", password}});
}

Texts registerTexts(const QString &refereeNumber, const QString &number, const QString &code,
                    const QString &password, const QString &confirmation)
{
    return onPage(QStringLiteral("lineEdit_register_"),
                  {{"PhoneNumber_referee", refereeNumber},
                   {"PhoneNumber", number},
                   {"verificationCode", code},
                   {"password", password},
                   {"confirmPassword", confirmation}});
}

Texts changeTexts(const QString &number, const QString &code, const QString &password,
                  const QString &confirmation)
{
    return onPage(QStringLiteral("lineEdit_changePassword_"),
                  {{"PhoneNumber", number},
                   {"verificationCode", code},
                   {"password", password},
                   {"confirmPassword", confirmation}});
}

// What a request carries, as "name=value", without its key and the kit's own fields.
QStringList carried(const ZvRequest &request)
{
    QStringList all;
    for (const char *name : {"referee", "phone", "password", "code"}) {
        if (request.hasParameter(name))
            all << QLatin1String(name) + QLatin1Char('=') + request.parameter(name);
    }
    return all;
}

} // namespace

class LoginDialogRequestsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::LoginBench> m_bench;

    QPushButton *button(const QString &name) const { return m_bench->button(name); }
    void click(const QString &name) { m_bench->click(name); }

    void changeTo(const QString &slot)
    {
        QVERIFY(QMetaObject::invokeMethod(m_bench->dialog, slot.toLatin1().constData()));
    }

    static void columnsOfChecks()
    {
        QTest::addColumn<Texts>("texts");
        QTest::addColumn<QString>("prompt"); // "name: text", or none where the request is sent
    }

    // Fills the page, clicks, and compares the one prompt that shows.
    void check(const QString &page, const QString &slot, const QString &mainButton)
    {
        QFETCH(Texts, texts);
        QFETCH(QString, prompt);
        changeTo(slot);
        m_bench->fill(texts);
        zvtest::CallTrace trace;
        click(mainButton);
        QCOMPARE(m_bench->prompts(page).join('\n'), prompt);
        QCOMPARE(trace.take().size(), prompt.isEmpty() ? 1 : 0);
        QCOMPARE(m_bench->exchange()->requests().size(), prompt.isEmpty() ? 1 : 0);
        QVERIFY(m_bench->dialog->isVisible());
        for (const auto &text : texts)
            QCOMPARE(m_bench->edit(text.first)->text(), text.second);
    }

private slots:
    void init() { m_bench = std::make_unique<zvtest::LoginBench>(); }
    void cleanup() { m_bench.reset(); }

    // The checks in their order: each row but the last fails at the check that it is named for, and
    // would fail at later ones, too.

    void loginIsChecked_data()
    {
        columnsOfChecks();
        const auto row = [](const char *name, const Texts &texts, const char *prompt) {
            QTest::newRow(name) << texts << QString(prompt);
        };
        row("no phone", loginTexts("", ""), "label_login_phoneNumberPrompt: ⓘ手机号不能为空");
        row("short phone", loginTexts("1380013800", ""),
            "label_login_phoneNumberPrompt: ⓘ手机号有误");
        row("long phone", loginTexts("138001380001", "secret1"),
            "label_login_phoneNumberPrompt: ⓘ手机号有误");
        row("no password", loginTexts(phone, ""), "label_login_passwordPrompt: ⓘ密码不能为空");
        row("password of 5", loginTexts(phone, "secre"),
            "label_login_passwordPrompt: ⓘ密码为6-20位");
        row("password of 21", loginTexts(phone, QString(21, 'x')),
            "label_login_passwordPrompt: ⓘ密码为6-20位");
        row("password of 6", loginTexts(phone, "secret"), "");
        row("password of 20", loginTexts(phone, QString(20, 'x')), "");
    }

    void loginIsChecked() { check("page_login", "changeToPage_login", "pushButton_login"); }

    void registrationIsChecked_data()
    {
        columnsOfChecks();
        const auto row = [](const char *name, const Texts &texts, const char *prompt) {
            QTest::newRow(name) << texts << QString(prompt);
        };
        row("short referee", registerTexts("1", "", "", "", ""),
            "label_register_PhoneNumberPrompt_referee: ⓘ请输入0/11位手机号");
        row("referee of 12", registerTexts("139111122223", "", "", "", ""),
            "label_register_PhoneNumberPrompt_referee: ⓘ请输入0/11位手机号");
        row("no phone", registerTexts("", "", "", "", ""),
            "label_register_PhoneNumberPrompt: ⓘ手机号不能为空");
        row("short phone", registerTexts(referee, "1380013800", "", "", ""),
            "label_register_PhoneNumberPrompt: ⓘ请输入11位手机号");
        row("long phone", registerTexts(referee, "138001380001", "", "", ""),
            "label_register_PhoneNumberPrompt: ⓘ请输入11位手机号");
        row("no code", registerTexts(referee, phone, "", "", "x"),
            "label_register_verificationCodePrompt: ⓘ校验码不能为空");
        row("code of 3", registerTexts(referee, phone, "123", "", "x"),
            "label_register_verificationCodePrompt: ⓘ校验码位4位");
        row("code of 5", registerTexts(referee, phone, "12345", "", "x"),
            "label_register_verificationCodePrompt: ⓘ校验码位4位");
        row("no password", registerTexts(referee, phone, "1234", "", "x"),
            "label_register_passwordPrompt: ⓘ密码为6-20位");
        row("password of 5", registerTexts(referee, phone, "1234", "secre", "x"),
            "label_register_passwordPrompt: ⓘ密码为6-20位");
        row("password of 21",
            registerTexts(referee, phone, "1234", QString(21, 'x'), QString(21, 'x')),
            "label_register_passwordPrompt: ⓘ密码为6-20位");
        row("other confirmation", registerTexts(referee, phone, "1234", "secret1", "secret2"),
            "label_register_confirmPasswordPrompt: ⓘ两次输入密码不一致");
        row("confirmation of another case",
            registerTexts(referee, phone, "1234", "secret1", "Secret1"),
            "label_register_confirmPasswordPrompt: ⓘ两次输入密码不一致");
        row("all well", registerTexts(referee, phone, "1234", "secret1", "secret1"), "");
        row("no referee", registerTexts("", phone, "1234", "secret1", "secret1"), "");
        row("referee of 22", registerTexts(referee + referee, phone, "1234", "secret1", "secret1"),
            "");
        row("password of 20", registerTexts("", phone, "1234", QString(20, 'x'), QString(20, 'x')),
            "");
    }

    void registrationIsChecked()
    {
        check("page_register", "changeToPage_register", "pushButton_register");
    }

    void changeOfPasswordIsChecked_data()
    {
        columnsOfChecks();
        const auto row = [](const char *name, const Texts &texts, const char *prompt) {
            QTest::newRow(name) << texts << QString(prompt);
        };
        row("no phone", changeTexts("", "", "", ""),
            "label_changePassword_PhoneNumberPrompt: ⓘ手机号不能为空");
        row("short phone", changeTexts("1380013800", "", "", ""),
            "label_changePassword_PhoneNumberPrompt: ⓘ手机号错误");
        row("long phone", changeTexts("138001380001", "", "", ""),
            "label_changePassword_PhoneNumberPrompt: ⓘ手机号错误");
        row("no code", changeTexts(phone, "", "", "x"),
            "label_changePassword_verificationCodePrompt: ⓘ校验码不能为空");
        row("code of 3", changeTexts(phone, "123", "", "x"),
            "label_changePassword_verificationCodePrompt: ⓘ验证码为4位");
        row("code of 5", changeTexts(phone, "12345", "", "x"),
            "label_changePassword_verificationCodePrompt: ⓘ验证码为4位");
        row("no password", changeTexts(phone, "1234", "", "x"),
            "label_changePassword_passwordPrompt: ⓘ密码不能为空");
        row("password of 5", changeTexts(phone, "1234", "secre", "x"),
            "label_changePassword_passwordPrompt: ⓘ请输入6-20位密码");
        row("password of 21", changeTexts(phone, "1234", QString(21, 'x'), QString(21, 'x')),
            "label_changePassword_passwordPrompt: ⓘ请输入6-20位密码");
        row("other confirmation", changeTexts(phone, "1234", "secret1", "secret2"),
            "label_changePassword_confirmPasswordPrompt: ⓘ两次输入密码不一致");
        row("confirmation of another case", changeTexts(phone, "1234", "secret1", "Secret1"),
            "label_changePassword_confirmPasswordPrompt: ⓘ两次输入密码不一致");
        row("all well", changeTexts(phone, "1234", "secret1", "secret1"), "");
    }

    void changeOfPasswordIsChecked()
    {
        check("page_updatePasswd", "changeToPage_updatePasswd", "pushButton_changePassword");
    }

    // Prompts.

    void attemptClearsThePromptsBefore_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("slot");
        QTest::addColumn<Texts>("texts");
        QTest::addColumn<QString>("cleared");
        QTest::newRow("pushButton_login")
            << "page_login"
            << "changeToPage_login" << loginTexts(phone, "secret1") << QStringLiteral(" ");
        QTest::newRow("pushButton_register")
            << "page_register"
            << "changeToPage_register" << registerTexts("", phone, "1234", "secret1", "secret1")
            << QString();
        QTest::newRow("pushButton_changePassword")
            << "page_updatePasswd"
            << "changeToPage_updatePasswd" << changeTexts(phone, "1234", "secret1", "secret1")
            << QString();
    }

    void attemptClearsThePromptsBefore()
    {
        QFETCH(QString, page);
        QFETCH(QString, slot);
        QFETCH(Texts, texts);
        QFETCH(QString, cleared);
        changeTo(slot);
        QList<QLabel *> prompts;
        for (QLabel *each : m_bench->widget(page)->findChildren<QLabel *>()) {
            if (each->objectName().contains(QLatin1String("Prompt")))
                prompts << each;
        }
        for (QLabel *prompt : qAsConst(prompts))
            prompt->setText(QStringLiteral("ⓘ"));
        m_bench->fill(texts);
        click(QTest::currentDataTag());
        for (const QLabel *prompt : qAsConst(prompts))
            QCOMPARE(prompt->text(), cleared);
    }

    void oneMessageStandsAtATime()
    {
        changeTo("changeToPage_register");
        const QString page = QStringLiteral("page_register");
        m_bench->fill(registerTexts("1", "", "", "", ""));
        click("pushButton_register");
        m_bench->fill(registerTexts("", "1", "", "", ""));
        click("pushButton_register");
        QCOMPARE(m_bench->prompts(page),
                 QStringList("label_register_PhoneNumberPrompt: ⓘ请输入11位手机号"));
        m_bench->fill(registerTexts("", phone, "1234", "secret1", "secret2"));
        click("pushButton_register");
        QCOMPARE(m_bench->prompts(page),
                 QStringList("label_register_confirmPasswordPrompt: ⓘ两次输入密码不一致"));
    }

    // Requests. The trace has the order of the arguments and the exchange has the secrets.

    void signInIsSent()
    {
        m_bench->fill(loginTexts(phone, "secret1"));
        zvtest::CallTrace trace;
        click("pushButton_login");
        QCOMPARE(trace.take(),
                 QStringList("ZvServerActionResult::sendRequest_login(\"13800138000\", \"***\")"));
        QCOMPARE(m_bench->exchange()->requestedPaths(), QStringList(zvPath_login));
        QCOMPARE(carried(m_bench->exchange()->lastRequest(zvPath_login)),
                 (QStringList{"phone=13800138000", "password=secret1"}));
    }

    void registrationIsSent_data()
    {
        QTest::addColumn<QString>("refereePhone");
        QTest::newRow("with a referee") << referee;
        QTest::newRow("without one") << QString();
    }

    void registrationIsSent()
    {
        QFETCH(QString, refereePhone);
        changeTo("changeToPage_register");
        m_bench->fill(registerTexts(refereePhone, phone, "4321", "secret1", "secret1"));
        zvtest::CallTrace trace;
        click("pushButton_register");
        QCOMPARE(trace.take(),
                 QStringList(QStringLiteral("ZvServerActionResult::sendRequest_register(\"%1\", "
                                            "\"13800138000\", \"***\", \"***\")")
                                 .arg(refereePhone)));
        QCOMPARE(m_bench->exchange()->requestedPaths(), QStringList(zvPath_reg));
        QCOMPARE(carried(m_bench->exchange()->lastRequest(zvPath_reg)),
                 (QStringList{"referee=" + refereePhone, "phone=13800138000", "password=secret1",
                              "code=4321"}));
    }

    void changeOfPasswordIsSent()
    {
        changeTo("changeToPage_updatePasswd");
        m_bench->fill(changeTexts(phone, "4321", "secret1", "secret1"));
        zvtest::CallTrace trace;
        click("pushButton_changePassword");
        QCOMPARE(trace.take(),
                 QStringList("ZvServerActionResult::sendRequest_changePasswd(\"13800138000\", "
                             "\"***\", \"***\")"));
        QCOMPARE(m_bench->exchange()->requestedPaths(), QStringList(zvPath_forget_validate));
        QCOMPARE(carried(m_bench->exchange()->lastRequest(zvPath_forget_validate)),
                 (QStringList{"phone=13800138000", "password=secret1", "code=4321"}));
    }

    void codeIsAskedFor_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("edit");
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("path");
        QTest::newRow("pushButton_register_getVerificationCode")
            << "changeToPage_register"
            << "lineEdit_register_PhoneNumber"
            << "label_register_PhoneNumberPrompt"
            << "ZvServerActionResult::sendRequest_register_sendCode(\"13800138000\")"
            << zvPath_reg_send;
        QTest::newRow("pushButton_changePassword_getVerificationCode")
            << "changeToPage_updatePasswd"
            << "lineEdit_changePassword_PhoneNumber"
            << "label_changePassword_PhoneNumberPrompt"
            << "ZvServerActionResult::sendRequest_changePasswd_sendCode(\"13800138000\")"
            << zvPath_forget_send;
    }

    void codeIsAskedFor()
    {
        QFETCH(QString, slot);
        QFETCH(QString, edit);
        QFETCH(QString, prompt);
        QFETCH(QString, request);
        QFETCH(QString, path);
        const QString codeButton = QTest::currentDataTag();
        changeTo(slot);
        zvtest::CallTrace trace;
        for (const char *wrong : {"", "1380013800", "138001380001"}) {
            m_bench->label(prompt)->clear();
            m_bench->edit(edit)->setText(wrong);
            click(codeButton);
            QCOMPARE(m_bench->label(prompt)->text(), QStringLiteral("ⓘ请输入11位手机号"));
            QCOMPARE(trace.take(), QStringList());
        }

        // The other fields of the page are not looked at, and their prompts stay.
        for (QLabel *each : m_bench->stack()->currentWidget()->findChildren<QLabel *>()) {
            if (each->objectName().contains(QLatin1String("Prompt")))
                each->setText(QStringLiteral("ⓘ"));
        }
        m_bench->edit(edit)->setText(phone);
        const QString style = button(codeButton)->styleSheet();
        click(codeButton);
        QCOMPARE(trace.take(), QStringList(request));
        QCOMPARE(m_bench->exchange()->requestedPaths(), QStringList(path));
        QCOMPARE(carried(m_bench->exchange()->lastRequest(path)), QStringList("phone=13800138000"));
        for (const QLabel *each : m_bench->stack()->currentWidget()->findChildren<QLabel *>()) {
            if (each->objectName().contains(QLatin1String("Prompt")))
                QCOMPARE(each->text(),
                         each->objectName() == prompt ? QString() : QStringLiteral("ⓘ"));
        }

        // It stays free until the answer, so a second click asks again.
        QVERIFY(button(codeButton)->isEnabled());
        QCOMPARE(button(codeButton)->text(), QStringLiteral("获取验证码"));
        QCOMPARE(button(codeButton)->styleSheet(), style);
        click(codeButton);
        QCOMPARE(trace.take(), QStringList(request));
    }

    void secondClickSendsASecondRequest()
    {
        m_bench->fill(loginTexts(phone, "secret1"));
        zvtest::CallTrace trace;
        click("pushButton_login");
        for (const QString &name : zvtest::loginButtonNames)
            QVERIFY2(button(name)->isEnabled(), qPrintable(name));
        click("pushButton_login");
        const QString line
            = QStringLiteral("ZvServerActionResult::sendRequest_login(\"13800138000\", \"***\")");
        QCOMPARE(trace.take(), (QStringList{line, line}));
    }

    void withoutTheAgreementNothingIsSent()
    {
        changeTo("changeToPage_register");
        m_bench->fill(registerTexts("", phone, "1234", "secret1", "secret1"));
        click("pushButton_register_icon");
        zvtest::CallTrace trace;
        click("pushButton_register");
        QCOMPARE(trace.take(), QStringList());
        click("pushButton_register_icon");
        click("pushButton_register");
        QCOMPARE(trace.take().size(), 1);
    }

    void typedSignInGoesOutByReturn()
    {
        zvtest::CallTrace trace;
        QTest::keyClicks(QApplication::focusWidget(), phone);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("secret1"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(trace.take(),
                 QStringList("ZvServerActionResult::sendRequest_login(\"13800138000\", \"***\")"));
    }
};

ZV_TEST(LoginDialogRequestsTest)
#include "test_logindialog_requests.moc"
