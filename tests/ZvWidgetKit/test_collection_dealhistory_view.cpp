#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/collection_dealhistory_delegate.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "dealrows.h"
#include "pagelog.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QtTest/QtTest>

#include <memory>

using zvtest::deals;
using zvtest::numbers;
using zvtest::shownDeals;

namespace {

const QString id = QStringLiteral("1001");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// A widget that says how often the wheel reached it.
class WheelCatcher : public QWidget
{
public:
    int turns = 0;

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        ++turns;
        event->accept();
    }
};

} // namespace

class CollectionDealHistoryViewTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Collection_DealHistory_View> m_view;

    // Tells of an answer as the cache does.
    void answer(int count)
    {
        cache()->storeLatestDealList(id, deals(count));
        m_view->slot_updateLatestDeal(id);
    }

    QString shown() const { return shownDeals(m_view->model()); }

    void show(int width, int height)
    {
        m_view->resize(width, height);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

private slots:
    void initTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setTransport(
            std::make_unique<ZvScriptedTransport>());
    }

    void init() { m_view = std::make_unique<Collection_DealHistory_View>(); }

    void cleanup()
    {
        m_view.reset();
        cache()->storeLatestDealList(id, {});
    }

    void isMadeAsRequired()
    {
        QVERIFY(qobject_cast<Collection_DealHistory_model *>(m_view->model()));
        QVERIFY(!m_view->model()->parent());
        QVERIFY(qobject_cast<Collection_DealHistory_Delegate *>(m_view->itemDelegate()));
        QCOMPARE(m_view->itemDelegate()->parent(), m_view.get());
        QVERIFY(m_view->verticalHeader()->isHidden());
        QVERIFY(!m_view->showGrid());
        QCOMPARE(m_view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(m_view->selectionMode(), QAbstractItemView::NoSelection);
        QCOMPARE(m_view->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QHeaderView *header = m_view->horizontalHeader();
        for (int section = 0; section < 3; ++section)
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Stretch);
        QVERIFY(!header->highlightSections());
        QCOMPARE(header->font().pixelSize(), 20);
        QCOMPARE(header->font().family(), QApplication::font().family());
        QCOMPARE(m_view->verticalHeader()->defaultSectionSize(), 25);
    }

    void sheetsAreSetToTheLetter()
    {
        QCOMPARE(m_view->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"));
        QCOMPARE(
            m_view->horizontalHeader()->styleSheet(),
            QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                           "border-top: 1px solid #16181c;border-bottom: 1px solid #16181c;}"
                           "QHeaderView{height: 25px;background-color: #16181c;"
                           "border-top: 1px solid #16181c;border-bottom: 1px solid #16181c;}"));
    }

    void smallStyle()
    {
        const QString viewSheet = m_view->styleSheet();
        m_view->applySmallStyle();
        QHeaderView *header = m_view->horizontalHeader();
        QCOMPARE(header->font().pixelSize(), 14);
        QCOMPARE(header->font().family(), QApplication::font().family());
        QCOMPARE(
            header->styleSheet(),
            QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                           "border-top: none;border-bottom:none;border-right:1px solid #161618;"
                           "border-left:none;}"
                           "QHeaderView{height: 25px;background-color: #16181c;"
                           "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}"));
        QCOMPARE(m_view->styleSheet(), viewSheet);
        QCOMPARE(m_view->verticalHeader()->defaultSectionSize(), 16);
    }

    // The header's own font is one thing, what is drawn another.
    void headersAreDrawnInTheirSize()
    {
        const auto inkHeight = [](const QTableView &view) {
            QCoreApplication::processEvents();
            const QImage image = view.horizontalHeader()->grab().toImage();
            int top = image.height();
            int bottom = -1;
            for (int y = 2; y < image.height() - 2; ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (qGray(image.pixel(x, y)) > 128) {
                        top = qMin(top, y);
                        bottom = y;
                    }
                }
            }
            return bottom - top + 1;
        };
        // Below a style sheet of the page, and alone.
        QWidget page;
        page.setStyleSheet(QStringLiteral("QFrame#none{color: red;}"));
        auto *inPage = new Collection_DealHistory_View(&page);
        page.resize(400, 300);
        page.show();
        show(400, 300);
        for (Collection_DealHistory_View *view : {inPage, m_view.get()}) {
            const int normal = inkHeight(*view);
            QVERIFY2(normal >= 17 && normal <= 22, qPrintable(QString::number(normal)));
            view->applySmallStyle();
            const int small = inkHeight(*view);
            QVERIFY2(small >= 11 && small <= 15, qPrintable(QString::number(small)));
        }
    }

    // The style would make rows higher than either, and more of them would be counted than fit.
    void rowsAreAsHighAsTheyAreCounted_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::newRow("client's font") << 14;
        QTest::newRow("large font") << 30;
    }

    void rowsAreAsHighAsTheyAreCounted()
    {
        QFETCH(int, pixels);
        QFont font = m_view->font();
        font.setPixelSize(pixels);
        m_view->setFont(font);
        m_view->verticalHeader()->setFont(font);
        show(325, 300);
        answer(10);
        for (int row = 0; row < 10; ++row)
            QCOMPARE(m_view->rowHeight(row), 25);
        m_view->applySmallStyle();
        answer(10);
        for (int row = 0; row < 10; ++row)
            QCOMPARE(m_view->rowHeight(row), 16);
    }

    void theDirectionIsHiddenInEverySize()
    {
        show(325, 300);
        answer(10);
        QVERIFY(m_view->isColumnHidden(3));
        m_view->applySmallStyle();
        answer(8);
        QVERIFY(m_view->isColumnHidden(3));
        for (int column = 0; column < 3; ++column)
            QVERIFY(!m_view->isColumnHidden(column));
    }

    void columnsShareTheWidth()
    {
        show(303, 200);
        answer(3);
        for (const int width : {303, 600, 201}) {
            m_view->resize(width, 200);
            QTRY_COMPARE(m_view->columnWidth(0) + m_view->columnWidth(1) + m_view->columnWidth(2),
                         m_view->viewport()->width());
            QVERIFY(qAbs(m_view->columnWidth(0) - m_view->columnWidth(2)) <= 1);
            QCOMPARE(m_view->viewport()->width(), width);
        }
    }

    void aNewViewShowsTenDealsAtMost()
    {
        answer(25);
        QCOMPARE(shown(), numbers(10, 16));
    }

    void theNewestDealsStay_data()
    {
        QTest::addColumn<int>("limit");
        QTest::addColumn<int>("there");
        QTest::addColumn<QString>("expected");
        QTest::newRow("fewer than the limit") << 7 << 5 << numbers(5);
        QTest::newRow("as many as the limit") << 7 << 7 << numbers(7);
        QTest::newRow("one more") << 7 << 8 << numbers(7, 2);
        QTest::newRow("many more") << 7 << 200 << numbers(7, 194);
        QTest::newRow("one") << 1 << 5 << numbers(1, 5);
        QTest::newRow("limit 0") << 0 << 5 << QString();
        QTest::newRow("below 0") << -3 << 5 << QString();
        QTest::newRow("nothing there") << 7 << 0 << QString();
    }

    void theNewestDealsStay()
    {
        QFETCH(int, limit);
        QFETCH(int, there);
        QFETCH(QString, expected);
        answer(3);
        m_view->setDealLimit(limit);
        answer(there);
        QCOMPARE(shown(), expected);
    }

    void aLimitCountsFromTheNextUpdateOn()
    {
        answer(8);
        m_view->setDealLimit(2);
        QCOMPARE(shown(), numbers(8));
        m_view->slot_updateLatestDeal(id);
        QCOMPARE(shown(), numbers(2, 7));
    }

    void anUpdateIsOneReset()
    {
        m_view->setDealLimit(2);
        QSignalSpy resets(m_view->model(), &QAbstractItemModel::modelReset);
        QSignalSpy removals(m_view->model(), &QAbstractItemModel::rowsRemoved);
        answer(50);
        QCOMPARE(resets.count(), 1);
        QCOMPARE(removals.count(), 0);
    }

    void theCacheKeepsWhatTheListCutsOff()
    {
        m_view->setDealLimit(2);
        answer(5);
        QCOMPARE(cache()->getLatestDealList(id).size(), 5);
    }

    void anyCollectionIsShown()
    {
        cache()->storeLatestDealList(QStringLiteral("2002"), deals(3, 40));
        answer(2);
        m_view->slot_updateLatestDeal(QStringLiteral("2002"));
        QCOMPARE(shown(), numbers(3, 40));
        m_view->slot_updateLatestDeal(QStringLiteral("unknown"));
        QCOMPARE(shown(), QString());
    }

    void aListThatIsSetIsNotCut()
    {
        m_view->setDealLimit(3);
        m_view->setDealList(deals(40));
        QCOMPARE(shown(), numbers(40));
        m_view->setDealList({});
        QCOMPARE(shown(), QString());
    }

    void theNewestDealIsInSight()
    {
        m_view->setDealLimit(100);
        show(325, 200);
        answer(80);
        QCOMPARE(m_view->verticalScrollBar()->value(), m_view->verticalScrollBar()->maximum());
        QVERIFY(m_view->verticalScrollBar()->maximum() > 0);
        const QRect last = m_view->visualRect(m_view->model()->index(79, 0));
        QVERIFY(m_view->viewport()->rect().contains(last.center()));
        QVERIFY(!m_view->verticalScrollBar()->isVisible());
    }

    void aDoubleClickInSmallModeAsksForTheFullPage_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::newRow("on a deal") << QPoint(40, 20);
        QTest::newRow("below the deals") << QPoint(40, 250);
    }

    void aDoubleClickInSmallModeAsksForTheFullPage()
    {
        QFETCH(QPoint, place);
        m_view->applySmallStyle();
        show(325, 320);
        answer(5);
        QSignalSpy asked(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                         &ZvWidgetSignalSLotPool::signal_marketDeatil_clicked);
        QSignalSpy base(m_view.get(), &QAbstractItemView::doubleClicked);
        zvtest::PageLog log;
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(asked.count(), 0);
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(asked.count(), 1);
        QCOMPARE(base.count(), 0);
        QCOMPARE(log.take(),
                 QStringList{QStringLiteral("double clicked in small deal history view")});
    }

    void aDoubleClickInNormalModeDoesNothing()
    {
        show(325, 320);
        answer(5);
        QSignalSpy asked(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                         &ZvWidgetSignalSLotPool::signal_marketDeatil_clicked);
        QSignalSpy base(m_view.get(), &QAbstractItemView::doubleClicked);
        zvtest::PageLog log;
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(40, 20));
        QCOMPARE(asked.count(), 0);
        QCOMPARE(base.count(), 0);
        QCOMPARE(log.take(), QStringList());
    }

    void aClickSelectsNothing()
    {
        show(325, 320);
        answer(5);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(40, 20));
        QVERIFY(!m_view->selectionModel()->hasSelection());
    }

    void theWheelReachesThePageAround_data()
    {
        QTest::addColumn<bool>("small");
        QTest::addColumn<int>("count");
        QTest::newRow("all in sight") << false << 3;
        QTest::newRow("more than fit") << false << 100;
        QTest::newRow("small, more than fit") << true << 100;
    }

    void theWheelReachesThePageAround()
    {
        QFETCH(bool, small);
        QFETCH(int, count);
        WheelCatcher page;
        auto *list = new Collection_DealHistory_View;
        auto *layout = new QVBoxLayout(&page);
        layout->addWidget(list);
        if (small)
            list->applySmallStyle();
        list->setDealList(deals(count));
        page.resize(325, 200);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QScrollBar *bar = list->verticalScrollBar();
        QCOMPARE(bar->maximum() > 0, count > 50);
        bar->setValue(bar->maximum() / 2);
        const int value = bar->value();
        for (const int delta : {120, -120, 30})
            QVERIFY(zvtest::turnWheel(list->viewport(), delta));
        QCOMPARE(page.turns, 3);
        QCOMPARE(bar->value(), value);
    }

    // Page keys, Escape and typed codes go to whoever had the focus before.
    void theFocusStaysWhereItIs()
    {
        QWidget page;
        auto *field = new QLineEdit;
        auto *list = new Collection_DealHistory_View;
        auto *layout = new QVBoxLayout(&page);
        layout->addWidget(field);
        layout->addWidget(list);
        list->setDealList(deals(3));
        page.show();
        page.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&page));
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(10, 10));
        QVERIFY(field->hasFocus());
        zvtest::turnWheel(list->viewport(), 120);
        QVERIFY(field->hasFocus());
        QTest::keyClick(field, Qt::Key_Tab);
        QVERIFY(!list->hasFocus());
    }
};

ZV_TEST(CollectionDealHistoryViewTest)
#include "test_collection_dealhistory_view.moc"
