#include "ZvWidgetKit/dealwidget_select_applyrecord_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

DealWidget_Select_ApplyRecord_TableView::DealWidget_Select_ApplyRecord_TableView(QWidget *parent)
    : PagedTableView(parent)
{
    setUpRecordTable(this, &m_model, new DealWidget_Select_ApplyRecord_TableDelegate,
                     RecordRowHeight);
    setColumnWidths(
        this, {{0, 100}, {1, 320}, {2, 100}, {3, 100}, {4, 100}, {5, 100}, {6, 100}, {7, 200}});
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_ApplyRecord_changed, this,
            &DealWidget_Select_ApplyRecord_TableView::slot_recordCacheChanged);
}

DealWidget_Select_ApplyRecord_TableView::~DealWidget_Select_ApplyRecord_TableView() = default;

void DealWidget_Select_ApplyRecord_TableView::selectRecords(int page, QString startDate,
                                                            QString stopDate)
{
    beginSelect(page);
    m_startDate = startDate;
    m_stopDate = stopDate;
    sendRequest();
}

void DealWidget_Select_ApplyRecord_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_ApplyRecord(
        m_requestPage, m_startDate, m_stopDate);
}

void DealWidget_Select_ApplyRecord_TableView::slot_recordCacheChanged()
{
    const auto list = ZvServerCache::getZvServerCacheInstance()->getApplyList();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
}
