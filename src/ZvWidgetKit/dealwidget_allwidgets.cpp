#include "ZvWidgetKit/dealwidget_allwidgets.h"

#include "ZvNetworkKit/serverpaths.h"
#if __has_include("ZvWidgetKit/dealwidget_buysell.cpp")
#include "ZvWidgetKit/dealwidget_buysell.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_delivery.cpp")
#include "ZvWidgetKit/dealwidget_delivery.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_revoke.cpp")
#include "ZvWidgetKit/dealwidget_revoke.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_applyrecord.cpp")
#include "ZvWidgetKit/dealwidget_select_applyrecord.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_dealrecord.cpp")
#include "ZvWidgetKit/dealwidget_select_dealrecord.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_delegaterecord.cpp")
#include "ZvWidgetKit/dealwidget_select_delegaterecord.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_delegatetoday.cpp")
#include "ZvWidgetKit/dealwidget_select_delegatetoday.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_deliveryrecord.cpp")
#include "ZvWidgetKit/dealwidget_select_deliveryrecord.h"
#endif
#if __has_include("ZvWidgetKit/dealwidget_select_moneyflow.cpp")
#include "ZvWidgetKit/dealwidget_select_moneyflow.h"
#endif
#include "ZvWidgetKit/widgetbackground.h"

#include <QLabel>
#include <QLayout>

#include <type_traits>

namespace {

// Pages that are still being written are empty for now.
template <typename Page, typename = void>
constexpr bool isThere = false;
template <typename Page>
constexpr bool isThere<Page, std::void_t<decltype(sizeof(Page))>> = true;

template <typename Page>
Page *newPage()
{
    if constexpr (isThere<Page>)
        return new Page;
    else
        return reinterpret_cast<Page *>(new QLabel);
}

template <typename Page>
QWidget *widgetOf(Page *page)
{
    return reinterpret_cast<QWidget *>(page);
}

template <typename Page>
void reload(Page *page)
{
    if constexpr (isThere<Page>)
        page->slot_selectButton_clicked();
}

template <typename Page>
void setMode(Page *page, int mode)
{
    if constexpr (isThere<Page>)
        page->setTicketMode(mode);
}

template <typename Page>
void setPanel(Page *page, bool isShown)
{
    if constexpr (isThere<Page>)
        isShown ? page->showRecordPanel() : page->hideRecordPanel();
}

// What the page of orders is for.
constexpr int BuyMode = 0;
constexpr int SellMode = 1;
constexpr int PrePayMode = 2;

} // namespace

DealWidget_AllWidgets::DealWidget_AllWidgets(QWidget *parent)
    : QStackedWidget(parent), m_buySell(newPage<DealWidget_BuySell>()),
      m_revoke(newPage<DealWidget_Revoke>()), m_delivery(newPage<DealWidget_Delivery>()),
      m_dealRecord(newPage<DealWidget_Select_DealRecord>()),
      m_delegateToday(newPage<DealWidget_Select_DelegateToday>()),
      m_delegateRecord(newPage<DealWidget_Select_DelegateRecord>()),
      m_applyRecord(newPage<DealWidget_Select_ApplyRecord>()),
      m_deliveryRecord(newPage<DealWidget_Select_DeliveryRecord>()),
      m_moneyFlow(newPage<DealWidget_Select_MoneyFlow>())
{
    for (QWidget *page : QList<QWidget *>{
             widgetOf(m_buySell), widgetOf(m_revoke), widgetOf(m_delivery), widgetOf(m_dealRecord),
             widgetOf(m_delegateToday), widgetOf(m_delegateRecord), widgetOf(m_applyRecord),
             widgetOf(m_deliveryRecord), widgetOf(m_moneyFlow)})
        addWidget(page);
    layout()->setContentsMargins(0, 0, 0, 0);
    layout()->setSpacing(0);
    setBackground(this, Qt::black);
    showBuy();
}

DealWidget_AllWidgets::~DealWidget_AllWidgets() = default;

void DealWidget_AllWidgets::showTicket(int mode)
{
    setMode(m_buySell, mode);
    setCurrentWidget(widgetOf(m_buySell));
}

void DealWidget_AllWidgets::showBuy()
{
    showTicket(BuyMode);
}

void DealWidget_AllWidgets::showSell()
{
    showTicket(SellMode);
}

void DealWidget_AllWidgets::showPrePay()
{
    showTicket(PrePayMode);
}

void DealWidget_AllWidgets::showRevoke()
{
    setCurrentWidget(widgetOf(m_revoke));
}

void DealWidget_AllWidgets::showDelivery()
{
    setCurrentWidget(widgetOf(m_delivery));
}

void DealWidget_AllWidgets::showDealRecord()
{
    setPanel(m_dealRecord, true);
    setCurrentWidget(widgetOf(m_dealRecord));
}

void DealWidget_AllWidgets::showDealToday()
{
    setPanel(m_dealRecord, false);
    setCurrentWidget(widgetOf(m_dealRecord));
}

void DealWidget_AllWidgets::showDelegateToday()
{
    setCurrentWidget(widgetOf(m_delegateToday));
}

void DealWidget_AllWidgets::showDelegateRecord()
{
    setCurrentWidget(widgetOf(m_delegateRecord));
}

void DealWidget_AllWidgets::showApplyRecord()
{
    setCurrentWidget(widgetOf(m_applyRecord));
}

void DealWidget_AllWidgets::showDeliveryRecord()
{
    setCurrentWidget(widgetOf(m_deliveryRecord));
}

void DealWidget_AllWidgets::showMoneyFlow()
{
    setCurrentWidget(widgetOf(m_moneyFlow));
}

void DealWidget_AllWidgets::reloadPages()
{
    reload(m_revoke);
    reload(m_dealRecord);
    reload(m_delegateToday);
    reload(m_delegateRecord);
    reload(m_applyRecord);
    reload(m_deliveryRecord);
    reload(m_moneyFlow);
}
