#include "ZvWidgetKit/dealwidget_prepay_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"
#include "ZvWidgetKit/dealwidget_prepay_tableview.h"
#include "orderrows.h"
#include "support/testregistry.h"

#include <QFile>
#include <QHeaderView>
#include <QPointer>
#include <QScrollBar>
#include <QtTest/QtTest>

#include <memory>

using zvtest::tickedRows;

// The table as the ticket makes it: a view, then the model, then the set-up.
class PrePayTableViewTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<DealWidget_PrePay_TableModel> m_model;
    std::unique_ptr<DealWidget_PrePay_TableView> m_view;

    QModelIndex cell(int row, int column) const { return m_model->index(row, column); }
    QPoint middle(int row, int column) const
    {
        return m_view->visualRect(cell(row, column)).center() + QPoint(3, 0);
    }
    void click(int row, int column)
    {
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middle(row, column));
    }

private slots:
    void init()
    {
        m_model = std::make_unique<DealWidget_PrePay_TableModel>();
        m_view = std::make_unique<DealWidget_PrePay_TableView>();
        m_view->setModel(m_model.get());
        m_view->setupView();
        for (const char *code : {"a", "b", "c"}) {
            ZvUBTradeItem item;
            item.code = QLatin1String(code);
            m_model->addTradeItem(item);
        }
        m_view->resize(900, 200);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
    }

    void tableIsSetUpAsRequired()
    {
        QCOMPARE(m_view->metaObject()->superClass(), &QTableView::staticMetaObject);
        QVERIFY(qobject_cast<DealWidget_PrePay_TableDelegate *>(m_view->itemDelegate()));
        QVERIFY(m_view->verticalHeader()->isHidden());
        QVERIFY(!m_view->showGrid());
        QCOMPARE(m_view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(m_view->selectionMode(), QAbstractItemView::MultiSelection);
        QHeaderView *header = m_view->horizontalHeader();
        for (int section = 0; section < header->count(); ++section) {
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
            QVERIFY(!header->isSectionHidden(section));
        }
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        QCOMPARE(m_view->columnWidth(0), 50);
        QCOMPARE(m_view->columnWidth(1), 100);
        QCOMPARE(m_view->columnWidth(2), 200);
        QCOMPARE(m_view->columnWidth(3), 50);
        QCOMPARE(m_view->columnWidth(5), 75);
        QVERIFY(m_view->columnWidth(7) >= 200);
        QCOMPARE(m_view->verticalHeader()->defaultSectionSize(), 24);
        QCOMPARE(m_view->rowHeight(0), 24);

        QCOMPARE(m_view->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"));
        QCOMPARE(
            header->styleSheet(),
            QStringLiteral("QHeaderView::section {height:30px;background-color: #101114;"
                           "border-top: none;border-bottom:none;border-right:1px solid #161618;"
                           "border-left:none;}"
                           "QHeaderView{height: 24px;background-color: #101114;"
                           "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}"));
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString bars = QString::fromUtf8(sheet.readAll());
        QCOMPARE(m_view->verticalScrollBar()->styleSheet(), bars);
        QCOMPARE(m_view->horizontalScrollBar()->styleSheet(), bars);
    }

    void aClickOnTheBoxTurnsItsTick()
    {
        click(1, 0);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1"));
        click(2, 0);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1 2"));
        click(1, 0);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("2"));
    }

    void aClickBesideTheBoxSelectsTheRowOnly()
    {
        click(1, 2);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {},
                          m_view->visualRect(cell(0, 0)).topLeft() + QPoint(2, 2));
        QCOMPARE(tickedRows(m_model.get()), QString());
        QVERIFY(m_view->selectionModel()->isRowSelected(0, {}));
        QVERIFY(m_view->selectionModel()->isRowSelected(1, {}));
        QVERIFY(!m_view->selectionModel()->isRowSelected(2, {}));
    }

    void thePressAndTheReleaseAreOverOneBox()
    {
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, middle(0, 0));
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, middle(1, 0));
        QCOMPARE(tickedRows(m_model.get()), QString());
    }

    void keysTurnTheTickOfTheCurrentRow()
    {
        m_view->setFocus();
        m_view->setCurrentIndex(cell(1, 0));
        QTest::keyClick(m_view.get(), Qt::Key_Space);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1"));
        QTest::keyClick(m_view.get(), Qt::Key_Down);
        QKeyEvent select(QEvent::KeyPress, Qt::Key_Select, Qt::NoModifier);
        QCoreApplication::sendEvent(m_view.get(), &select);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1 2"));
        QTest::keyClick(m_view.get(), Qt::Key_Space);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1"));
        m_view->setCurrentIndex(cell(0, 2));
        QTest::keyClick(m_view.get(), Qt::Key_Space);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("1"));
    }

    void ticksOutliveAScrollAndANewRow()
    {
        for (int i = 0; i < 30; ++i)
            m_model->addTradeItem(ZvUBTradeItem());
        m_view->scrollToBottom();
        click(32, 0);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("32"));
        m_model->addTradeItem(ZvUBTradeItem());
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("33"));
        m_view->scrollToTop();
        click(0, 0);
        QCOMPARE(tickedRows(m_model.get()), QStringLiteral("0 33"));
    }

    void theDelegateEndsWithTheView()
    {
        const QPointer<QAbstractItemDelegate> delegate = m_view->itemDelegate();
        QVERIFY(delegate);
        m_view.reset();
        QVERIFY(!delegate);
    }
};

ZV_TEST(PrePayTableViewTest)
#include "test_dealwidget_prepay_tableview.moc"
