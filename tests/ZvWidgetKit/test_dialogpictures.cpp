#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "BreltWidgetToolKit/breltlabelurl.h"
#include "BreltWidgetToolKit/breltnotice.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/moneyoverviewdialog.h"
#include "ZvWidgetKit/small_money_overview.h"
#include "loginbench.h"
#include "marketbench.h"
#include "messageboxes.h"
#include "moneybench.h"
#include "pictures.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QApplication>
#include <QtTest/QtTest>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

} // namespace

// What the dialogs, message boxes and notices look like, after they were looked at.
class DialogPicturesTest : public QObject
{
    Q_OBJECT

private:
    // Without mouse and text cursor.
    static void hold(QWidget *dialog, const QString &name)
    {
        QTest::mouseMove(dialog, QPoint(5, dialog->height() - 5));
        dialog->setFocus();
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(dialog, name);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    static void addPlatforms(const QStringList &states)
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<QString>("state");
        for (const QString &state : states) {
            QTest::addRow("%s_ch", qPrintable(state)) << ZvServerConfig::ChengHu << state;
            QTest::addRow("%s_lc", qPrintable(state)) << ZvServerConfig::LanChuan << state;
        }
    }

    // Makes the platform of the current row the client's, and gives the row's state.
    static QString begin()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(QString, state);
        config()->setCurrentPlatform(platform);
        return state;
    }

    static QString named(const char *dialog)
    {
        return QStringLiteral("%1_%2").arg(dialog, QTest::currentDataTag());
    }

private slots:
    void initTestCase()
    {
        zvtest::wearTheClientsLook();
        config()->setServiceAddress(QStringLiteral("http://127.0.0.1:8080"));
    }

    void cleanup()
    {
        cache()->storeMyAccount(ZvUBMyAcount());
        cache()->storeCapInfo(ZvUBCapInfo());
    }

    void signIn_data() { addPlatforms({"new", "refused", "filled"}); }
    void signIn()
    {
        const QString state = begin();
        zvtest::LoginBench bench;
        if (state == QLatin1String("refused")) {
            bench.click("pushButton_login");
        } else if (state == QLatin1String("filled")) {
            bench.fill({{"lineEdit_login_phoneNumber", "13800138000"},
                        {"lineEdit_login_password", "abcdefghij0123456789"}});
        }
        hold(bench.dialog, named("signin"));
    }

    void registering_data() { addPlatforms({"new", "refused", "filled"}); }
    void registering()
    {
        const QString state = begin();
        zvtest::LoginBench bench;
        bench.click("pushButton_login_immediatelyRegister");
        if (state == QLatin1String("filled")) {
            bench.fill({{"lineEdit_register_PhoneNumber", "13800138000"},
                        {"lineEdit_register_verificationCode", "1234"},
                        {"lineEdit_register_password", "abcdefghij0123456789"},
                        {"lineEdit_register_confirmPassword", "abcdefghij0123456789"},
                        {"lineEdit_register_PhoneNumber_referee", "13800138001"}});
        } else if (state == QLatin1String("refused")) {
            bench.fill({{"lineEdit_register_PhoneNumber", "13800138000"},
                        {"lineEdit_register_verificationCode", "1234"},
                        {"lineEdit_register_password", "abcdefg"},
                        {"lineEdit_register_confirmPassword", "abcdefh"}});
            bench.click("pushButton_register");
        }
        hold(bench.dialog, named("register"));
    }

    void newPassword_data() { addPlatforms({"new", "refused", "filled"}); }
    void newPassword()
    {
        const QString state = begin();
        zvtest::LoginBench bench;
        bench.click("pushButton_login_immediatelyChange");
        if (state == QLatin1String("filled")) {
            bench.fill({{"lineEdit_changePassword_PhoneNumber", "13800138000"},
                        {"lineEdit_changePassword_verificationCode", "1234"},
                        {"lineEdit_changePassword_password", "abcdefghij0123456789"},
                        {"lineEdit_changePassword_confirmPassword", "abcdefghij0123456789"}});
        } else if (state == QLatin1String("refused")) {
            bench.click("pushButton_changePassword");
        }
        hold(bench.dialog, named("newpassword"));
    }

    void money_data() { addPlatforms({"empty", "usual", "longest"}); }
    void money()
    {
        const QString state = begin();
        if (state != QLatin1String("empty")) {
            const bool isLongest = state == QLatin1String("longest");
            ZvUBMyAcount::Data account;
            account.accountNumber = isLongest ? "LC99999999999999" : "LC00000042";
            account.name = isLongest ? "阿卜杜拉·买买提·吐尔逊·艾合买提江" : "欧阳青石";
            account.phone = "13912345678";
            cache()->storeMyAccount(ZvUBMyAcount(account));
            ZvUBCapInfo::Data money;
            money.totalAssets = isLongest ? 900000000000000000 : 131111110;
            money.availableMoney = isLongest ? -900000000000000000 : 123456789;
            money.heldMarketValue = isLongest ? 900000000000000000 : 7654321;
            money.frozenMoney = isLongest ? 900000000000000000 : 4321;
            cache()->storeCapInfo(ZvUBCapInfo(money));
        }
        auto *dialog = new Small_Money_Overview(nullptr);
        dialog->show();
        hold(dialog, named("moneyoverview"));
        dialog->close(); // deletes it
    }

    void moneyAtLarge_data() { addPlatforms({"shown"}); }
    void moneyAtLarge()
    {
        begin();
        MoneyOverviewDialog dialog(nullptr);
        dialog.show();
        hold(&dialog, named("moneyatlarge"));
    }

    // As the market half has it, with its picture around it.
    void openingAnAccount_data() { addPlatforms({"waiting", "shown"}); }
    void openingAnAccount()
    {
        const QString state = begin();
        zvtest::MarketBench bench;
        auto *dialog = bench.market->findChild<EstablishAccountDialog *>();
        dialog->show();
        if (state == QLatin1String("shown")) {
            QSignalSpy shown(dialog->findChild<BreltLabelURL *>(),
                             &BreltLabelURL::signal_pictureShown);
            dialog->setQrCodeUrl(QStringLiteral("qrc:/icons/appicon.png"));
            QTRY_COMPARE(shown.count(), 1);
        }
        hold(dialog, named("openaccount"));
        dialog->close();
    }

    void messages_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("second");
        using framedmessage::paragraph;
        QTest::newRow("short") << paragraph("撤单成功") << QString();
        QTest::newRow("question") << paragraph("确认撤掉选中？") << QStringLiteral("取消");
        QTest::newRow("order") << zvtest::confirmation("600137", "庚申猴票", "99.98", "3")
                               << QStringLiteral("取消");
        QTest::newRow("longest") << zvtest::confirmation(
            "88888888",
            "一九八〇年庚申年生肖猴票整版八十枚原胶全品带边纸厂铭纪念版特别珍藏版第一辑",
            "131071.98", "100000000")
                                 << QStringLiteral("取消");
        QTest::newRow("wordy") << paragraph(
            QString("可用资金不足，需要281,474,976.71元。").repeated(20))
                               << QString();
        QTest::newRow("none") << paragraph(QString()) << QString();
    }
    void messages()
    {
        QFETCH(QString, html);
        QFETCH(QString, second);
        zvtest::boxesIn([&] { framedmessage::show(html, QStringLiteral("温馨提示"), second); },
                        [&] { hold(QApplication::activeModalWidget(), named("message")); });
    }

    void notices_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << QStringLiteral("买入委托成功");
        QTest::newRow("long") << QString("可用资金不足，需要281,474,976.71元。").repeated(6);
    }
    void notices()
    {
        QFETCH(QString, text);
        BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(text);
        QWidget *notice = nullptr;
        for (QWidget *each : QApplication::topLevelWidgets()) {
            if (qobject_cast<BreltNotice *>(each) && each->isVisible())
                notice = each;
        }
        QVERIFY(notice);
        hold(notice, named("notice"));
        zvtest::dropNotices();
    }
};

ZV_TEST(DialogPicturesTest)
#include "test_dialogpictures.moc"
