#include "collectionwalk.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

namespace zvtest {

void storeCollections(const QStringList &ids)
{
    ZvUBBriefInfo::Data data;
    for (const QString &id : ids) {
        ZvUBBriefItem::Data item;
        item.collectionId = id;
        item.code = QLatin1Char('C') + id;
        item.name = QStringLiteral("藏品") + id;
        data.items.append(ZvUBBriefItem(item));
    }
    ZvServerCache::getZvServerCacheInstance()->storeBriefInfo(ZvUBBriefInfo(data));
}

void choose(const QString &id)
{
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_collectionTableView_clicked(id);
}

QString current()
{
    return ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID();
}

QString chooses(const QString &id)
{
    return QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"%1\")").arg(id);
}

} // namespace zvtest
