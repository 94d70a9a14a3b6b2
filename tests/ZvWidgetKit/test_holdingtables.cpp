#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "pagelog.h"
#include "recordrows.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QFile>
#include <QHeaderView>
#include <QHelpEvent>
#include <QPointer>
#include <QScrollBar>
#include <QStackedWidget>
#include <QToolTip>
#include <QtTest/QtTest>

#include <memory>

namespace {

const QString gatherVisible = QStringLiteral("ZvServerEngine::changedToGatherVisible()");
const QString gatherHidden = QStringLiteral("ZvServerEngine::changedToGatherHidden()");

} // namespace

// The two tables under the order ticket: the holdings and the sums of the day's deals.
class HoldingTablesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    std::unique_ptr<QTableView> m_table;
    bool m_isHoldings = false;

    static void addTables()
    {
        QTest::addColumn<bool>("isHoldings");
        QTest::newRow("holdings") << true;
        QTest::newRow("sums of the day") << false;
    }

    // The table of the current row, on screen.
    void make()
    {
        QFETCH(bool, isHoldings);
        m_isHoldings = isHoldings;
        if (isHoldings)
            m_table = std::make_unique<DealWidget_BuySell_CapTableView>();
        else
            m_table = std::make_unique<DealWidget_BuySell_DealTableView>();
        m_table->resize(1100, 300);
        m_table->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_table.get()));
    }

    void fill(int count)
    {
        if (auto *holdings = qobject_cast<DealWidget_BuySell_CapTableView *>(m_table.get()))
            holdings->setCapList(zvtest::rowsOf(zvtest::holding, count));
        else
            qobject_cast<DealWidget_BuySell_DealTableView *>(m_table.get())
                ->setGatherList(zvtest::rowsOf(zvtest::daySum, count));
    }

    QPoint at(int row, int column) const
    {
        return m_table->visualRect(m_table->model()->index(row, column)).center();
    }

    void doubleClick(const QPoint &place)
    {
        // The second press of a double click lands on what the first one has made current.
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(m_table->viewport(), Qt::LeftButton, {}, place);
    }

private slots:
    void init() { m_kit = std::make_unique<KitBench>(); }

    void cleanup()
    {
        m_table.reset();
        ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(QString());
        m_kit.reset();
    }

    void isSetUpAsRequired_data() { addTables(); }
    void isSetUpAsRequired()
    {
        make();
        QVERIFY(m_table->verticalHeader()->isHidden());
        QVERIFY(!m_table->showGrid());
        QCOMPARE(m_table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(m_table->selectionMode(), QAbstractItemView::NoSelection);
        const QHeaderView *header = m_table->horizontalHeader();
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        for (int section = 0; section + 1 < header->count(); ++section)
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
        QCOMPARE(m_table->verticalHeader()->defaultSectionSize(), 24);
        QVERIFY(!m_table->model()->parent());
        QVERIFY(!m_table->itemDelegate()->parent());
    }

    void columnsStandAsRequired_data() { addTables(); }
    void columnsStandAsRequired()
    {
        make();
        QList<int> hidden;
        QMap<int, int> widths;
        const int standard = m_table->horizontalHeader()->defaultSectionSize();
        for (int column = 0; column < m_table->model()->columnCount() - 1; ++column) {
            if (m_table->isColumnHidden(column))
                hidden << column;
            else if (m_table->columnWidth(column) != standard)
                widths.insert(column, m_table->columnWidth(column));
        }
        if (m_table->isColumnHidden(m_table->model()->columnCount() - 1))
            hidden << m_table->model()->columnCount() - 1;
        if (m_isHoldings) {
            QCOMPARE(hidden, QList<int>{10});
            QCOMPARE(widths, (QMap<int, int>{{1, 200}}));
        } else {
            QCOMPARE(hidden, QList<int>{12});
            // The last one on view is stretched.
            widths.remove(11);
            QCOMPARE(widths, (QMap<int, int>{{1, 150}, {2, 70}, {5, 70}, {8, 70}}));
        }
    }

    void oneSheetDressesTableAndHeader_data() { addTables(); }
    void oneSheetDressesTableAndHeader()
    {
        make();
        QCOMPARE(m_table->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"
                                "QHeaderView::section {height:30px;background-color: #101114;"
                                "border-top: none;border-bottom:none;"
                                "border-right:1px solid #161618;border-left:none;}"
                                "QHeaderView{height: 24px;background-color: #101114;"
                                "border-top: 1px solid #161618;"
                                "border-bottom: 1px solid #161618;}"));
        QCOMPARE(m_table->horizontalHeader()->styleSheet(), QString());
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString scrollBars = QString::fromUtf8(sheet.readAll());
        QCOMPARE(m_table->verticalScrollBar()->styleSheet(), scrollBars);
        QCOMPARE(m_table->horizontalScrollBar()->styleSheet(), scrollBars);
        // It reaches the header.
        const QImage header = m_table->horizontalHeader()->grab().toImage();
        QCOMPARE(header.pixelColor(2, header.height() / 2), QColor(0x10, 0x11, 0x14));
    }

    void rowsAreAsHighAsTheyShould_data() { addTables(); }
    void rowsAreAsHighAsTheyShould()
    {
        make();
        QFont font = m_table->font();
        font.setPixelSize(30);
        m_table->setFont(font);
        m_table->verticalHeader()->setFont(font);
        fill(8);
        for (int row = 0; row < 8; ++row)
            QCOMPARE(m_table->rowHeight(row), 24);
    }

    void listsAreShownAndReplaced_data() { addTables(); }
    void listsAreShownAndReplaced()
    {
        make();
        fill(3);
        QCOMPARE(m_table->model()->rowCount(), 3);
        QCOMPARE(m_table->model()->index(2, 0).data().toString(), QStringLiteral("600003"));
        fill(0);
        QCOMPARE(m_table->model()->rowCount(), 0);
        QCOMPARE(m_table->model()->headerData(0, Qt::Horizontal).toString(),
                 QStringLiteral("代码"));
        QVERIFY(m_table->horizontalHeader()->isVisible());
    }

    // A poll brings the same holdings again every second or so.
    void theScrollPositionStaysWhereRowsStay_data() { addTables(); }
    void theScrollPositionStaysWhereRowsStay()
    {
        make();
        m_table->resize(500, 200);
        fill(40);
        QCoreApplication::processEvents();
        m_table->verticalScrollBar()->setValue(13);
        m_table->horizontalScrollBar()->setValue(1);
        fill(40);
        QCoreApplication::processEvents();
        QCOMPARE(m_table->verticalScrollBar()->value(), 13);
        QCOMPARE(m_table->horizontalScrollBar()->value(), 1);
    }

    void theWheelScrolls_data() { addTables(); }
    void theWheelScrolls()
    {
        make();
        m_table->resize(500, 200);
        fill(40);
        QCoreApplication::processEvents();
        zvtest::PageLog log;
        zvtest::turnWheel(m_table->viewport(), -120);
        QVERIFY(m_table->verticalScrollBar()->value() > 0);
        QCOMPARE(log.take(), QStringList());
    }

    void aDoubleClickOnAnyCellShowsTheTimeLine_data() { addTables(); }
    void aDoubleClickOnAnyCellShowsTheTimeLine()
    {
        make();
        m_table->resize(1400, 300);
        fill(5);
        QCoreApplication::processEvents();
        for (int column = 0; column < m_table->model()->columnCount(); ++column) {
            if (m_table->isColumnHidden(column))
                continue;
            const int row = column % 5;
            QSignalSpy changed(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                               &ZvWidgetSignalSLotPool::signal_global_colletionId_changed);
            QSignalSpy line(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                            &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
            const QString id = QString::number(1001 + row);
            doubleClick(at(row, column));
            QCOMPARE(changed.count(), 1);
            QCOMPARE(changed.first().first().toString(), id);
            QCOMPARE(line.count(), 1);
            QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(), id);
        }
    }

    void elsewhereADoubleClickDoesNothing_data() { addTables(); }
    void elsewhereADoubleClickDoesNothing()
    {
        make();
        fill(2);
        QSignalSpy changed(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                           &ZvWidgetSignalSLotPool::signal_global_colletionId_changed);
        QSignalSpy line(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                        &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
        zvtest::PageLog log;
        doubleClick(QPoint(60, 200));
        QTest::mouseDClick(m_table->horizontalHeader()->viewport(), Qt::LeftButton, {},
                           QPoint(60, 8));
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, at(1, 1));
        QCOMPARE(changed.count() + line.count(), 0);
        QCOMPARE(log.take(), QStringList());
        QVERIFY(!m_table->selectionModel()->hasSelection());
    }

    void onlyTheSumsTellWhetherTheyAreOnScreen_data() { addTables(); }
    void onlyTheSumsTellWhetherTheyAreOnScreen()
    {
        zvtest::PageLog log;
        make();
        const auto expected = [this](const QString &line) {
            return m_isHoldings ? QStringList() : QStringList{line};
        };
        QCOMPARE(log.take(), expected(gatherVisible));
        m_table->hide();
        QCOMPARE(log.take(), expected(gatherHidden));
        m_table->show();
        QCOMPARE(log.take(), expected(gatherVisible));
        fill(3);
        QCOMPARE(log.take(), QStringList());
    }

    // As the ticket shows one table after the other.
    void aTableBehindAnotherIsHidden()
    {
        QStackedWidget stack;
        auto *sums = new DealWidget_BuySell_DealTableView;
        stack.addWidget(new QWidget);
        stack.addWidget(sums);
        zvtest::PageLog log;
        stack.show();
        QVERIFY(QTest::qWaitForWindowExposed(&stack));
        QCOMPARE(log.take(), QStringList());
        stack.setCurrentWidget(sums);
        QCOMPARE(log.take(), QStringList{gatherVisible});
        stack.setCurrentIndex(0);
        QCOMPARE(log.take(), QStringList{gatherHidden});
        stack.setCurrentWidget(sums);
        log.take();
        stack.hide();
        QCOMPARE(log.take(), QStringList{gatherHidden});
        // What comes meanwhile is shown, too.
        sums->setGatherList(zvtest::rowsOf(zvtest::daySum, 2));
        QCOMPARE(sums->model()->rowCount(), 2);
    }

    void aTextThatIsCutIsToldAsAToolTip()
    {
        DealWidget_BuySell_CapTableView table;
        table.resize(1100, 300);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));
        ZvUBCapItem::Data marked = zvtest::longestHolding().data();
        marked.name = QStringLiteral("<b>庚申年</b>生肖猴票整版八十枚带边纸厂铭纪念版");
        table.setCapList({zvtest::longestHolding(), zvtest::holding(1), ZvUBCapItem(marked)});
        const auto tip = [&](int row) {
            QHelpEvent help(QEvent::ToolTip,
                            table.visualRect(table.model()->index(row, 1)).center(), QPoint());
            QApplication::sendEvent(table.viewport(), &help);
            return QToolTip::isVisible() ? QToolTip::text() : QString();
        };
        QCOMPARE(tip(0), zvtest::longestHolding().data().name);
        QCOMPARE(tip(2), QStringLiteral("<span>%1</span>").arg(marked.name.toHtmlEscaped()));
        tip(1);
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void theDelegateEndsWithTheTable_data() { addTables(); }
    void theDelegateEndsWithTheTable()
    {
        make();
        const QPointer<QAbstractItemDelegate> delegate = m_table->itemDelegate();
        QVERIFY(delegate);
        m_table.reset();
        QVERIFY(!delegate);
    }
};

ZV_TEST(HoldingTablesTest)
#include "test_holdingtables.moc"
