#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "marketpage.h"
#include "marketrows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QButtonGroup>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QtTest>

using namespace zvtest;

namespace {

const QString asksForTypes = QStringLiteral("ZvServerEngine::sendRequest_Collection_Type()");

} // namespace

// The buttons of the collection types, which are made anew with each list of types and server.
class MarketTableWidgetTypesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MarketPage> m_page;

    void chooseServer(const QString &server)
    {
        emit m_page->guide()->signal_updateCollectionTypes(server);
    }

private slots:
    void init()
    {
        m_page = std::make_unique<MarketPage>();
        MarketPage::storeRows();
        QCoreApplication::processEvents();
    }

    void cleanup() { m_page.reset(); }

    void typesStandBetweenMarketAndFavourites()
    {
        cache()->storeCollectionTypeList({{"邮票", 1}, {"钱币", 2}, {"磁卡", 3}});
        const QStringList expected{"行情", "邮票", "钱币", "磁卡", "自选"};
        QCOMPARE(m_page->buttonTexts(), expected);
        QCoreApplication::processEvents();
        QCOMPARE(m_page->textsOnScreen(), expected);
        QCOMPARE(m_page->button("邮票")->mapTo(&m_page->widget, QPoint()).x(), 101);
        QCOMPARE(m_page->button("钱币")->mapTo(&m_page->widget, QPoint()).x(), 181);
        QCOMPARE(m_page->button("自选")->mapTo(&m_page->widget, QPoint()).x(), 342);
        QVERIFY(m_page->group()->exclusive());
    }

    void newTypesSelectTheFirst()
    {
        CallTrace trace;
        cache()->storeCollectionTypeList({{"钱币", 2}, {"邮票", 1}});
        QCOMPARE(trace.take(),
                 (QStringList{choosesOption(false), choosesType(2), selects("1004"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("钱币"));
        QCOMPARE(m_page->ids(), (QStringList{"1004", "1005"}));
    }

    void firstTypeIsToldBeforeItIsCheckedAndBeforeTheOthersAreThere()
    {
        QStringList told;
        connect(m_page->group(), QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked),
                this, [&](QAbstractButton *button) {
                    told << button->text() << (button->isChecked() ? "checked" : "unchecked")
                         << m_page->buttonTexts();
                });
        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(told, (QStringList{"邮票", "unchecked", "行情", "邮票"}));
    }

    void rebuildReplacesTheOldButtons()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        const QPointer<QPushButton> stamps = m_page->button("邮票");
        const QPointer<QPushButton> coins = m_page->button("钱币");
        m_page->click("钱币");
        cache()->storeCollectionTypeList({{"磁卡", 3}, {"邮票", 1}});
        QVERIFY(!stamps && !coins);
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "磁卡", "邮票", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
        QCOMPARE(engine()->getCollectionTypeId(), 3);
        m_page->click("邮票");
        QCOMPARE(engine()->getCollectionTypeId(), 1);
    }

    void rebuildLeavesTheFavourites()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        m_page->click("自选");
        cache()->storeCollectionTypeList({{"磁卡", 3}, {"邮票", 1}});
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
        QCOMPARE(m_page->group()->checkedButton(), m_page->button("磁卡"));
        QVERIFY(!engine()->getIsOptionalCollectionIds());
        QCOMPARE(engine()->getCollectionTypeId(), 3);
        // And the group goes on to hold one choice.
        m_page->click("自选");
        QCOMPARE(m_page->checked(), QStringLiteral("自选"));
        m_page->click("行情");
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
        // The favourites are last in the order of F6 again.
        pool()->slot_F6_clicked();
        pool()->slot_F6_clicked();
        pool()->slot_F6_clicked();
        QCOMPARE(m_page->checked(), QStringLiteral("自选"));
    }

    void sameTypesAgainSelectTheFirstAgain()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        m_page->click("行情");
        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(m_page->checked(), QStringLiteral("邮票"));
        QCOMPARE(m_page->ids().size(), 3);
    }

    void noTypesKeepMarketOrFavourites()
    {
        for (const char *text : {"行情", "自选"}) {
            m_page->click(text);
            CallTrace trace;
            cache()->storeCollectionTypeList({});
            QCOMPARE(trace.take(), QStringList());
            QCOMPARE(m_page->checked(), QString(text));
            QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "自选"}));
        }
    }

    // The button that showed the choice is gone, and the rows of its type may be gone too.
    void aTypeThatIsGoneWithAllOthersLeavesTheWholeMarket()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        m_page->click("钱币");
        CallTrace trace;
        cache()->storeCollectionTypeList({});
        QCOMPARE(
            trace.take(),
            (QStringList{choosesOption(false), choosesType(-1), selects("1001"), asksForRows}));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
        QCOMPARE(m_page->ids().size(), 5);
    }

    void typeOfIdZeroAndNegativeIdsAreTakenAsTheyAre()
    {
        cache()->storeMarketList(QList<ZvUBObject>{rowOfType(1001, 0), rowOfType(1002, 1)});
        cache()->storeCollectionTypeList({{"其他", 0}, {"邮票", 1}});
        QCOMPARE(engine()->getCollectionTypeId(), 0);
        QCOMPARE(m_page->ids(), QStringList{"1001"});
    }

    void namesOfTheServerAreNoMnemonics()
    {
        cache()->storeCollectionTypeList({{"A&B", 1}});
        QVERIFY(m_page->button("A&&B"));
        QVERIFY(m_page->button("A&&B")->shortcut().isEmpty());
    }

    void typesOfAnotherServerLeaveTheButtons()
    {
        cache()->storeCollectionTypeList({{"磁卡", 3}}, QStringLiteral("/elsewhere/"));
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "自选"}));
    }

    void typesAreReadForTheServerOfTheGuide()
    {
        cache()->storeMarketInfo({{"甲", "/a/"}, {"乙", "/b/"}});
        QCOMPARE(m_page->guide()->getCurrentServer(), QStringLiteral("/a/"));
        cache()->storeCollectionTypeList({{"磁卡", 3}}, QStringLiteral("/a/"));
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "磁卡", "自选"}));
    }

    void chosenServerWithKnownTypesShowsThem()
    {
        cache()->storeCollectionTypeList({{"磁卡", 3}, {"金币", 4}}, QStringLiteral("/known/"));
        m_page->click("自选");
        CallTrace trace;
        chooseServer("/known/");
        QCOMPARE(trace.take(), (QStringList{choosesOption(false), choosesType(3), asksForRows}));
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "磁卡", "金币", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
    }

    void chosenServerWithoutTypesShowsTheWholeMarketUntilTheyCome()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        m_page->click("钱币");
        CallTrace trace;
        chooseServer("/unknown/");
        QCOMPARE(trace.take(),
                 (QStringList{asksForTypes, choosesOption(false), choosesType(-1), selects("1001"),
                              asksForRows}));
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));

        cache()->storeCollectionTypeList({{"磁卡", 3}});
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
        QCOMPARE(engine()->getCollectionTypeId(), 3);
    }

    void typesAreAskedForBeforeTheMarketIsChosen()
    {
        m_page->click("自选");
        CallTrace trace;
        chooseServer("/unknown/");
        QCOMPARE(trace.take().first(), asksForTypes);
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
        QVERIFY(!engine()->getIsOptionalCollectionIds());
    }

    // A listener of the click brings new types: the button that was clicked ends within its click.
    void rebuildFromWithinAClick_data()
    {
        QTest::addColumn<QString>("by");
        QTest::newRow("mouse") << "mouse";
        QTest::newRow("key") << "key";
        QTest::newRow("F6") << "F6";
    }
    void rebuildFromWithinAClick()
    {
        QFETCH(QString, by);
        cache()->storeCollectionTypeList(stampsAndCoins());
        m_page->click("邮票");
        bool isDone = false;
        QObject context;
        connect(m_page->table()->selectionModel(), &QItemSelectionModel::currentRowChanged,
                &context, [&](const QModelIndex &current) {
                    if (isDone || !current.isValid())
                        return;
                    isDone = true;
                    cache()->storeCollectionTypeList({{"磁卡", 3}, {"金币", 4}});
                });
        const QPointer<QPushButton> coins = m_page->button("钱币");
        if (by == "F6") {
            pool()->slot_F6_clicked();
        } else if (by == "key") {
            coins->setFocus(Qt::TabFocusReason);
            QTest::keyClick(coins, Qt::Key_Space);
        } else {
            QTest::mouseClick(coins, Qt::LeftButton);
        }
        QVERIFY(isDone);
        QVERIFY(!coins);
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "磁卡", "金币", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
    }

    // The same from within the rebuild itself, which has told of its first button only.
    void rebuildFromWithinARebuild()
    {
        bool isDone = false;
        QObject context;
        connect(m_page->group(), QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked),
                &context, [&] {
                    if (isDone)
                        return;
                    isDone = true;
                    cache()->storeCollectionTypeList({{"磁卡", 3}, {"金币", 4}});
                });
        cache()->storeCollectionTypeList(stampsAndCoins());
        QVERIFY(isDone);
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "磁卡", "金币", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("磁卡"));
        QCOMPARE(engine()->getCollectionTypeId(), 3);
        m_page->click("金币");
        QCOMPARE(engine()->getCollectionTypeId(), 4);
    }

    void rebuildToNothingFromWithinARebuild()
    {
        bool isDone = false;
        QObject context;
        connect(m_page->group(), QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked),
                &context, [&] {
                    if (isDone)
                        return;
                    isDone = true;
                    cache()->storeCollectionTypeList({});
                });
        cache()->storeCollectionTypeList(stampsAndCoins());
        QCOMPARE(m_page->buttonTexts(), (QStringList{"行情", "自选"}));
        QCOMPARE(m_page->checked(), QStringLiteral("行情"));
        QCOMPARE(engine()->getCollectionTypeId(), -1);
    }

    void pageThatEndsWithinAClickOrARebuild_data()
    {
        QTest::addColumn<QString>("by");
        QTest::newRow("types") << "types";
        QTest::newRow("F6") << "F6";
        QTest::newRow("server") << "server";
    }
    void pageThatEndsWithinAClickOrARebuild()
    {
        QFETCH(QString, by);
        auto *window = new QWidget;
        auto *page = new Market_TableWidget(window);
        window->resize(900, 400);
        window->show();
        m_page->widget.hide();
        QObject context;
        connect(page->findChild<QButtonGroup *>(),
                QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked), &context,
                [&] { delete window; });
        const QPointer<QWidget> ended = page;
        if (by == "types")
            cache()->storeCollectionTypeList(stampsAndCoins());
        else if (by == "F6")
            pool()->slot_F6_clicked();
        else
            emit page->findChild<ZvGuideTabPage *>()->signal_updateCollectionTypes("/none/");
        QVERIFY(!ended);
    }

    void focusOfAButtonThatEndsGoesToTheTable()
    {
        cache()->storeCollectionTypeList(stampsAndCoins());
        QApplication::setActiveWindow(&m_page->widget);
        QTRY_VERIFY(m_page->button("钱币")->isVisible());
        QVERIFY(QTest::qWaitForWindowActive(&m_page->widget));
        m_page->button("钱币")->setFocus(Qt::TabFocusReason);
        QVERIFY(m_page->button("钱币")->hasFocus());
        cache()->storeCollectionTypeList({{"磁卡", 3}});
        QVERIFY(m_page->table()->hasFocus());
    }
};

ZV_TEST(MarketTableWidgetTypesTest)
#include "test_market_tablewidget_types.moc"
