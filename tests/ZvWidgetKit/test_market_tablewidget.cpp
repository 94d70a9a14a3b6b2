#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "layoutitems.h"
#include "marketpage.h"
#include "marketrows.h"
#include "support/testregistry.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QtTest/QtTest>

#include <limits>

using namespace zvtest;

// What the page is made of, and its totals.
class MarketTableWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void slotsStandInTheirOrder()
    {
        const QMetaObject &meta = Market_TableWidget::staticMetaObject;
        QCOMPARE(meta.superClass(), &QWidget::staticMetaObject);
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            QCOMPARE(method.access(), QMetaMethod::Private);
            methods << QString::fromLatin1(method.methodSignature() + ' '
                                           + method.parameterNames().join(' '));
        }
        const QStringList expected{
            "slot_buttonGroupIsClicked(QAbstractButton*) button",
            "slot_updateTotalQtyAndAmount() ",
            "slot_updateMarketInfoList() ",
            "slot_updateCollectionTypeList() ",
            "slot_updateMarketList() ",
            "slot_updateCollectionTypeButtons(QString) server",
            "adjustGuidePagePos() ",
            "slot_turnoverOption_clicked() ",
            "slot_addOption_succeed() ",
            "slot_addOption_failed(QString) msg",
            "slot_removeOption_succeed() ",
            "slot_removeOption_failed(QString) msg",
            "slot_syncOptionWhenLogged() ",
            "slot_syncOptional_succeed(QStringList) optionList",
            "slot_syncOptional_failed(QString) msg",
        };
        QCOMPARE(methods.join('\n'), expected.join('\n'));
    }

    void pageIsTableOverFooter()
    {
        MarketPage page;
        const QLayout *layout = page.widget.layout();
        QVERIFY(qobject_cast<const QVBoxLayout *>(layout));
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 0);
        QCOMPARE(layout->count(), 2);
        QVERIFY(qobject_cast<Collection_TableView *>(layout->itemAt(0)->widget()));
        const QWidget *footer = layout->itemAt(1)->widget();
        QCOMPARE(footer->height(), 40);
        QCOMPARE(footer->minimumHeight(), 40);
        QCOMPARE(footer->maximumHeight(), 40);
        QCOMPARE(page.table()->geometry(), QRect(0, 0, 1200, 660));
        QCOMPARE(footer->geometry(), QRect(0, 660, 1200, 40));
    }

    void footerIsLaidOut()
    {
        const Market_TableWidget fresh;
        const QWidget *footer = fresh.layout()->itemAt(1)->widget();
        const QLayout *row = footer->layout();
        QVERIFY(qobject_cast<const QHBoxLayout *>(row));
        QCOMPARE(row->contentsMargins(), QMargins());
        QCOMPARE(row->spacing(), 0);
        const QStringList expected{"20",        "行情",   "1", "[]", "1",      "自选",
                                   "stretch 1", "交易量", "0", "50", "交易额", "0",
                                   "50",        "总市值", "0", "50"};
        QCOMPARE(itemsOf(row).join('|'), expected.join('|'));
        const QLayout *types = row->itemAt(3)->widget()->layout();
        QVERIFY(qobject_cast<const QHBoxLayout *>(types));
        QCOMPARE(types->contentsMargins(), QMargins());
        QCOMPARE(types->spacing(), 0);
        QCOMPARE(types->count(), 0);

        const MarketPage page;
        QCOMPARE(page.button("行情")->mapTo(&page.widget, QPoint()).x(), 20);
        QCOMPARE(page.button("自选")->mapTo(&page.widget, QPoint()).x(), 102);
    }

    void buttonsStartOnTheWholeMarket()
    {
        MarketPage page;
        QCOMPARE(page.buttonTexts(), (QStringList{"行情", "自选"}));
        QVERIFY(page.group()->exclusive());
        QCOMPARE(page.checked(), QStringLiteral("行情"));
        const QString sheet
            = ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketFooterButton();
        QVERIFY(!sheet.isEmpty());
        cache()->storeCollectionTypeList(stampsAndCoins());
        const QList<QAbstractButton *> buttons = page.group()->buttons();
        QCOMPARE(buttons.size(), 4);
        for (const QAbstractButton *button : buttons) {
            QVERIFY(button->isCheckable());
            QCOMPARE(button->minimumSize(), QSize(80, 25));
            QCOMPARE(button->maximumSize(), QSize(80, 25));
            QCOMPARE(button->styleSheet(), sheet);
        }
    }

    void sheetsAndColoursAreSetToTheLetter()
    {
        MarketPage page;
        for (const char *caption : {"交易量", "交易额", "总市值"}) {
            QLabel *value = page.valueOf(caption);
            QVERIFY(value);
            QCOMPARE(value->styleSheet(),
                     QStringLiteral("QLabel{color:rgb(226,239,51);border-color:rgb(30,33,38)}"));
            QLabel *label = nullptr;
            for (QLabel *each : page.widget.findChildren<QLabel *>()) {
                if (each->text() == caption)
                    label = each;
            }
            QCOMPARE(label->styleSheet(),
                     QStringLiteral("QLabel{color:rgb(255,255,255);border-color:rgb(30,33,38)}"));
        }
        QWidget *footer = page.widget.layout()->itemAt(1)->widget();
        QCOMPARE(footer->styleSheet(), QStringLiteral("font-style: normal;font-size: 10pt;"));
        QVERIFY(footer->autoFillBackground());
        const QImage picture = page.widget.grab().toImage();
        QCOMPARE(picture.pixelColor(5, 690), QColor(30, 33, 38));
        page.table()->hide();
        footer->hide();
        QCOMPARE(page.widget.grab().toImage().pixelColor(600, 300), QColor(21, 21, 21));
    }

    void keysReachTheButtons()
    {
        MarketPage page;
        cache()->storeCollectionTypeList(stampsAndCoins());
        QApplication::setActiveWindow(&page.widget);
        QVERIFY(QTest::qWaitForWindowActive(&page.widget));
        QTRY_VERIFY(page.button("钱币")->isVisible());
        const auto press = [&page](Qt::Key key) {
            QTest::keyClick(page.widget.focusWidget(), key);
            const auto *button = qobject_cast<QPushButton *>(page.widget.focusWidget());
            return button ? button->text() : QString();
        };
        page.table()->setFocus();
        press(Qt::Key_Tab);
        QVERIFY(page.guide()->isAncestorOf(page.widget.focusWidget()));
        // The group is one stop of the Tab key: its checked button, from which the arrows choose.
        QCOMPARE(press(Qt::Key_Tab), QStringLiteral("邮票"));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("钱币"));
        QCOMPARE(page.checked(), QStringLiteral("钱币"));
        QCOMPARE(press(Qt::Key_Right), QStringLiteral("自选"));
        QCOMPARE(page.checked(), QStringLiteral("自选"));
        QVERIFY(engine()->getIsOptionalCollectionIds());
        press(Qt::Key_Tab);
        QVERIFY(page.table()->hasFocus());
        QTest::keyClick(page.widget.focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(page.widget.focusWidget(), page.button("自选"));
        QTest::keyClick(page.widget.focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        QVERIFY(page.guide()->isAncestorOf(page.widget.focusWidget()));
        page.click("钱币");
        QCOMPARE(press(Qt::Key_Tab), QStringLiteral("钱币"));
        // The servers of a new list stand in their place, too.
        cache()->storeMarketInfo({{"邮币卡", "/lc/a/"}, {"艺术品", "/lc/b/"}});
        QCoreApplication::processEvents();
        page.table()->setFocus();
        press(Qt::Key_Tab);
        for (const char *server : {"邮币卡", "艺术品"}) {
            press(Qt::Key_Tab);
            QCOMPARE(page.widget.focusWidget()->accessibleName(), QString(server));
        }
        QCOMPARE(press(Qt::Key_Tab), QStringLiteral("钱币"));
    }

    void aClickLeavesTheKeysToTheTable()
    {
        MarketPage page;
        QApplication::setActiveWindow(&page.widget);
        QVERIFY(QTest::qWaitForWindowActive(&page.widget));
        page.table()->setFocus();
        page.click("自选");
        QVERIFY(page.table()->hasFocus());
    }

    void totalsFollowTheMarket()
    {
        MarketPage page;
        ZvUBObject::Data data = collectionData(1001);
        data.volume = 12345;
        data.amount = 123456700;
        data.latest = 1000000;
        data.listed = 100000;
        cache()->storeMarketList(QList<ZvUBObject>{ZvUBObject(data)});
        QCOMPARE(page.valueOf("交易量")->text(), QStringLiteral("12345"));
        QCOMPARE(page.valueOf("交易额")->text(), QStringLiteral("123.46万"));
        QCOMPARE(page.valueOf("总市值")->text(), QStringLiteral("10.00亿"));
    }

    void totalsAreOfTheMarketWhateverIsShown()
    {
        MarketPage page;
        MarketPage::storeRows();
        const QString all = page.valueOf("交易量")->text();
        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(page.ids().size(), 3);
        MarketPage::storeRows();
        QCOMPARE(page.valueOf("交易量")->text(), all);
    }

    void totalsThatDoNotFitStayAtTheirEnd()
    {
        MarketPage page;
        ZvUBObject::Data data = collectionData(1001);
        data.volume = qint64(std::numeric_limits<int>::max()) + 1;
        cache()->storeMarketList(QList<ZvUBObject>{ZvUBObject(data)});
        QCOMPARE(page.valueOf("交易量")->text(), QStringLiteral("2147483647"));
    }

    void totalsComeBeforeRows()
    {
        MarketPage page;
        QString atReset;
        connect(page.table()->model(), &QAbstractItemModel::modelReset, this,
                [&] { atReset = page.valueOf("交易量")->text(); });
        MarketPage::storeRows();
        QVERIFY(atReset != "0");
        QCOMPARE(atReset, page.valueOf("交易量")->text());
    }

    void hiddenPageKeepsItsTotalsUntilTheNextAnswer()
    {
        MarketPage page;
        MarketPage::storeRows();
        const QString before = page.valueOf("交易量")->text();
        page.widget.hide();
        cache()->storeMarketList(QList<ZvUBObject>{rowOfType(1001, 1)});
        QCOMPARE(page.valueOf("交易量")->text(), before);
        page.widget.show();
        QCOMPARE(page.valueOf("交易量")->text(), before);
        cache()->storeMarketList(QList<ZvUBObject>{rowOfType(1001, 1)});
        QVERIFY(page.valueOf("交易量")->text() != before);
    }

    void pageThatWasNeverShownKeepsItsTotals()
    {
        Market_TableWidget widget;
        MarketPage::storeRows();
        for (const QLabel *label : widget.findChildren<QLabel *>())
            QVERIFY(!label->text().contains("万"));
    }

    void compositeStandsInTheWholeMarketOnly()
    {
        MarketPage page;
        cache()->storeComposite(composite());
        MarketPage::storeRows();
        QVERIFY(page.ids().contains("-1"));
        QCOMPARE(page.ids().size(), 6);
        // First in the list, whatever place the sort gives it.
        page.table()->sortByColumn(-1, Qt::AscendingOrder);
        QCOMPARE(page.ids().first(), QStringLiteral("-1"));
        page.table()->sortByColumn(1, Qt::AscendingOrder);

        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(page.ids(), (QStringList{"1001", "1002", "1003"}));
        cache()->setMarketListOption({"1005"}, QString());
        page.click("自选");
        QCOMPARE(page.ids(), QStringList{"1005"});
        page.click("行情");
        QVERIFY(page.ids().contains("-1"));
        cache()->storeNoComposite();
        QCOMPARE(page.ids().size(), 5);
    }

    void pageEndsWithItsParts()
    {
        auto page = std::make_unique<MarketPage>();
        cache()->storeCollectionTypeList(stampsAndCoins());
        const QPointer<QWidget> table = page->table();
        const QPointer<QWidget> guide = page->guide();
        const QPointer<QWidget> button = page->button("邮票");
        QVERIFY(table && guide && button);
        page.reset();
        QVERIFY(!table && !guide && !button);
        MarketPage::storeRows();
        cache()->storeCollectionTypeList({});
    }
};

ZV_TEST(MarketTableWidgetTest)
#include "test_market_tablewidget.moc"
