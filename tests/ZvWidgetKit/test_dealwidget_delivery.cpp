#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_delivery.h"
#include "ZvWidgetKit/dealwidget_delivery_delegate.h"
#include "ZvWidgetKit/dealwidget_delivery_tableview.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "deliveryrows.h"
#include "marketbench.h"
#include "messageboxes.h"
#include "record.h"
#include "support/testregistry.h"
#include "tablepagebench.h"

#include <QDateEdit>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPainter>
#include <QPointer>
#include <QProxyStyle>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QStyleOptionButton>
#include <QtTest/QtTest>

using zvtest::capItem;
using zvtest::capOf;
using zvtest::Holding;
using zvtest::withDialog;

namespace {

using Bench = zvtest::TablePageBench<DealWidget_Delivery>;
using View = DealWidget_Delivery_TableView;
using Dialog = Small_DeliveryHandling_Dialog;

constexpr int ButtonColumn = 11;

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

void store(const QList<Holding> &holdings)
{
    cache()->storeCapInfo(capOf(holdings));
}

bool isHand()
{
    const QCursor *cursor = QGuiApplication::overrideCursor();
    return cursor && cursor->shape() == Qt::PointingHandCursor;
}

QString opens(const QString &id)
{
    return QStringLiteral("delivery collection ID: \"%1\"").arg(id);
}

// What the form of a holding shows: code, name, pieces, amount.
QString shownIn(const Dialog *dialog)
{
    const auto text = [dialog](const char *name) {
        return dialog->findChild<QLabel *>(QLatin1String(name))->text();
    };
    return QStringList{text("label_code_value"), text("label_name_value"),
                       text("label_availableNum_value"),
                       QString::number(dialog->findChild<QSpinBox *>()->value())}
        .join(QLatin1Char(' '));
}

// Notes how push buttons are drawn.
class ButtonStyle : public QProxyStyle
{
public:
    struct Drawn {
        QString text;
        QRect rect;
        bool hasWidget;
    };
    static QList<Drawn> drawn;

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        if (element == CE_PushButton) {
            const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
            drawn << Drawn{button->text, button->rect, widget != nullptr};
        }
        QProxyStyle::drawControl(element, option, painter, widget);
    }
};
QList<ButtonStyle::Drawn> ButtonStyle::drawn;

} // namespace

// The page of the holdings that can be taken out, its table and the buttons in it.
class DeliveryPageTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Bench> m_bench;

    View *view() const { return qobject_cast<View *>(m_bench->table()); }
    QRect cell(int row, int column = ButtonColumn) const
    {
        return view()->visualRect(m_bench->model()->index(row, column));
    }
    QPoint button(int row) const { return cell(row).center(); }
    void clickAt(const QPoint &place)
    {
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, place);
    }
    void moveTo(const QPoint &place)
    {
        QTest::mouseMove(m_bench->page->windowHandle(),
                         view()->viewport()->mapTo(m_bench->page.get(), place));
        QCoreApplication::processEvents();
    }

    // The codes in the table.
    QString codes() const
    {
        QStringList texts;
        for (int row = 0; row < m_bench->model()->rowCount(); ++row)
            texts << m_bench->model()->index(row, 0).data().toString();
        return texts.join(QLatin1Char(' '));
    }

    // The page on the screen with three holdings, the buttons in view.
    void fill()
    {
        m_bench->show();
        QVERIFY(QTest::qWaitForWindowActive(m_bench->page.get()));
        store({{1, 5, 5}, {2, 9, 7}, {3, 30, 12}});
        view()->scrollTo(m_bench->model()->index(0, ButtonColumn));
        moveTo(cell(0, 1).center());
    }

    // Runs `cause`, which is to open the form, and closes that again; what it showed.
    QString formIn(const std::function<void()> &cause, const std::function<void()> &meanwhile = {})
    {
        QString shown;
        withDialog<Dialog>(cause, [&](Dialog *dialog) {
            const QPointer<Dialog> guard(dialog);
            shown = shownIn(dialog);
            if (meanwhile)
                meanwhile();
            if (guard)
                guard->close();
        });
        return shown;
    }

private slots:
    void init()
    {
        store({});
        m_bench = std::make_unique<Bench>();
    }
    void cleanup()
    {
        m_bench.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    // The form.

    void thePanelsAreHiddenAndKept()
    {
        m_bench->show();
        QVERIFY(m_bench->named("frame_function")->isHidden());
        QVERIFY(m_bench->named("frame_show")->isHidden());
        QCOMPARE(view()->mapTo(m_bench->page.get(), QPoint()), QPoint(0, 0));
        QCOMPARE(view()->size(), m_bench->page->size());
        QCOMPARE(view()->parentWidget(), m_bench->named("widget_tableview_container"));
        const QMap<QString, QString> buttons{{"pushButton_deliveryApply", "提货申请"},
                                             {"pushButton_deliveryDetailsFind", "提货明细查询"},
                                             {"pushButton_historyDelivery", "历史提货办理"},
                                             {"pushButton_find", "查询"}};
        for (auto it = buttons.cbegin(); it != buttons.cend(); ++it)
            QCOMPARE(m_bench->named<QPushButton>(qPrintable(it.key()))->text(), it.value());
        const QMap<QString, QString> labels{{"label_startDate", "开始日期"},
                                            {"label_stopDate", "结束日期"},
                                            {"label_total", "合计:"},
                                            {"label_ticketNumber", "持票数量"},
                                            {"label_holdingMarketValue", "持有市值"},
                                            {"label_profitAndLoss", "盈亏"},
                                            {"label_availableFunds", "可用资金"},
                                            {"label_totalAssets", "总资产"},
                                            {"label_ticketNumber_value", "10"},
                                            {"label_holdingMarketValue_value", "30000"},
                                            {"label_profitAndLoss_value", "1000"},
                                            {"label_availableFunds_value", "10000"},
                                            {"label_totalAssets_value", "3100000"}};
        store({{1, 5, 5}}); // nothing writes the figures
        for (auto it = labels.cbegin(); it != labels.cend(); ++it)
            QCOMPARE(m_bench->named<QLabel>(qPrintable(it.key()))->text(), it.value());
        zvtest::Record record;
        for (auto it = buttons.cbegin(); it != buttons.cend(); ++it)
            m_bench->named<QPushButton>(qPrintable(it.key()))->click();
        QCOMPARE(record.take(), QString());
    }

    void stylesAreThereToTheLetter_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("first platform") << 1;
        QTest::newRow("second platform") << 2;
    }
    void stylesAreThereToTheLetter()
    {
        QFETCH(int, platform);
        ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
        config->setCurrentPlatform(ZvServerConfig::Platform(platform));
        m_bench.reset();
        m_bench = std::make_unique<Bench>();
        QCOMPARE(m_bench->page->styleSheet(), QStringLiteral("QFrame{background-color:#101114;}"));
        QVERIFY(m_bench->page->autoFillBackground());
        QCOMPARE(m_bench->named("frame_function")->styleSheet(),
                 QStringLiteral("QFrame#frame_function{background-color:rgb(16,17,20);}"));
        const struct {
            const char *name;
            QString style;
            QSize size;
        } buttons[] = {
            {"pushButton_deliveryApply", config->getStyleOf_DealLightButton(), QSize(70, 20)},
            {"pushButton_find", config->getStyleOf_DealLightButton(), QSize(70, 20)},
            {"pushButton_deliveryDetailsFind", config->getStyleOf_DealDarkButton(), QSize(90, 20)},
            {"pushButton_historyDelivery", config->getStyleOf_DealDarkButton(), QSize(90, 20)},
        };
        for (const auto &each : buttons) {
            QCOMPARE(m_bench->named(each.name)->styleSheet(), each.style);
            QCOMPARE(m_bench->named(each.name)->minimumSize(), each.size);
            QCOMPARE(m_bench->named(each.name)->maximumSize(), each.size);
        }
        for (const char *name : {"dateEdit_startDate", "dateEdit_stopDate"})
            QVERIFY(m_bench->named<QDateEdit>(name)->autoFillBackground());
        for (const char *name :
             {"label_startDate", "label_stopDate", "label_total", "label_ticketNumber",
              "label_holdingMarketValue", "label_profitAndLoss", "label_availableFunds",
              "label_totalAssets"})
            QCOMPARE(m_bench->named(name)->styleSheet(),
                     QStringLiteral("QLabel{color:rgb(255,255,255)}"));
        for (const char *name : {"label_ticketNumber_value", "label_holdingMarketValue_value",
                                 "label_profitAndLoss_value", "label_totalAssets_value"})
            QCOMPARE(m_bench->named(name)->styleSheet(),
                     QStringLiteral("QLabel{color:rgb(244,244,1)}"));
        QCOMPARE(m_bench->named("label_availableFunds_value")->styleSheet(),
                 QStringLiteral("QLabel{color:rgb(255,60,56)}"));
    }

    void tableIsSetUpAsRequired()
    {
        QVERIFY(qobject_cast<DealWidget_Delivery_Delegate *>(view()->itemDelegate()));
        QVERIFY(qobject_cast<DealWidget_Delivery_Model *>(view()->model()));
        QVERIFY(view()->verticalHeader()->isHidden());
        QVERIFY(!view()->showGrid());
        QCOMPARE(view()->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view()->selectionMode(), QAbstractItemView::NoSelection);
        QHeaderView *header = view()->horizontalHeader();
        for (int section = 0; section < 13; ++section) {
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
            QCOMPARE(view()->isColumnHidden(section), section == 10);
        }
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        QCOMPARE(view()->columnWidth(1), 200);
        QCOMPARE(view()->verticalHeader()->defaultSectionSize(), 24);
        store({{1, 5, 5}});
        QCOMPARE(view()->rowHeight(0), 24);
        QCOMPARE(view()->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"));
        QCOMPARE(
            header->styleSheet(),
            QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                           "border-top: none;border-bottom:none;border-right:1px solid #161618;;"
                           "border-left:none;}"
                           "QHeaderView{height: 24px;background-color: #16181c;"
                           "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}"));
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(sheet.readAll());
        QCOMPARE(view()->verticalScrollBar()->styleSheet(), text);
        QCOMPARE(view()->horizontalScrollBar()->styleSheet(), text);
        QCOMPARE(m_bench->named("widget_tableview_container")->layout()->contentsMargins(),
                 QMargins());
        QCOMPARE(m_bench->named("widget_tableview_container")->layout()->spacing(), 0);
    }

    // The holdings.

    void thePageAsksForNothing()
    {
        zvtest::Record record;
        DealWidget_Delivery other;
        other.show();
        store({{1, 5, 5}});
        QCOMPARE(record.take(), QString());
        QCOMPARE(other.findChild<View *>()->model()->rowCount(), 1);
    }

    void holdingsWithoutPiecesToTakeOutAreLeftOut()
    {
        store({{1, 0, 0}, {2, 9, 7}, {3, 5, 0}, {4, 1, 1}, {5, 5, -1}, {6, 0, 0}});
        QCOMPARE(codes(), QStringLiteral("C2 C4"));
        // The cache has all of them still.
        QCOMPARE(cache()->capInfo.items().size(), 6);
        store({{6, 2, 1}, {2, 9, 7}});
        QCOMPARE(codes(), QStringLiteral("C6 C2"));
        store({{6, 2, 0}});
        QCOMPARE(codes(), QString());
        store({{6, 2, 2}});
        store({});
        QCOMPARE(codes(), QString());
    }

    void aHiddenPageFollowsToo()
    {
        store({{1, 5, 5}});
        QVERIFY(!m_bench->page->isVisible());
        QCOMPARE(codes(), QStringLiteral("C1"));
    }

    void theScrollPositionStaysWhereRowsStay()
    {
        m_bench->show(QSize(1366, 226));
        QList<Holding> holdings;
        for (int number = 1; number <= 60; ++number)
            holdings << Holding{number, 9, 7};
        store(holdings);
        QCoreApplication::processEvents();
        view()->verticalScrollBar()->setValue(20);
        holdings[25].sellable = 3;
        store(holdings);
        QCoreApplication::processEvents();
        QCOMPARE(view()->verticalScrollBar()->value(), 20);
    }

    // The buttons.

    void everyRowHasItsButton()
    {
        QApplication::setStyle(new ButtonStyle);
        fill();
        ButtonStyle::drawn.clear();
        view()->viewport()->grab();
        QCOMPARE(ButtonStyle::drawn.size(), 3);
        for (int row = 0; row < 3; ++row) {
            QCOMPARE(ButtonStyle::drawn.at(row).text, QStringLiteral("提货"));
            QCOMPARE(ButtonStyle::drawn.at(row).rect, cell(row).adjusted(20, 1, -20, -1));
            QVERIFY(!ButtonStyle::drawn.at(row).hasWidget);
        }
        QApplication::setStyle(QStringLiteral("Fusion"));
    }

    void aClickOpensTheFormOfItsRow()
    {
        fill();
        zvtest::Record record;
        QCOMPARE(formIn([this] { clickAt(button(2)); }), QStringLiteral("C3 藏品3 12 12"));
        QCOMPARE(record.take(), opens("1003"));
        QCOMPARE(formIn([this] { clickAt(button(0)); }), QStringLiteral("C1 藏品1 5 5"));
        QCOMPARE(record.take(), opens("1001"));
        QVERIFY(!m_bench->page->findChild<Dialog *>());
    }

    // More than the form can count is no reason to offer nothing.
    void aHugeHoldingIsOfferedAsFarAsTheFormCounts_data()
    {
        QTest::addColumn<qint64>("pieces");
        QTest::addColumn<QString>("offered");
        QTest::newRow("the most that is counted") << qint64(2147483647) << "2147483647";
        QTest::newRow("one more") << qint64(2147483648) << "2147483647";
        QTest::newRow("a whole issue") << qint64(1000000000000) << "2147483647";
    }
    void aHugeHoldingIsOfferedAsFarAsTheFormCounts()
    {
        QFETCH(qint64, pieces);
        QFETCH(QString, offered);
        fill();
        store({{1, pieces, pieces}});
        QCOMPARE(formIn([this] { clickAt(button(0)); }),
                 QStringLiteral("C1 藏品1 %1 %1").arg(offered));
    }

    void theFormBelongsToTheTableAndSendsItsCollection()
    {
        fill();
        zvtest::Record record;
        QVERIFY(withDialog<Dialog>(
            [this] { clickAt(button(1)); },
            [&](Dialog *dialog) {
                QCOMPARE(dialog->parentWidget(), view());
                for (const char *name : {"lineEdit_userName", "lineEdit_userAddr"})
                    dialog->findChild<QLineEdit *>(name)->setText("n");
                dialog->findChild<QLineEdit *>("lineEdit_userPhone")->setText("13912345678");
                QTest::mouseClick(dialog->findChild<QPushButton *>("pushButton_ok"),
                                  Qt::LeftButton);
                dialog->close();
            }));
        QCOMPARE(record.take(),
                 opens("1002")
                     + "\n发送提货请求\nZvServerActionResult::sendRequest_delivery("
                       "\"1002\", 7, \"n\", \"13912345678\", \"n\")");
        // What was asked for changes nothing here; new holdings do.
        QCOMPARE(codes(), QStringLiteral("C1 C2 C3"));
    }

    void aSuccessEndsTheForm()
    {
        fill();
        bool isOpen = false;
        QVERIFY(withDialog<Dialog>([this] { clickAt(button(1)); },
                                   [&](Dialog *dialog) {
                                       const QPointer<Dialog> guard(dialog);
                                       zvtest::boxesIn([] {
                                           emit zvtest::actions()->signal_delivery_succeed();
                                       });
                                       isOpen = guard && guard->isVisible();
                                   }));
        QVERIFY(!isOpen);
        QVERIFY(!m_bench->page->findChild<Dialog *>());
    }

    void otherPlacesOpenNothing()
    {
        fill();
        for (const QPoint &place :
             {cell(1, 0).center(), cell(1, 12).center(), cell(1).topLeft() + QPoint(19, 12),
              cell(1).topRight() + QPoint(-19, 12),
              QPoint(button(1).x(), cell(1).top() + 2), // painted, but not the button
              QPoint(button(1).x(), cell(1).bottom() - 2),
              QPoint(button(1).x(), cell(2).bottom() + 40)})
            QCOMPARE(formIn([&] { clickAt(place); }), QString());
        QCOMPARE(formIn([&] { clickAt(QPoint(button(1).x(), cell(1).top() + 3)); }),
                 QStringLiteral("C2 藏品2 7 7"));
    }

    void theReleaseAloneDecides()
    {
        fill();
        const QPoint beside = cell(1).topLeft() + QPoint(4, 12);
        QCOMPARE(formIn([&] {
                     QTest::mousePress(view()->viewport(), Qt::LeftButton, {}, button(1));
                     QTest::mouseRelease(view()->viewport(), Qt::LeftButton, {}, beside);
                 }),
                 QString());
        QCOMPARE(formIn([&] {
                     QTest::mousePress(view()->viewport(), Qt::LeftButton, {}, beside);
                     QTest::mouseRelease(view()->viewport(), Qt::LeftButton, {}, button(1));
                 }),
                 QStringLiteral("C2 藏品2 7 7"));
    }

    void buttonsWorkAfterAResetAndScrolling()
    {
        fill();
        view()->viewport()->grab();
        QList<Holding> holdings;
        for (int number = 1; number <= 60; ++number)
            holdings << Holding{number, 90, 70 + number};
        store(holdings);
        view()->verticalScrollBar()->setValue(30);
        QCoreApplication::processEvents();
        QCOMPARE(formIn([this] { clickAt(button(31)); }), QStringLiteral("C32 藏品32 102 102"));
        store({{9, 5, 4}});
        QCOMPARE(formIn([this] { clickAt(button(0)); }), QStringLiteral("C9 藏品9 4 4"));
    }

    void newHoldingsLeaveTheOpenFormAlone()
    {
        fill();
        QString later;
        QVERIFY(withDialog<Dialog>([this] { clickAt(button(2)); },
                                   [&](Dialog *dialog) {
                                       store({});
                                       later = shownIn(dialog);
                                       dialog->close();
                                   }));
        QCOMPARE(later, QStringLiteral("C3 藏品3 12 12"));
        QCOMPARE(codes(), QString());
    }

    void theTableMayEndUnderTheForm()
    {
        fill();
        moveTo(button(1));
        QPointer<Dialog> form;
        QVERIFY(withDialog<Dialog>([this] { clickAt(button(1)); },
                                   [&](Dialog *dialog) {
                                       form = dialog;
                                       m_bench->page.reset();
                                       QVERIFY(!form);
                                   }));
        QVERIFY(!form);
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    // The view goes on with itself after its delegate has taken a release.
    void theFormOpensWhenTheTableHasDoneWithTheClick()
    {
        fill();
        QSignalSpy clicked(view(), &QTableView::clicked);
        int told = 0;
        QCOMPARE(formIn([this] { clickAt(button(1)); }, [&] { told = clicked.count(); }),
                 QStringLiteral("C2 藏品2 7 7"));
        QCOMPARE(told, 1);
    }

    void theDelegateOpensTheFormAtOnce()
    {
        fill();
        auto *delegate = qobject_cast<DealWidget_Delivery_Delegate *>(view()->itemDelegate());
        QStyleOptionViewItem option;
        option.rect = cell(1);
        QMouseEvent event(QEvent::MouseButtonRelease, button(1), Qt::LeftButton, Qt::NoButton,
                          Qt::NoModifier);
        const QModelIndex index = m_bench->model()->index(1, ButtonColumn);
        QCOMPARE(formIn([&] { delegate->editorEvent(&event, m_bench->model(), option, index); }),
                 QStringLiteral("C2 藏品2 7 7"));
    }

    // The cursor.

    void theHandIsOverTheButtonsAlone()
    {
        fill();
        QVERIFY(!isHand());
        moveTo(button(1));
        QVERIFY(isHand());
        moveTo(cell(1, 12).center());
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void theHandIsGivenBack_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"reset", "hide", "destroyed", "form", "scrolled"})
            QTest::newRow(way) << way;
    }
    void theHandIsGivenBack()
    {
        QFETCH(QString, way);
        fill();
        moveTo(button(1));
        QVERIFY(isHand());
        if (way == "reset") {
            store({{1, 5, 5}, {2, 9, 7}});
        } else if (way == "hide") {
            m_bench->page->hide();
        } else if (way == "destroyed") {
            m_bench->page.reset();
        } else if (way == "scrolled") {
            view()->horizontalScrollBar()->setValue(0);
            m_bench->page->resize(500, 226);
            view()->horizontalScrollBar()->setValue(7);
        } else {
            bool wasHand = true;
            formIn([this] { clickAt(button(1)); }, [&] { wasHand = isHand(); });
            QVERIFY(!wasHand);
        }
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

ZV_TEST(DeliveryPageTest)
#include "test_dealwidget_delivery.moc"
