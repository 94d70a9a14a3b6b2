#include "ZvNetworkKit/zvserverconfig.h"
#include "contrast.h"
#include "loginbench.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QMetaMethod>
#include <QRegExpValidator>
#include <QTimer>
#include <QtTest/QtTest>

#include <memory>

using zvtest::contrast;

namespace {

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

const QString phonePattern = QStringLiteral("^1[3|4|5|7|8][0-9]\\d{8}$");
const QString passwordPattern = QStringLiteral("^\\S{6,20}$");

const QStringList loginPrompts{QStringLiteral("label_login_phoneNumberPrompt"),
                               QStringLiteral("label_login_passwordPrompt")};
const QStringList changePrompts{QStringLiteral("label_changePassword_PhoneNumberPrompt"),
                                QStringLiteral("label_changePassword_verificationCodePrompt"),
                                QStringLiteral("label_changePassword_passwordPrompt"),
                                QStringLiteral("label_changePassword_confirmPasswordPrompt")};
const QStringList registerPrompts{QStringLiteral("label_register_PhoneNumberPrompt"),
                                  QStringLiteral("label_register_verificationCodePrompt"),
                                  QStringLiteral("label_register_passwordPrompt"),
                                  QStringLiteral("label_register_confirmPasswordPrompt"),
                                  QStringLiteral("label_register_PhoneNumberPrompt_referee")};

} // namespace

class LoginDialogTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::LoginBench> m_bench;

    LoginDialog *dialog() const { return m_bench->dialog; }
    QLineEdit *edit(const QString &name) const { return m_bench->edit(name); }
    QPushButton *button(const QString &name) const { return m_bench->button(name); }
    QLabel *label(const QString &name) const { return m_bench->label(name); }
    QWidget *widget(const QString &name) const { return m_bench->widget(name); }
    QString title() const { return label(QStringLiteral("label_page_title"))->text(); }
    void click(const QString &name) { m_bench->click(name); }

    void changeTo(const QString &slot)
    {
        QVERIFY(QMetaObject::invokeMethod(dialog(), slot.toLatin1().constData()));
    }

private slots:
    void init()
    {
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
        config()->setServiceAddress(QString());
        m_bench = std::make_unique<zvtest::LoginBench>();
    }

    void cleanup() { m_bench.reset(); }

    // What a host reaches by name.

    void slotsStandInTheirOrder()
    {
        const QMetaObject &meta = LoginDialog::staticMetaObject;
        QCOMPARE(QString(meta.className()), QStringLiteral("LoginDialog"));
        QCOMPARE(meta.superClass(), &BreltFramlessMoveableDialog::staticMetaObject);
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            methods << QStringLiteral("%1 %2 %3")
                           .arg(method.access() == QMetaMethod::Public ? "public" : "private",
                                QString(method.methodSignature()),
                                QString(method.parameterNames().join()));
        }
        const QStringList expected{
            "public slot_login_succeed() ",
            "public slot_login_failed(QString) msg",
            "public slot_register_sendCode_succeed() ",
            "public slot_register_sendCode_failed(QString) reason",
            "public slot_register_sendCode_timeout() ",
            "public slot_register_succeed() ",
            "public slot_register_failed(QString) reason",
            "public slot_changePasswd_sendCode_succeed() ",
            "public slot_changePasswd_sendCode_failed(QString) reason",
            "public slot_changePasswd_sendCode_timeout() ",
            "public slot_changePasswd_succeed() ",
            "public slot_changePasswd_failed(QString) reason",
            "private changeToPage_login() ",
            "private changeToPage_register() ",
            "private changeToPage_updatePasswd() ",
            "private closeClicked() ",
            "private buttonClicked_login() ",
            "private buttonClicked_register() ",
            "private buttonClicked_register_code() ",
            "private buttonClicked_changePasswd() ",
            "private buttonClicked_changePasswd_code() ",
            "private registIconClicked() ",
        };
        QCOMPARE(methods.join('\n'), expected.join('\n'));
    }

    void pagesHoldTheirWidgets_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("panel");
        QTest::addColumn<QStringList>("edits");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QStringList>("prompts");
        QTest::newRow("login") << 0 << "page_login"
                               << "widget_login"
                               << QStringList{"lineEdit_login_phoneNumber",
                                              "lineEdit_login_password"}
                               << QStringList{"pushButton_login",
                                              "pushButton_login_immediatelyRegister",
                                              "pushButton_login_immediatelyChange"}
                               << loginPrompts;
        QTest::newRow("change password")
            << 1 << "page_updatePasswd"
            << "widget_updatePassword"
            << QStringList{"lineEdit_changePassword_PhoneNumber",
                           "lineEdit_changePassword_verificationCode",
                           "lineEdit_changePassword_password",
                           "lineEdit_changePassword_confirmPassword"}
            << QStringList{"pushButton_changePassword",
                           "pushButton_changePassword_getVerificationCode"}
            << changePrompts;
        QTest::newRow("register") << 2 << "page_register"
                                  << "widget_register"
                                  << QStringList{"lineEdit_register_PhoneNumber",
                                                 "lineEdit_register_verificationCode",
                                                 "lineEdit_register_password",
                                                 "lineEdit_register_confirmPassword",
                                                 "lineEdit_register_PhoneNumber_referee"}
                                  << QStringList{"pushButton_register",
                                                 "pushButton_register_getVerificationCode",
                                                 "pushButton_register_icon"}
                                  << registerPrompts;
    }

    void pagesHoldTheirWidgets()
    {
        QFETCH(int, index);
        QFETCH(QString, page);
        QFETCH(QString, panel);
        QFETCH(QStringList, edits);
        QFETCH(QStringList, buttons);
        QFETCH(QStringList, prompts);
        QCOMPARE(m_bench->stack()->count(), 3);
        QCOMPARE(m_bench->stack()->widget(index), widget(page));
        const QWidget *const inside = widget(panel);
        QVERIFY(widget(page)->isAncestorOf(inside));
        for (const QString &name : edits)
            QVERIFY2(inside->isAncestorOf(edit(name)), qPrintable(name));
        for (const QString &name : buttons)
            QVERIFY2(inside->isAncestorOf(button(name)), qPrintable(name));
        for (const QString &name : prompts)
            QVERIFY2(inside->isAncestorOf(label(name)), qPrintable(name));
        QCOMPARE(inside->findChildren<QLineEdit *>().size(), edits.size());
        QCOMPARE(inside->findChildren<QPushButton *>().size(), buttons.size());
    }

    void titleBandStandsOutsideThePages()
    {
        for (const char *name : {"pushButton_close", "pushButton_return", "label_page_title"})
            QVERIFY(!m_bench->stack()->isAncestorOf(widget(name)));
        QCOMPARE(dialog()->findChildren<QPushButton *>().size(), zvtest::loginButtonNames.size());
        QCOMPARE(dialog()->findChildren<QLineEdit *>().size(), zvtest::loginEditNames.size());
    }

    void dialogIsAModalFramelessWindowOfItsSize()
    {
        QCOMPARE(dialog()->objectName(), QStringLiteral("LoginDialog"));
        QCOMPARE(dialog()->size(), QSize(800, 500));
        QVERIFY(dialog()->windowFlags() & Qt::FramelessWindowHint);
        QVERIFY(dialog()->isModal());
        QCOMPARE(dialog()->titleHeight(), 50);
    }

    void parentIsTheOneGiven()
    {
        QWidget parent;
        const LoginDialog child(&parent);
        QCOMPARE(child.parent(), &parent);
        QVERIFY(child.isWindow());
    }

    void titleBandMovesTheDialog()
    {
        const auto drag = [this](int y) {
            const QPoint from(400, y);
            const QPoint before = dialog()->pos();
            QWidget *const under = dialog()->childAt(from) ? dialog()->childAt(from) : dialog();
            const QPoint start = under->mapFrom(dialog(), from);
            QTest::mousePress(under, Qt::LeftButton, Qt::NoModifier, start);
            QMouseEvent move(QEvent::MouseMove, start, under->mapToGlobal(start) + QPoint(-40, 20),
                             Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(under, &move);
            QTest::mouseRelease(under, Qt::LeftButton, Qt::NoModifier, start);
            return dialog()->pos() - before;
        };
        QCOMPARE(drag(49), QPoint(-40, 20));
        QCOMPARE(drag(25), QPoint(-40, 20)); // on the title itself
        QCOMPARE(drag(50), QPoint());
    }

    // The form.

    void textsStand_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("pushButton_login") << "快捷登录";
        QTest::newRow("label_login_phoneNunber") << "手机号";
        QTest::newRow("label_changePassword_PhoneNumber") << "手机号";
        QTest::newRow("label_register_PhoneNumber") << "手机号";
        QTest::newRow("label_login_password") << "密码";
        QTest::newRow("pushButton_login_immediatelyRegister") << "立即注册";
        QTest::newRow("pushButton_register") << "立即注册";
        QTest::newRow("pushButton_login_immediatelyChange") << "密码找回";
        QTest::newRow("pushButton_changePassword") << "密码找回";
        QTest::newRow("pushButton_changePassword_getVerificationCode") << "获取验证码";
        QTest::newRow("pushButton_register_getVerificationCode") << "获取验证码";
        QTest::newRow("label_changePassword_confirmPassword") << "确认密码";
        QTest::newRow("label_register_confirmPassword") << "确认密码";
        QTest::newRow("label_changePassword_verificationCode") << "校验码";
        QTest::newRow("label_register_verificationCode") << "校验码";
        QTest::newRow("label_changePassword_password") << "新密码";
        QTest::newRow("label_register_password") << "新密码";
        QTest::newRow("label_registerPhoneNumber_referee") << "推荐人";
        QTest::newRow("pushButton_register_icon") << "";
        QTest::newRow("pushButton_close") << "";
        QTest::newRow("pushButton_return") << "";
        QTest::newRow("label_page_title") << "用户登录";
    }

    void textsStand()
    {
        QFETCH(QString, text);
        QCOMPARE(widget(QTest::currentDataTag())->property("text").toString(), text);
    }

    void editsSayWhatTheyWant_data()
    {
        QTest::addColumn<QString>("placeholder");
        QTest::addColumn<bool>("isPassword");
        QTest::newRow("lineEdit_login_phoneNumber") << "请输入你的手机号码" << false;
        QTest::newRow("lineEdit_login_password") << "请输入密码" << true;
        QTest::newRow("lineEdit_changePassword_PhoneNumber") << "请输入手机号码" << false;
        QTest::newRow("lineEdit_changePassword_verificationCode") << "请输入动态验证码" << false;
        QTest::newRow("lineEdit_changePassword_password") << "请输入新密码" << true;
        QTest::newRow("lineEdit_changePassword_confirmPassword") << "请确认新密码" << true;
        QTest::newRow("lineEdit_register_PhoneNumber") << "请输入手机号码" << false;
        QTest::newRow("lineEdit_register_verificationCode") << "请输入动态验证码" << false;
        QTest::newRow("lineEdit_register_password") << "请设置登录密码" << true;
        QTest::newRow("lineEdit_register_confirmPassword") << "确认密码" << true;
        QTest::newRow("lineEdit_register_PhoneNumber_referee") << "请输入推荐人手机号码" << false;
    }

    void editsSayWhatTheyWant()
    {
        QFETCH(QString, placeholder);
        QFETCH(bool, isPassword);
        const QLineEdit *const field = edit(QTest::currentDataTag());
        QCOMPARE(field->placeholderText(), placeholder);
        QCOMPARE(field->echoMode(), isPassword ? QLineEdit::Password : QLineEdit::Normal);
        QCOMPARE(field->text(), QString());
    }

    void agreementWrapsAndOpensItsLinks()
    {
        const QLabel *const contact = label(QStringLiteral("label_register_contact"));
        QVERIFY(contact->wordWrap());
        QVERIFY(contact->openExternalLinks());
        QVERIFY(contact->textInteractionFlags() & Qt::LinksAccessibleByMouse);
    }

    void everythingHasAName()
    {
        for (const QString &name : zvtest::loginEditNames)
            QVERIFY2(!edit(name)->accessibleName().isEmpty(), qPrintable(name));
        for (const QString &name : zvtest::loginButtonNames)
            QVERIFY2(!button(name)->accessibleName().isEmpty(), qPrintable(name));
        QStringList named;
        for (const QLabel *each : m_bench->stack()->findChildren<QLabel *>()) {
            if (each->buddy())
                named << each->buddy()->objectName();
        }
        QStringList all = zvtest::loginEditNames;
        named.sort();
        all.sort();
        QCOMPARE(named, all);
    }

    // What can be typed.

    void validatorsAreChildrenInTheirOrder()
    {
        const auto validators
            = dialog()->findChildren<QRegExpValidator *>(QString(), Qt::FindDirectChildrenOnly);
        QStringList patterns;
        for (const QRegExpValidator *validator : validators) {
            const QRegExp expression = validator->regExp();
            QCOMPARE(expression.caseSensitivity(), Qt::CaseSensitive);
            QCOMPARE(expression.patternSyntax(), QRegExp::RegExp);
            patterns << expression.pattern();
        }
        QStringList expected;
        for (int i = 0; i < 10; ++i)
            expected << (i < 5 ? phonePattern : passwordPattern);
        QCOMPARE(patterns, expected);
        QCOMPARE(dialog()->findChildren<QValidator *>().size(), 10);

        // The fifth has taken the place of the second.
        const QStringList users{"lineEdit_login_phoneNumber",
                                QString(),
                                "lineEdit_register_PhoneNumber_referee",
                                "lineEdit_register_PhoneNumber",
                                "lineEdit_changePassword_PhoneNumber",
                                "lineEdit_login_password",
                                "lineEdit_register_password",
                                "lineEdit_register_confirmPassword",
                                "lineEdit_changePassword_password",
                                "lineEdit_changePassword_confirmPassword"};
        for (int i = 0; i < users.size(); ++i) {
            if (!users.at(i).isEmpty())
                QCOMPARE(edit(users.at(i))->validator(),
                         static_cast<const QValidator *>(validators.at(i)));
        }
        QVERIFY(!edit("lineEdit_register_verificationCode")->validator());
        QVERIFY(!edit("lineEdit_changePassword_verificationCode")->validator());
    }

    void onlyWhatMayMatchCanBeTyped_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        for (const QString &name : zvtest::loginEditNames) {
            const auto row = [&name](const char *what, const QString &keys, const QString &text) {
                QTest::addRow("%s: %s", qPrintable(name), what) << name << keys << text;
            };
            if (name.contains(QLatin1String("hone"))) {
                row("letters and a twelfth digit", "a1b3-8 00138000x12", "13800138000");
                row("other first digits", "0239813", "13");
                row("other second digits", "1062913", "13");
                row("a bar as the second digit", "1||3", "1|3");
                row("every second digit", "1745", "1745");
            } else if (name.contains(QLatin1String("verificationCode"))) {
                row("anything", "12 ab,345678", "12 ab,345678");
            } else {
                row("blanks", " se cr\tet 1", "secret1");
                row("letters of both cases", "SecRet", "SecRet");
                row("a twenty-first character", "12345678901234567890x", "12345678901234567890");
            }
        }
    }

    void onlyWhatMayMatchCanBeTyped()
    {
        QFETCH(QString, name);
        QFETCH(QString, keys);
        QFETCH(QString, text);
        for (const QChar key : keys) {
            // Not keyClicks(): a tab goes to another field there, as it should.
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(key));
            QCoreApplication::sendEvent(edit(name), &press);
        }
        QCOMPARE(edit(name)->text(), text);
    }

    void keysOfAUserArrive()
    {
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("13800x138000"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("sec ret1"));
        QCOMPARE(edit("lineEdit_login_phoneNumber")->text(), QStringLiteral("13800138000"));
        QCOMPARE(edit("lineEdit_login_password")->text(), QStringLiteral("secret1"));
        QVERIFY(!edit("lineEdit_login_password")->displayText().contains(QLatin1Char('s')));
    }

    // Looks.

    void widgetsHaveTheirStyles_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::newRow("first platform") << ZvServerConfig::ChengHu;
        QTest::newRow("second platform") << ZvServerConfig::LanChuan;
    }

    void widgetsHaveTheirStyles()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        config()->setCurrentPlatform(platform);
        config()->setServiceAddress(QStringLiteral("http://127.0.0.1:8080"));
        m_bench.reset();
        m_bench = std::make_unique<zvtest::LoginBench>();

        QCOMPARE(dialog()->styleSheet(), config()->getStyleOf_TotalDialog());
        for (const char *name : {"widget_login", "widget_register", "widget_updatePassword"})
            QCOMPARE(widget(name)->styleSheet(), QString());
        for (const char *name :
             {"pushButton_login", "pushButton_register", "pushButton_changePassword"})
            QCOMPARE(button(name)->styleSheet(), config()->getStyleOf_ThreeBigButton());
        for (const char *name :
             {"pushButton_login_immediatelyRegister", "pushButton_login_immediatelyChange"})
            QCOMPARE(button(name)->styleSheet(), config()->getStyleOf_TwoJumpButton());
        for (const char *name : {"pushButton_register_getVerificationCode",
                                 "pushButton_changePassword_getVerificationCode"})
            QCOMPARE(button(name)->styleSheet(), config()->getStyleOf_VertiCodeButton());
        QCOMPARE(button("pushButton_close")->styleSheet(), config()->getStyleOf_LoginDlgCloseBtn());
        QCOMPARE(button("pushButton_return")->styleSheet(),
                 config()->getStyleOf_LoginDlgReturnBtn());
        QCOMPARE(button("pushButton_register_icon")->styleSheet(),
                 QStringLiteral("QPushButton{background-color:rgb(3,161,73);background-image:url(:/"
                                "icons/select1.png);border-width:1px;border-style:soli; "
                                "border-radius:4px}"));

        const QLabel *const contact = label("label_register_contact");
        QCOMPARE(contact->text(), config()->getStyleOf_ContactUrl());
        QVERIFY(contact->text().contains(QLatin1String("http://127.0.0.1:8080/")));
        QCOMPARE(contact->styleSheet(), QString());
        int styled = 0;
        for (const QLabel *each : dialog()->findChildren<QLabel *>()) {
            if (each->styleSheet() == config()->getStyleOf_LabelAndPrompt())
                ++styled;
        }
        QCOMPARE(styled, 22);
        QCOMPARE(label("label_page_title")->styleSheet(), QString());
    }

    void buttonsTakeNoFocus()
    {
        for (const QString &name : zvtest::loginButtonNames)
            QCOMPARE(button(name)->focusPolicy(), Qt::NoFocus);
        edit("lineEdit_login_password")->setFocus();
        click(QStringLiteral("pushButton_login"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_login_password"));
    }

    void textsCanBeRead_data() { widgetsHaveTheirStyles_data(); }

    void textsCanBeRead()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        config()->setCurrentPlatform(platform);
        config()->setServiceAddress(QStringLiteral("http://127.0.0.1:8080"));
        m_bench.reset();
        m_bench = std::make_unique<zvtest::LoginBench>();
        const QRegularExpressionMatch link
            = QRegularExpression(QStringLiteral("<a style=\"color:(#[0-9a-f]{6});\""))
                  .match(config()->getStyleOf_ContactUrl());
        QVERIFY(link.hasMatch());

        for (const char *slot :
             {"changeToPage_login", "changeToPage_updatePasswd", "changeToPage_register"}) {
            changeTo(slot);
            const QImage picture = dialog()->grab().toImage();
            const auto ground = [&](const QWidget *of, const QPoint &at) {
                return picture.pixelColor(of->mapTo(dialog(), at) * picture.devicePixelRatio());
            };
            const QColor surface = ground(m_bench->stack(), QPoint(4, 4));
            QVERIFY2(contrast(QColor(link.captured(1)), surface) >= 4.5, slot);
            for (const QLabel *each : dialog()->findChildren<QLabel *>()) {
                if (!each->isVisible())
                    continue;
                const double reached = contrast(each->palette().color(each->foregroundRole()),
                                                ground(each, QPoint(0, 0)));
                QVERIFY2(reached >= 4.5, qPrintable(each->objectName()));
            }
            for (const char *name : {"pushButton_register_getVerificationCode",
                                     "pushButton_changePassword_getVerificationCode"}) {
                const QPushButton *each = button(name);
                if (!each->isVisible())
                    continue;
                const QColor inside = ground(each, QPoint(6, 6));
                QVERIFY2(contrast(each->palette().color(QPalette::ButtonText), inside) >= 4.5,
                         name);
            }
            for (const QLineEdit *each : dialog()->findChildren<QLineEdit *>()) {
                if (!each->isVisible())
                    continue;
                const QColor inside = ground(each, QPoint(5, 5));
                const QPalette colours = each->palette();
                QVERIFY2(contrast(colours.color(QPalette::Text), inside) >= 4.5,
                         qPrintable(each->objectName()));
                QVERIFY2(contrast(colours.color(QPalette::PlaceholderText), inside) >= 4.5,
                         qPrintable(each->objectName()));
            }
        }
    }

    void nothingIsCut_data()
    {
        QTest::addColumn<QFont>("font");
        QFont font(QStringLiteral("Noto Sans CJK SC"));
        font.setPointSize(10);
        QTest::newRow("ten points") << font;
        font.setPixelSize(14);
        QTest::newRow("fourteen pixels") << font;
    }

    void nothingIsCut()
    {
        QFETCH(QFont, font);
        const QFont before = QApplication::font();
        QApplication::setFont(font);
        m_bench.reset();
        m_bench = std::make_unique<zvtest::LoginBench>();
        dialog()->slot_register_sendCode_succeed();
        dialog()->slot_changePasswd_sendCode_succeed();
        for (const char *slot :
             {"changeToPage_login", "changeToPage_updatePasswd", "changeToPage_register"}) {
            changeTo(slot);
            for (QLabel *each : m_bench->stack()->currentWidget()->findChildren<QLabel *>()) {
                if (each->objectName().contains(QLatin1String("Prompt")))
                    each->setText(QStringLiteral("ⓘ请输入0/11位手机号"));
            }
            QCoreApplication::processEvents();
            for (const QLabel *each : dialog()->findChildren<QLabel *>()) {
                if (!each->isVisible())
                    continue;
                const int height = each->wordWrap() ? each->heightForWidth(each->width())
                                                    : each->sizeHint().height();
                const int width = each->wordWrap() ? 0 : each->sizeHint().width();
                QVERIFY2(each->height() >= height && each->width() >= width,
                         qPrintable(each->objectName()));
                QVERIFY2(
                    dialog()->rect().contains(QRect(each->mapTo(dialog(), QPoint()), each->size())),
                    qPrintable(each->objectName()));
            }
            for (const QPushButton *each : dialog()->findChildren<QPushButton *>()) {
                if (!each->isVisible())
                    continue;
                QVERIFY2(each->text().isEmpty() || each->width() >= each->sizeHint().width(),
                         qPrintable(each->objectName()));
                QVERIFY2(
                    dialog()->rect().contains(QRect(each->mapTo(dialog(), QPoint()), each->size())),
                    qPrintable(each->objectName()));
            }
        }
        QApplication::setFont(before);
    }

    // Pages.

    void opensOnTheLoginPage()
    {
        QCOMPARE(m_bench->stack()->currentIndex(), 0);
        QCOMPARE(title(), QStringLiteral("用户登录"));
        QVERIFY(button("pushButton_return")->isHidden());
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_login"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_login_phoneNumber"));
        QVERIFY(button("pushButton_register")->isEnabled());
        for (const char *name : {"pushButton_register_getVerificationCode",
                                 "pushButton_changePassword_getVerificationCode"})
            QVERIFY(button(name)->isEnabled());
        for (const QTimer *timer :
             dialog()->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
            QVERIFY(!timer->isActive());
        for (const QString &name : loginPrompts + changePrompts + registerPrompts)
            QCOMPARE(label(name)->text(), QString());
    }

    void buttonsChangeThePage()
    {
        click(QStringLiteral("pushButton_login_immediatelyRegister"));
        QCOMPARE(m_bench->stack()->currentIndex(), 2);
        QCOMPARE(title(), QStringLiteral("用户注册"));
        QVERIFY(button("pushButton_return")->isVisible());
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_register"));

        click(QStringLiteral("pushButton_return"));
        QCOMPARE(m_bench->stack()->currentIndex(), 0);
        QCOMPARE(title(), QStringLiteral("用户登录"));
        QVERIFY(button("pushButton_return")->isHidden());
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_login"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_login_phoneNumber"));

        click(QStringLiteral("pushButton_login_immediatelyChange"));
        QCOMPARE(m_bench->stack()->currentIndex(), 1);
        QCOMPARE(title(), QStringLiteral("密码找回"));
        QVERIFY(button("pushButton_return")->isVisible());
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_changePassword"));
    }

    void onlyTheLoginPageTakesTheFocus()
    {
        edit("lineEdit_login_password")->setFocus();
        changeTo(QStringLiteral("changeToPage_login"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_login_phoneNumber"));

        // The field in which the user was is in focus again, and not the page's first one.
        changeTo(QStringLiteral("changeToPage_register"));
        edit("lineEdit_register_password")->setFocus();
        changeTo(QStringLiteral("changeToPage_login"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_login_phoneNumber"));
        changeTo(QStringLiteral("changeToPage_register"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_register_password"));
        changeTo(QStringLiteral("changeToPage_register"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_register_password"));

        changeTo(QStringLiteral("changeToPage_updatePasswd"));
        edit("lineEdit_changePassword_confirmPassword")->setFocus();
        changeTo(QStringLiteral("changeToPage_updatePasswd"));
        QCOMPARE(QApplication::focusWidget(), edit("lineEdit_changePassword_confirmPassword"));
    }

    void focusOfTheLoginPageHasItsReason()
    {
        struct : QObject {
            Qt::FocusReason reason = Qt::NoFocusReason;
            bool eventFilter(QObject *, QEvent *event) override
            {
                if (event->type() == QEvent::FocusIn)
                    reason = static_cast<QFocusEvent *>(event)->reason();
                return false;
            }
        } watch;
        edit("lineEdit_login_password")->setFocus(Qt::TabFocusReason);
        edit("lineEdit_login_phoneNumber")->installEventFilter(&watch);
        changeTo(QStringLiteral("changeToPage_login"));
        QCOMPARE(watch.reason, Qt::OtherFocusReason);
    }

    void pageChangeClearsThePromptsOfThatPage_data()
    {
        QTest::addColumn<QStringList>("cleared");
        QTest::newRow("changeToPage_login") << loginPrompts;
        QTest::newRow("changeToPage_register") << registerPrompts;
        QTest::newRow("changeToPage_updatePasswd") << changePrompts;
    }

    void pageChangeClearsThePromptsOfThatPage()
    {
        QFETCH(QStringList, cleared);
        const QString message = QStringLiteral("ⓘ手机号不能为空");
        for (const QString &name : loginPrompts + changePrompts + registerPrompts)
            label(name)->setText(message);
        changeTo(QTest::currentDataTag());
        for (const QString &name : loginPrompts + changePrompts + registerPrompts)
            QCOMPARE(label(name)->text(), cleared.contains(name) ? QString() : message);
    }

    void textsStayAcrossPages()
    {
        for (const QString &name : zvtest::loginEditNames)
            edit(name)->setText(name);
        for (const char *slot : {"changeToPage_register", "changeToPage_updatePasswd",
                                 "changeToPage_login", "changeToPage_updatePasswd"})
            changeTo(slot);
        for (const QString &name : zvtest::loginEditNames)
            QCOMPARE(edit(name)->text(), name);
    }

    void tabFollowsTheEye_data()
    {
        QTest::addColumn<QString>("part");
        QTest::newRow("changeToPage_login") << "_login_";
        QTest::newRow("changeToPage_updatePasswd") << "_changePassword_";
        QTest::newRow("changeToPage_register") << "_register_";
    }

    void tabFollowsTheEye()
    {
        QFETCH(QString, part);
        changeTo(QTest::currentDataTag());
        const QStringList edits = zvtest::loginEditNames.filter(part);
        edit(edits.first())->setFocus();
        QStringList walked;
        for (int i = 0; i < edits.size(); ++i) {
            walked << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(walked, edits);
        QCOMPARE(QApplication::focusWidget(), edit(edits.first()));
        for (int i = 1; i < edits.size(); ++i)
            QVERIFY(edit(edits.at(i))->y() > edit(edits.at(i - 1))->y());
    }

    // Keys.

    void returnPressesTheMainButton_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("main");
        QTest::addColumn<int>("key");
        for (const int key : {int(Qt::Key_Return), int(Qt::Key_Enter)}) {
            QTest::addRow("login %x", key) << "changeToPage_login"
                                           << "pushButton_login" << key;
            QTest::addRow("register %x", key) << "changeToPage_register"
                                              << "pushButton_register" << key;
            QTest::addRow("change %x", key) << "changeToPage_updatePasswd"
                                            << "pushButton_changePassword" << key;
        }
    }

    void returnPressesTheMainButton()
    {
        QFETCH(QString, slot);
        QFETCH(QString, main);
        QFETCH(int, key);
        changeTo(slot);
        QStringList clicked;
        for (const QString &name : zvtest::loginButtonNames)
            connect(button(name), &QPushButton::clicked, this, [&, name] { clicked << name; });

        // From every field of the page, whether or not its text is acceptable.
        int presses = 0;
        for (QLineEdit *each : m_bench->stack()->currentWidget()->findChildren<QLineEdit *>()) {
            each->setFocus();
            QTest::keyClick(each, Qt::Key(key));
            ++presses;
        }
        QVERIFY(presses >= 2);
        QCOMPARE(clicked.count(main), presses);
        QCOMPARE(clicked.size(), presses);

        // The repeats of a held key press nothing.
        QKeyEvent repeat(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("\r"), true);
        QCoreApplication::sendEvent(QApplication::focusWidget(), &repeat);
        QCOMPARE(clicked.size(), presses);
    }

    void doubleClickOnARequestIsOneClick_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("name");
        QTest::newRow("sign in") << "changeToPage_login"
                                 << "pushButton_login";
        QTest::newRow("register") << "changeToPage_register"
                                  << "pushButton_register";
        QTest::newRow("code to register") << "changeToPage_register"
                                          << "pushButton_register_getVerificationCode";
        QTest::newRow("change") << "changeToPage_updatePasswd"
                                << "pushButton_changePassword";
        QTest::newRow("code to change") << "changeToPage_updatePasswd"
                                        << "pushButton_changePassword_getVerificationCode";
    }

    void doubleClickOnARequestIsOneClick()
    {
        QFETCH(QString, slot);
        QFETCH(QString, name);
        changeTo(slot);
        QPushButton *target = button(name);
        QSignalSpy clicks(target, &QPushButton::clicked);
        QTest::mouseClick(target, Qt::LeftButton);
        QTest::mouseDClick(target, Qt::LeftButton);
        QTest::mouseRelease(target, Qt::LeftButton);
        QCOMPARE(clicks.count(), 1);
    }

    void returnPressesNothingWithoutTheAgreement()
    {
        changeTo(QStringLiteral("changeToPage_register"));
        click(QStringLiteral("pushButton_register_icon"));
        QStringList clicked;
        for (const QString &name : zvtest::loginButtonNames)
            connect(button(name), &QPushButton::clicked, this, [&, name] { clicked << name; });
        const zvtest::CallTrace trace;
        for (QLineEdit *each : m_bench->stack()->currentWidget()->findChildren<QLineEdit *>())
            QTest::keyClick(each, Qt::Key_Return);
        QCOMPARE(clicked, QStringList());
        QCOMPARE(m_bench->stack()->currentIndex(), 2);
        QVERIFY(dialog()->isVisible());
        QCOMPARE(m_bench->prompts(QStringLiteral("page_register")), QStringList());
    }

    void mainButtonStaysTheDefaultAfterAClickOnAnother()
    {
        changeTo(QStringLiteral("changeToPage_register"));
        button("pushButton_register_getVerificationCode")->setFocus();
        click(QStringLiteral("pushButton_register_getVerificationCode"));
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_register"));
        edit("lineEdit_register_password")->setFocus();
        QCOMPARE(m_bench->defaultButtons(), QStringList("pushButton_register"));
    }

    // The agreement.

    void agreementFreesAndLocksTheRegisterButton()
    {
        const QString on = button("pushButton_register_icon")->styleSheet();
        const QString off = QStringLiteral(
            "QPushButton{background-color:rgb(3,161,73);background-image:url(:/icons/select2.png);"
            "border-width:1px;border-style:soli; border-radius:4px}");
        const QString grey = QStringLiteral(
            "QPushButton{color:rgb(255,255,255);background-color:#aaaaaa; border-width:1px;"
            "border-style:soli; border-radius:4px}");
        changeTo(QStringLiteral("changeToPage_register"));
        for (int round = 0; round < 2; ++round) {
            click(QStringLiteral("pushButton_register_icon"));
            QCOMPARE(button("pushButton_register_icon")->styleSheet(), off);
            QVERIFY(!button("pushButton_register")->isEnabled());
            QCOMPARE(button("pushButton_register")->styleSheet(), grey);

            click(QStringLiteral("pushButton_register_icon"));
            QCOMPARE(button("pushButton_register_icon")->styleSheet(), on);
            QVERIFY(button("pushButton_register")->isEnabled());
            QCOMPARE(button("pushButton_register")->styleSheet(),
                     config()->getStyleOf_ThreeBigButton());
        }
    }

    void agreementStaysAcrossPages()
    {
        changeTo(QStringLiteral("changeToPage_register"));
        click(QStringLiteral("pushButton_register_icon"));
        changeTo(QStringLiteral("changeToPage_login"));
        QVERIFY(button("pushButton_login")->isEnabled());
        changeTo(QStringLiteral("changeToPage_register"));
        QVERIFY(!button("pushButton_register")->isEnabled());
    }

    // The end.

    void closeButtonClosesAndDoesNothingElse()
    {
        for (const QString &name : zvtest::loginEditNames)
            edit(name)->setText(QStringLiteral("13800138000"));
        zvtest::CallTrace trace;
        QSignalSpy finished(dialog(), &QDialog::finished);
        click(QStringLiteral("pushButton_close"));
        QVERIFY(!dialog()->isVisible());
        QCOMPARE(dialog()->result(), int(QDialog::Rejected));
        QCOMPARE(trace.take(), QStringList());
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(edit("lineEdit_login_phoneNumber")->text(), QStringLiteral("13800138000"));
    }

    void closingDeletesWhereTheHostWantsIt()
    {
        dialog()->setAttribute(Qt::WA_DeleteOnClose);
        click(QStringLiteral("pushButton_close"));
        QTRY_VERIFY(!m_bench->dialog);
    }

    void closeEndsExec()
    {
        dialog()->hide();
        QTimer::singleShot(0, dialog(), [this] { click(QStringLiteral("pushButton_close")); });
        QCOMPARE(dialog()->exec(), int(QDialog::Rejected));
    }

    void nothingIsKeptBetweenTwoDialogs()
    {
        for (const QString &name : zvtest::loginEditNames)
            edit(name)->setText(QStringLiteral("13800138000"));
        m_bench.reset();
        m_bench = std::make_unique<zvtest::LoginBench>();
        for (const QString &name : zvtest::loginEditNames)
            QCOMPARE(edit(name)->text(), QString());
    }

    void makingOneCallsNothing()
    {
        zvtest::CallTrace trace;
        LoginDialog another;
        another.show();
        QCOMPARE(trace.take(), QStringList());
    }
};

ZV_TEST(LoginDialogTest)
#include "test_logindialog.moc"
