#include "ZvWidgetKit/dealwidget_select_delegate_history_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"

DealWidget_Select_Delegate_history_TableView::DealWidget_Select_Delegate_history_TableView(
    QWidget *parent)
    : DelegateTableView(parent)
{
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_DelegateRecord_changed, this,
            &DealWidget_Select_Delegate_history_TableView::slot_recordCacheChanged);
}

DealWidget_Select_Delegate_history_TableView::~DealWidget_Select_Delegate_history_TableView()
    = default;

void DealWidget_Select_Delegate_history_TableView::selectRecords(QString startDate,
                                                                 QString stopDate, int page,
                                                                 int type, int pageSize)
{
    beginSelect(page);
    m_startDate = startDate;
    m_stopDate = stopDate;
    m_pageSize = pageSize;
    m_type = type;
    sendRequest();
}

void DealWidget_Select_Delegate_history_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_DelegateRecord(
        m_startDate, m_stopDate, m_requestPage, m_type, m_pageSize);
}

void DealWidget_Select_Delegate_history_TableView::slot_recordCacheChanged()
{
    const auto list = ZvServerCache::getZvServerCacheInstance()->getDelegateRecord();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
}
