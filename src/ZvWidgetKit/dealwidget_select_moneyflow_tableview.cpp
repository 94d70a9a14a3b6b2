#include "ZvWidgetKit/dealwidget_select_moneyflow_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

DealWidget_Select_MoneyFlow_TableView::DealWidget_Select_MoneyFlow_TableView(QWidget *parent)
    : PagedTableView(parent), m_type(0)
{
    setUpRecordTable(this, &m_model, new DealWidget_Select_MoneyFlow_TableDelegate,
                     RecordRowHeight);
    setColumnWidths(this, {{0, 100}, {1, 100}, {2, 200}, {3, 100}, {4, 200}});
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_MoneyFlow_changed, this,
            &DealWidget_Select_MoneyFlow_TableView::slot_recordCacheChanged);
}

DealWidget_Select_MoneyFlow_TableView::~DealWidget_Select_MoneyFlow_TableView() = default;

void DealWidget_Select_MoneyFlow_TableView::selectRecords(int page, int type, QString startDate,
                                                          QString stopDate)
{
    beginSelect(page);
    m_startDate = startDate;
    m_stopDate = stopDate;
    m_type = type;
    sendRequest();
}

void DealWidget_Select_MoneyFlow_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_MoneyFlow(
        m_requestPage, m_type, m_startDate, m_stopDate);
}

void DealWidget_Select_MoneyFlow_TableView::slot_recordCacheChanged()
{
    const auto list = ZvServerCache::getZvServerCacheInstance()->getMoneyFlowList();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
}
