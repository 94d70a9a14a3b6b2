#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "ZvWidgetKit/recordpage.h"
#include "pictures.h"
#include "recordbench.h"
#include "recordrows.h"
#include "support/testregistry.h"

#include <QAbstractItemView>
#include <QCalendarWidget>
#include <QComboBox>
#include <QDateEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QtTest/QtTest>

#include <memory>

namespace {

constexpr QSize PageSize(1242, 260); // beside the column of buttons in a window of 1366 pixels

} // namespace

// What the record pages and the tables under the ticket look like, after they were looked at.
class RecordPicturesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;

    static void show(QWidget *widget, const QSize &size = PageSize)
    {
        widget->resize(size);
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
        widget->setFocus();
    }

    static void hold(QWidget *widget, const QString &name, bool isKept)
    {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(widget, name, isKept);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    static QString fileName(const QString &name)
    {
        return QStringLiteral("records_")
            + QString(name).replace(QLatin1Char(' '), QLatin1Char('_'));
    }

private slots:
    void initTestCase()
    {
        zvtest::wearTheClientsLook();
        m_kit = std::make_unique<KitBench>();
    }

    void cleanupTestCase() { m_kit.reset(); }

    void pages_data() { zvtest::addRecordMembers(); }
    void pages()
    {
        QFETCH(int, place);
        const zvtest::RecordMember &member = zvtest::recordMembers().at(place);
        const std::unique_ptr<RecordPage> page = member.make();
        show(page.get());
        page->slot_selectButton_clicked();
        member.answer(0, 1);
        hold(page.get(), fileName(member.name + QStringLiteral(" empty")), false);
        member.answer(10, 1);
        hold(page.get(), fileName(member.name), true);
        member.answerLongest();
        hold(page.get(), fileName(member.name + QStringLiteral(" longest")), true);
        QScrollBar *bar = zvtest::tableOf(page.get())->horizontalScrollBar();
        if (bar->maximum() > 0) {
            bar->setValue(bar->maximum());
            hold(page.get(), fileName(member.name + QStringLiteral(" right end")), true);
            bar->setValue(0);
        }
        // So low and narrow that it has to be scrolled.
        member.answer(10, 1);
        page->resize(620, 150);
        hold(page.get(), fileName(member.name + QStringLiteral(" small")), false);
        page->slot_selectButton_clicked();
        member.answer(0, 1);
    }

    // The controls of the bar as they are used: the mouse over them, focused, open.
    void controls()
    {
        const std::unique_ptr<RecordPage> page = zvtest::recordMembers().first().make();
        show(page.get(), QSize(700, 120));
        auto *start = page->findChild<QDateEdit *>(QStringLiteral("dateEdit_startDate"));
        auto *type = page->findChild<QComboBox *>();
        auto *select = page->findChild<QPushButton *>();
        start->setDate(QDate(2018, 5, 4));
        start->setFocus();
        hold(page.get(), QStringLiteral("records_bar_date"), true);
        QTest::mouseMove(start, QPoint(10, 10));
        hold(page.get(), QStringLiteral("records_bar_hover"), false);
        type->setFocus();
        hold(page.get(), QStringLiteral("records_bar_type"), true);
        select->setFocus();
        QTest::mouseMove(select);
        hold(page.get(), QStringLiteral("records_bar_button"), false);
        QTest::mouseMove(page.get(), QPoint(600, 100));
    }

    void calendar()
    {
        const std::unique_ptr<RecordPage> page = zvtest::recordMembers().first().make();
        show(page.get(), QSize(700, 120));
        auto *start = page->findChild<QDateEdit *>(QStringLiteral("dateEdit_startDate"));
        start->setDate(QDate(2018, 5, 4));
        QTest::mouseClick(start, Qt::LeftButton, {}, QPoint(start->width() - 6, 8));
        QWidget *popup = start->calendarWidget()->parentWidget();
        QTRY_VERIFY(popup->isVisible());
        hold(popup, QStringLiteral("records_calendar"), true);
        popup->close();
    }

    void typeList()
    {
        const std::unique_ptr<RecordPage> page = zvtest::recordMembers().first().make();
        show(page.get(), QSize(700, 120));
        auto *type = page->findChild<QComboBox *>();
        type->showPopup();
        QWidget *popup = type->view()->window();
        QTRY_VERIFY(popup->isVisible());
        hold(popup, QStringLiteral("records_types"), true);
        type->hidePopup();
    }

    void holdings()
    {
        DealWidget_BuySell_CapTableView table;
        show(&table);
        hold(&table, QStringLiteral("holdings_empty"), false);
        table.setCapList(zvtest::rowsOf(zvtest::holding, 12));
        hold(&table, QStringLiteral("holdings"), true);
        table.setCapList({zvtest::longestHolding(), zvtest::holding(1)});
        hold(&table, QStringLiteral("holdings_longest"), true);
        table.setCapList(zvtest::rowsOf(zvtest::holding, 12));
        table.resize(620, 150);
        hold(&table, QStringLiteral("holdings_small"), false);
    }

    void daySums()
    {
        DealWidget_BuySell_DealTableView table;
        show(&table);
        hold(&table, QStringLiteral("daysums_empty"), false);
        table.setGatherList(zvtest::rowsOf(zvtest::daySum, 12));
        hold(&table, QStringLiteral("daysums"), true);
        table.setGatherList({zvtest::longestDaySum(), zvtest::daySum(1)});
        hold(&table, QStringLiteral("daysums_longest"), true);
        table.setGatherList(zvtest::rowsOf(zvtest::daySum, 12));
        table.resize(620, 150);
        hold(&table, QStringLiteral("daysums_small"), false);
    }
};

ZV_TEST(RecordPicturesTest)
#include "test_recordpictures.moc"
