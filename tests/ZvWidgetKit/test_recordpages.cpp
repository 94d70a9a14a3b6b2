#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord.h"
#include "ZvWidgetKit/recordpage.h"
#include "buttonclicks.h"
#include "pagelog.h"
#include "recordbench.h"
#include "support/testregistry.h"

#include <QCalendarWidget>
#include <QComboBox>
#include <QDateEdit>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QtTest/QtTest>

#include <memory>

namespace {

const QString onlyDay = QStringLiteral("2020/01/01");

} // namespace

// The five pages of records: form, filter and query. How their tables page is another test.
class RecordPagesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    std::unique_ptr<RecordPage> m_page;
    const zvtest::RecordMember *m_member = nullptr;

    // The page of the current row.
    void make()
    {
        QFETCH(int, place);
        m_member = &zvtest::recordMembers().at(place);
        m_page = m_member->make();
    }

    template <typename Widget>
    Widget *named(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    QDateEdit *start() const { return named<QDateEdit>("dateEdit_startDate"); }
    QDateEdit *stop() const { return named<QDateEdit>("dateEdit_stopDate"); }
    QComboBox *type() const { return named<QComboBox>("comboBox_type"); }
    QFrame *panel() const { return m_page->findChild<QFrame *>(m_member->panel); }

    QString asks(const QString &from = onlyDay, const QString &to = onlyDay, int code = 0) const
    {
        return m_member->asks(from, to, 1, code);
    }

    void show()
    {
        m_page->resize(1100, 300);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

private slots:
    void init() { m_kit = std::make_unique<KitBench>(); }

    void cleanup()
    {
        m_page.reset();
        m_kit.reset();
    }

    void formsAreMadeAsRequired_data() { zvtest::addRecordMembers(); }
    void formsAreMadeAsRequired()
    {
        make();
        QVERIFY(panel());
        QWidget *container = m_page->findChild<QWidget *>(m_member->container);
        QVERIFY(container);
        QCOMPARE(zvtest::tableOf(m_page.get())->parentWidget(), container);
        QStringList texts;
        for (const QLabel *label : panel()->findChildren<QLabel *>())
            texts << label->text();
        QStringList expected;
        if (m_member->hasDates)
            expected << QStringLiteral("开始日期") << QStringLiteral("结束日期");
        if (!m_member->types.isEmpty())
            expected << QStringLiteral("交易类型");
        QCOMPARE(texts, expected);
        QCOMPARE(named<QPushButton>("pushButton_select")->text(), QStringLiteral("查询"));
        for (const char *name : {"toolButton_pageUp", "toolButton_pageDown"}) {
            auto *button = named<QToolButton>(name);
            QCOMPARE(button->text(), QStringLiteral("..."));
            QCOMPARE(button->styleSheet(), QStringLiteral("background-color: rgb(30, 33, 38);"));
        }
        QCOMPARE(bool(start()), m_member->hasDates);
        QCOMPARE(bool(stop()), m_member->hasDates);
        QCOMPARE(bool(type()), !m_member->types.isEmpty());
    }

    void stylesAreSetToTheLetter_data() { zvtest::addRecordMembers(); }
    void stylesAreSetToTheLetter()
    {
        make();
        QCOMPARE(panel()->styleSheet(),
                 QStringLiteral("QFrame#%1{background-color:rgb(16,17,20);}").arg(m_member->panel));
        for (const QLabel *label : panel()->findChildren<QLabel *>())
            QCOMPARE(label->styleSheet(), QStringLiteral("QLabel{color:rgb(255,255,255)}"));
        QCOMPARE(named<QPushButton>("pushButton_select")->styleSheet(),
                 ZvServerConfig::getZvServerConfigInstance()->getStyleOf_DealCheckButton());
        const auto gaps = [](const QLayout *layout) {
            const QMargins margins = layout->contentsMargins();
            return QList<int>{margins.left(), margins.top(), margins.right(), margins.bottom(),
                              layout->spacing()};
        };
        QCOMPARE(gaps(m_page->layout()), (QList<int>{0, 0, 0, 0, 0}));
        QCOMPARE(gaps(panel()->layout()), (QList<int>{3, 3, 3, 3, 3}));
        auto *row = qobject_cast<QHBoxLayout *>(
            m_page->findChild<QWidget *>(m_member->container)->layout());
        QVERIFY(row);
        QCOMPARE(gaps(row), (QList<int>{0, 0, 0, 0, 0}));
    }

    void theTableFillsThePageBelowTheBar_data() { zvtest::addRecordMembers(); }
    void theTableFillsThePageBelowTheBar()
    {
        make();
        show();
        const QTableView *table = zvtest::tableOf(m_page.get());
        const QRect onPage(table->mapTo(m_page.get(), QPoint()), table->size());
        QCOMPARE(onPage, QRect(0, panel()->height(), 1100, 300 - panel()->height()));
        QVERIFY2(panel()->height() < 40, qPrintable(QString::number(panel()->height())));
    }

    void datesStandOnTheLastDayThatTheyMayShow_data() { zvtest::addRecordMembers(); }
    void datesStandOnTheLastDayThatTheyMayShow()
    {
        make();
        if (!m_member->hasDates)
            return;
        for (const QDateEdit *edit : {start(), stop()}) {
            QVERIFY(edit->calendarPopup());
            QCOMPARE(edit->displayFormat(), QStringLiteral("yyyy/MM/dd"));
            QCOMPARE(edit->maximumDate(), QDate(2020, 1, 1));
            QCOMPARE(edit->date(), QDate(2020, 1, 1));
        }
        QCOMPARE(start()->minimumDate(), QDate(2016, 1, 1));
        // It was told of the start date when the page was made.
        QCOMPARE(stop()->minimumDate(), QDate(2020, 1, 1));
    }

    void theStartDatePushesTheStopDate_data() { zvtest::addRecordMembers(); }
    void theStartDatePushesTheStopDate()
    {
        make();
        if (!m_member->hasDates)
            return;
        start()->setDate(QDate(2017, 3, 1));
        QCOMPARE(stop()->date(), QDate(2020, 1, 1));
        stop()->setDate(QDate(2018, 5, 5));
        QCOMPARE(start()->date(), QDate(2017, 3, 1));
        start()->setDate(QDate(2019, 7, 7));
        QCOMPARE(stop()->date(), QDate(2019, 7, 7));
        // The stop date does not come before it, and does not pull it along.
        stop()->setDate(QDate(2016, 2, 2));
        QCOMPARE(stop()->date(), QDate(2019, 7, 7));
        QCOMPARE(start()->date(), QDate(2019, 7, 7));
        start()->setDate(QDate(2015, 1, 1));
        QCOMPARE(start()->date(), QDate(2016, 1, 1));
        QCOMPARE(stop()->minimumDate(), QDate(2016, 1, 1));
        QCOMPARE(stop()->date(), QDate(2019, 7, 7));
    }

    void typesStandAtTheFirstOne_data() { zvtest::addRecordMembers(); }
    void typesStandAtTheFirstOne()
    {
        make();
        if (m_member->types.isEmpty())
            return;
        QStringList entries;
        for (int i = 0; i < type()->count(); ++i)
            entries << type()->itemText(i);
        QCOMPARE(entries, m_member->types);
        QCOMPARE(type()->currentIndex(), 0);
    }

    void nothingIsAskedForByMakingOrShowing_data() { zvtest::addRecordMembers(); }
    void nothingIsAskedForByMakingOrShowing()
    {
        zvtest::PageLog log;
        make();
        show();
        m_page->hide();
        m_page->show();
        QCOMPARE(log.take(), QStringList());
        QCOMPARE(zvtest::tableOf(m_page.get())->model()->rowCount(), 0);
    }

    void aNewPageAsksForTheFirstType_data() { zvtest::addRecordMembers(); }
    void aNewPageAsksForTheFirstType()
    {
        make();
        show();
        zvtest::PageLog log;
        zvtest::click(named<QPushButton>("pushButton_select"));
        QCOMPARE(log.take(), QStringList{asks()});
    }

    void aQueryReadsTheFilter_data() { zvtest::addRecordMembers(); }
    void aQueryReadsTheFilter()
    {
        make();
        show();
        zvtest::PageLog log;
        if (m_member->hasDates) {
            start()->setDate(QDate(2016, 9, 8));
            stop()->setDate(QDate(2019, 12, 31));
        }
        const QStringList types = m_member->types;
        for (int code = 0; code < qMax(1, types.size()); ++code) {
            if (!types.isEmpty()) {
                type()->setFocus();
                QTest::keyClick(type(), Qt::Key_Home);
                for (int step = 0; step < code; ++step)
                    QTest::keyClick(type(), Qt::Key_Down);
            }
            QCOMPARE(log.take(), QStringList());
            zvtest::click(named<QPushButton>("pushButton_select"), zvtest::ClickWay::Space);
            QCOMPARE(log.take(),
                     QStringList{
                         asks(QStringLiteral("2016/09/08"), QStringLiteral("2019/12/31"), code)});
        }
    }

    // As the trading half does after a sign-in, without a click.
    void theSlotQueriesToo_data() { zvtest::addRecordMembers(); }
    void theSlotQueriesToo()
    {
        make();
        zvtest::PageLog log;
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_selectButton_clicked"));
        QCOMPARE(log.take(), QStringList{asks()});
    }

    void dateEditsAreUsedByKeyboardAndCalendar_data() { zvtest::addRecordMembers(); }
    void dateEditsAreUsedByKeyboardAndCalendar()
    {
        make();
        if (!m_member->hasDates)
            return;
        show();
        start()->setFocus();
        start()->setSelectedSection(QDateTimeEdit::YearSection);
        QTest::keyClick(start(), Qt::Key_Down);
        QCOMPARE(start()->date(), QDate(2019, 1, 1));
        QCOMPARE(stop()->minimumDate(), QDate(2019, 1, 1));
        QTest::mouseClick(start(), Qt::LeftButton, {}, QPoint(start()->width() - 5, 8));
        auto *calendar = start()->calendarWidget();
        QVERIFY(calendar);
        QTRY_VERIFY(calendar->isVisible());
        QCOMPARE(calendar->minimumDate(), QDate(2016, 1, 1));
        QCOMPARE(calendar->maximumDate(), QDate(2020, 1, 1));
        QCOMPARE(calendar->locale().language(), QLocale::Chinese);
        QTest::keyClick(calendar->findChild<QTableView *>(), Qt::Key_Up);
        QTest::keyClick(calendar->findChild<QTableView *>(), Qt::Key_Return);
        QTRY_VERIFY(!calendar->isVisible());
        QCOMPARE(start()->date(), QDate(2018, 12, 25));
        QCOMPARE(stop()->minimumDate(), QDate(2018, 12, 25));
    }

    // Whoever looks for the table of a page finds no other.
    void aPageHasOneTable_data() { zvtest::addRecordMembers(); }
    void aPageHasOneTable()
    {
        make();
        show();
        QCOMPARE(m_page->findChildren<QTableView *>().size(), 1);
    }

    void pageButtonsAreHiddenAndTheirSlotsTurnThePage_data() { zvtest::addRecordMembers(); }
    void pageButtonsAreHiddenAndTheirSlotsTurnThePage()
    {
        make();
        show();
        auto *up = named<QToolButton>("toolButton_pageUp");
        auto *down = named<QToolButton>("toolButton_pageDown");
        QVERIFY(up->isHidden() && down->isHidden());
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_selectButton_clicked"));
        m_member->answer(10, 1);
        zvtest::PageLog log;
        const auto turn = [&](const char *way, int page) {
            return QStringList{QStringLiteral("<time> ==> ") + QLatin1String(way),
                               QStringLiteral("<time> ==> RequestPage: %1").arg(page),
                               m_member->asks(onlyDay, onlyDay, page, 0)};
        };
        down->click();
        QCOMPARE(zvtest::withoutTimes(log.take()), turn("Down", 2));
        m_member->answer(10, 11);
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_pageDownButton_clicked"));
        QCOMPARE(zvtest::withoutTimes(log.take()), turn("Down", 3));
        m_member->answer(10, 21);
        up->click();
        QCOMPARE(zvtest::withoutTimes(log.take()), turn("Up", 2));
        m_member->answer(10, 11);
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_pageUpButton_clicked"));
        QCOMPARE(zvtest::withoutTimes(log.take()), turn("Up", 1));
    }

    void dealsAreShownWithAndWithoutTheBar()
    {
        DealWidget_Select_DealRecord page;
        page.resize(1100, 300);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        auto *bar = page.findChild<QFrame *>(QStringLiteral("frame_recordPanel"));
        auto *table = page.findChild<QTableView *>();
        zvtest::PageLog log;
        page.hideRecordPanel();
        QVERIFY(bar->isHidden());
        QTRY_COMPARE(table->height(), 300);
        page.showRecordPanel();
        QVERIFY(bar->isVisible());
        QTRY_COMPARE(table->height(), 300 - bar->height());
        QCOMPARE(log.take(), QStringList());
        // The slots go on without the bar.
        page.hideRecordPanel();
        page.slot_selectButton_clicked();
        QCOMPARE(log.take(),
                 QStringList{zvtest::recordMembers().first().asks(onlyDay, onlyDay, 1, 0)});
    }
};

ZV_TEST(RecordPagesTest)
#include "test_recordpages.moc"
