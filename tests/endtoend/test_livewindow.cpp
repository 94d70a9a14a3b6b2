#include "client/connectionstrip.h"
#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QWheelEvent>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

constexpr int idColumn = 21;
constexpr int latestColumn = 3;

} // namespace

// The window on a market in which robots trade.
class LiveWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_exchange.start(m_state, 0, 60));
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setExchangeAddress(
            m_exchange.address());
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1600, 480);
        m_window->show();
        m_table = endtoend::marketTable(*m_window);
        QVERIFY(m_table);
        ZvServerAccessManager::getZvServerAccessManagerInstance()->start();
        QVERIFY(endtoend::showWholeMarket(*m_window));
        QTRY_VERIFY_WITH_TIMEOUT(m_table->model()->rowCount() > 1, patience);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void firstRowInSortOrderIsTheCurrentCollection()
    {
        QVERIFY(m_table->currentIndex().isValid());
        QCOMPARE(m_table->currentIndex().row(), 0);
        QCOMPARE(m_table->selectionModel()->selectedRows().size(), 1);
        const QString id = idOfRow(0);
        QVERIFY(!id.isEmpty());
        QVERIFY2(!id.startsWith('-'), "the composite must not come first");
        QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(), id);
    }

    void everyCollectionOfTheMarketIsThere()
    {
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), 9, patience); // and the composite
        const QStringList codes = textsOf(1);
        QVERIFY(codes.contains("111001"));
        QVERIFY(textsOf(2).contains(QStringLiteral("荷塘小型张")));
        QVERIFY(textsOf(idColumn).contains("-1"));
    }

    void theStripSaysThatTheMarketIsLive()
    {
        QTRY_VERIFY(m_window->connectionStrip()->text().contains(QStringLiteral("已连接")));
    }

    void changedCellsTurnBlueForAboutASecond()
    {
        QAbstractItemModel *model = m_table->model();
        QElapsedTimer since;
        QPersistentModelIndex cell;
        qint64 stood = -1;
        const auto connection = connect(
            model, &QAbstractItemModel::dataChanged, this,
            [&](const QModelIndex &first, const QModelIndex &, const QVector<int> &roles) {
                if (!cell.isValid() && roles.contains(Qt::EditRole) && isBlue(first)
                    && !m_table->isColumnHidden(first.column())
                    && first.row() != m_table->currentIndex().row()) {
                    cell = first;
                    since.start();
                } else if (cell.isValid() && stood < 0 && roles == QVector<int>{Qt::BackgroundRole}
                           && !isBlue(cell)) {
                    stood = since.elapsed();
                }
            });
        const bool changed = endtoend::until([&] { return cell.isValid(); });
        const QColor seen = changed ? painted(cell) : QColor();
        const bool ended = endtoend::until([&] { return stood >= 0; });
        disconnect(connection);
        QVERIFY(changed);
        QCOMPARE(seen, QColor(Qt::blue));
        QVERIFY(ended);
        QVERIFY2(stood >= 700 && stood <= 3000, qPrintable(QString::number(stood)));
    }

    void orderHoldsAfterEveryTick_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("descending");
        const QStringList headers = ZvUBObject::headerListForModelUse();
        for (const int column : {3, 5, 6, 9, 10, 17}) {
            for (const bool descending : {false, true}) {
                QTest::addRow("%s %s", qPrintable(headers.at(column)),
                              descending ? "descending" : "ascending")
                    << column << descending;
            }
        }
    }
    void orderHoldsAfterEveryTick()
    {
        QFETCH(int, column);
        QFETCH(bool, descending);
        QVERIFY(ZvUBObject::ColumnIdsForFloatSort().contains(column));
        m_table->sortByColumn(column, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
        int ticks = 0;
        QStringList faults;
        // After the window's own connection, so the table has the tick already.
        const auto connection = connect(ZvServerCache::getZvServerCacheInstance(),
                                        &ZvServerCache::signal_cache_MarketList_changed, this, [&] {
                                            ++ticks;
                                            faults += disorder(column, descending);
                                        });
        const bool ticked = endtoend::until([&] { return ticks >= 3; });
        disconnect(connection);
        QVERIFY(ticked);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    void selectionAndScrollStayPut()
    {
        m_table->setMaximumHeight(120); // fewer rows than there are
        m_table->sortByColumn(10, Qt::DescendingOrder);
        QScrollBar *bar = m_table->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() >= 2);
        bar->setValue(2);
        const QModelIndex second = m_table->model()->index(3, 1);
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier,
                          m_table->visualRect(second).center());
        const QString chosen = currentId();
        QVERIFY(!chosen.isEmpty());
        QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(), chosen);
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        bool stayed = true;
        QVERIFY(endtoend::until([&] {
            stayed = stayed && bar->value() == 2 && currentId() == chosen
                && m_table->selectionModel()->selectedRows().size() == 1;
            return ticks.count() >= 5;
        }));
        QVERIFY2(stayed,
                 qPrintable(QString("scroll %1, row %2").arg(bar->value()).arg(currentId())));
        m_table->setMaximumHeight(QWIDGETSIZE_MAX);
    }

    void theWheelChangesTheCollectionAtMostOnceASecond()
    {
        m_table->sortByColumn(1, Qt::AscendingOrder);
        m_table->selectRow(0);
        auto *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
        QElapsedTimer elapsed;
        elapsed.start();
        QList<qint64> changes;
        const auto connection
            = connect(pool, &ZvWidgetSignalSLotPool::signal_global_colletionId_changed, this,
                      [&] { changes.append(elapsed.elapsed()); });
        const int rows = m_table->model()->rowCount();
        int turned = 0;
        QElapsedTimer pause;
        pause.start();
        const bool done = endtoend::until([&] {
            // Down to the last row and up again, ten notches a second.
            if (turned < 2 * rows && pause.hasExpired(100)) {
                pause.restart();
                turnWheel(turned < rows ? -120 : 120);
                ++turned;
            }
            return turned == 2 * rows
                && ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID()
                == idOfRow(0);
        });
        disconnect(connection);
        QVERIFY(done);
        QCOMPARE(m_table->currentIndex().row(), 0);
        QVERIFY(!changes.isEmpty());
        // The timer ticks once a second; two of its ticks may stand a little nearer under load.
        for (int i = 1; i < changes.size(); ++i)
            QVERIFY2(changes.at(i) - changes.at(i - 1) >= 800, "two changes within a second");
    }

    void doubleClickReturnAndMenuReachThePool()
    {
        auto *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
        QSignalSpy timeLine(pool, &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
        QSignalSpy dayLine(pool, &ZvWidgetSignalSLotPool::signal_collectionKDayLine_action);
        const QPoint place = m_table->visualRect(m_table->model()->index(2, latestColumn)).center();
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(timeLine.count(), 1);
        backToTheTable();
        QTest::keyClick(m_table, Qt::Key_Return);
        QCOMPARE(timeLine.count(), 2);
        backToTheTable();

        QTest::mouseClick(m_table->viewport(), Qt::RightButton, Qt::NoModifier, place);
        QContextMenuEvent ask(QContextMenuEvent::Mouse, place,
                              m_table->viewport()->mapToGlobal(place));
        QApplication::sendEvent(m_table->viewport(), &ask);
        const QPointer<QMenu> menu = m_table->findChild<QMenu *>();
        QVERIFY(menu);
        QTRY_VERIFY(menu->isVisible());
        // A tick goes on under an open menu.
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        QVERIFY(ticks.wait(patience));
        for (QAction *action : menu->actions()) {
            if (action->text() == QStringLiteral("日K图"))
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(action).center());
        }
        QCOMPARE(dayLine.count(), 1);
        QTRY_VERIFY(!menu);
        backToTheTable();
    }

    void upAndDownMoveThroughTheMarket()
    {
        m_table->sortByColumn(1, Qt::AscendingOrder);
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier,
                          m_table->visualRect(m_table->model()->index(0, 1)).center());
        QTest::keyClick(m_table, Qt::Key_Down);
        QTest::keyClick(m_table, Qt::Key_Down);
        QCOMPARE(m_table->currentIndex().row(), 2);
        QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(), idOfRow(2));
    }

private:
    // From the chart that has opened.
    void backToTheTable() const
    {
        QVERIFY(!m_table->isVisible());
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
        QVERIFY(m_table->isVisible());
    }

    QString idOfRow(int row) const
    {
        return m_table->model()->index(row, idColumn).data().toString();
    }

    QString currentId() const { return idOfRow(m_table->currentIndex().row()); }

    QStringList textsOf(int column) const
    {
        QStringList texts;
        for (int row = 0; row < m_table->model()->rowCount(); ++row)
            texts.append(m_table->model()->index(row, column).data().toString());
        return texts;
    }

    static bool isBlue(const QModelIndex &index)
    {
        return index.data(Qt::BackgroundRole).value<QColor>() == QColor(Qt::blue);
    }

    // The colour at the left edge of a cell, where no text stands.
    QColor painted(const QModelIndex &index) const
    {
        m_table->scrollTo(index);
        const QImage picture = m_table->viewport()->grab().toImage();
        return picture.pixelColor(m_table->visualRect(index).topLeft() + QPoint(1, 1));
    }

    QStringList disorder(int column, bool descending) const
    {
        QStringList faults;
        const QAbstractItemModel *model = m_table->model();
        for (int row = 1; row < model->rowCount(); ++row) {
            const float above = model->index(row - 1, column).data(Qt::EditRole).toFloat();
            const float below = model->index(row, column).data(Qt::EditRole).toFloat();
            if (descending ? above < below : above > below)
                faults += QString("row %1: %2 before %3").arg(row).arg(above).arg(below);
        }
        return faults;
    }

    void turnWheel(int delta)
    {
        QWidget *viewport = m_table->viewport();
        const QPointF place = viewport->rect().center();
        QWheelEvent event(place, viewport->mapToGlobal(place.toPoint()), QPoint(), QPoint(0, delta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &event);
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
    QTableView *m_table = nullptr;
};

ZV_TEST(LiveWindowTest)
#include "test_livewindow.moc"
