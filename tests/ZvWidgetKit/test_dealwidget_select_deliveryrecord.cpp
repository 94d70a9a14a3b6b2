#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord_delegate.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord_tableview.h"
#include "messageboxes.h"
#include "orderrows.h"
#include "record.h"
#include "support/testregistry.h"
#include "tablepagebench.h"
#include "wheel.h"

#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QScrollBar>
#include <QToolButton>
#include <QtTest/QtTest>

#include <memory>

using zvtest::boxesIn;
using zvtest::columnOf;
using zvtest::deliveries;
using zvtest::deliveryData;
using zvtest::notices;
using zvtest::ShownBox;

namespace {

using Bench = zvtest::TablePageBench<DealWidget_Select_DeliveryRecord>;
using View = DealWidget_Select_DeliveryRecord_TableView;

constexpr int OrderColumn = 1;
constexpr int ButtonColumn = 13;
const QString queried = QStringLiteral("点击了提货记录查询");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QString asks(int page, const QString &start = QString(), const QString &stop = QString())
{
    return QStringLiteral("ZvServerEngine::sendRequest_Select_DeliveryRecord(%1, \"%2\", \"%3\")")
        .arg(page)
        .arg(start, stop);
}

QString queries(const QString &start = QString(), const QString &stop = QString())
{
    return queried + '\n' + asks(1, start, stop);
}

QString cancels(const QString &id)
{
    return QStringLiteral("ZvServerActionResult::sendRequest_deliveryCancel(\"%1\")").arg(id);
}

bool isHand()
{
    const QCursor *cursor = QGuiApplication::overrideCursor();
    return cursor && cursor->shape() == Qt::PointingHandCursor;
}

// Counts how often a widget is painted.
class PaintCount : public QObject
{
public:
    explicit PaintCount(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

} // namespace

class DeliveryRecordPageTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Bench> m_bench;
    std::unique_ptr<zvtest::Record> m_record;

    QString said() { return m_record->take(); }
    View *view() const { return qobject_cast<View *>(m_bench->table()); }
    QString shown() const { return columnOf(m_bench->model(), OrderColumn); }
    QDateEdit *date(const char *name) const { return m_bench->named<QDateEdit>(name); }

    // The page on the screen with applications on it, and nothing said yet.
    void fill(const QList<ZvUBDeliveryRecordItem> &records)
    {
        m_bench->show();
        QVERIFY(QTest::qWaitForWindowActive(m_bench->page.get()));
        cache()->storeDeliveryRecordList(records);
        view()->scrollTo(m_bench->model()->index(0, ButtonColumn));
        said();
    }

    QPoint button(int row) const
    {
        return view()->visualRect(m_bench->model()->index(row, ButtonColumn)).center();
    }
    void clickButton(int row)
    {
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, button(row));
    }
    void moveTo(const QPoint &place)
    {
        QTest::mouseMove(m_bench->page->windowHandle(),
                         view()->viewport()->mapTo(m_bench->page.get(), place));
        QCoreApplication::processEvents();
    }

private slots:
    void init()
    {
        cache()->storeDeliveryRecordList({});
        m_record = std::make_unique<zvtest::Record>();
        m_bench = std::make_unique<Bench>();
        said();
    }

    void cleanup()
    {
        m_record.reset();
        m_bench.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void nothingIsAskedWhenThePageIsMade()
    {
        const DealWidget_Select_DeliveryRecord page;
        QCOMPARE(said(), QString());
    }

    void formIsMadeAsRequired()
    {
        QCOMPARE(m_bench->named<QLabel>("label_startDate")->text(), QStringLiteral("开始日期"));
        QCOMPARE(m_bench->named<QLabel>("label_stopDate")->text(), QStringLiteral("结束日期"));
        QCOMPARE(m_bench->named<QPushButton>("pushButton_select")->text(), QStringLiteral("查询"));
        QStringList order;
        const QLayout *row = m_bench->named("frame_recordPanel")->layout();
        for (int i = 0; i < row->count(); ++i) {
            if (const QWidget *widget = row->itemAt(i)->widget())
                order << widget->objectName();
        }
        QCOMPARE(order,
                 (QStringList{"label_startDate", "dateEdit_startDate", "label_stopDate",
                              "dateEdit_stopDate", "pushButton_select", "toolButton_pageUp",
                              "toolButton_pageDown"}));
        QVERIFY(!m_bench->page->findChild<QWidget *>("comboBox_type"));
        for (const char *name : {"dateEdit_startDate", "dateEdit_stopDate"}) {
            QVERIFY(date(name)->calendarPopup());
            QCOMPARE(date(name)->displayFormat(), QStringLiteral("yyyy/MM/dd"));
            QCOMPARE(date(name)->maximumDate(), QDate(2020, 1, 1));
            QCOMPARE(date(name)->date(), QDate(2020, 1, 1)); // today is later
        }
        QCOMPARE(date("dateEdit_startDate")->minimumDate(), QDate(2016, 1, 1));
        QCOMPARE(date("dateEdit_stopDate")->minimumDate(), QDate(2020, 1, 1));
        for (const char *name : {"toolButton_pageUp", "toolButton_pageDown"}) {
            QCOMPARE(m_bench->named<QToolButton>(name)->text(), QStringLiteral("..."));
            QCOMPARE(m_bench->named(name)->styleSheet(),
                     QStringLiteral("background-color: rgb(30, 33, 38);"));
            QVERIFY(m_bench->named(name)->isHidden());
        }
    }

    void stylesAreThoseOfTheFamily()
    {
        QCOMPARE(m_bench->page->layout()->contentsMargins(), QMargins());
        QCOMPARE(m_bench->page->layout()->spacing(), 0);
        const QLayout *row = m_bench->named("frame_recordPanel")->layout();
        QCOMPARE(row->contentsMargins(), QMargins(3, 3, 3, 3));
        QCOMPARE(row->spacing(), 3);
        QCOMPARE(m_bench->named("frame_recordPanel")->styleSheet(),
                 QStringLiteral("QFrame#frame_recordPanel{background-color:rgb(16,17,20);}"));
        for (const char *name : {"label_startDate", "label_stopDate"})
            QCOMPARE(m_bench->named(name)->styleSheet(),
                     QStringLiteral("QLabel{color:rgb(255,255,255)}"));
        QCOMPARE(m_bench->named("pushButton_select")->styleSheet(),
                 ZvServerConfig::getZvServerConfigInstance()->getStyleOf_DealCheckButton());
        m_bench->show();
        QWidget *container = m_bench->named("frame_container_delivery");
        QCOMPARE(view()->parentWidget(), container);
        QCOMPARE(view()->geometry(), container->rect());
    }

    void tableIsSetUpAsRequired()
    {
        QVERIFY(qobject_cast<DealWidget_Select_DeliveryRecord_Delegate *>(view()->itemDelegate()));
        QVERIFY(view()->verticalHeader()->isHidden());
        QVERIFY(!view()->showGrid());
        QCOMPARE(view()->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view()->selectionMode(), QAbstractItemView::NoSelection);
        QHeaderView *header = view()->horizontalHeader();
        QCOMPARE(header->count(), 14);
        for (int section = 0; section < header->count(); ++section) {
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
            QCOMPARE(view()->isColumnHidden(section),
                     section == 0 || section == 9 || section == 10);
        }
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        const QMap<int, int> widths{{1, 160}, {3, 250}, {6, 200}, {8, 100}, {11, 100}, {12, 200}};
        for (auto width = widths.cbegin(); width != widths.cend(); ++width)
            QCOMPARE(view()->columnWidth(width.key()), width.value());
        QCOMPARE(view()->verticalHeader()->defaultSectionSize(), 24);
        cache()->storeDeliveryRecordList(deliveries({1}));
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
    }

    void showingThePageLoadsTheUndatedFirstPage()
    {
        date("dateEdit_startDate")->setDate(QDate(2018, 5, 6));
        m_bench->show();
        QCOMPARE(said(), queries());
        m_bench->page->hide();
        m_bench->page->show();
        QCOMPARE(said(), queries());
    }

    void theButtonQueriesBetweenTheDates()
    {
        m_bench->show();
        said();
        date("dateEdit_startDate")->setDate(QDate(2018, 5, 6));
        date("dateEdit_stopDate")->setDate(QDate(2019, 10, 11));
        QCOMPARE(said(), QString());
        m_bench->click("pushButton_select");
        QCOMPARE(said(), queries("2018/05/06", "2019/10/11"));
        m_bench->call("slot_selectButton_clicked");
        QCOMPARE(said(), queries("2018/05/06", "2019/10/11"));
    }

    void theStartPushesTheStop()
    {
        date("dateEdit_startDate")->setDate(QDate(2017, 1, 1));
        date("dateEdit_stopDate")->setDate(QDate(2018, 1, 1));
        date("dateEdit_startDate")->setDate(QDate(2019, 1, 1));
        QCOMPARE(date("dateEdit_stopDate")->date(), QDate(2019, 1, 1));
    }

    void turnsKeepTheDatesOfTheQueryAndSayNothing()
    {
        fill(deliveries({9}));
        date("dateEdit_startDate")->setDate(QDate(2018, 5, 6));
        m_bench->click("pushButton_select");
        said();
        date("dateEdit_startDate")->setDate(QDate(2019, 1, 1)); // not queried for
        cache()->storeDeliveryRecordList(deliveries({9}));
        view()->pageDown();
        QCOMPARE(said(), asks(2, "2018/05/06", "2020/01/01"));
        cache()->storeDeliveryRecordList(deliveries({8}));
        m_bench->call("slot_pageDownButton_clicked");
        QCOMPARE(said(), asks(3, "2018/05/06", "2020/01/01"));
        m_bench->call("slot_pageUpButton_clicked");
        QCOMPARE(said(), asks(1, "2018/05/06", "2020/01/01"));
        m_bench->named<QToolButton>("toolButton_pageDown")->click();
        QCOMPARE(said(), asks(3, "2018/05/06", "2020/01/01"));
    }

    void comingBackForgetsTheDatesForTheWheelToo()
    {
        fill(deliveries({9}));
        date("dateEdit_startDate")->setDate(QDate(2018, 5, 6));
        m_bench->click("pushButton_select");
        cache()->storeDeliveryRecordList(deliveries({9}));
        m_bench->page->hide();
        m_bench->page->show();
        cache()->storeDeliveryRecordList(deliveries({9}));
        said();
        for (int notch = 0; notch < 4; ++notch)
            zvtest::turnWheel(view()->viewport(), -120);
        QCOMPARE(said(), QString());
        zvtest::turnWheel(view()->viewport(), -120);
        QCOMPARE(said(), asks(2));
    }

    void answers()
    {
        fill(deliveries({9, 8}));
        QCOMPARE(shown(), QStringLiteral("T9 T8"));
        view()->pageDown();
        cache()->storeDeliveryRecordList({}); // past the last page
        QCOMPARE(shown(), QStringLiteral("T9 T8"));
        view()->pageDown();
        QCOMPARE(said(), asks(2) + '\n' + asks(2));
        cache()->storeDeliveryRecordList(deliveries({7}));
        QCOMPARE(shown(), QStringLiteral("T7"));
        view()->selectRecords(3, QString(), QString());
        cache()->storeDeliveryRecordList({});
        QCOMPARE(shown(), QString());
        said();
        view()->pageDown();
        QCOMPARE(said(), asks(2));
    }

    void eachAnswerRepaintsAtOnce()
    {
        fill(deliveries({9}));
        QCoreApplication::processEvents();
        PaintCount paints(view());
        cache()->storeDeliveryRecordList(deliveries({8}));
        QCOMPARE(paints.count, 1);
        cache()->storeDeliveryRecordList({}); // which changes nothing
        QCOMPARE(paints.count, 2);
        view()->selectRecords(1, QString(), QString());
        cache()->storeDeliveryRecordList({});
        QCOMPARE(paints.count, 3);
    }

    void theBoxShowsWhatIsCancelled()
    {
        fill(deliveries({9, 8}));
        const QList<ShownBox> boxes
            = boxesIn([&] { clickButton(1); }, [&] { QCOMPARE(said(), QString()); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).text,
                 QStringLiteral("<p style='font-size:16px' align='center'>单号：T8</p>"
                                "<p style='font-size:16px' align='center'>名称：藏品8</p>"
                                "<p style='font-size:16px' align='center'>数量：8</p>"
                                "<p style='font-size:16px' align='center'>确定取消提货？"));
        QCOMPARE(boxes.at(0).buttons,
                 (QStringList{QStringLiteral("确认"), QStringLiteral("取消")}));
        QCOMPARE(boxes.at(0).title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.at(0).titleHeight, 40);
        QVERIFY(!boxes.at(0).hasParent);
        QCOMPARE(said(), cancels("d8"));
    }

    // The texts of a row may look like places of others.
    void valuesWithSignsOfTheirOwn()
    {
        ZvUBDeliveryRecordItem::Data data = deliveryData(9);
        data.orderNumber = QStringLiteral("%1%2%3");
        data.name = QStringLiteral("%1 %L1");
        fill({ZvUBDeliveryRecordItem(data)});
        const QList<ShownBox> boxes = boxesIn([&] { clickButton(0); });
        QVERIFY(boxes.value(0).text.contains(QStringLiteral("单号：%1%2%3</p>")));
        QVERIFY(boxes.value(0).text.contains(QStringLiteral("名称：%1 %L1</p>")));
        QVERIFY(boxes.value(0).text.contains(QStringLiteral("数量：9</p>")));
    }

    void valuesWithSignsOfRichText()
    {
        ZvUBDeliveryRecordItem::Data data = deliveryData(9);
        data.orderNumber = QStringLiteral("T<9");
        data.name = QStringLiteral("价格<1&2</p>");
        fill({ZvUBDeliveryRecordItem(data)});
        const QList<ShownBox> boxes = boxesIn([&] { clickButton(0); });
        QVERIFY(boxes.value(0).text.contains(QStringLiteral("单号：T&lt;9</p>")));
        QVERIFY(
            boxes.value(0).text.contains(QStringLiteral("名称：价格&lt;1&amp;2&lt;/p&gt;</p>")));
    }

    void anotherAnswerSendsNothing()
    {
        fill(deliveries({9}));
        QCOMPARE(boxesIn([&] { clickButton(0); }, {}, QStringLiteral("取消")).size(), 1);
        QCOMPARE(said(), QString());
    }

    void whatWasAskedIsCancelledThoughTheListChanges()
    {
        fill(deliveries({9, 8}));
        boxesIn([&] { clickButton(1); },
                [&] {
                    cache()->storeDeliveryRecordList(deliveries({1, 2, 3}));
                });
        QCOMPARE(said(), cancels("d8"));
    }

    void onlyRowsUnderReviewHaveAButton_data()
    {
        QTest::addColumn<int>("state");
        for (int state = -1; state <= 6; ++state)
            QTest::newRow(qPrintable(QString::number(state))) << state;
    }

    void onlyRowsUnderReviewHaveAButton()
    {
        QFETCH(int, state);
        ZvUBDeliveryRecordItem::Data data = deliveryData(9);
        data.state = state;
        fill({ZvUBDeliveryRecordItem(data)});
        moveTo(QPoint(5, 5));
        const QRect cell = view()->visualRect(m_bench->model()->index(0, ButtonColumn));
        const QImage image = view()->viewport()->grab(cell).toImage();
        bool isBlank = true;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                isBlank = isBlank && image.pixelColor(x, y) == QColor(0x16, 0x18, 0x1c);
        }
        QCOMPARE(isBlank, state != 2);
        QCOMPARE(boxesIn([&] { clickButton(0); }).size(), state == 2 ? 1 : 0);
        QCOMPARE(said(), state == 2 ? cancels("d9") : QString());
        // The cursor does not tell one from the other.
        moveTo(button(0));
        QVERIFY(isHand());
        moveTo(QPoint(5, 5));
        QVERIFY(!isHand());
    }

    void aRowWithoutAnIdentifierIsNotCancelled()
    {
        ZvUBDeliveryRecordItem::Data data = deliveryData(9);
        data.deliveryId.clear();
        fill({ZvUBDeliveryRecordItem(data)});
        QCOMPARE(boxesIn([&] { clickButton(0); }).size(), 0);
        QCOMPARE(said(), QString());
        QCOMPARE(notices(), QStringList());
        view()->cancelDelivery(-1);
        view()->cancelDelivery(7);
        QCOMPARE(said(), QString());
    }

    void otherCellsDoNothing()
    {
        fill(deliveries({9}));
        QCOMPARE(boxesIn([&] {
                     for (const int column : {1, 5, 12}) {
                         view()->scrollTo(m_bench->model()->index(0, column));
                         QTest::mouseClick(
                             view()->viewport(), Qt::LeftButton, {},
                             view()->visualRect(m_bench->model()->index(0, column)).center());
                     }
                 }).size(),
                 0);
        QCOMPARE(said(), QString());
    }

    void theHandIsGoneBehindTheBox()
    {
        fill(deliveries({9, 8}));
        moveTo(button(0));
        QVERIFY(isHand());
        boxesIn([&] { clickButton(0); }, [] { QVERIFY(!QGuiApplication::overrideCursor()); });
        QVERIFY(!QGuiApplication::overrideCursor());
        moveTo(button(1));
        QVERIFY(isHand());
        boxesIn([&] { view()->cancelDelivery(0); },
                [] { QVERIFY(!QGuiApplication::overrideCursor()); });
    }

    void theHandEndsWithItsRows()
    {
        fill(deliveries({9, 8}));
        moveTo(button(0));
        QVERIFY(isHand());
        cache()->storeDeliveryRecordList(deliveries({7}));
        QVERIFY(!QGuiApplication::overrideCursor());
        moveTo(button(0) + QPoint(1, 0));
        QVERIFY(isHand());
        m_bench->page->hide();
        QVERIFY(!QGuiApplication::overrideCursor());
        m_bench->page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_bench->page.get()));
        moveTo(QPoint(5, 5));
        moveTo(button(0));
        QVERIFY(isHand());
        m_bench->page.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void aSuccessReloadsAndThenTells()
    {
        fill(deliveries({9, 8}));
        date("dateEdit_startDate")->setDate(QDate(2018, 5, 6));
        m_bench->click("pushButton_select");
        cache()->storeDeliveryRecordList(deliveries({9, 8}));
        boxesIn([&] { clickButton(0); });
        said();
        m_bench->exchange()->answer(zvPath_trade_take, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        QVERIFY(said().startsWith(queries()));
        QCOMPARE(notices(), QStringList{QStringLiteral("取消提货成功")});
        // The reload has forgotten the dates.
        cache()->storeDeliveryRecordList(deliveries({8}));
        view()->pageDown();
        QCOMPARE(said(), asks(2));
    }

    void theReloadComesBeforeTheWord()
    {
        fill(deliveries({9}));
        // The line of the query is written while no notice stands yet.
        QStringList noticesThen{QStringLiteral("never queried")};
        static QStringList *seen = nullptr;
        static QtMessageHandler next = nullptr;
        seen = &noticesThen;
        next = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
                if (text == queried)
                    *seen = notices();
                next(type, context, text);
            });
        emit zvtest::actions()->signal_cancelDelivery_succeed();
        qInstallMessageHandler(next);
        QCOMPARE(noticesThen, QStringList());
        QCOMPARE(notices(), QStringList{QStringLiteral("取消提货成功")});
    }

    void aRefusalIsToldAndNothingReloads_data()
    {
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("text");
        QTest::newRow("with words") << "该提货单已发货"
                                    << "该提货单已发货";
        QTest::newRow("without words") << ""
                                       << "取消提货失败";
    }

    void aRefusalIsToldAndNothingReloads()
    {
        QFETCH(QString, reason);
        QFETCH(QString, text);
        fill(deliveries({9}));
        emit zvtest::actions()->signal_cancelDelivery_failed(reason);
        QCOMPARE(notices(), QStringList{text});
        QCOMPARE(said(), QString());
        QCOMPARE(shown(), QStringLiteral("T9"));
    }

    void aPageThatEndsBehindTheBoxSendsNothing()
    {
        fill(deliveries({9}));
        boxesIn([&] { view()->cancelDelivery(0); }, [&] { m_bench->page.reset(); });
        QCOMPARE(said(), QString());
    }

    void aPageMayEndBehindTheBoxOfAClick()
    {
        fill(deliveries({9}));
        const QPoint place = button(0);
        QTest::mousePress(view()->viewport(), Qt::LeftButton, {}, place);
        boxesIn(
            [&] {
                QMouseEvent release(QEvent::MouseButtonRelease, place, Qt::LeftButton, Qt::NoButton,
                                    Qt::NoModifier);
                QCoreApplication::sendEvent(view()->viewport(), &release);
            },
            [&] { m_bench->page.reset(); });
        QVERIFY(!m_bench->page);
        QCOMPARE(said(), QString());
    }

    void aClickWithoutAViewDoesNothing()
    {
        DealWidget_Select_DeliveryRecord_Model model;
        model.setRecordList(deliveries({9}));
        DealWidget_Select_DeliveryRecord_Delegate delegate;
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, 100, 24);
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(50, 12), Qt::LeftButton,
                            Qt::NoButton, Qt::NoModifier);
        QVERIFY(delegate.editorEvent(&release, &model, option, model.index(0, ButtonColumn)));
        QCOMPARE(said(), QString());
    }

    void slotsStandInTheirOrder()
    {
        const QMetaObject &page = DealWidget_Select_DeliveryRecord::staticMetaObject;
        QCOMPARE(page.superClass(), &QWidget::staticMetaObject);
        QByteArrayList methods;
        for (int i = page.methodOffset(); i < page.methodCount(); ++i)
            methods << page.method(i).methodSignature();
        QCOMPARE(methods,
                 (QByteArrayList{"slot_selectButton_clicked()", "slot_pageUpButton_clicked()",
                                 "slot_pageDownButton_clicked()"}));
        QCOMPARE(View::staticMetaObject.superClass(), &QTableView::staticMetaObject);
        QCOMPARE(DealWidget_Select_DeliveryRecord_Delegate::staticMetaObject.superClass(),
                 &QStyledItemDelegate::staticMetaObject);
    }
};

ZV_TEST(DeliveryRecordPageTest)
#include "test_dealwidget_select_deliveryrecord.moc"
