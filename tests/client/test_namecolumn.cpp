#include "client/namecolumn.h"

#include "support/testregistry.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvWidgetKit/collection_tableview.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QScrollBar>
#include <QToolTip>
#include <QtTest/QtTest>

namespace {

constexpr int nameColumn = 2;

QList<ZvUBObject> rows(const QStringList &names)
{
    QList<ZvUBObject> made;
    for (int i = 0; i < names.size(); ++i) {
        ZvUBObject::Data data;
        data.collectionId = QString::number(1001 + i);
        data.code = data.collectionId;
        data.name = names.at(i);
        made << ZvUBObject(data);
    }
    return made;
}

const QString longName = QStringLiteral("一九八四年版长城首日纪念封整版加字珍藏品");

} // namespace

class NameColumnTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Collection_TableView> m_table;
    int m_least = 0;

    int width() const { return m_table->columnWidth(nameColumn); }
    int wanted(const QString &name) const
    {
        return m_table->fontMetrics().horizontalAdvance(name) + 10;
    }
    // The width of the view at which `names` pixels are left for the column.
    int viewFor(int names) const
    {
        return m_table->horizontalHeader()->length() - width() + names
            + m_table->verticalScrollBar()->sizeHint().width();
    }
    // What the tip says where the mouse rests on a cell of the first row.
    QString tipOn(int column) const
    {
        const QPoint at = m_table->visualRect(m_table->model()->index(0, column)).center();
        QHelpEvent event(QEvent::ToolTip, at, m_table->viewport()->mapToGlobal(at));
        QCoreApplication::sendEvent(m_table->viewport(), &event);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    }
    bool hasHorizontalBar() const { return m_table->horizontalScrollBar()->maximum() > 0; }

private slots:
    void init()
    {
        m_table = std::make_unique<Collection_TableView>();
        new NameColumn(m_table.get());
        m_least = width();
        m_table->resize(viewFor(m_least) + 600, 300);
        m_table->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_table.get()));
        QVERIFY(m_least < wanted(longName));
    }

    void cleanup() { m_table.reset(); }

    void namesGetTheRoomThatTheyNeed()
    {
        m_table->setMarketList(rows({"短", longName}));
        QCOMPARE(width(), wanted(longName));
        QVERIFY(!hasHorizontalBar());
    }

    void namesGetNoMoreThanIsThere()
    {
        m_table->resize(viewFor(m_least + 20), 300);
        m_table->setMarketList(rows({longName}));
        QCOMPARE(width(), m_least + 20);
        QVERIFY(!hasHorizontalBar());
    }

    void roomForTheVerticalBarIsKept()
    {
        m_table->resize(viewFor(m_least + 20), 300);
        QStringList names;
        for (int i = 0; i < 100; ++i)
            names << longName;
        m_table->setMarketList(rows(names));
        QTRY_VERIFY(m_table->verticalScrollBar()->isVisible());
        QCOMPARE(width(), m_least + 20);
        QVERIFY(!hasHorizontalBar());
    }

    void smallWindowKeepsTheTablesOwnWidth()
    {
        m_table->resize(viewFor(0), 300);
        m_table->setMarketList(rows({longName}));
        QCOMPARE(width(), m_least);
    }

    void roomIsTakenAndGivenBackWithTheWindow()
    {
        m_table->setMarketList(rows({longName}));
        QCOMPARE(width(), wanted(longName));
        const int small = viewFor(m_least + 5);
        m_table->resize(small, 300);
        QTRY_COMPARE(width(), m_least + 5);
        m_table->resize(small - 100, 300);
        QTRY_COMPARE(width(), m_least);
        m_table->resize(small + 600, 300);
        QTRY_COMPARE(width(), wanted(longName));
    }

    void cutNameIsToldInFull()
    {
        m_table->setMarketList(rows({longName}));
        QCOMPARE(tipOn(nameColumn), QString());
        m_table->resize(viewFor(0), 300);
        QTRY_COMPARE(width(), m_least);
        QCOMPARE(tipOn(nameColumn), longName);
    }

    void tipOfAShortNameTakesTheLongOneAway()
    {
        m_table->resize(viewFor(0), 300);
        m_table->setMarketList(rows({QStringLiteral("<b>%1</b>").arg(longName)}));
        QCOMPARE(tipOn(nameColumn),
                 QStringLiteral("<span>&lt;b&gt;%1&lt;/b&gt;</span>").arg(longName));
        m_table->setMarketList(rows({"短", "短"}));
        QTRY_COMPARE(tipOn(nameColumn), QString()); // it fades
    }

    void eachListHasItsOwnNames()
    {
        m_table->setMarketList(rows({"短", longName}));
        m_table->setMarketList(rows({"短"}));
        QCOMPARE(width(), m_least);
        // No rows are no reason to move.
        m_table->setMarketList(rows({"短", longName}));
        m_table->setMarketList({});
        QCOMPARE(width(), wanted(longName));
    }

    void widthOfTheUserStays()
    {
        m_table->setMarketList(rows({longName}));
        m_table->horizontalHeader()->resizeSection(nameColumn, 55);
        m_table->setMarketList(rows({longName, longName}));
        QCOMPARE(width(), 55);
        m_table->resize(m_table->width() + 50, 300);
        QCoreApplication::processEvents();
        QCOMPARE(width(), 55);
    }

    void widthsOfOtherColumnsAreReckonedWith()
    {
        m_table->resize(viewFor(m_least + 100), 300);
        m_table->horizontalHeader()->resizeSection(3, m_table->columnWidth(3) + 40);
        m_table->setMarketList(rows({longName}));
        QCOMPARE(width(), qMin(wanted(longName), m_least + 60));
        QVERIFY(!hasHorizontalBar());
    }
};

ZV_TEST(NameColumnTest)
#include "test_namecolumn.moc"
