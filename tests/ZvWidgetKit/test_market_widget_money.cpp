#include "BreltWidgetToolKit/breltlabelurl.h"
#include "ZvModelKit/zvubapplyitem.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/small_money_inout.h"
#include "ZvWidgetKit/small_money_overview.h"
#include "linkcatcher.h"
#include "marketbench.h"
#include "messageboxes.h"
#include "moneybench.h"
#include "record.h"
#include "support/testregistry.h"

#include <QToolButton>
#include <QtTest/QtTest>

using zvtest::boxesIn;
using zvtest::notices;
using zvtest::ShownBox;
using zvtest::withDialog;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

const QString asksForCard = QStringLiteral("ZvServerEngine::sendRequest_Mybankcard()");
const QString asksForAddresses = QStringLiteral("ZvServerEngine::sendRequest_getURL_INOUT()");
const QString wasHidden = QStringLiteral("隐藏着 刷到了没有绑卡");
const QString wasShown = QStringLiteral("显示着 刷到了没有绑卡");

// Nobody listens there, so that a picture fails at once and tells the address it was asked for at.
const QString service = QStringLiteral("http://127.0.0.1:9");
const QString qrcodePrefix = service + QStringLiteral("/cgi-bin/qrcode.html?s=");

void cardIsBound()
{
    cache()->storeMyBankcard("qrc:/icons/", "appicon", "png", "1234");
}

void cardIsMissing(const QString &code = QStringLiteral("code-1"))
{
    cache()->storeNoMyBankcard(code);
}

void closeByItsCross(QDialog *dialog)
{
    QTest::mouseClick(dialog->findChild<QToolButton *>("toolButton_close"), Qt::LeftButton);
}

} // namespace

// What a signed-in user does with money, from the buttons of the title row.
class MarketWidgetMoneyTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::MarketBench> m_bench;

    Market_Widget *market() const { return m_bench->market.get(); }
    void call(const char *slot) { m_bench->call(slot); }

    EstablishAccountDialog *opening() const
    {
        return market()->findChild<EstablishAccountDialog *>();
    }
    QTimer *timer() const
    {
        return market()->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }

    // The half minute between two questions is over.
    void halfMinutePasses() { QVERIFY(QMetaObject::invokeMethod(timer(), "timeout")); }

    template <typename Dialog>
    int countOf() const
    {
        return market()->findChildren<Dialog *>().size();
    }

private slots:
    void init()
    {
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        config()->setServiceAddress(service);
        cache()->urlInMoney.clear();
        cache()->urlOutMoney.clear();
        m_bench = std::make_unique<zvtest::MarketBench>();
        call("showButtonsNeedLog");
    }

    void cleanup()
    {
        m_bench.reset();
        config()->setServiceAddress(QString());
        zvtest::dropNotices();
    }

    // The overview.

    void theOverviewIsMadeForEachClick()
    {
        for (int round = 0; round < 2; ++round) {
            QVERIFY(withDialog<Small_Money_Overview>([this] { m_bench->click("资金总览"); },
                                                     [this](Small_Money_Overview *dialog) {
                                                         QCOMPARE(dialog->parentWidget(), market());
                                                         QCOMPARE(countOf<Small_Money_Overview>(),
                                                                  1);
                                                         closeByItsCross(dialog);
                                                     }));
            QCOMPARE(countOf<Small_Money_Overview>(), 0);
        }
    }

    // Pages for money in the browser.

    void theFirstClickOnlyFetchesTheAddress_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("address");
        QTest::newRow("in") << QStringLiteral("入金")
                            << "http://127.0.0.1:9/lc/money/in?t=a%2Bb&c=1";
        QTest::newRow("out") << QStringLiteral("出金") << "http://127.0.0.1:9/lc/money/out?t=c";
    }
    void theFirstClickOnlyFetchesTheAddress()
    {
        QFETCH(QString, button);
        QFETCH(QString, address);
        zvtest::LinkCatcher browser;
        zvtest::Record record;
        m_bench->click(button);
        m_bench->click(button);
        QCOMPARE(record.take(), asksForAddresses + '\n' + asksForAddresses);
        QCOMPARE(browser.opened, QStringList());
        QCOMPARE(notices(), QStringList());

        cache()->storeMoneyUrls("http://127.0.0.1:9/lc/money/in?t=a%2Bb&c=1",
                                "http://127.0.0.1:9/lc/money/out?t=c");
        QCOMPARE(browser.opened, QStringList());
        m_bench->click(button);
        QCOMPARE(record.take(), QString());
        QCOMPARE(browser.opened, QStringList(address));
    }

    void aSystemWithoutABrowserIsTold()
    {
        cache()->storeMoneyUrls("http://127.0.0.1:9/in", QString());
        m_bench->click("入金");
        QCOMPARE(notices(), QStringList("无法打开浏览器，请检查系统的默认浏览器"));
    }

    void eachDirectionHasAnAddressOfItsOwn()
    {
        zvtest::LinkCatcher browser;
        cache()->storeMoneyUrls("http://127.0.0.1:9/in", QString());
        zvtest::Record record;
        m_bench->click("出金");
        QCOMPARE(record.take(), asksForAddresses);
        QCOMPARE(browser.opened, QStringList());
        m_bench->click("入金");
        QCOMPARE(browser.opened, QStringList("http://127.0.0.1:9/in"));
    }

    // Purchases.

    void purchasesAreAskedFor()
    {
        zvtest::Record record;
        m_bench->click("藏品申购");
        QCOMPARE(record.take(), QStringLiteral("ZvServerEngine::sendRequest_ApplyList(1)"));
        QCOMPARE(notices(), QStringList());
    }

    void noOpenPurchaseIsSaid()
    {
        const QList<ShownBox> boxes = boxesIn([] { cache()->storeOpenApplyList({}); });
        QCOMPARE(boxes.size(), 0);
        QCOMPARE(notices(), QStringList(QStringLiteral("暂无可申购藏品！")));
    }

    void anOpenPurchaseLeadsToTheTelephone()
    {
        const QList<ShownBox> boxes
            = boxesIn([] { cache()->storeOpenApplyList({ZvUBApplyItem()}); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text,
                 QStringLiteral("<p align='center'>PC客户端的申购功能尚未开放</p>"
                                "<p align='center'>请您前往手机客户端完成申购</p>"));
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(notices(), QStringList());
    }

    // The bank card.

    void theCardIsAskedFor()
    {
        zvtest::Record record;
        call("slot_inputoutput_clicked");
        call("slot_flushQrcodeWhenShow");
        m_bench->button("出/入金")->click();
        QCOMPARE(record.take(), QStringList({asksForCard, asksForCard, asksForCard}).join('\n'));
        QVERIFY(!timer()->isActive());
    }

    void theAccountDialogWaitsHidden()
    {
        QCOMPARE(countOf<EstablishAccountDialog>(), 1);
        QCOMPARE(opening()->parentWidget(), market());
        QVERIFY(opening()->isHidden());
        QCOMPARE(opening()->windowTitle(), QStringLiteral("申请开户"));
        QCOMPARE(opening()->styleSheet(),
                 QStringLiteral("QDialog#EstablishAccountDialog{border-image: "
                                "url(:/icons/smallwidget/kaihu_lanchuan.png);}"));
        QVERIFY(!timer()->isActive());
    }

    void aBoundCardOpensMoneyInAndOut()
    {
        for (int round = 0; round < 2; ++round) {
            QVERIFY(withDialog<Small_Money_InOut>(
                [] { cardIsBound(); },
                [this](Small_Money_InOut *dialog) {
                    QCOMPARE(dialog->parentWidget(), market());
                    QCOMPARE(dialog->findChild<QLabel *>("label_bank_number")->text(),
                             QStringLiteral("尾号：1234"));
                    QCOMPARE(countOf<Small_Money_InOut>(), 1);
                    closeByItsCross(dialog);
                }));
            QCOMPARE(countOf<Small_Money_InOut>(), 0);
        }
        QVERIFY(opening()->isHidden());
    }

    void aMissingCardShowsItsPicture()
    {
        auto *label = opening()->findChild<BreltLabelURL *>();
        QSignalSpy asked(label, &BreltLabelURL::signal_pictureFailed);
        zvtest::Record record;
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing("a-Z_9"); },
                                                   [&](EstablishAccountDialog *dialog) {
                                                       QCOMPARE(dialog, opening());
                                                       QVERIFY(timer()->isActive());
                                                       QCOMPARE(timer()->interval(), 30000);
                                                       QVERIFY(!timer()->isSingleShot());
                                                       QTRY_COMPARE(asked.count(), 1);
                                                       dialog->close();
                                                   }));
        QCOMPARE(asked.at(0).at(0).toString(), qrcodePrefix + "a-Z_9");
        QCOMPARE(record.take(), wasHidden);
        QVERIFY(!timer()->isActive());
    }

    void aServiceThatMovedIsAskedWhereItIs()
    {
        auto *label = opening()->findChild<BreltLabelURL *>();
        QSignalSpy asked(label, &BreltLabelURL::signal_pictureFailed);
        config()->setServiceAddress(QStringLiteral("http://127.0.0.1:11/"));
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing("x"); },
                                                   [&](EstablishAccountDialog *dialog) {
                                                       QTRY_COMPARE(asked.count(), 1);
                                                       dialog->close();
                                                   }));
        QCOMPARE(asked.at(0).at(0).toString(),
                 QStringLiteral("http://127.0.0.1:11/cgi-bin/qrcode.html?s=x"));
    }

    void aSecondMissingCardRefreshesThePicture()
    {
        auto *label = opening()->findChild<BreltLabelURL *>();
        QSignalSpy asked(label, &BreltLabelURL::signal_pictureFailed);
        zvtest::Record record;
        QVERIFY(withDialog<EstablishAccountDialog>(
            [] { cardIsMissing("one"); },
            [&](EstablishAccountDialog *dialog) {
                QCOMPARE(record.take(), wasHidden);
                QTRY_COMPARE(asked.count(), 1);
                timer()->setInterval(24 * 60 * 60 * 1000); // as if it had run for long
                cardIsMissing("two");
                QCOMPARE(record.take(), wasShown);
                QVERIFY(timer()->isActive());
                QCOMPARE(timer()->interval(), 30000);
                QTRY_COMPARE(asked.count(), 2);
                QCOMPARE(QApplication::activeModalWidget(), dialog);
                QVERIFY(dialog->isVisible());
                dialog->close();
            }));
        QCOMPARE(asked.count(), 2);
        QCOMPARE(asked.at(1).at(0).toString(), qrcodePrefix + "two");
        QCOMPARE(countOf<EstablishAccountDialog>(), 1);
        QVERIFY(opening()->isHidden());
    }

    // Closed below money in and out it still runs, and no dialog runs twice.
    void aCardThatIsMissingAgainBringsThePictureOnceMore()
    {
        bool isBack = false;
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing("one"); },
                                                   [&](EstablishAccountDialog *dialog) {
                                                       QVERIFY(withDialog<Small_Money_InOut>(
                                                           [] { cardIsBound(); },
                                                           [&](Small_Money_InOut *inOut) {
                                                               QVERIFY(dialog->isHidden());
                                                               zvtest::Record record;
                                                               cardIsMissing("two");
                                                               QCOMPARE(record.take(), wasHidden);
                                                               isBack = dialog->isVisible();
                                                               QVERIFY(timer()->isActive());
                                                               inOut->close();
                                                           }));
                                                       // It stays, though the one that ran it is
                                                       // about to end.
                                                       QVERIFY(isBack && dialog->isVisible());
                                                       dialog->close();
                                                   }));
        QVERIFY(isBack);
        QVERIFY(!timer()->isActive());
        // The next one runs as the first one did.
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing("three"); },
                                                   [](EstablishAccountDialog *dialog) {
                                                       QVERIFY(dialog->isModal());
                                                       dialog->close();
                                                   }));
        QVERIFY(opening()->isHidden());
        QVERIFY(!opening()->isModal());
    }

    void eachWayOfClosingStopsTheTimer_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("Escape") << true;
        QTest::newRow("the window's own button") << false;
    }
    void eachWayOfClosingStopsTheTimer()
    {
        QFETCH(bool, byEscape);
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing(); },
                                                   [&](EstablishAccountDialog *dialog) {
                                                       QVERIFY(timer()->isActive());
                                                       if (byEscape)
                                                           QTest::keyClick(dialog, Qt::Key_Escape);
                                                       else
                                                           dialog->close();
                                                   }));
        QVERIFY(!timer()->isActive());
        QVERIFY(opening()->isHidden());
    }

    void halfAMinuteAsksAgain()
    {
        QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing(); },
                                                   [&](EstablishAccountDialog *dialog) {
                                                       zvtest::Record record;
                                                       halfMinutePasses();
                                                       halfMinutePasses();
                                                       QCOMPARE(record.take(),
                                                                asksForCard + '\n' + asksForCard);
                                                       QVERIFY(dialog->isVisible());
                                                       dialog->close();
                                                   }));
    }

    // The whole road through the exchange: no card, its picture, the card is bound meanwhile, and
    // the next question closes the picture and opens money in and out.
    void theBoundCardClosesThePictureByItself()
    {
        m_bench.reset();
        m_bench = std::make_unique<zvtest::MarketBench>();
        m_bench->kit()->startOn("/lc/youbika/");
        m_bench->kit()->signIn("token");
        ZvScriptedTransport *exchange = m_bench->exchange();
        exchange->answer(zvPath_pay_hx,
                         ZvScriptedTransport::ok("{\"bound\": false, \"code\": \"one-time\"}"));
        bool wasOpened = false;
        QVERIFY(withDialog<EstablishAccountDialog>(
            [this] {
                call("slot_inputoutput_clicked");
                m_bench->kit()->settle();
            },
            [&](EstablishAccountDialog *dialog) {
                exchange->answer(zvPath_pay_hx,
                                 ZvScriptedTransport::ok(
                                     "{\"bound\": true, \"picturePrefix\": "
                                     "\"http://127.0.0.1:9/\", \"pictureName\": \"appicon\", "
                                     "\"pictureSuffix\": \"png\", \"tail\": \"4321\"}"));
                wasOpened = withDialog<Small_Money_InOut>(
                    [&] {
                        halfMinutePasses();
                        QTRY_VERIFY(!dialog->isVisible());
                    },
                    [&](Small_Money_InOut *inOut) {
                        QVERIFY(!dialog->isVisible());
                        QVERIFY(!timer()->isActive());
                        QCOMPARE(inOut->findChild<QLabel *>("label_bank_number")->text(),
                                 QStringLiteral("尾号：4321"));
                        closeByItsCross(inOut);
                    });
            }));
        QVERIFY(wasOpened);
        QVERIFY(opening()->isHidden());
        QVERIFY(!timer()->isActive());
        QCOMPARE(countOf<Small_Money_InOut>(), 0);
    }

    // The host may end the page while one of its dialogs runs.
    void thePageMayEndUnderADialog_data()
    {
        QTest::addColumn<int>("dialog");
        QTest::newRow("overview") << 0;
        QTest::newRow("in and out") << 1;
        QTest::newRow("account") << 2;
    }
    void thePageMayEndUnderADialog()
    {
        QFETCH(int, dialog);
        const auto end = [this](QDialog *) { m_bench->market.reset(); };
        if (dialog == 0)
            QVERIFY(withDialog<Small_Money_Overview>([this] { call("slot_moneyOverview_clicked"); },
                                                     end));
        else if (dialog == 1)
            QVERIFY(withDialog<Small_Money_InOut>([] { cardIsBound(); }, end));
        else
            QVERIFY(withDialog<EstablishAccountDialog>([] { cardIsMissing(); }, end));
        QVERIFY(!m_bench->market);
    }
};

ZV_TEST(MarketWidgetMoneyTest)
#include "test_market_widget_money.moc"
