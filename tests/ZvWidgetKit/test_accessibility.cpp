#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/moneyoverviewdialog.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "ZvWidgetKit/small_money_overview.h"
#include "dealrows.h"
#include "deliveryrows.h"
#include "detailfigures.h"
#include "loginbench.h"
#include "marketbench.h"
#include "moneybench.h"
#include "orderrows.h"
#include "recordrows.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

namespace {

// A page or dialog on the screen. It ends with its bench.
class Scene
{
public:
    virtual ~Scene() = default;
    virtual QWidget *window() const = 0;
};

class MarketScene : public Scene
{
public:
    explicit MarketScene(const QStringList &slotNames)
    {
        m_bench.call("showButtonsNeedLog");
        for (const QString &name : slotNames)
            m_bench.call(qPrintable(name));
    }
    QWidget *window() const override { return m_bench.market.get(); }

private:
    zvtest::MarketBench m_bench;
};

// The trading half with rows in all its tables, so that no table lets the Tab key pass merely
// because there is nowhere to go in it.
class TradingScene : public Scene
{
public:
    explicit TradingScene(const QStringList &buttons)
    {
        for (const QString &button : buttons)
            m_bench.click(button);
        auto *cache = ZvServerCache::getZvServerCacheInstance();
        cache->storeCapInfo(
            zvtest::capOf(QList<zvtest::Holding>{{1, 10, 5}, {2, 10, 5}, {3, 10, 5}}));
        cache->storeGatherInfo(
            ZvUBGatherInfo(ZvUBGatherInfo::sumOf(zvtest::rowsOf(zvtest::daySum, 3))));
        cache->storeRevokeList(zvtest::openOrders({3, 2, 1}));
        cache->storeDealRecordList(zvtest::rowsOf(zvtest::dealRecord, 3));
        cache->storeDelegateToday(zvtest::rowsOf(zvtest::order, 3));
        cache->storeDelegateRecord(zvtest::rowsOf(zvtest::order, 3));
        cache->storeApplyList(zvtest::rowsOf(zvtest::application, 3));
        cache->storeMoneyFlowList(zvtest::rowsOf(zvtest::moneyFlow, 3));
        cache->storeDeliveryRecordList(zvtest::deliveries({3, 2, 1}));
    }
    QWidget *window() const override { return m_bench.trading.get(); }

private:
    zvtest::TransactionBench m_bench;
};

class LockScene : public Scene
{
public:
    LockScene() { m_bench.call("slot_showTransctionLock"); }
    QWidget *window() const override { return m_bench.trading.get(); }

private:
    zvtest::TransactionBench m_bench;
};

class LoginScene : public Scene
{
public:
    explicit LoginScene(const QString &button)
    {
        if (!button.isEmpty())
            m_bench.click(button);
    }
    QWidget *window() const override { return m_bench.dialog; }

private:
    zvtest::LoginBench m_bench;
};

class MoneyScene : public Scene
{
public:
    explicit MoneyScene(const QString &button) { m_bench.click(button); }
    QWidget *window() const override { return m_bench.dialog; }

private:
    zvtest::MoneyBench m_bench;
};

// A dialog that asks nobody for anything.
template <typename Dialog>
class DialogScene : public Scene
{
public:
    DialogScene() : m_dialog(new Dialog(nullptr))
    {
        m_dialog->show();
        m_dialog->activateWindow();
        if (!QTest::qWaitForWindowActive(m_dialog))
            QTest::qFail("the dialog does not become the active window", __FILE__, __LINE__);
    }
    ~DialogScene() override
    {
        delete m_dialog;
        m_kit.endActions();
    }
    QWidget *window() const override { return m_dialog; }

private:
    KitBench m_kit;
    Dialog *m_dialog;
};

using MakeScene = std::function<std::unique_ptr<Scene>()>;

template <typename Kind, typename... Arguments>
MakeScene make(Arguments... arguments)
{
    return [=] { return std::make_unique<Kind>(arguments...); };
}

// A part of a control: the field of a spin box, the bars and headers of a table, the list that a
// combo box opens.
bool isPart(const QWidget *widget)
{
    if (qobject_cast<const QScrollBar *>(widget) || qobject_cast<const QHeaderView *>(widget)
        || widget->inherits("QTableCornerButton"))
        return true;
    const QWidget *owner = widget->parentWidget();
    return qobject_cast<const QAbstractSpinBox *>(owner) || qobject_cast<const QComboBox *>(owner);
}

bool isControl(const QWidget *widget)
{
    if (isPart(widget))
        return false;
    return qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QLineEdit *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QComboBox *>(widget)
        || qobject_cast<const QAbstractItemView *>(widget) || widget->focusPolicy() != Qt::NoFocus;
}

bool isTabStop(const QWidget *widget)
{
    return isControl(widget) && widget->isEnabled() && !widget->focusProxy()
        && widget->focusPolicy() & Qt::TabFocus;
}

QList<QWidget *> controlsOf(const QWidget *window, bool (*isWanted)(const QWidget *))
{
    QList<QWidget *> found;
    for (QWidget *each : window->findChildren<QWidget *>()) {
        if (each->isVisible() && each->window() == window && isWanted(each))
            found << each;
    }
    return found;
}

// A combo box gives its value for its name, and stands beside a label that names it; where it has
// no label, it keeps its own name.
QString nameOf(QWidget *widget)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(widget);
    if (!face)
        return {};
    if (!qobject_cast<QComboBox *>(widget))
        return face->text(QAccessible::Name);
    for (const auto &relation : face->relations(QAccessible::Label))
        return relation.first->text(QAccessible::Name);
    return widget->accessibleName();
}

QString described(QWidget *widget)
{
    return QStringLiteral("%1 %2 (%3)")
        .arg(QLatin1String(widget->metaObject()->className()), widget->objectName(),
             nameOf(widget));
}

QString described(const QList<QWidget *> &widgets)
{
    QStringList words;
    for (QWidget *each : widgets)
        words << described(each);
    return words.join(QStringLiteral(", "));
}

// Something that can be read out: a name of dots or signs alone cannot.
bool isName(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(),
                       [](QChar each) { return each.isLetterOrNumber(); });
}

constexpr int Sections = 3; // of a date, among which the Tab key walks before it leaves

// The widgets in the order of the Tab key, from the first in the window's chain on; where the key
// does not come round, what it reached until it stood still.
QList<QWidget *> walkByTab(QWidget *window)
{
    QList<QWidget *> reached;
    int stays = 0;
    while (stays <= Sections) {
        QTest::keyClick(window->windowHandle(), Qt::Key_Tab);
        QWidget *focus = QApplication::focusWidget();
        if (!focus || (reached.contains(focus) && focus != reached.last()))
            break;
        stays = reached.contains(focus) ? stays + 1 : 0;
        if (stays == 0)
            reached << focus;
    }
    for (QWidget *each = window->nextInFocusChain(); each != window;
         each = each->nextInFocusChain()) {
        const int place = reached.indexOf(each);
        if (place >= 0)
            return reached.mid(place) + reached.mid(0, place);
    }
    return reached;
}

QRect placeOf(const QWidget *widget)
{
    return QRect(widget->mapTo(widget->window(), QPoint()), widget->size());
}

// Whether the eye meets `later` before `earlier`: above it in the same column, or left of it in the
// same row.
bool isMetBefore(const QRect &later, const QRect &earlier)
{
    const bool inOneColumn = later.left() <= earlier.right() && earlier.left() <= later.right();
    const bool inOneRow = later.top() <= earlier.bottom() && earlier.top() <= later.bottom();
    return (inOneColumn && later.bottom() < earlier.top())
        || (inOneRow && later.right() < earlier.left());
}

} // namespace

Q_DECLARE_METATYPE(MakeScene)

// What a screen reader is told of the pages and dialogs, and how one walks through them with the
// Tab key alone.
class AccessibilityTest : public QObject
{
    Q_OBJECT

private:
    static void addScenes()
    {
        QTest::addColumn<MakeScene>("make");
        const auto market = [](const char *row, const QStringList &slotNames) {
            QTest::newRow(row) << make<MarketScene>(slotNames);
        };
        market("market table", {});
        market("time line", {"slot_changeToPage_TimeChart"});
        market("K line", {"slot_changeToPage_KLine_day"});
        market("deals", {"slot_changeToPage_TimeChart", "slot_changeToPage_marketDetail"});
        const auto trading = [](const char *row, const QStringList &buttons) {
            QTest::newRow(row) << make<TradingScene>(buttons);
        };
        trading("buy", {"pushButton_purchase"});
        trading("sell, deals below", {"pushButton_sell", "pushButton_dealData"});
        trading("open orders", {"pushButton_withdrawal"});
        trading("prepared", {"pushButton_prePay"});
        trading("delivery", {"pushButton_deliveryHandling"});
        for (const char *query : {"historyDeal", "currentDelegate", "historyDelegate",
                                  "purchaseApplyRecord", "deliveryRecord", "inputOutputRecord"})
            trading(query, {"pushButton_select", QStringLiteral("pushButton_select_") + query});
        QTest::newRow("lock") << make<LockScene>();
        QTest::newRow("sign in") << make<LoginScene>(QString());
        QTest::newRow("register") << make<LoginScene>(
            QStringLiteral("pushButton_login_immediatelyRegister"));
        QTest::newRow("new password")
            << make<LoginScene>(QStringLiteral("pushButton_login_immediatelyChange"));
        QTest::newRow("money in") << make<MoneyScene>(QStringLiteral("pushButton_in"));
        QTest::newRow("money out") << make<MoneyScene>(QStringLiteral("pushButton_out"));
        QTest::newRow("money") << make<DialogScene<Small_Money_Overview>>();
        QTest::newRow("money at large") << make<DialogScene<MoneyOverviewDialog>>();
        QTest::newRow("delivery form") << make<DialogScene<Small_DeliveryHandling_Dialog>>();
        QTest::newRow("opening an account") << make<DialogScene<EstablishAccountDialog>>();
    }

private slots:
    void everyControlHasAName_data() { addScenes(); }
    void everyControlHasAName()
    {
        QFETCH(MakeScene, make);
        const std::unique_ptr<Scene> scene = make();
        QHash<QPair<const QWidget *, QString>, QString> owners; // by panel and name
        QStringList faults;
        for (QWidget *each : controlsOf(scene->window(), isControl)) {
            const QString name = nameOf(each);
            const auto place = qMakePair<const QWidget *, QString>(each->parentWidget(), name);
            if (!isName(name))
                faults << described(each) + QStringLiteral(" has no name: ") + name;
            else if (owners.contains(place))
                faults << described(each) + QStringLiteral(" is named as ") + owners.value(place)
                        + QStringLiteral(": ") + name;
            owners.insert(place, described(each));
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    void tabWalksInTheOrderOfTheEye_data() { addScenes(); }
    void tabWalksInTheOrderOfTheEye()
    {
        QFETCH(MakeScene, make);
        const std::unique_ptr<Scene> scene = make();
        const QList<QWidget *> reached = walkByTab(scene->window());
        const QString walk = described(reached);
        for (QWidget *stop : controlsOf(scene->window(), isTabStop))
            QVERIFY2(reached.contains(stop),
                     qPrintable(described(stop) + QStringLiteral(" is not among ") + walk));
        for (int earlier = 0; earlier < reached.size(); ++earlier) {
            for (int later = earlier + 1; later < reached.size(); ++later)
                QVERIFY2(!isMetBefore(placeOf(reached.at(later)), placeOf(reached.at(earlier))),
                         qPrintable(described({reached.at(earlier), reached.at(later)})
                                    + QStringLiteral(" in ") + walk));
        }
    }

    // The way back is the same one.
    void backtabWalksTheOtherWay_data() { addScenes(); }
    void backtabWalksTheOtherWay()
    {
        QFETCH(MakeScene, make);
        const std::unique_ptr<Scene> scene = make();
        const QList<QWidget *> reached = walkByTab(scene->window());
        if (reached.size() < 2)
            return;
        reached.first()->setFocus();
        QList<QWidget *> back;
        for (int press = 0; back.size() < reached.size() && press < 100; ++press) {
            QTest::keyClick(scene->window()->windowHandle(), Qt::Key_Backtab, Qt::ShiftModifier);
            QWidget *focus = QApplication::focusWidget();
            if (back.isEmpty() || focus != back.first())
                back.prepend(focus);
        }
        QCOMPARE(described(back), described(reached));
    }
};

ZV_TEST(AccessibilityTest)
#include "test_accessibility.moc"
