#include "ZvWidgetKit/dealwidget_select_dealrecord_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

namespace {

constexpr int PageSize = 10;

} // namespace

DealWidget_Select_DealRecord_TableView::DealWidget_Select_DealRecord_TableView(QWidget *parent)
    : PagedTableView(parent), m_type(0)
{
    setUpRecordTable(this, &m_model, new DealWidget_Select_DealRecord_TableDelegate,
                     RecordRowHeight);
    setColumnWidths(
        this, {{0, 100}, {1, 320}, {2, 100}, {3, 100}, {4, 100}, {5, 100}, {6, 100}, {7, 200}});
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_DealRecord_changed, this,
            &DealWidget_Select_DealRecord_TableView::slot_recordCacheChanged);
}

DealWidget_Select_DealRecord_TableView::~DealWidget_Select_DealRecord_TableView() = default;

void DealWidget_Select_DealRecord_TableView::selectRecords(QString startDate, QString stopDate,
                                                           int page, int type)
{
    beginSelect(page);
    m_startDate = startDate;
    m_stopDate = stopDate;
    m_type = type;
    sendRequest();
}

void DealWidget_Select_DealRecord_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_DealRecord(
        m_startDate, m_stopDate, m_requestPage, m_type, PageSize);
}

void DealWidget_Select_DealRecord_TableView::slot_recordCacheChanged()
{
    const auto list = ZvServerCache::getZvServerCacheInstance()->getDealRecordList();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
}
