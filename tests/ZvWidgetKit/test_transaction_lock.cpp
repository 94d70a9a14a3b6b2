#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "moneybench.h"
#include "record.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QBoxLayout>
#include <QRegExpValidator>
#include <QtTest/QtTest>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

const QString firstHint = QStringLiteral("   系统锁定, 请输入密码解锁");

// What the kit writes of a sign-in; the password is masked there.
const QString signsIn
    = QStringLiteral("ZvServerActionResult::sendRequest_login(\"13912345678\", \"***\")");

} // namespace

// The page that locks the trading half, in its place there.
class TransactionLockTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::TransactionBench> m_bench;

    QWidget *lock() const { return m_bench->lockPage(); }
    QLineEdit *password() const { return m_bench->password(); }
    QString hint() const { return m_bench->hint()->text(); }
    void type(const QString &text) { QTest::keyClicks(password(), text); }
    void refuse(const QString &text) { emit zvtest::actions()->signal_login_failed(text); }

private slots:
    void init()
    {
        m_bench = std::make_unique<zvtest::TransactionBench>();
        cache()->storeMyAccount(zvtest::accountWithPhone(QStringLiteral("13912345678")));
        m_bench->call("slot_showTransctionLock");
        QVERIFY(m_bench->isLocked());
    }
    void cleanup() { m_bench.reset(); }

    void threeWidgetsStandInTheMiddle()
    {
        QCOMPARE(password()->echoMode(), QLineEdit::Password);
        QCOMPARE(password()->placeholderText(), QStringLiteral("请输入您的登录密码"));
        QCOMPARE(m_bench->unlockButton()->text(), QStringLiteral("立即解锁"));
        QCOMPARE(hint(), firstHint);
        const auto *page = qobject_cast<QHBoxLayout *>(lock()->layout());
        QVERIFY(page);
        QCOMPARE(page->count(), 3);
        const auto *column = qobject_cast<QVBoxLayout *>(page->itemAt(1)->layout());
        QVERIFY(column);
        QCOMPARE(column->count(), 5);
        for (const QBoxLayout *layout :
             {static_cast<const QBoxLayout *>(page), static_cast<const QBoxLayout *>(column)}) {
            for (const int end : {0, layout->count() - 1}) {
                QVERIFY(layout->itemAt(end)->spacerItem());
                QCOMPARE(layout->stretch(end), 1);
            }
        }
        QCOMPARE(column->itemAt(1)->widget(), password());
        QCOMPARE(column->itemAt(2)->widget(), m_bench->unlockButton());
        QCOMPARE(column->itemAt(3)->widget(), m_bench->hint());
    }

    void sheetsAreThereToTheLetter()
    {
        QCOMPARE(
            m_bench->unlockButton()->styleSheet(),
            QStringLiteral(
                "QPushButton{background-color:rgb(229,53,53);color:rgb(255,255,255);width:220px; "
                "height:50px;border-style:inset;border-width:1px;border-style:soli; "
                "border-radius:4px}QPushButton:hover{color:rgb(226,239,51);border-style:inset;"
                "border-width:1px;border-style:soli; border-radius:4px}"
                "QPushButton:pressed{border-style:inset；border-width:1px;border-style:soli; "
                "border-radius:4px}"));
        QCOMPARE(password()->styleSheet(),
                 QStringLiteral("QLineEdit{width:220px; height:38px;border-width:1px;"
                                "border-style:soli;border-radius:4px}"));
        QCOMPARE(m_bench->hint()->styleSheet(),
                 QStringLiteral("QLabel{color:rgb(226,239,51);background-color:rgb(21,21,21)}"));
    }

    void thePageIsFilled()
    {
        QVERIFY(lock()->autoFillBackground());
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(lock()->palette().color(group, QPalette::Window), QColor(21, 21, 21));
        QCOMPARE(lock()->grab().toImage().pixelColor(5, 5), QColor(21, 21, 21));
    }

    void theFieldTakesTheFocusWheneverThePageComes()
    {
        QVERIFY(password()->hasFocus());
        m_bench->call("slot_after_login_succeed");
        QVERIFY(!password()->hasFocus());
        m_bench->call("slot_showTransctionLock");
        QVERIFY(password()->hasFocus());
    }

    // Or the next attempt would be typed where others can read it.
    void theFocusStaysInTheFieldAfterAClick()
    {
        QTest::mouseClick(m_bench->unlockButton(), Qt::LeftButton);
        QVERIFY(password()->hasFocus());
        refuse(QStringLiteral("密码错误"));
        QVERIFY(password()->hasFocus());
    }

    void theButtonSendsAnyText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << QString();
        QTest::newRow("short") << "abc12";
        QTest::newRow("shortest") << "abc123";
        QTest::newRow("longest") << "abcdefghij0123456789";
    }
    void theButtonSendsAnyText()
    {
        QFETCH(QString, text);
        type(text);
        zvtest::Record record;
        QTest::mouseClick(m_bench->unlockButton(), Qt::LeftButton);
        QCOMPARE(record.take(), signsIn);
        // It waits for the server: nothing has changed yet.
        QVERIFY(m_bench->isLocked());
        QCOMPARE(password()->text(), text);
        QCOMPARE(hint(), firstHint);
    }

    void returnSendsWhatTheFieldAccepts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isSent");
        QTest::newRow("nothing") << QString() << false;
        QTest::newRow("five") << "abc12" << false;
        QTest::newRow("six") << "abc123" << true;
        QTest::newRow("twenty") << "abcdefghij0123456789" << true;
    }
    void returnSendsWhatTheFieldAccepts()
    {
        QFETCH(QString, text);
        QFETCH(bool, isSent);
        type(text);
        zvtest::Record record;
        QTest::keyClick(password(), Qt::Key_Return);
        QCOMPARE(record.take(), isSent ? signsIn : QString());
        QTest::keyClick(password(), Qt::Key_Enter);
        QCOMPARE(record.take(), isSent ? signsIn : QString());
    }

    void aHeldReturnIsOneAttempt()
    {
        type("secret1");
        zvtest::Record record;
        QTest::keyPress(password(), Qt::Key_Return);
        for (int i = 0; i < 5; ++i) {
            QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"),
                             true);
            QCoreApplication::sendEvent(password(), &repeat);
        }
        QTest::keyRelease(password(), Qt::Key_Return);
        QCOMPARE(record.take(), signsIn);
    }

    void aDoubleClickIsOneAttempt()
    {
        type("secret1");
        zvtest::Record record;
        QTest::mouseClick(m_bench->unlockButton(), Qt::LeftButton);
        QTest::mouseDClick(m_bench->unlockButton(), Qt::LeftButton);
        QTest::mouseRelease(m_bench->unlockButton(), Qt::LeftButton);
        QCOMPARE(record.take(), signsIn);
    }

    void theFieldRefusesBlanksAndMoreThanTwenty()
    {
        type("ab c 1 2 3");
        QCOMPARE(password()->text(), QStringLiteral("abc123"));
        password()->clear();
        type("abcdefghij0123456789x");
        QCOMPARE(password()->text(), QStringLiteral("abcdefghij0123456789"));
        const auto *validator = qobject_cast<const QRegExpValidator *>(password()->validator());
        QVERIFY(validator);
        QCOMPARE(validator->parent(), lock());
        QCOMPARE(validator->regExp().pattern(), QStringLiteral("^\\S{6,20}$"));
        QCOMPARE(validator->regExp().caseSensitivity(), Qt::CaseSensitive);
    }

    void theAccountOfTheMomentSignsIn()
    {
        cache()->storeMyAccount(zvtest::accountWithPhone(QStringLiteral("13800000001")));
        zvtest::Record record;
        QTest::mouseClick(m_bench->unlockButton(), Qt::LeftButton);
        QCOMPARE(record.take(), QString(signsIn).replace("13912345678", "13800000001"));
    }

    void aRefusalIsShownAndTheFieldIsEmpty()
    {
        type("secret1");
        refuse(QStringLiteral("密码错误"));
        QVERIFY(m_bench->isLocked());
        QCOMPARE(hint(), QStringLiteral("密码错误 请重新输入密码"));
        QCOMPARE(password()->text(), QString());
        refuse(QString());
        QCOMPARE(hint(), QStringLiteral(" 请重新输入密码"));
    }

    void aRefusalIsNoMarkup()
    {
        refuse(QStringLiteral("<b>密码</b>错误"));
        QCOMPARE(m_bench->hint()->textFormat(), Qt::PlainText);
        QCOMPARE(hint(), QStringLiteral("<b>密码</b>错误 请重新输入密码"));
    }

    void aLongRefusalLeavesTheWindowItsWidth()
    {
        const QSize size = m_bench->trading->size();
        const QString reason(400, QChar(0x9501));
        refuse(reason);
        QCoreApplication::processEvents();
        QVERIFY(m_bench->trading->minimumSizeHint().width() <= size.width());
        QCOMPARE(m_bench->trading->size(), size);
        QVERIFY(lock()->rect().contains(m_bench->hint()->geometry()));
        QVERIFY(m_bench->hint()->toolTip().contains(reason));
        m_bench->call("slot_showTransctionLock");
        QVERIFY(!m_bench->hint()->toolTip().contains(reason));
    }

    void theNextShowPutsTheHintBack()
    {
        refuse(QStringLiteral("密码错误"));
        type("secret1");
        m_bench->trading->hide();
        m_bench->trading->show();
        QCOMPARE(hint(), firstHint);
        QCOMPARE(password()->text(), QString());
    }

    void lockingTwiceOnlyResets()
    {
        refuse(QStringLiteral("密码错误"));
        type("secret1");
        zvtest::Record record;
        m_bench->call("slot_showTransctionLock");
        QCOMPARE(record.take(), QString());
        QVERIFY(m_bench->isLocked());
        QCOMPARE(hint(), firstHint);
        QCOMPARE(password()->text(), QString());
    }

    void thereIsNoLimitOfAttempts()
    {
        for (int i = 0; i < 20; ++i) {
            type("secret1");
            zvtest::Record record;
            QTest::keyClick(password(), Qt::Key_Return);
            QCOMPARE(record.take(), signsIn);
            refuse(QStringLiteral("密码错误"));
        }
        QVERIFY(m_bench->isLocked());
        QVERIFY(password()->isEnabled());
    }

    // The whole road, with the answers of the exchange.
    void theExchangeDecides()
    {
        const QByteArray wrong
            = ZvScriptedTransport::refusal("refused", QStringLiteral("手机号或密码错误"));
        type("wrong-1");
        QTest::keyClick(password(), Qt::Key_Return);
        m_bench->exchange()->answer(zvPath_login, wrong);
        m_bench->kit()->settle();
        QVERIFY(m_bench->isLocked());
        QCOMPARE(hint(), QStringLiteral("手机号或密码错误 请重新输入密码"));
        QCOMPARE(password()->text(), QString());

        type("right-1");
        QTest::mouseClick(m_bench->unlockButton(), Qt::LeftButton);
        m_bench->exchange()->answer(zvPath_login,
                                    ZvScriptedTransport::ok(KitBench::signedIn("token-2")));
        m_bench->kit()->settle();
        QVERIFY(!m_bench->isLocked());
        QCOMPARE(m_bench->page(), QStringLiteral("DealWidget_BuySell"));
        QCOMPARE(hint(), firstHint);
        QCOMPARE(password()->text(), QString());
    }
};

ZV_TEST(TransactionLockTest)
#include "test_transaction_lock.moc"
