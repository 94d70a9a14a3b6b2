#include "ZvWidgetKit/dealwidget_select_delegate_today_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"

DealWidget_Select_Delegate_today_TableView::DealWidget_Select_Delegate_today_TableView(
    QWidget *parent)
    : DelegateTableView(parent)
{
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_DelegateToday_changed, this,
            &DealWidget_Select_Delegate_today_TableView::slot_recordCacheChanged);
}

DealWidget_Select_Delegate_today_TableView::~DealWidget_Select_Delegate_today_TableView() = default;

void DealWidget_Select_Delegate_today_TableView::selectRecords(int page, int pageSize, int type)
{
    beginSelect(page);
    m_pageSize = pageSize;
    m_type = type;
    sendRequest();
}

void DealWidget_Select_Delegate_today_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_DelegateToday(
        m_requestPage, m_pageSize, m_type);
}

void DealWidget_Select_Delegate_today_TableView::slot_recordCacheChanged()
{
    const auto list = ZvServerCache::getZvServerCacheInstance()->getDelegateToday();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
}
