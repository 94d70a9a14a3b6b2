#include "marketpage.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "marketrows.h"

#include <QButtonGroup>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QtTest>

#include <algorithm>

namespace zvtest {

const QString asksForRows = QStringLiteral("ZvServerEngine::sendRequest_Market_List()");
const QString asksForOptions
    = QStringLiteral("ZvServerActionResult::sendRequest_getOptions(1, 100)");

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

Types stampsAndCoins()
{
    return {{QStringLiteral("邮票"), 1}, {QStringLiteral("钱币"), 2}};
}

ZvUBObject rowOfType(int number, int type)
{
    ZvUBObject::Data data = collectionData(number);
    data.type = type;
    return ZvUBObject(data);
}

QString choosesOption(bool isOption)
{
    return QStringLiteral("ZvServerEngine::setIsOptionalCollectionIds(%1)")
        .arg(isOption ? QStringLiteral("true") : QStringLiteral("false"));
}

QString choosesType(int type)
{
    return QStringLiteral("ZvServerEngine::setCollectionTypeId(%1)").arg(type);
}

QString selects(const QString &id)
{
    return QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"%1\")").arg(id);
}

MarketPage::MarketPage()
{
    static int pages = 0;
    engine()->isLogged = false;
    engine()->setIsOptionalCollectionIds(false);
    engine()->setCollectionTypeId(-1);
    cache()->marketInfoList.clear();
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/test/%1/").arg(++pages));
    widget.resize(1200, 700);
    widget.show();
    const bool isExposed = QTest::qWaitForWindowExposed(&widget);
    Q_ASSERT(isExposed);
    Q_UNUSED(isExposed)
    // The engine's setters tell of themselves through the event loop.
    QCoreApplication::processEvents();
}

void MarketPage::storeRows()
{
    cache()->storeMarketList(QList<ZvUBObject>{rowOfType(1001, 1), rowOfType(1002, 1),
                                               rowOfType(1003, 1), rowOfType(1004, 2),
                                               rowOfType(1005, 2)});
}

QTableView *MarketPage::table() const
{
    return widget.findChild<QTableView *>();
}

ZvGuideTabPage *MarketPage::guide() const
{
    return widget.findChild<ZvGuideTabPage *>();
}

QButtonGroup *MarketPage::group() const
{
    return widget.findChild<QButtonGroup *>();
}

QPushButton *MarketPage::button(const QString &text) const
{
    for (QAbstractButton *each : group()->buttons()) {
        if (each->text() == text)
            return qobject_cast<QPushButton *>(each);
    }
    return nullptr;
}

QStringList MarketPage::buttonTexts() const
{
    QStringList texts;
    for (const QAbstractButton *each : group()->buttons())
        texts << each->text();
    return texts;
}

QStringList MarketPage::textsOnScreen() const
{
    QList<QPushButton *> shown;
    for (QPushButton *each : widget.findChildren<QPushButton *>()) {
        if (!guide()->isAncestorOf(each) && each->isVisible())
            shown << each;
    }
    std::sort(shown.begin(), shown.end(), [this](const QPushButton *a, const QPushButton *b) {
        return a->mapTo(&widget, QPoint()).x() < b->mapTo(&widget, QPoint()).x();
    });
    QStringList texts;
    for (const QPushButton *each : qAsConst(shown))
        texts << each->text();
    return texts;
}

QString MarketPage::checked() const
{
    QStringList texts;
    for (const QPushButton *each : widget.findChildren<QPushButton *>()) {
        if (!guide()->isAncestorOf(each) && each->isChecked())
            texts << each->text();
    }
    return texts.join(QLatin1Char(' '));
}

QLabel *MarketPage::valueOf(const QString &caption) const
{
    const QLabel *found = nullptr;
    for (const QLabel *label : widget.findChildren<QLabel *>()) {
        if (label->text() == caption)
            found = label;
    }
    if (!found)
        return nullptr;
    const QLayout *footer = found->parentWidget()->layout();
    for (int i = 0; i + 1 < footer->count(); ++i) {
        if (footer->itemAt(i)->widget() == found)
            return qobject_cast<QLabel *>(footer->itemAt(i + 1)->widget());
    }
    return nullptr;
}

QStringList MarketPage::ids() const
{
    QStringList all;
    const QAbstractItemModel *model = table()->model();
    for (int row = 0; row < model->rowCount(); ++row)
        all << model->index(row, 21).data().toString();
    return all;
}

void MarketPage::click(const QString &text)
{
    QPushButton *wanted = button(text);
    QVERIFY2(wanted, qPrintable(text));
    QTest::mouseClick(wanted, Qt::LeftButton);
}

} // namespace zvtest
