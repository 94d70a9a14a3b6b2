#include "BreltWidgetToolKit/breltlabelurl.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "moneybench.h"
#include "record.h"
#include "support/testregistry.h"

#include <QInputMethodEvent>
#include <QLineEdit>
#include <QScreen>
#include <QTimer>
#include <QtTest/QtTest>

#include <memory>

using zvtest::actions;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

const QString badAmount = QStringLiteral("label_moneyPrompt: ⓘ请输入正确金额");
const QString badCode = QStringLiteral("label_codePrompt: ⓘ请输入6位验证码");

QString sendsIn(const QString &amount, const QString &first = QString(),
                const QString &second = QString())
{
    return QStringLiteral("入金\nZvServerActionResult::sendRequest_inMoney(\"%1\", \"***\", "
                          "\"%2\", \"%3\")")
        .arg(amount, first, second);
}

QString sendsOut(const QString &amount)
{
    return QStringLiteral("出金\nZvServerActionResult::sendRequest_outMoney(\"%1\")").arg(amount);
}

// The widgets that belong to one direction alone.
const QStringList codeWidgets{QStringLiteral("label_validateCode"),
                              QStringLiteral("lineEdit_validateCode_value"),
                              QStringLiteral("pushButton_getValidataCode")};

} // namespace

// The form, its two directions, and what it checks before anything is sent.
class SmallMoneyInOutTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::MoneyBench> m_bench;

    QDoubleSpinBox *amount() const { return m_bench->amount(); }

    void verifyDirection(bool isIn)
    {
        QCOMPARE(m_bench->button("pushButton_in")->isChecked(), isIn);
        QCOMPARE(m_bench->button("pushButton_out")->isChecked(), !isIn);
        for (const QString &name : codeWidgets)
            QCOMPARE(m_bench->widget(name)->isVisible(), isIn);
        QCOMPARE(m_bench->label("label_money")->text(),
                 isIn ? QStringLiteral("入金金额：") : QStringLiteral("出金金额："));
    }

private slots:
    void init() { m_bench = std::make_unique<zvtest::MoneyBench>(); }
    void cleanup() { m_bench.reset(); }

    // The form.

    void theFormIsAsGiven()
    {
        const Small_Money_InOut dialog(nullptr);
        QCOMPARE(dialog.size(), QSize(1098, 596));
        QVERIFY(dialog.testAttribute(Qt::WA_DeleteOnClose));
        QCOMPARE(dialog.metaObject()->superClass(), &BreltFramlessMoveableDialog::staticMetaObject);

        const auto *field = dialog.findChild<QDoubleSpinBox *>("doubleSpinBox_moneyValue");
        QCOMPARE(field->prefix(), QStringLiteral("¥ "));
        QCOMPARE(field->suffix(), QString());
        QCOMPARE(field->buttonSymbols(), QAbstractSpinBox::NoButtons);
        QCOMPARE(field->maximum(), 10000000.0);
        QCOMPARE(field->minimum(), 0.0);
        QCOMPARE(field->decimals(), 2);
        QCOMPARE(field->value(), 0.0);
        const auto *tick = dialog.findChild<QToolButton *>("toolButton_agree");
        QVERIFY(tick->isCheckable());
        QVERIFY(tick->isChecked());
        QVERIFY(dialog.findChild<QPushButton *>("pushButton_ok")->isEnabled());
        QVERIFY(dialog.findChild<QLabel *>("label_contactUrl")->openExternalLinks());
        QVERIFY(qobject_cast<BreltLabelURL *>(dialog.findChild<QLabel *>("label_bank_pictrue")));
    }

    void textsOfTheForm_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const char *text) {
            QTest::newRow(name) << QString::fromUtf8(name) << QString::fromUtf8(text);
        };
        row("pushButton_in", "入金");
        row("pushButton_out", "出金");
        row("label_bank", "发卡银行：");
        row("label_bank_pictrue", "银行");
        row("label_bank_number", "尾号:0000");
        row("label_available", "可用资金  ：");
        row("label_available_value", "0000.00元");
        row("label_money", "入金金额：");
        row("label_moneyPrompt", "");
        row("label_validateCode", "验证码：");
        row("label_codePrompt", "");
        row("pushButton_getValidataCode", "获取验证码");
        row("label_agree", "我已阅读并同意");
        row("label_contactUrl", "《澄湖文交所用户交易协议》");
        row("pushButton_ok", "确定");
        row("toolButton_agree", "");
        row("toolButton_close", "");
    }
    void textsOfTheForm()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        // Before its first show, which fills in the account.
        const Small_Money_InOut dialog(nullptr);
        const QObject *found = dialog.findChild<QObject *>(name);
        QVERIFY(found);
        QCOMPARE(found->property("text").toString(), text);
    }

    void stylesOfTheForm_data()
    {
        QTest::addColumn<QString>("sheet");
        QTest::newRow("toolButton_close")
            << "QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
               "QToolButton:hover{border-image: url(:/icons/smallwidget/close2.png)}";
        QTest::newRow("pushButton_in")
            << "QPushButton#pushButton_in:checked{border:1px; background-color:#bababa;}";
        QTest::newRow("pushButton_out")
            << "QPushButton#pushButton_out:checked{border:1px; background-color:#bababa;}";
        QTest::newRow("toolButton_agree")
            << "QToolButton{background-color:rgb(3,161,73);background-image:url(:/icons/"
               "smallwidget/noselect.png);border-width:1px;border-style:soli; border-radius:4px}"
               "QToolButton:checked{background-color:rgb(3,161,73);background-image:url(:/icons/"
               "smallwidget/selected.png);border-width:1px;border-style:soli; border-radius:4px}";
        QTest::newRow("pushButton_ok")
            << "QPushButton#pushButton_ok{border: 0px; color:white;"
               "background-color: rgb(231, 60, 60);}"
               "QPushButton#pushButton_ok:disabled{background-color: #bababa;}";
        QTest::newRow("pushButton_getValidataCode")
            << "QPushButton#pushButton_getValidataCode{border: 0px; color:white;"
               "background-color: rgb(231, 60, 60);}"
               "QPushButton#pushButton_getValidataCode:disabled{background-color: #bababa;}";
    }
    void stylesOfTheForm()
    {
        QFETCH(QString, sheet);
        const QWidget *widget = m_bench->widget(QTest::currentDataTag());
        QCOMPARE(widget->styleSheet(), sheet);
        QCOMPARE(widget->focusPolicy(), Qt::NoFocus);
    }

    void theDialogHasNoSlots()
    {
        const QMetaObject &meta = Small_Money_InOut::staticMetaObject;
        QCOMPARE(meta.methodCount(), meta.methodOffset());
    }

    void theDialogStandsOverItsOwnerAsFarAsTheScreenHasRoom()
    {
        QWidget owner;
        owner.setGeometry(40, 60, 700, 500);
        owner.show();
        QVERIFY(QTest::qWaitForWindowExposed(&owner));
        Small_Money_InOut dialog(&owner);
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
        dialog.show();
        const QRect screen = dialog.screen()->availableGeometry();
        QVERIFY(dialog.width() > screen.width());
        QCOMPARE(dialog.x(), screen.left());
        QCOMPARE(dialog.geometry().bottom(), screen.bottom());
    }

    // Every text has the room it needs and can be read, in both directions.
    void nothingIsCut_data()
    {
        QTest::addColumn<bool>("isIn");
        QTest::newRow("in") << true;
        QTest::newRow("out") << false;
    }
    void nothingIsCut()
    {
        QFETCH(bool, isIn);
        cache()->storeCapInfo(zvtest::availableMoney(-9000000000000000));
        m_bench->dialog->hide();
        m_bench->dialog->show();
        m_bench->click(isIn ? "pushButton_in" : "pushButton_out");
        m_bench->click("pushButton_ok");
        if (isIn) {
            m_bench->typeAmount("9999999.99");
            m_bench->click("pushButton_ok");
            emit actions()->signal_inMoney_sendCode_succeed("a", "b");
            QVERIFY(QMetaObject::invokeMethod(m_bench->dialog->findChild<QTimer *>(), "timeout"));
        }
        QCOMPARE(m_bench->prompts(), QStringList(isIn ? badCode : badAmount));
        for (const QLabel *label : m_bench->dialog->findChildren<QLabel *>()) {
            if (!label->isVisible() || label->objectName() == QLatin1String("label_bank_pictrue"))
                continue;
            QVERIFY2(label->sizeHint().width() <= label->width(), qPrintable(label->objectName()));
            QVERIFY2(label->sizeHint().height() <= label->height(),
                     qPrintable(label->objectName()));
        }
        for (const QPushButton *button : m_bench->dialog->findChildren<QPushButton *>()) {
            const QFontMetrics metrics(button->font());
            QVERIFY2(metrics.horizontalAdvance(button->text()) <= button->width(),
                     qPrintable(button->objectName()));
        }
        const QFontMetrics metrics(amount()->font());
        QVERIFY(metrics.horizontalAdvance(QStringLiteral("¥ 10000000.00"))
                < amount()->width() - 20);
    }

    // The two directions.

    void itStartsWithMoneyIn()
    {
        verifyDirection(true);
        QCOMPARE(QApplication::focusWidget(), amount());
    }

    void aClickChangesTheDirection()
    {
        m_bench->click("pushButton_out");
        verifyDirection(false);
        // Clicked once more, each of them stays checked.
        m_bench->click("pushButton_out");
        verifyDirection(false);
        m_bench->click("pushButton_in");
        verifyDirection(true);
        m_bench->click("pushButton_in");
        verifyDirection(true);
    }

    void moneyInTakesTheFocusAndMoneyOutDoesNot()
    {
        m_bench->code()->setFocus();
        m_bench->click("pushButton_in");
        QCOMPARE(QApplication::focusWidget(), amount());
        QSignalSpy moved(qApp, &QApplication::focusChanged);
        m_bench->click("pushButton_out");
        QCOMPARE(moved.count(), 0);
        QCOMPARE(QApplication::focusWidget(), amount());
    }

    void aChangeOfDirectionClearsTheErrorsAndKeepsTheInput()
    {
        m_bench->typeAmount("12.5");
        m_bench->typeCode("12345");
        for (const char *direction : {"pushButton_out", "pushButton_in"}) {
            m_bench->label("label_moneyPrompt")->setText("x");
            m_bench->label("label_codePrompt")->setText("y");
            m_bench->click(direction);
            QCOMPARE(m_bench->prompts(), QStringList());
        }
        QCOMPARE(amount()->value(), 12.5);
        QCOMPARE(m_bench->code()->text(), QStringLiteral("12345"));
    }

    // Input.

    void amountsBelowOneFenAreRefused_data()
    {
        QTest::addColumn<bool>("isIn");
        QTest::newRow("in") << true;
        QTest::newRow("out") << false;
    }
    void amountsBelowOneFenAreRefused()
    {
        QFETCH(bool, isIn);
        m_bench->click(isIn ? "pushButton_in" : "pushButton_out");
        m_bench->code()->setText("123456");
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), isIn ? QStringLiteral("入金") : QStringLiteral("出金"));
        QCOMPARE(m_bench->prompts(), QStringList(badAmount));

        m_bench->typeAmount("0.01");
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), isIn ? sendsIn("0.01") : sendsOut("0.01"));
        QCOMPARE(m_bench->prompts(), QStringList());
    }

    void anEmptiedAmountIsNoAmount_data()
    {
        QTest::addColumn<bool>("isIn");
        QTest::addColumn<int>("key"); // 0: a click
        QTest::newRow("in, click") << true << 0;
        QTest::newRow("out, click") << false << 0;
        QTest::newRow("in, Return") << true << int(Qt::Key_Return);
        QTest::newRow("out, Return") << false << int(Qt::Key_Return);
    }
    void anEmptiedAmountIsNoAmount()
    {
        QFETCH(bool, isIn);
        QFETCH(int, key);
        m_bench->click(isIn ? "pushButton_in" : "pushButton_out");
        m_bench->code()->setText("123456");
        m_bench->typeAmount("500");
        m_bench->typeAmount(QString());
        zvtest::Record record;
        if (key == 0)
            m_bench->click("pushButton_ok");
        else
            QTest::keyClick(amount(), Qt::Key(key));
        QCOMPARE(record.take(), isIn ? QStringLiteral("入金") : QStringLiteral("出金"));
        QCOMPARE(m_bench->prompts(), QStringList(badAmount));
    }

    void theAmountIsCheckedBeforeTheCode()
    {
        m_bench->typeCode("12345");
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QCOMPARE(m_bench->prompts(), QStringList(badAmount));
        m_bench->typeAmount("1");
        m_bench->click("pushButton_ok");
        QCOMPARE(m_bench->prompts(), QStringList(badCode));
        QCOMPARE(record.take(), QStringLiteral("入金\n入金"));
    }

    void codesOfSixCharactersPass_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("passes");
        QTest::newRow("none") << QString() << false;
        QTest::newRow("five") << "12345" << false;
        QTest::newRow("six") << "123456" << true;
        QTest::newRow("six letters") << QStringLiteral("验证码abc") << true;
        QTest::newRow("seven") << "1234567" << false;
    }
    void codesOfSixCharactersPass()
    {
        QFETCH(QString, code);
        QFETCH(bool, passes);
        m_bench->typeAmount("100");
        m_bench->code()->setText(code);
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        // No code was ever asked for: the two strings behind it are empty.
        QCOMPARE(record.take(), passes ? sendsIn("100.00") : QStringLiteral("入金"));
        QCOMPARE(m_bench->prompts(), passes ? QStringList() : QStringList(badCode));
    }

    void moneyOutAsksForNoCodeAndNoPhone()
    {
        cache()->storeMyAccount(ZvUBMyAcount());
        m_bench->dialog->hide();
        m_bench->dialog->show();
        m_bench->click("pushButton_out");
        m_bench->typeAmount("250.75");
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), sendsOut("250.75"));
    }

    void otherMarksAreTakenForThePoint_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("comma") << "99,98";
        QTest::newRow("wide comma") << "99，98";
        QTest::newRow("full stop") << "99。98";
        QTest::newRow("wide point") << "99．98";
    }
    void otherMarksAreTakenForThePoint()
    {
        QFETCH(QString, typed);
        m_bench->click("pushButton_out");
        m_bench->typeAmount(QString());
        for (const QChar key : typed) {
            QInputMethodEvent event;
            event.setCommitString(key);
            QCoreApplication::sendEvent(amount()->findChild<QLineEdit *>(), &event);
        }
        QCOMPARE(amount()->text(), QStringLiteral("¥ 99.98"));
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), sendsOut("99.98"));
    }

    // What a float cannot hold is not sent under the number that was typed.
    void theFieldShowsWhatIsSent_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("sent");
        QTest::newRow("small") << "12.34"
                               << "12.34";
        QTest::newRow("whole") << "10000000"
                               << "10000000.00";
        QTest::newRow("the last exact fen") << "131071.99"
                                            << "131071.99";
        QTest::newRow("large") << "9000000.49"
                               << "9000000.00";
    }
    void theFieldShowsWhatIsSent()
    {
        QFETCH(QString, typed);
        QFETCH(QString, sent);
        m_bench->click("pushButton_out");
        m_bench->typeAmount(typed);
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), sendsOut(sent));
        QCOMPARE(amount()->value(), sent.toDouble());
    }

    void theAmountEndsAtTenMillions()
    {
        m_bench->typeAmount("10000001");
        QVERIFY(amount()->value() <= 10000000);
        m_bench->typeAmount("-5");
        QVERIFY(amount()->value() >= 0);
    }

    void theNextCheckClearsTheErrors()
    {
        m_bench->click("pushButton_ok");
        QCOMPARE(m_bench->prompts(), QStringList(badAmount));
        m_bench->typeAmount("1");
        m_bench->typeCode("123456");
        m_bench->click("pushButton_ok");
        QCOMPARE(m_bench->prompts(), QStringList());
    }

    void theTickFreesTheButton()
    {
        m_bench->typeAmount("1");
        m_bench->typeCode("123456");
        m_bench->click("toolButton_agree");
        QVERIFY(!m_bench->button("pushButton_ok")->isEnabled());
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QTest::keyClick(m_bench->code(), Qt::Key_Return);
        QCOMPARE(record.take(), QString());
        m_bench->click("toolButton_agree");
        QVERIFY(m_bench->button("pushButton_ok")->isEnabled());
        m_bench->click("pushButton_ok");
        QCOMPARE(record.take(), sendsIn("1.00"));
    }

    // A transfer is one transfer, however the hand trembles.

    void aDoubleClickSendsOnce_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("calls");
        QTest::newRow("transfer") << "pushButton_ok" << sendsIn("1.00");
        QTest::newRow("code") << "pushButton_getValidataCode"
                              << "ZvServerActionResult::sendRequest_inMoney_sendCode("
                                 "\"13912345678\")";
    }
    void aDoubleClickSendsOnce()
    {
        QFETCH(QString, button);
        QFETCH(QString, calls);
        m_bench->typeAmount("1");
        m_bench->typeCode("123456");
        zvtest::Record record;
        QPushButton *target = m_bench->button(button);
        QTest::mouseClick(target, Qt::LeftButton);
        QTest::mouseDClick(target, Qt::LeftButton);
        QTest::mouseRelease(target, Qt::LeftButton);
        QCOMPARE(record.take(), calls);
    }

    void returnInAFieldSendsOnce_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("isInCode");
        QTest::newRow("amount, Return") << int(Qt::Key_Return) << false;
        QTest::newRow("code, Return") << int(Qt::Key_Return) << true;
        QTest::newRow("amount, Enter") << int(Qt::Key_Enter) << false;
        QTest::newRow("code, Enter") << int(Qt::Key_Enter) << true;
    }
    void returnInAFieldSendsOnce()
    {
        QFETCH(int, key);
        QFETCH(bool, isInCode);
        m_bench->typeAmount("1");
        m_bench->typeCode("123456");
        QWidget *field = isInCode ? static_cast<QWidget *>(m_bench->code()) : amount();
        field->setFocus();
        zvtest::Record record;
        QTest::keyClick(field, Qt::Key(key));
        for (int i = 0; i < 3; ++i) {
            QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("\r"), true);
            QCoreApplication::sendEvent(field, &held);
        }
        QCOMPARE(record.take(), sendsIn("1.00"));
        QVERIFY(m_bench->dialog->isVisible());
    }

    void returnPressesNothingElse()
    {
        zvtest::Record record;
        QTest::keyClick(m_bench->dialog, Qt::Key_Return);
        QCOMPARE(record.take(), QString());
        verifyDirection(true);
        for (const QPushButton *button : m_bench->dialog->findChildren<QPushButton *>())
            QVERIFY2(!button->isDefault(), qPrintable(button->objectName()));
    }

    // What a show brings.

    void aShowTellsOfMoneyAndCard()
    {
        QCOMPARE(m_bench->label("label_available_value")->text(), QStringLiteral("123.46万元"));
        QCOMPARE(m_bench->label("label_bank_number")->text(), QStringLiteral("尾号：6789"));
        cache()->capInfo = zvtest::availableMoney(5);
        cache()->bankCardTail = QStringLiteral("<b>1</b>");
        m_bench->dialog->hide();
        m_bench->dialog->show();
        QCOMPARE(m_bench->label("label_available_value")->text(), QStringLiteral("0.05元"));
        QCOMPARE(m_bench->label("label_bank_number")->text(), QStringLiteral("尾号：<b>1</b>"));
        QCOMPARE(m_bench->label("label_bank_number")->textFormat(), Qt::PlainText);
    }

    void moneyThatChangesIsShownAtOnce()
    {
        cache()->storeCapInfo(zvtest::availableMoney(123456789));
        QCOMPARE(m_bench->label("label_available_value")->text(), QStringLiteral("1,234,567.89元"));
        cache()->storeCapInfo(zvtest::availableMoney(0));
        QCOMPARE(m_bench->label("label_available_value")->text(), QStringLiteral("0.00元"));
    }

    void thePictureIsFetchedWhenItsAddressChanges()
    {
        auto *picture = qobject_cast<BreltLabelURL *>(m_bench->label("label_bank_pictrue"));
        QSignalSpy shown(picture, &BreltLabelURL::signal_pictureShown);
        QTRY_VERIFY(!picture->pixmap(Qt::ReturnByValue).isNull());
        const QPixmap fitted = picture->pixmap(Qt::ReturnByValue);
        QVERIFY(fitted.height() <= picture->height() * fitted.devicePixelRatio());
        QVERIFY(fitted.width() <= picture->width() * fitted.devicePixelRatio());

        shown.clear();
        m_bench->dialog->hide();
        m_bench->dialog->show();
        QTest::qWait(50);
        QCOMPARE(shown.count(), 0);
        cache()->bankPictureName = QStringLiteral("select1");
        m_bench->dialog->hide();
        m_bench->dialog->show();
        QTRY_COMPARE(shown.count(), 1);
        QCOMPARE(shown.at(0).at(0).toString(), QStringLiteral("qrc:/icons/select1.png"));
    }

    // Its end.

    void theCrossAccepts()
    {
        QSignalSpy accepted(m_bench->dialog, &QDialog::accepted);
        m_bench->click("toolButton_close");
        QCOMPARE(accepted.count(), 1);
        QTRY_VERIFY(!m_bench->dialog);
    }

    void escapeEndsIt()
    {
        QTest::keyClick(amount(), Qt::Key_Escape);
        QTRY_VERIFY(!m_bench->dialog);
    }
};

ZV_TEST(SmallMoneyInOutTest)
#include "test_small_money_inout.moc"
