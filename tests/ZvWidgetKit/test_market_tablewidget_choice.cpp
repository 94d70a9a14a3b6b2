#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "marketpage.h"
#include "marketrows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QButtonGroup>
#include <QContextMenuEvent>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

using namespace zvtest;

// The choice of the list: a click on a button of the footer, and the F6 key.
class MarketTableWidgetChoiceTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MarketPage> m_page;

    QString currentRowId() const
    {
        const QModelIndex current = m_page->table()->currentIndex();
        return current.sibling(current.row(), 21).data().toString();
    }
    static void pressF6() { pool()->slot_F6_clicked(); }

private slots:
    void init()
    {
        m_page = std::make_unique<MarketPage>();
        MarketPage::storeRows();
        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(m_page->checked(), QStringLiteral("邮票"));
        m_page->click("行情");
        QCoreApplication::processEvents();
    }

    void cleanup() { m_page.reset(); }

    void typeIsToldShownAndAskedFor()
    {
        CallTrace trace;
        m_page->click("钱币");
        QCOMPARE(trace.take(),
                 (QStringList{choosesOption(false), choosesType(2), selects("1004"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("钱币"));
        // At once, from the cache.
        QCOMPARE(m_page->ids(), (QStringList{"1004", "1005"}));
    }

    void wholeMarketIsMinusOne()
    {
        m_page->click("钱币");
        CallTrace trace;
        m_page->click("行情");
        QCOMPARE(
            trace.take(),
            (QStringList{choosesOption(false), choosesType(-1), selects("1001"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
        QCOMPARE(m_page->ids().size(), 5);
    }

    void favouritesLeaveTheTypeAsItIs()
    {
        m_page->click("钱币");
        CallTrace trace;
        m_page->click("自选");
        QCOMPARE(trace.take(), (QStringList{choosesOption(true), asksForRows}));
        QCOMPARE(engine()->getCollectionTypeId(), 2);
        QCOMPARE(m_page->checked(), QStringLiteral("自选"));
        QCOMPARE(m_page->ids(), QStringList());
    }

    void clickOnTheCheckedButtonAsksAgainAndKeepsTheSelection()
    {
        QTest::keyClick(m_page->table(), Qt::Key_Down);
        QCOMPARE(currentRowId(), QStringLiteral("1002"));
        CallTrace trace;
        m_page->click("行情");
        QCOMPARE(trace.take(), (QStringList{choosesOption(false), choosesType(-1), asksForRows}));
        QCOMPARE(currentRowId(), QStringLiteral("1002"));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
    }

    void everyChoiceHoldsOneButtonAndTheEnginesPair()
    {
        struct Choice {
            const char *text;
            bool isOption;
            int type;
        };
        for (const Choice &choice :
             {Choice{"邮票", false, 1}, Choice{"自选", true, 1}, Choice{"钱币", false, 2},
              Choice{"行情", false, -1}, Choice{"自选", true, -1}, Choice{"行情", false, -1}}) {
            m_page->click(choice.text);
            QCOMPARE(m_page->checked(), QString(choice.text));
            QCOMPARE(engine()->getIsOptionalCollectionIds(), choice.isOption);
            QCOMPARE(engine()->getCollectionTypeId(), choice.type);
        }
    }

    // The list that was chosen may be as long as the one before: its rows are others all the same.
    void listOfTheSameLengthSelectsItsOwnFirstRow()
    {
        cache()->storeMarketList(QList<ZvUBObject>{rowOfType(1001, 1), rowOfType(1002, 1),
                                                   rowOfType(1004, 2), rowOfType(1005, 2)});
        m_page->click("邮票");
        QTest::keyClick(m_page->table(), Qt::Key_Down);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1002"));
        m_page->click("钱币");
        QCOMPARE(m_page->ids(), (QStringList{"1004", "1005"}));
        QCOMPARE(currentRowId(), engine()->getGlobalCollectionID());
        QCOMPARE(currentRowId(), QStringLiteral("1004"));
        // And nothing flashes as if its price had moved.
        const QModelIndex price = m_page->table()->model()->index(0, 3);
        QVERIFY(!price.data(Qt::BackgroundRole).isValid());
    }

    void rowsOfATickFollowTheChoice()
    {
        m_page->click("钱币");
        cache()->storeMarketList(QList<ZvUBObject>{moved(rowOfType(1004, 2), 100),
                                                   rowOfType(1005, 2), rowOfType(1006, 2),
                                                   rowOfType(1007, 1)});
        QCOMPARE(m_page->ids(), (QStringList{"1004", "1005", "1006"}));
        QCOMPARE(m_page->table()->model()->index(0, 3).data().toString(),
                 moved(rowOfType(1004, 2), 100).displayDataForModelUse(3));
    }

    void hiddenTableTakesNoRowsButTheEngineIsTold()
    {
        m_page->table()->hide();
        CallTrace trace;
        m_page->click("钱币");
        QCOMPARE(trace.take(), (QStringList{choosesOption(false), choosesType(2), asksForRows}));
        QCOMPARE(m_page->ids().size(), 5);
    }

    void menuOfTheTableFollowsTheChoice()
    {
        const auto optionAction = [this] {
            const QPoint place
                = m_page->table()->visualRect(m_page->table()->model()->index(0, 1)).center();
            QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                    m_page->table()->viewport()->mapToGlobal(place));
            QApplication::sendEvent(m_page->table()->viewport(), &event);
            QMenu *menu = m_page->table()->findChild<QMenu *>();
            const QString text = menu ? menu->actions().at(1)->text() : QString();
            delete menu;
            return text;
        };
        cache()->setMarketListOption({"1002"}, QString());
        QCOMPARE(optionAction(), QStringLiteral("添加自选"));
        m_page->click("自选");
        QCOMPARE(optionAction(), QStringLiteral("删除自选"));
        m_page->click("邮票");
        QCOMPARE(optionAction(), QStringLiteral("添加自选"));
    }

    void keysOfTheButtonsChooseToo()
    {
        QPushButton *coins = m_page->button("钱币");
        coins->setFocus(Qt::TabFocusReason);
        CallTrace trace;
        QTest::keyClick(coins, Qt::Key_Space);
        QCOMPARE(trace.take(),
                 (QStringList{choosesOption(false), choosesType(2), selects("1004"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("钱币"));
    }

    void f6GoesThroughAllAndWraps()
    {
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "邮票", "钱币", "自选"}));
        const QStringList expected{"邮票", "钱币", "自选", "行情", "邮票"};
        for (const QString &text : expected) {
            pressF6();
            QCOMPARE(m_page->checked(), text);
        }
    }

    void f6DoesWhatAClickDoes()
    {
        CallTrace trace;
        pressF6();
        QCOMPARE(trace.take(),
                 (QStringList{choosesOption(false), choosesType(1), selects("1001"), asksForRows}));
        QCOMPARE(m_page->ids(), (QStringList{"1001", "1002", "1003"}));
        pressF6();
        pressF6();
        trace.take();
        QCOMPARE(m_page->checked(), QStringLiteral("自选"));
        // From the favourites it wraps to the whole market.
        pressF6();
        QCOMPARE(
            trace.take(),
            (QStringList{choosesOption(false), choosesType(-1), selects("1001"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
    }

    void f6TellsTheEngineBeforeTheButtonIsChecked()
    {
        bool wasChecked = true;
        connect(m_page->group(), QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked),
                this, [&](QAbstractButton *button) { wasChecked = button->isChecked(); });
        pressF6();
        QVERIFY(!wasChecked);
        QCOMPARE(m_page->checked(), QStringLiteral("邮票"));
    }

    void f6OnAPageThatIsNotSeenDoesNothing_data()
    {
        QTest::addColumn<bool>("inStack");
        QTest::newRow("hidden itself") << false;
        QTest::newRow("behind another page") << true;
    }
    void f6OnAPageThatIsNotSeenDoesNothing()
    {
        QFETCH(bool, inStack);
        QStackedWidget stack;
        if (inStack) {
            stack.addWidget(&m_page->widget);
            stack.addWidget(new QWidget);
            stack.show();
            stack.setCurrentIndex(1);
        } else {
            m_page->widget.hide();
        }
        CallTrace trace;
        pressF6();
        QCOMPARE(trace.take(), QStringList());
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));

        m_page->widget.setVisible(!inStack);
        stack.setCurrentIndex(0);
        pressF6();
        QCOMPARE(m_page->checked(), QStringLiteral("邮票"));
        m_page->widget.setParent(nullptr);
    }

    void f6WithNothingCheckedCountsFromTheFirst()
    {
        m_page->group()->setExclusive(false);
        m_page->button("行情")->setChecked(false);
        m_page->group()->setExclusive(true);
        QVERIFY(!m_page->group()->checkedButton());
        pressF6();
        QCOMPARE(m_page->checked(), QStringLiteral("邮票"));
    }

    void f6OnAButtonThatIsNoPushButtonGoesToTheWholeMarket()
    {
        QRadioButton odd(&m_page->widget);
        m_page->group()->addButton(&odd);
        m_page->click("自选");
        pressF6();
        QCOMPARE(engine()->getCollectionTypeId(), -1);
        QVERIFY(!engine()->getIsOptionalCollectionIds());
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
    }

    void f6WithoutTypesGoesToAndFro()
    {
        MarketPage page;
        m_page->widget.hide();
        QCOMPARE(page.buttonTexts(), (QStringList{"行情", "自选"}));
        pressF6();
        QCOMPARE(page.checked(), QStringLiteral("自选"));
        pressF6();
        QCOMPARE(page.checked(), QStringLiteral("行情"));
    }
};

ZV_TEST(MarketTableWidgetChoiceTest)
#include "test_market_tablewidget_choice.moc"
