#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"
#include "ZvWidgetKit/dealwidget_prepay_tableview.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QCompleter>
#include <QHBoxLayout>
#include <QStackedWidget>
#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

struct Text {
    const char *name;
    const char *text;
};

constexpr Text captions[] = {
    {"label_availableMoney", "可用资金："},
    {"label_upperLimitPrice", "涨停"},
    {"label_priceLimit", "跌停"},
    {"label_latest", "最新"},
    {"label_rate", "涨幅"},
    {"label_sell5", "卖五"},
    {"label_sell4", "卖四"},
    {"label_sell3", "卖三"},
    {"label_sell2", "卖二"},
    {"label_sell1", "卖一"},
    {"label_buy1", "买一"},
    {"label_buy2", "买二"},
    {"label_buy3", "买三"},
    {"label_buy4", "买四"},
    {"label_buy5", "买五"},
    {"label_ticketTypeCount_cap", "持票类型数量"},
    {"label_cap", "持有市值"},
    {"label_profit", "盈亏"},
    {"label_remainder", "可用资金"},
    {"label_assets", "总资产"},
    {"label_ticketTypeCount_deal", "成交类型数量"},
    {"label_count_buy", "买入量"},
    {"label_poundage_buy", "买入手续费"},
    {"label_count_sell", "卖出量"},
    {"label_poundage_sell", "卖出手续费"},
    {"label_count_total", "总量"},
    {"label_poundage_total", "总手续费"},
    {"label_deal_CountChange", "增减仓"},
    {"label_deal_profit", "卖出盈亏"},
};

constexpr Text buttons[] = {
    {"pushButton_enter", "预埋买入"},
    {"pushButton_out", "预埋卖出"},
    {"pushButton_price_sub", "-"},
    {"pushButton_price_add", "+"},
    {"pushButton_count_sub", "-"},
    {"pushButton_count_add", "+"},
    {"pushButton_reset", "重填"},
    {"pushButton_buysell", "买入"},
    {"pushButton_capData", "持仓汇总"},
    {"pushButton_dealData", "成交汇总"},
    {"pushButton_cashData", "资金"},
    {"pushButton_selectAllPrePayItem", "全选"},
    {"pushButton_deselectAllPrePayItem", "全不选"},
    {"pushButton_deletePrePayItem", "删除"},
    {"pushButton_sendPrePayItem", "发送"},
};

const QStringList stepButtons{"pushButton_price_sub", "pushButton_price_add",
                              "pushButton_count_sub", "pushButton_count_add"};
const QStringList dataButtons{"pushButton_capData", "pushButton_dealData", "pushButton_cashData"};
const QStringList prepayButtons{"pushButton_selectAllPrePayItem",
                                "pushButton_deselectAllPrePayItem", "pushButton_deletePrePayItem",
                                "pushButton_sendPrePayItem"};

const QStringList directionButtons{"pushButton_enter", "pushButton_out"};

// What is there in one mode and not in the other.
const QStringList limitsOfOrders{"label_canBuySell", "label_canBuySellValue",
                                 "label_availableMoney", "label_availableMoneyValue"};

const QStringList outerLevels{"label_buy4",  "label_buy4_price",  "label_buy4_qty",
                              "label_buy5",  "label_buy5_price",  "label_buy5_qty",
                              "label_sell4", "label_sell4_price", "label_sell4_qty",
                              "label_sell5", "label_sell5_price", "label_sell5_qty"};
const QStringList spacers{"label_hide1", "label_hide2", "label_hide9", "label_hide10"};

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

// The page itself: its form, its modes, its sub-pages and how it fits into the window.
class DealWidgetBuySellTest : public QObject
{
    Q_OBJECT

private:
    static QRect placeIn(const DealWidget_BuySell *page, const QWidget *widget)
    {
        return {widget->mapTo(page, QPoint()), widget->size()};
    }

private slots:
    void captionsAndButtons()
    {
        const TicketBench bench;
        for (const Text &caption : captions)
            QCOMPARE(bench.text(caption.name), QString::fromUtf8(caption.text));
        for (const Text &button : buttons) {
            QCOMPARE(bench.button(button.name)->text(), QString::fromUtf8(button.text));
            QCOMPARE(bench.button(button.name)->focusPolicy(), Qt::NoFocus);
        }
        QCOMPARE(bench.page->findChildren<QPushButton *>().size(), int(std::size(buttons)));
    }

    void nothingIsKnownAtFirst()
    {
        const KitBench kit;
        const DealWidget_BuySell page;
        for (const QLabel *each : page.findChildren<QLabel *>()) {
            const QString name = each->objectName();
            if (name.endsWith("_value") || name.endsWith("Value") || name.endsWith("_qty")
                || name.endsWith("_price"))
                QCOMPARE(each->text(), QStringLiteral("--"));
        }
    }

    void fields()
    {
        const TicketBench bench;
        for (const QComboBox *combo : {bench.codes(), bench.names()}) {
            QVERIFY(combo->isEditable());
            QCOMPARE(combo->insertPolicy(), QComboBox::NoInsert);
            QCOMPARE(combo->completer()->completionMode(), QCompleter::PopupCompletion);
        }
        QVERIFY(bench.names()->lineEdit()->alignment() & Qt::AlignLeft);
        QCOMPARE(bench.price()->minimum(), 0.0);
        QCOMPARE(bench.price()->maximum(), 100000000.0);
        QCOMPARE(bench.price()->singleStep(), 0.01);
        QCOMPARE(bench.price()->decimals(), 2);
        QCOMPARE(bench.price()->buttonSymbols(), QAbstractSpinBox::NoButtons);
        QCOMPARE(bench.count()->minimum(), 0);
        QCOMPARE(bench.count()->maximum(), 100000000);
        QCOMPARE(bench.count()->buttonSymbols(), QAbstractSpinBox::NoButtons);
    }

    void checkedAtFirst()
    {
        const TicketBench bench;
        for (const char *name : {"pushButton_enter", "pushButton_out", "pushButton_capData",
                                 "pushButton_dealData", "pushButton_cashData"})
            QVERIFY2(bench.button(name)->isCheckable(), name);
        QVERIFY(bench.button("pushButton_enter")->isChecked());
        QVERIFY(!bench.button("pushButton_out")->isChecked());
        QVERIFY(bench.button("pushButton_capData")->isChecked());
        QVERIFY(!bench.button("pushButton_dealData")->isChecked());
        QVERIFY(bench.button("pushButton_cashData")->isHidden());
    }

    void sizesOfButtons()
    {
        const TicketBench bench;
        for (const QString &name : stepButtons) {
            QCOMPARE(bench.button(name)->minimumSize(), QSize(20, 20));
            QCOMPARE(bench.button(name)->maximumSize(), QSize(20, 20));
        }
        for (const QString &name : dataButtons + prepayButtons + directionButtons) {
            QCOMPARE(bench.button(name)->minimumSize(), QSize(70, 24));
            QCOMPARE(bench.button(name)->maximumSize(), QSize(70, 24));
        }
        for (const char *name : {"pushButton_buysell", "pushButton_reset"})
            QCOMPARE(bench.button(name)->minimumSize(), QSize(70, 20));
    }

    void styles_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::newRow("1") << ZvServerConfig::ChengHu;
        QTest::newRow("2") << ZvServerConfig::LanChuan;
    }

    void styles()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        const TicketBench bench(platform);
        for (const QString &name : dataButtons)
            QCOMPARE(bench.button(name)->styleSheet(), config()->getStyleOf_DealOtherButton());
        for (const QString &name : prepayButtons + directionButtons)
            QCOMPARE(bench.button(name)->styleSheet(), config()->getStyleOf_DealGrayRoundButton());
        const auto colour = [&](const char *name) {
            return bench.named(name)->palette().color(QPalette::Window).name();
        };
        for (const char *name : {"widget_ticket", "widget_quote", "widget_limits"})
            QCOMPARE(colour(name), config()->getStyleOf_DealPaletteShallowPanel());
        for (const char *name : {"widget_top_capData", "widget_top_dealData", "widget_top_prepay"})
            QCOMPARE(colour(name), config()->getStyleOf_DealPaletteShallowTop());
        QCOMPARE(colour("widget_upper"), config()->getStyleOf_DealPaletteDeep());
    }

    void tablesFillTheirPlaces()
    {
        const TicketBench bench;
        const auto holds = [&](const char *place, QTableView *view) {
            const auto *layout = qobject_cast<QHBoxLayout *>(bench.named(place)->layout());
            return view && layout && layout->count() == 1 && layout->itemAt(0)->widget() == view
                && layout->contentsMargins() == QMargins() && layout->spacing() == 0;
        };
        QVERIFY(holds("widget_tableViewContainer_capData",
                      bench.page->findChild<DealWidget_BuySell_CapTableView *>()));
        QVERIFY(holds("widget_tableViewContainer_dealData",
                      bench.page->findChild<DealWidget_BuySell_DealTableView *>()));
        QVERIFY(holds("widget_tableViewContainer_prepay", bench.prepared()));
        QVERIFY(qobject_cast<DealWidget_PrePay_TableModel *>(bench.prepared()->model()));
    }

    void subPages()
    {
        TicketBench bench;
        const auto *stack = bench.named<QStackedWidget>("stackedWidget_buysell_data");
        QCOMPARE(stack->currentWidget()->objectName(), QStringLiteral("page_capData"));
        bench.click("pushButton_dealData");
        QCOMPARE(stack->currentWidget()->objectName(), QStringLiteral("page_dealData"));
        QVERIFY(bench.button("pushButton_dealData")->isChecked());
        QVERIFY(!bench.button("pushButton_capData")->isChecked());
        // The same again stays checked, although the button toggles by itself.
        bench.click("pushButton_dealData");
        QVERIFY(bench.button("pushButton_dealData")->isChecked());
        bench.click("pushButton_capData");
        QCOMPARE(stack->currentWidget()->objectName(), QStringLiteral("page_capData"));
        QVERIFY(!bench.button("pushButton_dealData")->isChecked());
        // Nobody reaches the third one.
        bench.button("pushButton_cashData")->click();
        QCOMPARE(stack->currentWidget()->objectName(), QStringLiteral("page_cashData"));
        QVERIFY(bench.button("pushButton_cashData")->isChecked());
        QVERIFY(!bench.button("pushButton_capData")->isChecked());
    }

    void theEngineHearsWhatIsOnView()
    {
        TicketBench bench;
        bench.page->hide();
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::changedToTransctionHidden()"});
        bench.page->show();
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::changedToTransctionVisible()"});
        bench.click("pushButton_dealData");
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::changedToGatherVisible()"});
        bench.click("pushButton_capData");
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::changedToGatherHidden()"});
    }

    void buyAndSell()
    {
        TicketBench bench;
        QCOMPARE(bench.text("label_buysellGoods"), QStringLiteral("买入商品"));
        for (const bool sells : {true, false}) {
            bench.page->setTicketMode(sells ? DealWidget_BuySell::SellMode
                                            : DealWidget_BuySell::BuyMode);
            QCOMPARE(bench.button("pushButton_buysell")->text(), sells ? "卖出" : "买入");
            QCOMPARE(bench.text("label_buysellGoods"), sells ? "卖出商品" : "买入商品");
            QCOMPARE(bench.text("label_buysellPrice"), sells ? "卖出价格" : "买入价格");
            QCOMPARE(bench.text("label_buysellCount"), sells ? "卖出数量" : "买入数量");
            QCOMPARE(bench.text("label_canBuySell"), sells ? "可卖数量：" : "可买数量：");
            const QString style = sells ? config()->getStyleOf_DealSellButton()
                                        : config()->getStyleOf_DealBuyButton();
            QCOMPARE(bench.button("pushButton_buysell")->styleSheet(), style);
            QCOMPARE(bench.button("pushButton_reset")->styleSheet(), style);
            QVERIFY(bench.label("label_buysellGoods")->isVisible());
            QVERIFY(bench.button("pushButton_enter")->isHidden());
            QVERIFY(bench.button("pushButton_out")->isHidden());
            for (const QString &name : limitsOfOrders)
                QVERIFY(bench.label(name)->isVisible());
            QCOMPARE(bench.named<QStackedWidget>("stackedWidget_buysell_prepay")
                         ->currentWidget()
                         ->objectName(),
                     QStringLiteral("page_buysell"));
        }
    }

    void prepared()
    {
        TicketBench bench;
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        QVERIFY(bench.label("label_buysellGoods")->isHidden());
        QVERIFY(bench.button("pushButton_enter")->isVisible());
        QVERIFY(bench.button("pushButton_out")->isVisible());
        for (const QString &name : limitsOfOrders)
            QVERIFY(bench.label(name)->isHidden());
        QVERIFY(bench.named("page_prepay")->isVisible());
        QCOMPARE(bench.named<QStackedWidget>("stackedWidget_buysell_prepay")->currentIndex(), 1);
        QCOMPARE(bench.button("pushButton_buysell")->text(), QStringLiteral("买入"));

        // A second click on a checked button leaves it checked.
        for (int turn = 0; turn < 2; ++turn) {
            bench.click("pushButton_out");
            QVERIFY(bench.button("pushButton_out")->isChecked());
            QVERIFY(!bench.button("pushButton_enter")->isChecked());
            QCOMPARE(bench.button("pushButton_buysell")->text(), QStringLiteral("卖出"));
            QCOMPARE(bench.text("label_buysellPrice"), QStringLiteral("卖出价格"));
            QCOMPARE(bench.button("pushButton_reset")->styleSheet(),
                     config()->getStyleOf_DealSellButton());
        }
        // The direction is remembered over the other modes.
        bench.page->setTicketMode(DealWidget_BuySell::BuyMode);
        QCOMPARE(bench.button("pushButton_buysell")->text(), QStringLiteral("买入"));
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        QCOMPARE(bench.button("pushButton_buysell")->text(), QStringLiteral("卖出"));
        for (int turn = 0; turn < 2; ++turn) {
            bench.click("pushButton_enter");
            QVERIFY(bench.button("pushButton_enter")->isChecked());
            QVERIFY(!bench.button("pushButton_out")->isChecked());
            QCOMPARE(bench.button("pushButton_buysell")->text(), QStringLiteral("买入"));
        }
    }

    // Not even what stands still in the fields is looked at again.
    void aModeThatIsSetChangesNothing()
    {
        TicketBench bench;
        bench.typePrice("100");
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        bench.page->setTicketMode(DealWidget_BuySell::BuyMode);
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        bench.page->setTicketMode(DealWidget_BuySell::BuyMode);
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
    }

    void levelsByHeight_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("all");
        QTest::newRow("small") << 600 << false;
        QTest::newRow("780") << 780 << false;
        QTest::newRow("781") << 781 << true;
        QTest::newRow("large") << 1440 << true;
    }

    void levelsByHeight()
    {
        QFETCH(int, height);
        QFETCH(bool, all);
        const TicketBench bench;
        for (const int before : {all ? 700 : 1000, height}) {
            pool()->slot_adjustSize(QSize(5000, before));
            const bool isAll = before > 780;
            for (const QString &name : outerLevels)
                QCOMPARE(bench.label(name)->isVisible(), isAll);
            for (const QString &name : spacers)
                QCOMPARE(bench.label(name)->isVisible(), !isAll);
            for (const char *name : {"label_buy3", "label_sell3_qty", "label_sell1_price"})
                QVERIFY(bench.label(name)->isVisible());
        }
    }

    // The lower half of the window is 226 or 307 pixels high at least; its pages have what a column
    // of buttons leaves of 1366 pixels.
    void fitsIntoItsHalf_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("mainHeight");
        QTest::addColumn<int>("mode");
        for (const int mode : {0, 1, 2}) {
            QTest::addRow("low %d", mode) << 226 << 768 << mode;
            QTest::addRow("high %d", mode) << 307 << 1080 << mode;
        }
    }

    void fitsIntoItsHalf()
    {
        QFETCH(int, height);
        QFETCH(int, mainHeight);
        QFETCH(int, mode);
        TicketBench bench;
        pool()->slot_adjustSize(QSize(1366, mainHeight));
        bench.page->setTicketMode(mode);
        QCoreApplication::processEvents();
        QVERIFY2(bench.page->minimumSizeHint().height() <= height,
                 qPrintable(QString::number(bench.page->minimumSizeHint().height())));
        QVERIFY(bench.page->minimumSizeHint().width() <= 1000);
        bench.page->resize(1242, height);
        QCoreApplication::processEvents();
        QCOMPARE(bench.page->size(), QSize(1242, height));

        // The ticket at the left, the levels beside it, the tables below both.
        const QRect ticket = placeIn(bench.page.get(), bench.named("widget_ticket"));
        const QRect quote = placeIn(bench.page.get(), bench.named("widget_quote"));
        const QRect limits = placeIn(bench.page.get(), bench.named("widget_limits"));
        const QRect lower = placeIn(bench.page.get(), bench.named("stackedWidget_buysell_prepay"));
        QVERIFY(ticket.right() < quote.left());
        QVERIFY(quote.right() < limits.left());
        QVERIFY(ticket.bottom() < lower.top());
        QVERIFY(quote.bottom() < lower.top());
        QCOMPARE(lower.width(), 1242);

        // Rows are seen even in the lowest one, above a scroll bar.
        const QTableView *view = mode == 2
            ? bench.prepared()
            : bench.page->findChild<DealWidget_BuySell_CapTableView *>();
        QVERIFY2(view->viewport()->height() >= 60,
                 qPrintable(QString::number(view->viewport()->height())));

        // Nothing is cut, and nothing lies over something else.
        QList<QRect> places;
        for (const QWidget *each : bench.named("widget_upper")->findChildren<QWidget *>()) {
            const bool isShown = qobject_cast<const QLabel *>(each)
                || qobject_cast<const QPushButton *>(each) || qobject_cast<const QComboBox *>(each)
                || qobject_cast<const QAbstractSpinBox *>(each);
            if (!isShown || !each->isVisible() || each->height() == 0)
                continue;
            const QRect place = placeIn(bench.page.get(), each);
            QVERIFY2(bench.page->rect().contains(place), qPrintable(each->objectName()));
            if (const auto *label = qobject_cast<const QLabel *>(each)) {
                QVERIFY2(label->width() >= label->fontMetrics().horizontalAdvance(label->text()),
                         qPrintable(each->objectName()));
                if (!label->text().isEmpty())
                    QVERIFY2(label->height() >= 15, qPrintable(each->objectName()));
            }
            for (const QRect &other : qAsConst(places))
                QVERIFY2(!other.intersects(place), qPrintable(each->objectName()));
            places << place;
        }
        QVERIFY(places.size() > 30);
    }

    void tabGoesThroughTheFields()
    {
        TicketBench bench;
        const auto focused = [&] {
            for (QWidget *each :
                 {static_cast<QWidget *>(bench.codes()), static_cast<QWidget *>(bench.names()),
                  static_cast<QWidget *>(bench.price()), static_cast<QWidget *>(bench.count())}) {
                if (each->hasFocus())
                    return each->objectName();
            }
            return QStringLiteral("none");
        };
        bench.codes()->setFocus();
        QStringList way{focused()};
        for (int turn = 0; turn < 3; ++turn) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            way << focused();
        }
        QCOMPARE(way,
                 (QStringList{"comboBox_goodsCode", "comboBox_goodsName",
                              "doubleSpinBox_buysellPrice", "spinBox_buysellNumber"}));
    }

    void fieldsHaveNamesForScreenReaders()
    {
        const TicketBench bench;
        for (const char *name :
             {"comboBox_goodsCode", "comboBox_goodsName", "doubleSpinBox_buysellPrice",
              "spinBox_buysellNumber", "pushButton_price_sub", "pushButton_price_add",
              "pushButton_count_sub", "pushButton_count_add"})
            QVERIFY2(!bench.named(name)->accessibleName().isEmpty(), name);
    }

    // There the button is out of use for good, and Return is not.
    void theSecondPlatform()
    {
        TicketBench bench(ZvServerConfig::LanChuan);
        QVERIFY(!bench.button("pushButton_buysell")->isEnabled());
        QVERIFY(bench.button("pushButton_reset")->isEnabled());
        bench.clickPrice(10000);
        bench.typeCount("2");
        QVERIFY(zvtest::boxesIn([&] { bench.click("pushButton_buysell"); }).isEmpty());
        const auto boxes = bench.order();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().title, QStringLiteral("买前信息确认"));
        QCOMPARE(bench.calls(),
                 QStringList{"ZvServerActionResult::sendRequest_trade_buy(\"1001\", 100, 2)"});
        for (const int mode : {1, 2, 0}) {
            bench.page->setTicketMode(mode);
            QVERIFY(!bench.button("pushButton_buysell")->isEnabled());
        }
    }

    // It is decided when the page is made.
    void aLaterPlatformChangesNothing()
    {
        const TicketBench first(ZvServerConfig::ChengHu);
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        first.page->setTicketMode(1);
        QVERIFY(first.button("pushButton_buysell")->isEnabled());
    }
};

ZV_TEST(DealWidgetBuySellTest)
#include "test_dealwidget_buysell.moc"
