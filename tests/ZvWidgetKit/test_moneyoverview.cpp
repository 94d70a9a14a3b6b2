#include "ZvWidgetKit/moneyoverviewdialog.h"
#include "ZvWidgetKit/small_money_overview.h"

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "support/testregistry.h"

#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QtTest/QtTest>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvUBMyAcount account()
{
    ZvUBMyAcount::Data data;
    data.accountNumber = QStringLiteral("LC00000042");
    data.phone = QStringLiteral("13912345678");
    data.name = QStringLiteral("欧阳青石");
    return ZvUBMyAcount(data);
}

ZvUBCapInfo money(qint64 total, qint64 held, qint64 frozen, qint64 available)
{
    ZvUBCapInfo::Data data;
    data.totalAssets = total;
    data.heldMarketValue = held;
    data.frozenMoney = frozen;
    data.availableMoney = available;
    return ZvUBCapInfo(data);
}

QString textOf(const QWidget &dialog, const char *name)
{
    const QLabel *label = dialog.findChild<QLabel *>(QLatin1String(name));
    return label ? label->text() : QStringLiteral("no such label");
}

} // namespace

class MoneyOverviewTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        cache()->storeMyAccount(account());
        cache()->storeCapInfo(money(123456, 2500000000, 99, 30000000000000));
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void theFormIsAsBigAsItsPicture()
    {
        const Small_Money_Overview dialog(nullptr);
        QCOMPARE(dialog.size(), QSize(600, 380));
        QVERIFY(dialog.testAttribute(Qt::WA_DeleteOnClose));
    }

    void captions_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::newRow("account") << "label_account" << QStringLiteral("交易商");
        QTest::newRow("phone") << "label_phone" << QStringLiteral("电话");
        QTest::newRow("name") << "label_name" << QStringLiteral("姓名");
        QTest::newRow("total") << "label_money_total" << QStringLiteral("总资产");
        QTest::newRow("hold") << "label_money_hold" << QStringLiteral("持有市值");
        QTest::newRow("freeze") << "label_money_freeze" << QStringLiteral("冻结资金");
        QTest::newRow("available") << "label_money_available" << QStringLiteral("可用资金");
    }
    void captions()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        const Small_Money_Overview dialog(nullptr);
        QCOMPARE(textOf(dialog, qPrintable(name)), text);
    }

    void tellsWhoIsSignedIn()
    {
        const Small_Money_Overview dialog(nullptr);
        QCOMPARE(textOf(dialog, "label_account_value"), QStringLiteral("LC00000042"));
        QCOMPARE(textOf(dialog, "label_phone_value"), QStringLiteral("13912345678"));
        QCOMPARE(textOf(dialog, "label_name_value"), QStringLiteral("欧阳青石"));
    }

    void everyAmountEndsInYuan()
    {
        const Small_Money_Overview dialog(nullptr);
        QCOMPARE(textOf(dialog, "label_money_total_value"), QStringLiteral("1234.56元"));
        QCOMPARE(textOf(dialog, "label_money_hold_value"), QStringLiteral("2500.00万元"));
        QCOMPARE(textOf(dialog, "label_money_freeze_value"), QStringLiteral("0.99元"));
        QCOMPARE(textOf(dialog, "label_money_available_value"), QStringLiteral("3000.00亿元"));
    }

    void nobodyIsShownAsTheCacheHasIt()
    {
        cache()->storeMyAccount(ZvUBMyAcount());
        cache()->storeCapInfo(ZvUBCapInfo());
        const Small_Money_Overview dialog(nullptr);
        QCOMPARE(textOf(dialog, "label_account_value"), QString());
        QCOMPARE(textOf(dialog, "label_money_total_value"), QStringLiteral("0.00元"));
    }

    void moneyThatChangesLeavesTheFigures()
    {
        Small_Money_Overview dialog(nullptr);
        dialog.show();
        cache()->storeCapInfo(money(1, 2, 3, 4));
        cache()->storeMyAccount(ZvUBMyAcount());
        QCoreApplication::processEvents();
        QCOMPARE(textOf(dialog, "label_money_total_value"), QStringLiteral("1234.56元"));
        QCOMPARE(textOf(dialog, "label_name_value"), QStringLiteral("欧阳青石"));
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    }

    void theBackgroundFollowsThePlatform()
    {
        auto *config = ZvServerConfig::getZvServerConfigInstance();
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            config->setCurrentPlatform(platform);
            const Small_Money_Overview dialog(nullptr);
            QCOMPARE(dialog.styleSheet(),
                     QStringLiteral("QDialog{border-image: url(%1);}")
                         .arg(config->getPathOf_zijingzonglanPNG()));
            QVERIFY(QFile::exists(config->getPathOf_zijingzonglanPNG()));
        }
    }

    void theCrossAcceptsAndEndsTheDialog()
    {
        QPointer<Small_Money_Overview> dialog = new Small_Money_Overview(nullptr);
        auto *cross = dialog->findChild<QToolButton *>("toolButton_close");
        QCOMPARE(cross->text(), QString());
        QCOMPARE(cross->styleSheet(),
                 QStringLiteral("QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
                                "QToolButton:hover{border-image: "
                                "url(:/icons/smallwidget/close2.png)}"));
        QSignalSpy accepted(dialog, &QDialog::accepted);
        QTimer::singleShot(0, cross, [cross] { QTest::mouseClick(cross, Qt::LeftButton); });
        QCOMPARE(dialog->exec(), int(QDialog::Accepted));
        QCOMPARE(accepted.count(), 1);
        QTRY_VERIFY(!dialog);
    }

    void longTextsFit()
    {
        ZvUBMyAcount::Data data;
        data.name = QString(24, QChar(0x9f98));
        cache()->storeMyAccount(ZvUBMyAcount(data));
        cache()->storeCapInfo(money(9000000000000000, -9000000000000000, 0, 1));
        Small_Money_Overview dialog(nullptr);
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
        dialog.show();
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            QVERIFY2(label->sizeHint().width() <= label->width(), qPrintable(label->objectName()));
            QVERIFY2(label->sizeHint().height() <= label->height(),
                     qPrintable(label->objectName()));
        }
    }

    void whatTheServerWroteIsNoMarkup()
    {
        const QString name = QStringLiteral("<b>甲</b><img src='x'>&amp;");
        ZvUBMyAcount::Data data;
        data.accountNumber = data.phone = data.name = name;
        cache()->storeMyAccount(ZvUBMyAcount(data));
        const Small_Money_Overview dialog(nullptr);
        int values = 0;
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            if (!label->objectName().endsWith(QLatin1String("_value")))
                continue;
            ++values;
            QCOMPARE(label->textFormat(), Qt::PlainText);
        }
        QCOMPARE(values, 7);
        QCOMPARE(textOf(dialog, "label_name_value"), name);
    }

    void theOldDialogKeepsItsSamples_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("figure");
        QTest::newRow("total") << "label_totalAssets"
                               << "3000000";
        QTest::newRow("frozen") << "label_freezeFunds"
                                << "4536";
        QTest::newRow("available") << "label_availbleFunds"
                                   << "543";
        QTest::newRow("held") << "label_holdMarketCaoitalization"
                              << "32323";
        QTest::newRow("with") << "label_withCapitalMoney"
                              << "6546";
        QTest::newRow("sum") << "label_AccumulativeMoney"
                             << "5345";
        QTest::newRow("week") << "label_weekAward"
                              << "34534";
    }
    void theOldDialogKeepsItsSamples()
    {
        QFETCH(QString, name);
        QFETCH(QString, figure);
        const MoneyOverviewDialog dialog(nullptr);
        const QString value = name + QStringLiteral("_value");
        QCOMPARE(textOf(dialog, qPrintable(value)), figure);
        QCOMPARE(dialog.findChild<QLabel *>(value)->styleSheet(),
                 QStringLiteral("font: 12pt \"ADMUI3Lg\";"));
        QVERIFY(!textOf(dialog, qPrintable(name)).isEmpty());
    }

    void theOldDialogsCaptionsAreTheUsualOnes()
    {
        const MoneyOverviewDialog dialog(nullptr);
        QStringList captions;
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            if (!label->objectName().endsWith(QLatin1String("_value")))
                captions += label->text();
        }
        captions.sort();
        QStringList expected{QStringLiteral("总资产"),   QStringLiteral("冻结资金"),
                             QStringLiteral("可用资金"), QStringLiteral("持有市值"),
                             QStringLiteral("电话"),     QStringLiteral("姓名"),
                             QStringLiteral("交易商")};
        expected.sort();
        QCOMPARE(captions, expected);
    }

    void theOldDialogCloses()
    {
        MoneyOverviewDialog dialog(nullptr);
        QCOMPARE(dialog.styleSheet(),
                 QStringLiteral("QDialog{border-image: url(:/icons/money1.png)};\n\n"));
        auto *cross = dialog.findChild<QPushButton *>("pushButton_close");
        QCOMPARE(cross->styleSheet(),
                 QStringLiteral("QPushButton{background-color:rgb(212,59,51);"
                                "background-image:url(:/icons/close1.png);border-style:soli}"
                                "QPushButton:hover{background-color:rgb(212,59,51);"
                                "background-image:url(:/icons/close2.png);border-style:soli}"));
        dialog.show();
        QTest::mouseClick(cross, Qt::LeftButton);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        const QMetaObject *meta = dialog.metaObject();
        QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
        QCOMPARE(meta->method(meta->methodOffset()).methodSignature(),
                 QByteArray("closeClicked()"));
        QCOMPARE(meta->method(meta->methodOffset()).access(), QMetaMethod::Private);
    }
};

ZV_TEST(MoneyOverviewTest)
#include "test_moneyoverview.moc"
