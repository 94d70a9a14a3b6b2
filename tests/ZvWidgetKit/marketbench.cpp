#include "marketbench.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "collectionwalk.h"

#include <QtTest/QtTest>

#include <algorithm>

namespace zvtest {

MarketBench::MarketBench()
{
    static int benches = 0;
    ZvServerEngine *engine = ZvServerEngine::getZvServerEngineInstance();
    engine->setIsOptionalCollectionIds(false);
    engine->setCollectionTypeId(-1);
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/market/%1/").arg(++benches));
    storeCollections({"1001", "1002", "1003"});
    market = std::make_unique<Market_Widget>();
    market->resize(1366, 600);
    market->show();
    if (!QTest::qWaitForWindowActive(market.get()))
        QTest::qFail("the market half does not become the active window", __FILE__, __LINE__);
    choose(QStringLiteral("1002"));
    QCoreApplication::processEvents();
}

MarketBench::~MarketBench()
{
    market.reset();
    m_kit.endActions();
}

QList<QPushButton *> MarketBench::buttons() const
{
    QList<QPushButton *> row;
    for (QPushButton *each : market->findChildren<QPushButton *>()) {
        if (each->parentWidget()->parentWidget() == market.get() && !stack()->isAncestorOf(each))
            row << each;
    }
    std::stable_sort(row.begin(), row.end(),
                     [](const QPushButton *a, const QPushButton *b) { return a->x() < b->x(); });
    return row;
}

QPushButton *MarketBench::button(const QString &text) const
{
    for (QPushButton *each : buttons()) {
        if (each->text() == text)
            return each;
    }
    qFatal("the title row has no button %s", qPrintable(text));
}

void MarketBench::click(const QString &text)
{
    QVERIFY2(button(text)->isVisible(), qPrintable(text));
    QTest::mouseClick(button(text), Qt::LeftButton);
}

QString MarketBench::shown() const
{
    QStringList texts;
    for (const QPushButton *each : buttons()) {
        if (each->isVisible())
            texts << each->text();
    }
    return texts.join(QLatin1Char(' '));
}

QString MarketBench::checked() const
{
    QStringList texts;
    for (const QPushButton *each : buttons()) {
        if (each->isChecked())
            texts << each->text();
    }
    return texts.join(QLatin1Char(' '));
}

QStackedWidget *MarketBench::stack() const
{
    return market->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

QString MarketBench::page() const
{
    const QWidget *front = stack()->currentWidget();
    return qobject_cast<const Market_TableWidget *>(front) ? QStringLiteral("table")
        : qobject_cast<const Market_KTimeWidget *>(front)  ? QStringLiteral("chart")
        : qobject_cast<const Market_DetailWidget *>(front) ? QStringLiteral("deals")
                                                           : QStringLiteral("none");
}

void MarketBench::call(const char *slot)
{
    QVERIFY2(QMetaObject::invokeMethod(market.get(), slot), slot);
}

bool MarketBench::asks(const char *slot)
{
    bool answer = false;
    if (!QMetaObject::invokeMethod(market.get(), slot, Q_RETURN_ARG(bool, answer)))
        QTest::qFail(slot, __FILE__, __LINE__);
    return answer;
}

} // namespace zvtest
