#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/recordpage.h"
#include "pagelog.h"
#include "recordbench.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>
#include <QtTest/QtTest>

#include <limits>
#include <memory>
#include <vector>

namespace {

const QString onlyDay = QStringLiteral("2020/01/01");

QString numbers(int count, int first)
{
    QStringList all;
    for (int i = 0; i < count; ++i)
        all << QString::number(first + i);
    return all.join(QLatin1Char(' '));
}

} // namespace

// The tables of the five record pages: how they are set up, how the wheel pages and what they make
// of the answers.
class RecordViewsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    std::unique_ptr<RecordPage> m_page;
    const zvtest::RecordMember *m_member = nullptr;

    // The page of the current row, on screen.
    void make()
    {
        QFETCH(int, place);
        m_member = &zvtest::recordMembers().at(place);
        m_page = m_member->make();
        m_page->resize(1100, 300);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

    QTableView *table() const { return zvtest::tableOf(m_page.get()); }
    QString shown() const { return zvtest::shownRecords(*m_member, m_page.get()); }
    void query() { QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_selectButton_clicked")); }

    // A full page of records, the first one being page 1.
    void answerPage(int page) { m_member->answer(10, 10 * page - 9); }
    static QString page(int number) { return numbers(10, 10 * number - 9); }
    void answerNothing() { m_member->answer(0, 1); }

    void wheel(int delta, int turns = 1)
    {
        for (int i = 0; i < turns; ++i)
            QVERIFY(zvtest::turnWheel(table()->viewport(), delta));
    }
    void turnDown() { wheel(-120, 5); }
    void turnUp() { wheel(120, 5); }

    QString asks(int page, const QString &from = onlyDay) const
    {
        return m_member->asks(from, onlyDay, page, 0);
    }
    QStringList turn(const char *way, int page, const QString &from = onlyDay) const
    {
        return {QStringLiteral("<time> ==> ") + QLatin1String(way),
                QStringLiteral("<time> ==> RequestPage: %1").arg(page), asks(page, from)};
    }
    static QStringList take(zvtest::PageLog &log) { return zvtest::withoutTimes(log.take()); }

    // The page on view: the one before that which a turn down asks for.
    int currentPage(zvtest::PageLog &log)
    {
        log.take();
        QMetaObject::invokeMethod(m_page.get(), "slot_pageDownButton_clicked");
        return zvtest::withoutTimes(log.take()).at(1).section(QLatin1Char(' '), -1).toInt() - 1;
    }

private slots:
    void init() { m_kit = std::make_unique<KitBench>(); }

    void cleanup()
    {
        if (m_member)
            answerNothing();
        m_page.reset();
        m_kit.reset();
    }

    void isSetUpAsRequired_data() { zvtest::addRecordMembers(); }
    void isSetUpAsRequired()
    {
        make();
        QVERIFY(table()->verticalHeader()->isHidden());
        QVERIFY(!table()->showGrid());
        QCOMPARE(table()->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table()->selectionMode(), QAbstractItemView::NoSelection);
        const QHeaderView *header = table()->horizontalHeader();
        QVERIFY(header->stretchLastSection());
        QVERIFY(!header->highlightSections());
        for (int section = 0; section + 1 < header->count(); ++section)
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::Interactive);
        QCOMPARE(table()->verticalHeader()->defaultSectionSize(), 22);
        QVERIFY(!table()->model()->parent());
        QVERIFY(!table()->itemDelegate()->parent());
    }

    void columnsStandAsRequired_data() { zvtest::addRecordMembers(); }
    void columnsStandAsRequired()
    {
        make();
        for (auto width = m_member->widths.cbegin(); width != m_member->widths.cend(); ++width)
            QCOMPARE(table()->columnWidth(width.key()), width.value());
        QList<int> hidden;
        for (int column = 0; column < table()->model()->columnCount(); ++column) {
            if (table()->isColumnHidden(column))
                hidden << column;
        }
        QCOMPARE(hidden, m_member->hidden);
        query();
        answerPage(1);
        for (const int column : m_member->hidden)
            QVERIFY(table()->isColumnHidden(column));
    }

    void sheetsAreSetToTheLetter_data() { zvtest::addRecordMembers(); }
    void sheetsAreSetToTheLetter()
    {
        make();
        QCOMPARE(table()->styleSheet(),
                 QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                "selection-background-color: transparent;}"));
        QCOMPARE(table()->horizontalHeader()->styleSheet(),
                 QStringLiteral("QHeaderView::section {height:30px;background-color: #101114;"
                                "border-top: none;border-bottom:none;"
                                "border-right:1px solid #161618;border-left:none;}"
                                "QHeaderView{height: 24px;background-color: #101114;"
                                "border-top: 1px solid #161618;"
                                "border-bottom: 1px solid #161618;}"));
        QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        const QString scrollBars = QString::fromUtf8(sheet.readAll());
        QVERIFY(!scrollBars.isEmpty());
        QCOMPARE(table()->verticalScrollBar()->styleSheet(), scrollBars);
        QCOMPARE(table()->horizontalScrollBar()->styleSheet(), scrollBars);
    }

    // The style by itself would make rows higher, after its font.
    void rowsAreAsHighAsTheyShould_data() { zvtest::addRecordMembers(); }
    void rowsAreAsHighAsTheyShould()
    {
        make();
        QFont font = table()->font();
        font.setPixelSize(30);
        table()->setFont(font);
        table()->verticalHeader()->setFont(font);
        query();
        answerPage(1);
        for (int row = 0; row < 10; ++row)
            QCOMPARE(table()->rowHeight(row), 22);
    }

    void aClickSelectsNothing_data() { zvtest::addRecordMembers(); }
    void aClickSelectsNothing()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, QPoint(50, 30));
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, QPoint(50, 30));
        QVERIFY(!table()->selectionModel()->hasSelection());
        QCOMPARE(log.take(), QStringList());
    }

    void anAnswerIsShown_data() { zvtest::addRecordMembers(); }
    void anAnswerIsShown()
    {
        make();
        query();
        QCOMPARE(shown(), QString());
        answerPage(1);
        QCOMPARE(shown(), page(1));
        m_member->answer(3, 1);
        QCOMPARE(shown(), numbers(3, 1));
    }

    void anAnswerIsShownOnAHiddenPageToo_data() { zvtest::addRecordMembers(); }
    void anAnswerIsShownOnAHiddenPageToo()
    {
        make();
        m_page->hide();
        query();
        answerPage(1);
        QCOMPARE(shown(), page(1));
    }

    void anEmptyAnswerToAQueryEmptiesTheTable_data() { zvtest::addRecordMembers(); }
    void anEmptyAnswerToAQueryEmptiesTheTable()
    {
        make();
        zvtest::PageLog log;
        query();
        answerPage(1);
        turnDown();
        answerPage(2);
        QCOMPARE(shown(), page(2));
        query();
        answerNothing();
        QCOMPARE(shown(), QString());
        QCOMPARE(currentPage(log), 1);
    }

    void anEmptyAnswerBeyondTheLastPageChangesNothing_data() { zvtest::addRecordMembers(); }
    void anEmptyAnswerBeyondTheLastPageChangesNothing()
    {
        make();
        zvtest::PageLog log;
        query();
        answerPage(1);
        turnDown();
        m_member->answer(4, 11);
        QCOMPARE(shown(), numbers(4, 11));
        log.take();
        turnDown();
        QCOMPARE(take(log), turn("Down", 3));
        answerNothing();
        QCOMPARE(shown(), numbers(4, 11));
        // A further turn asks for the same page again, one back for the page before.
        turnDown();
        QCOMPARE(take(log), turn("Down", 3));
        answerNothing();
        turnUp();
        QCOMPARE(take(log), turn("Up", 1));
    }

    // It counts as the answer to the query, and the next empty one as that of a turn.
    void onlyTheFirstAnswerEndsAQuery_data() { zvtest::addRecordMembers(); }
    void onlyTheFirstAnswerEndsAQuery()
    {
        make();
        query();
        answerPage(1);
        answerNothing();
        QCOMPARE(shown(), page(1));
        // An empty first one does the same.
        query();
        answerNothing();
        QCOMPARE(shown(), QString());
        answerPage(1);
        answerNothing();
        QCOMPARE(shown(), page(1));
    }

    void anEmptyTableIsLeftAloneBeyondItsEnd_data() { zvtest::addRecordMembers(); }
    void anEmptyTableIsLeftAloneBeyondItsEnd()
    {
        make();
        query();
        answerNothing();
        turnDown();
        QSignalSpy reset(table()->model(), &QAbstractItemModel::modelReset);
        answerNothing();
        QCOMPARE(reset.count(), 0);
    }

    void anAnswerBeforeAnyQueryIsTakenForTheFirstPage_data() { zvtest::addRecordMembers(); }
    void anAnswerBeforeAnyQueryIsTakenForTheFirstPage()
    {
        make();
        zvtest::PageLog log;
        answerNothing();
        QCOMPARE(shown(), QString());
        answerPage(1);
        QCOMPARE(shown(), page(1));
        QCOMPARE(currentPage(log), 1);
    }

    void theFifthNotchTurnsThePage_data() { zvtest::addRecordMembers(); }
    void theFifthNotchTurnsThePage()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        wheel(-120, 4);
        QCOMPARE(log.take(), QStringList());
        wheel(-120);
        QCOMPARE(take(log), turn("Down", 2));
        answerPage(2);
        QCOMPARE(shown(), page(2));
        // The count has begun again.
        wheel(-120, 4);
        QCOMPARE(log.take(), QStringList());
        wheel(-120);
        QCOMPARE(take(log), turn("Down", 3));
        answerPage(3);
        turnUp(); // nothing had been gathered that a change of direction would drop
        QCOMPARE(take(log), turn("Up", 2));
        answerPage(2);
        QCOMPARE(shown(), page(2));
    }

    void theBoundItselfTurnsNothing_data() { zvtest::addRecordMembers(); }
    void theBoundItselfTurnsNothing()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        wheel(-480);
        QCOMPARE(log.take(), QStringList());
        wheel(-1);
        QCOMPARE(take(log), turn("Down", 2));
        wheel(480);
        QCOMPARE(log.take(), QStringList());
        wheel(1);
        QCOMPARE(take(log), turn("Up", 1));
        wheel(481);
        QCOMPARE(take(log), turn("Up", 1));
        wheel(-481);
        QCOMPARE(take(log), turn("Down", 2));
    }

    void aTurnBackIsDroppedAndBeginsAnew_data() { zvtest::addRecordMembers(); }
    void aTurnBackIsDroppedAndBeginsAnew()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        wheel(-120, 3);
        wheel(120); // lost
        wheel(120, 4);
        QCOMPARE(log.take(), QStringList());
        wheel(120);
        QCOMPARE(take(log), turn("Up", 1));
        wheel(120, 3);
        wheel(-5000); // lost, however far it is
        wheel(-480);
        QCOMPARE(log.take(), QStringList());
        wheel(-1);
        QCOMPARE(take(log), turn("Down", 2));
    }

    void aTurnOfZeroCountsAsNotNegative_data() { zvtest::addRecordMembers(); }
    void aTurnOfZeroCountsAsNotNegative()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        wheel(-480);
        wheel(0);
        wheel(-480);
        QCOMPARE(log.take(), QStringList());
        // A turn to the side is one of zero.
        QVERIFY(zvtest::turnWheel(table()->viewport(), QPoint(-120, 0)));
        wheel(-480);
        QCOMPARE(log.take(), QStringList());
        wheel(-1);
        QCOMPARE(take(log), turn("Down", 2));
        wheel(480);
        wheel(0);
        QCOMPARE(log.take(), QStringList());
        wheel(1);
        QCOMPARE(take(log), turn("Up", 1));
    }

    void endlessTurnsDoNotOverflow_data() { zvtest::addRecordMembers(); }
    void endlessTurnsDoNotOverflow()
    {
        make();
        query();
        zvtest::PageLog log;
        wheel(480);
        wheel(std::numeric_limits<int>::max());
        QCOMPARE(take(log), turn("Up", 1));
        wheel(-480);
        wheel(std::numeric_limits<int>::lowest());
        QCOMPARE(take(log), turn("Down", 2));
    }

    void theWheelDoesNotScroll_data() { zvtest::addRecordMembers(); }
    void theWheelDoesNotScroll()
    {
        make();
        m_page->resize(400, 150);
        query();
        answerPage(1);
        QCoreApplication::processEvents();
        QVERIFY(table()->verticalScrollBar()->maximum() > 0);
        table()->verticalScrollBar()->setValue(1);
        const int place = table()->verticalScrollBar()->value();
        wheel(-120, 3);
        wheel(120, 3);
        QCOMPARE(table()->verticalScrollBar()->value(), place);
        QCOMPARE(table()->horizontalScrollBar()->value(), 0);
    }

    void upOnTheFirstPageAsksForItAgain_data() { zvtest::addRecordMembers(); }
    void upOnTheFirstPageAsksForItAgain()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        turnUp();
        QCOMPARE(take(log), turn("Up", 1));
        QSignalSpy reset(table()->model(), &QAbstractItemModel::modelReset);
        answerPage(1);
        QCOMPARE(reset.count(), 1);
        QCOMPARE(shown(), page(1));
        answerNothing();
        QCOMPARE(shown(), page(1));
    }

    void turnsBeforeTheAnswerAskForTheSamePage_data() { zvtest::addRecordMembers(); }
    void turnsBeforeTheAnswerAskForTheSamePage()
    {
        make();
        query();
        answerPage(1);
        zvtest::PageLog log;
        turnDown();
        turnDown();
        QCOMPARE(take(log), turn("Down", 2) + turn("Down", 2));
        answerPage(2);
        QCOMPARE(currentPage(log), 2);
    }

    // The answer is taken for that to the latest request, whichever it is.
    void theFirstOfTwoAnswersGetsTheLatestPage_data() { zvtest::addRecordMembers(); }
    void theFirstOfTwoAnswersGetsTheLatestPage()
    {
        make();
        zvtest::PageLog log;
        query();
        answerPage(1);
        turnDown();
        answerPage(2);
        turnDown(); // page 3
        turnUp(); // page 1
        answerPage(3);
        QCOMPARE(shown(), page(3));
        QCOMPARE(currentPage(log), 1);
    }

    void aNewQueryStandsOnPageOneAtOnce_data() { zvtest::addRecordMembers(); }
    void aNewQueryStandsOnPageOneAtOnce()
    {
        make();
        query();
        answerPage(1);
        for (int number = 2; number < 5; ++number) {
            turnDown();
            answerPage(number);
        }
        const QString from = QStringLiteral("2018/04/03");
        if (m_member->hasDates) {
            m_page->findChild<QDateEdit *>(QStringLiteral("dateEdit_startDate"))
                ->setDate(QDate(2018, 4, 3));
        }
        zvtest::PageLog log;
        query();
        QCOMPARE(log.take(), QStringList{asks(1, from)});
        QCOMPARE(shown(), page(4));
        turnDown();
        QCOMPARE(take(log), turn("Down", 2, from));
        // What comes is shown as page 2, and empty ones of the query empty the table.
        answerNothing();
        QCOMPARE(shown(), QString());
    }

    void pagesKeepTheFilterOfTheQuery_data() { zvtest::addRecordMembers(); }
    void pagesKeepTheFilterOfTheQuery()
    {
        make();
        query();
        answerPage(1);
        if (m_member->hasDates) {
            m_page->findChild<QDateEdit *>(QStringLiteral("dateEdit_startDate"))
                ->setDate(QDate(2018, 4, 3));
        }
        if (auto *type = m_page->findChild<QComboBox *>())
            type->setCurrentIndex(2);
        zvtest::PageLog log;
        turnDown();
        QCOMPARE(take(log), turn("Down", 2));
        answerPage(2);
        turnUp();
        QCOMPARE(take(log), turn("Up", 1));
    }

    // The time of day has no minutes: hours, seconds, milliseconds.
    void turnsAreLoggedWithTheTime()
    {
        m_member = &zvtest::recordMembers().first();
        m_page = m_member->make();
        zvtest::PageLog log;
        const QTime before = QTime::currentTime();
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "slot_pageDownButton_clicked"));
        const QTime after = QTime::currentTime();
        const QStringList lines = log.take();
        QCOMPARE(lines.size(), 3);
        for (int line = 0; line < 2; ++line) {
            bool isNow = false;
            for (QTime time = before; time <= after; time = time.addMSecs(1)) {
                isNow = isNow
                    || lines.at(line).startsWith(time.toString(QStringLiteral("hh:ss:zzz"))
                                                 + QStringLiteral(" ==> "));
            }
            QVERIFY2(isNow || after < before, qPrintable(lines.at(line)));
        }
    }

    void pagesOfTheFamilyDoNotAnswerForEachOther()
    {
        const QList<zvtest::RecordMember> &members = zvtest::recordMembers();
        for (const zvtest::RecordMember &member : members)
            member.answer(0, 1);
        std::vector<std::unique_ptr<RecordPage>> pages;
        for (const zvtest::RecordMember &member : members)
            pages.push_back(member.make());
        for (int asked = 0; asked < members.size(); ++asked) {
            members.at(asked).answer(2, 1);
            for (int other = 0; other < members.size(); ++other) {
                QCOMPARE(
                    zvtest::shownRecords(members.at(other), pages.at(std::size_t(other)).get()),
                    other <= asked ? QStringLiteral("1 2") : QString());
            }
        }
        for (const zvtest::RecordMember &member : members)
            member.answer(0, 1);
    }

    void aTableThatIsGoneHearsNothing_data() { zvtest::addRecordMembers(); }
    void aTableThatIsGoneHearsNothing()
    {
        make();
        query();
        const QPointer<QAbstractItemDelegate> delegate = table()->itemDelegate();
        m_page.reset();
        QVERIFY(delegate.isNull());
        answerPage(1); // the sanitizer watches
    }
};

ZV_TEST(RecordViewsTest)
#include "test_recordviews.moc"
