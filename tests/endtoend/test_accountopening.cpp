#include "client/accountbutton.h"
#include "client/mainwindow.h"

#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "exchange/service/browser.h"
#include "exchange/service/qr_reader.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvModelKit/zvubcapinfo.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/small_money_inout.h"

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>
#include <QtTest/QtTest>

#include <functional>
#include <vector>

using endtoend::patience;

namespace {

const QString phone = QStringLiteral("13800138000");
const QString password = QStringLiteral("qing-shi-7");
constexpr int codeDigits = 6;

template <typename Dialog>
Dialog *shown()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *dialog = qobject_cast<Dialog *>(widget);
        if (dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

// What a telephone reads on the label.
std::string scanned(const QLabel &label)
{
    const QPixmap pixmap = label.pixmap(Qt::ReturnByValue);
    if (pixmap.isNull())
        return {};
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_Grayscale8);
    zvxtest::GreyPicture picture;
    picture.width = image.width();
    picture.height = image.height();
    for (int y = 0; y < image.height(); ++y)
        picture.pixels.insert(picture.pixels.end(), image.constScanLine(y),
                              image.constScanLine(y) + image.width());
    return zvxtest::readQrCode(picture);
}

// Takes one step after the other, each of them again and again until it says that it is done; from
// the event loop, so that dialogs may run loops of their own meanwhile.
class Walk : public QObject
{
public:
    explicit Walk(std::vector<std::function<bool()>> steps) : m_steps(std::move(steps))
    {
        connect(&m_timer, &QTimer::timeout, this, &Walk::go);
        m_timer.start(50);
    }
    std::size_t done() const { return m_done; }

private:
    void go()
    {
        if (m_done < m_steps.size() && !m_isBusy) {
            m_isBusy = true;
            if (m_steps[m_done]())
                ++m_done;
            m_isBusy = false;
        }
    }

    std::vector<std::function<bool()>> m_steps;
    std::size_t m_done = 0;
    bool m_isBusy = false;
    QTimer m_timer;
};

} // namespace

// A new account without a bank card: the window shows a QR code, a telephone leads to the page
// behind it, and once the card is bound the window goes on by itself to money in and out.
class AccountOpeningTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(m_exchange.start(m_state, 0, 0));
        QVERIFY(endtoend::registerAccount(m_state, m_exchange.address(), phone, password));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1366, 768);
        m_window->show();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void fromTheCodeOnTheScreenToMoneyInTheAccount()
    {
        std::string address;
        QString tail;
        const Walk walk({
            [&] {
                const auto *dialog = shown<EstablishAccountDialog>();
                const auto *picture
                    = dialog ? dialog->findChild<QLabel *>("label_qrcode") : nullptr;
                address = picture ? scanned(*picture) : std::string();
                return !address.empty();
            },
            [&] {
                bindCard(address);
                // The window asks by itself every 30 s; its question is hurried here.
                ZvServerEngine::getZvServerEngineInstance()->sendRequest_Mybankcard();
                return true;
            },
            [&] {
                const auto *dialog = shown<Small_Money_InOut>();
                tail
                    = dialog ? dialog->findChild<QLabel *>("label_bank_number")->text() : QString();
                return dialog && !shown<EstablishAccountDialog>();
            },
            [&] { return click("pushButton_getValidataCode"); },
            [&] { return !widget<QAbstractButton>("pushButton_getValidataCode")->isEnabled(); },
            [&] {
                type(QStringLiteral("100.5"), endtoend::lastCode(m_state, phone, codeDigits));
                return click("pushButton_ok");
            },
            [&] { return notice() == QStringLiteral("入金成功") && available() == 100.5; },
            // The same code again is refused, and nothing moves.
            [&] { return click("pushButton_ok"); },
            [&] { return notice().contains(QStringLiteral("验证码")) && available() == 100.5; },
            [&] { return click("pushButton_out"); },
            [&] {
                type(QStringLiteral("100.51"), {});
                return click("pushButton_ok");
            },
            [&] { return notice().contains(QStringLiteral("资金")) && available() == 100.5; },
            [&] {
                type(QStringLiteral("40"), {});
                return click("pushButton_ok");
            },
            [&] { return notice() == QStringLiteral("出金成功") && available() == 60.5; },
            [&] { return text("label_available_value").startsWith(QLatin1String("60.50")); },
            [&] { return click("toolButton_close"); },
        });
        auto *button = m_window->findChild<AccountButton *>();
        QTest::mouseClick(button, Qt::LeftButton);
        QMenu *menu = button->findChild<QMenu *>();
        QTRY_VERIFY(menu->isVisible());
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                          menu->actionGeometry(menu->actions().first()).center());
        const bool isThrough = endtoend::until([&] { return walk.done() == 16; }, 2 * patience);
        if (auto *dialog = shown<QDialog>())
            dialog->close();
        QVERIFY2(isThrough, qPrintable(QString::number(walk.done()) + ' ' + notice()));
        QCOMPARE(QString::fromStdString(address).left(m_exchange.address().toString().size()),
                 m_exchange.address().toString());
        QCOMPARE(tail, QStringLiteral("尾号：0121"));
        QTRY_VERIFY(!shown<QDialog>());
    }

private:
    void bindCard(const std::string &address)
    {
        zvxtest::Browser browser({390, 844, true});
        browser.open(address);
        browser.type("#holder", "林晓月");
        browser.choose("#bank", "lanchuan");
        browser.type("#number", "9990001234567890121");
        browser.follow("button[value=prepare]");
        browser.type("#code", endtoend::lastCode(m_state, phone, codeDigits).toStdString());
        browser.follow("button[value=confirm]");
        QCOMPARE(QString::fromStdString(browser.text("h1")), QStringLiteral("绑定成功"));
    }

    template <typename Widget>
    static Widget *widget(const char *name)
    {
        const auto *dialog = shown<Small_Money_InOut>();
        return dialog ? dialog->findChild<Widget *>(name) : nullptr;
    }
    static QString text(const char *name)
    {
        const auto *label = widget<QLabel>(name);
        return label ? label->text() : QString();
    }
    static bool click(const char *name)
    {
        auto *button = widget<QAbstractButton>(name);
        if (!button || !button->isEnabled())
            return false;
        QTest::mouseClick(button, Qt::LeftButton);
        return true;
    }
    static void type(const QString &amount, const QString &code)
    {
        auto *edit = widget<QDoubleSpinBox>("doubleSpinBox_moneyValue");
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, amount);
        if (code.isEmpty())
            return;
        auto *field = widget<QLineEdit>("lineEdit_validateCode_value");
        field->setFocus();
        QTest::keyClicks(field, code);
    }
    static QString notice()
    {
        const QStringList all = BreltGlobalFunction::getBreltGlobalFunciton()->notices();
        return all.isEmpty() ? QString() : all.last();
    }
    static double available()
    {
        return ZvServerCache::getZvServerCacheInstance()->capInfo.availableMoney();
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
};

ZV_TEST(AccountOpeningTest)
#include "test_accountopening.moc"
