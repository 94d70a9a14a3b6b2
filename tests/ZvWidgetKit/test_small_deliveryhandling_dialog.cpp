#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "messageboxes.h"
#include "moneybench.h"
#include "record.h"
#include "support/testregistry.h"

#include <QGroupBox>
#include <QRegExpValidator>
#include <QSpinBox>
#include <QtTest/QtTest>

using zvtest::actions;
using zvtest::boxesIn;
using zvtest::ShownBox;

namespace {

const QStringList promptNames{QStringLiteral("label_prompt"), QStringLiteral("label_promptName"),
                              QStringLiteral("label_promptPhone"),
                              QStringLiteral("label_promptAddr")};
const QString debugLine = QStringLiteral("发送提货请求");

QString sends(const QString &arguments)
{
    return debugLine + QStringLiteral("\nZvServerActionResult::sendRequest_delivery(") + arguments
        + QLatin1Char(')');
}

const QString sendsAll = sends(
    QStringLiteral("\"1001\", 30, \"张三\", \"13912345678\", \"北京市海淀区中关村大街1号\""));

} // namespace

// The form in which a holding is taken out.
class DeliveryHandlingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    QPointer<Small_DeliveryHandling_Dialog> m_dialog;

    template <typename Widget>
    Widget *named(const QString &name) const
    {
        auto *found = m_dialog->findChild<Widget *>(name);
        if (!found)
            qFatal("the dialog has no %s", qPrintable(name));
        return found;
    }
    QLabel *label(const QString &name) const { return named<QLabel>(name); }
    QLineEdit *edit(const QString &name) const { return named<QLineEdit>(name); }
    QSpinBox *amount() const { return named<QSpinBox>(QStringLiteral("spinBox_num")); }

    void type(const QString &name, const QString &text)
    {
        edit(name)->clear();
        edit(name)->setFocus();
        // QtTest knows the keys of ASCII alone.
        for (const QChar each : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(each));
            QCoreApplication::sendEvent(edit(name), &press);
        }
    }
    void typeAmount(const QString &text)
    {
        amount()->setFocus();
        amount()->selectAll();
        QTest::keyClick(amount(), Qt::Key_Delete);
        QTest::keyClicks(amount(), text);
    }
    void fill()
    {
        type("lineEdit_userName", "张三");
        type("lineEdit_userPhone", "13912345678");
        type("lineEdit_userAddr", "北京市海淀区中关村大街1号");
    }
    void clickOk() { QTest::mouseClick(named<QPushButton>("pushButton_ok"), Qt::LeftButton); }

    // The error lines that show something, as "name: text".
    QString prompts() const
    {
        QStringList shown;
        for (const QString &name : promptNames) {
            if (!label(name)->text().isEmpty())
                shown << name + QStringLiteral(": ") + label(name)->text();
        }
        return shown.join(QLatin1Char('\n'));
    }

private slots:
    void init()
    {
        m_kit = std::make_unique<KitBench>();
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
            QStringLiteral("/lc/youbika/"));
        m_dialog = new Small_DeliveryHandling_Dialog(nullptr);
        m_dialog->setCollectionId("1001");
        m_dialog->setCollectionCode("C1001");
        m_dialog->setCollectionName("藏品1001");
        m_dialog->setAvailableNum(30);
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog));
    }
    void cleanup()
    {
        delete m_dialog;
        m_kit->endActions();
        m_kit.reset();
    }

    // The form.

    void textsAreAsRequired()
    {
        const QMap<QString, QString> texts{
            {"label_name", "藏品名称："},         {"label_code", "藏品代码："},
            {"label_availableNum", "可提数量："}, {"label_num", "提货数量："},
            {"label_userName", "姓   名："},      {"label_userPhone", "电   话："},
            {"label_userAddr", "地   址："}};
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            QCOMPARE(label(text.key())->text(), text.value());
        QCOMPARE(named<QGroupBox>("groupBox")->title(), QStringLiteral("收货人信息"));
        QCOMPARE(named<QGroupBox>("groupBox_2")->title(), QStringLiteral("藏品信息"));
        QCOMPARE(named<QPushButton>("pushButton_ok")->text(), QStringLiteral("确定"));
        QCOMPARE(named<QToolButton>("toolButton_close")->text(), QString());
        for (const char *name : {"lineEdit_userName", "lineEdit_userPhone", "lineEdit_userAddr"})
            QCOMPARE(edit(name)->text(), QString());
        QCOMPARE(prompts(), QString());
    }

    void stylesAreThereToTheLetter()
    {
        QCOMPARE(m_dialog->objectName(), QStringLiteral("Small_DeliveryHandling_Dialog"));
        QCOMPARE(m_dialog->styleSheet(),
                 QStringLiteral("QDialog#Small_DeliveryHandling_Dialog{border-image: "
                                "url(:/icons/smallwidget/tihuo.png);}"));
        QCOMPARE(named<QPushButton>("pushButton_ok")->styleSheet(),
                 QStringLiteral("QPushButton{color:rgb(255,255,255);background-color:#ff3c38; "
                                "border-width:1px;border-style:soli; border-radius:3px}"));
        QCOMPARE(
            named<QToolButton>("toolButton_close")->styleSheet(),
            QStringLiteral("QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
                           "QToolButton:hover{border-image: url(:/icons/smallwidget/close2.png)}"));
        for (const QString &name : promptNames)
            QCOMPARE(label(name)->styleSheet(), QStringLiteral("color: rgb(255, 60, 56);"));
        const QImage background(QStringLiteral(":/icons/smallwidget/tihuo.png"));
        QCOMPARE(background.size(), m_dialog->size());
    }

    void theHoldingIsShown()
    {
        QCOMPARE(label("label_code_value")->text(), QStringLiteral("C1001"));
        QCOMPARE(label("label_name_value")->text(), QStringLiteral("藏品1001"));
        QCOMPARE(label("label_availableNum_value")->text(), QStringLiteral("30"));
        QCOMPARE(amount()->minimum(), 0);
        QCOMPARE(amount()->maximum(), 30);
        QCOMPARE(amount()->value(), 30);
        QVERIFY(amount()->hasFocus());
        m_dialog->setCollectionName("<b>名</b>");
        QCOMPARE(label("label_name_value")->textFormat(), Qt::PlainText);
        // The identifier is not to be seen.
        for (const QLabel *each : m_dialog->findChildren<QLabel *>())
            QVERIFY(!each->text().contains("1001") || each->text().contains("C1001")
                    || each->text().contains("藏品"));
    }

    void theRangeFollowsTheHolding_data()
    {
        QTest::addColumn<int>("pieces");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
        QTest::newRow("all that an int holds") << INT_MAX;
    }
    void theRangeFollowsTheHolding()
    {
        QFETCH(int, pieces);
        m_dialog->setAvailableNum(pieces);
        QCOMPARE(label("label_availableNum_value")->text(), QString::number(pieces));
        QCOMPARE(amount()->minimum(), 0);
        QCOMPARE(amount()->maximum(), pieces);
        QCOMPARE(amount()->value(), pieces);
    }

    void thePhoneIsChecked_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("a number") << "13912345678"
                                  << "13912345678";
        QTest::newRow("too long") << "139123456789"
                                  << "13912345678";
        QTest::newRow("letters and blanks") << "1a3b9c 12345678"
                                            << "13912345678";
        QTest::newRow("the bar of the pattern") << "1|912345678"
                                                << "1|912345678";
        QTest::newRow("a bar elsewhere") << "13|9"
                                         << "139";
        QTest::newRow("wrong second digit") << "16912345678"
                                            << "1345678";
        QTest::newRow("wrong first digit") << "239"
                                           << "";
    }
    void thePhoneIsChecked()
    {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        type("lineEdit_userPhone", typed);
        QCOMPARE(edit("lineEdit_userPhone")->text(), kept);
        const auto *validator
            = qobject_cast<const QRegExpValidator *>(edit("lineEdit_userPhone")->validator());
        QVERIFY(validator);
        QCOMPARE(validator->regExp().pattern(), QStringLiteral("^1[3|4|5|7|8][0-9]\\d{8}$"));
        QCOMPARE(validator->regExp().caseSensitivity(), Qt::CaseSensitive);
        QCOMPARE(validator->regExp().patternSyntax(), QRegExp::RegExp);
    }

    // Sending.

    void aFilledFormIsSent()
    {
        fill();
        zvtest::Record record;
        clickOk();
        QCOMPARE(record.take(), sendsAll);
        QCOMPARE(prompts(), QString());
        // It waits for the answer, and a second press is a second request.
        QVERIFY(m_dialog->isVisible());
        QVERIFY(named<QPushButton>("pushButton_ok")->isEnabled());
        clickOk();
        QCOMPARE(record.take(), sendsAll);
    }

    void aPartIsSent()
    {
        fill();
        typeAmount("7");
        zvtest::Record record;
        clickOk();
        QCOMPARE(record.take(), QString(sendsAll).replace(" 30,", " 7,"));
    }

    void textsAreSentAsTheyStand()
    {
        fill();
        type("lineEdit_userName", " ");
        type("lineEdit_userAddr", "  a  ");
        type("lineEdit_userPhone", "1|912345678");
        zvtest::Record record;
        clickOk();
        QCOMPARE(record.take(),
                 sends(QStringLiteral("\"1001\", 30, \" \", \"1|912345678\", \"  a  \"")));
    }

    // The first of them alone is told, in the order of the form.
    void theFirstMistakeIsTold_data()
    {
        QTest::addColumn<QString>("amountText");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("phone");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("prompt");
        const QString phone = QStringLiteral("13912345678");
        const QString noPieces = QStringLiteral("label_prompt: 请输入有效的提货数量！");
        const QString noName = QStringLiteral("label_promptName: 姓名为空！");
        const QString badPhone = QStringLiteral("label_promptPhone: 电话有误！");
        const QString noAddress = QStringLiteral("label_promptAddr: 地址为空！");
        QTest::newRow("zero") << "0"
                              << "n" << phone << "a" << noPieces;
        QTest::newRow("no name") << "1"
                                 << "" << phone << "a" << noName;
        QTest::newRow("no phone") << "1"
                                  << "n"
                                  << ""
                                  << "a" << badPhone;
        QTest::newRow("ten digits") << "1"
                                    << "n"
                                    << "1391234567"
                                    << "a" << badPhone;
        QTest::newRow("no address") << "1"
                                    << "n" << phone << "" << noAddress;
        QTest::newRow("all") << "0"
                             << ""
                             << ""
                             << "" << noPieces;
        QTest::newRow("all but the amount") << "1"
                                            << ""
                                            << ""
                                            << "" << noName;
        QTest::newRow("phone and address") << "1"
                                           << "n"
                                           << ""
                                           << "" << badPhone;
    }
    void theFirstMistakeIsTold()
    {
        QFETCH(QString, amountText);
        QFETCH(QString, name);
        QFETCH(QString, phone);
        QFETCH(QString, address);
        QFETCH(QString, prompt);
        typeAmount(amountText);
        type("lineEdit_userName", name);
        type("lineEdit_userPhone", phone);
        type("lineEdit_userAddr", address);
        zvtest::Record record;
        clickOk();
        QCOMPARE(prompts(), prompt);
        QCOMPARE(record.take(), QString());
        QVERIFY(m_dialog->isVisible());
        // What is mended is told no more.
        fill();
        typeAmount("1");
        clickOk();
        QCOMPARE(prompts(), QString());
        QCOMPARE(record.take(), QString(sendsAll).replace(" 30,", " 1,"));
    }

    void nothingAvailableIsAlwaysRefused()
    {
        m_dialog->setAvailableNum(0);
        fill();
        typeAmount("5");
        zvtest::Record record;
        clickOk();
        QCOMPARE(amount()->value(), 0);
        QCOMPARE(prompts(), QStringLiteral("label_prompt: 请输入有效的提货数量！"));
        QCOMPARE(record.take(), QString());
    }

    void moreThanAvailableCannotBeTyped()
    {
        typeAmount("31");
        QCOMPARE(amount()->value(), 3);
        typeAmount("-1");
        QCOMPARE(amount()->value(), 1);
    }

    // From 1000 pieces on, a comma could stand between digits and count for nothing.
    void aPartOfAPieceIsNoAmount_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char *typed : {"2,5", "2.5", "1,000"})
            QTest::newRow(typed) << typed;
    }
    void aPartOfAPieceIsNoAmount()
    {
        QFETCH(QString, typed);
        m_dialog->setAvailableNum(5000);
        fill();
        typeAmount(typed);
        zvtest::Record record;
        clickOk();
        QCOMPARE(prompts(), QStringLiteral("label_prompt: 请输入有效的提货数量！"));
        QCOMPARE(record.take(), QString());
    }

    // An amount that was taken away is no amount, whichever way the form is sent.
    void anEmptyAmountIsNotTheLastOne_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("mouse") << "mouse";
        QTest::newRow("return in the amount") << "amount";
    }
    void anEmptyAmountIsNotTheLastOne()
    {
        QFETCH(QString, way);
        fill();
        typeAmount("");
        zvtest::Record record;
        if (way == "mouse")
            clickOk();
        else
            QTest::keyClick(amount(), Qt::Key_Return);
        QCOMPARE(record.take(), QString());
        QCOMPARE(prompts(), QStringLiteral("label_prompt: 请输入有效的提货数量！"));
    }

    void returnSendsFromEveryFieldAndAHeldOneOnce()
    {
        fill();
        const QList<QWidget *> fields{amount(), edit("lineEdit_userName"),
                                      edit("lineEdit_userPhone"), edit("lineEdit_userAddr")};
        for (QWidget *field : fields) {
            for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
                zvtest::Record record;
                QTest::keyPress(field, key);
                for (int i = 0; i < 5; ++i) {
                    QKeyEvent repeat(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("\r"),
                                     true);
                    QCoreApplication::sendEvent(field, &repeat);
                }
                QTest::keyRelease(field, key);
                QCOMPARE(record.take(), sendsAll);
            }
        }
    }

    // Goods leave once, however the hand trembles.
    void aDoubleClickSendsOnce()
    {
        fill();
        auto *ok = named<QPushButton>("pushButton_ok");
        zvtest::Record record;
        QTest::mouseClick(ok, Qt::LeftButton);
        QTest::mouseDClick(ok, Qt::LeftButton);
        QTest::mouseRelease(ok, Qt::LeftButton);
        QCOMPARE(record.take(), sendsAll);
    }

    void theTabKeyWalksThroughTheFields()
    {
        QStringList names;
        for (int i = 0; i < 5; ++i) {
            names << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(names.join(' '),
                 QStringLiteral("spinBox_num lineEdit_userName lineEdit_userPhone "
                                "lineEdit_userAddr spinBox_num"));
    }

    // Answers.

    void aSuccessIsToldAndEndsTheForm()
    {
        QSignalSpy accepted(m_dialog, &QDialog::accepted);
        const QList<ShownBox> boxes = boxesIn([] { emit actions()->signal_delivery_succeed(); },
                                              [this] { QVERIFY(m_dialog->isVisible()); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>提货申请成功！</p>"));
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(accepted.count(), 1);
        QVERIFY(!m_dialog->isVisible());
    }

    void aRefusalWithSignsOfRichText()
    {
        const QList<ShownBox> boxes
            = boxesIn([] { emit actions()->signal_delivery_falied(QStringLiteral("数量<1&2")); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>数量&lt;1&amp;2</p>"));
    }

    void aRefusalIsToldAndKeepsTheForm()
    {
        fill();
        typeAmount("7");
        const QList<ShownBox> boxes = boxesIn(
            [] { emit actions()->signal_delivery_falied(QStringLiteral("可提数量不足")); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>可提数量不足</p>"));
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QVERIFY(m_dialog->isVisible());
        QCOMPARE(amount()->value(), 7);
        // It is mended and sent again.
        typeAmount("5");
        zvtest::Record record;
        clickOk();
        QCOMPARE(record.take(), QString(sendsAll).replace(" 30,", " 5,"));
    }

    void theFormMayEndUnderTheBox_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("success") << true;
        QTest::newRow("refusal") << false;
    }
    void theFormMayEndUnderTheBox()
    {
        QFETCH(bool, succeeds);
        const QList<ShownBox> boxes = boxesIn(
            [succeeds] {
                if (succeeds)
                    emit actions()->signal_delivery_succeed();
                else
                    emit actions()->signal_delivery_falied(QStringLiteral("可提数量不足"));
            },
            [this] { delete m_dialog; });
        QCOMPARE(boxes.size(), 1);
        QVERIFY(!m_dialog);
    }

    void theCrossClosesAndSendsNothing()
    {
        fill();
        zvtest::Record record;
        QTest::mouseClick(named<QToolButton>("toolButton_close"), Qt::LeftButton);
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(record.take(), QString());
        QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    }

    void escapeCloses()
    {
        QTest::keyClick(amount(), Qt::Key_Escape);
        QVERIFY(!m_dialog->isVisible());
    }
};

ZV_TEST(DeliveryHandlingTest)
#include "test_small_deliveryhandling_dialog.moc"
