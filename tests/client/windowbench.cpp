#include "windowbench.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QtTest/QtTest>

namespace zvtest {
namespace {

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

} // namespace

WindowBench::WindowBench(const QSize &size)
{
    access()->setTransport(std::make_unique<ZvScriptedTransport>());
    static int windows = 0;
    access()->setUrlPrefix(QStringLiteral("/window/%1/").arg(++windows));
    window = std::make_unique<MainWindow>();
    window->resize(size);
}

WindowBench::~WindowBench()
{
    window.reset();
    engine()->startUnloggedEngine();
    access()->stop();
    access()->setTransport(nullptr);
}

void WindowBench::show() const
{
    window->show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

QList<ZvUBObject> WindowBench::rows(qint64 latest)
{
    QList<ZvUBObject> rows;
    for (int i = 1; i <= 3; ++i) {
        ZvUBObject::Data data;
        data.collectionId = QString::number(1000 + i);
        data.code = data.collectionId;
        data.name = QStringLiteral("藏品");
        data.type = i;
        data.latest = latest;
        rows << ZvUBObject(data);
    }
    return rows;
}

void WindowBench::fill()
{
    ZvUBBriefInfo::Data names;
    for (const ZvUBObject &row : rows()) {
        ZvUBBriefItem::Data item;
        item.collectionId = row.data().collectionId;
        item.code = row.data().code;
        item.name = row.data().name;
        item.initials = QStringList{QStringLiteral("cp")};
        names.items << ZvUBBriefItem(item);
    }
    auto *cache = ZvServerCache::getZvServerCacheInstance();
    cache->storeBriefInfo(ZvUBBriefInfo(names));
    cache->storeMarketList(rows());
}

void WindowBench::signIn()
{
    engine()->isLogged = true;
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_login_succeed();
}

} // namespace zvtest
