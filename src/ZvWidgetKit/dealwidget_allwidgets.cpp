#include "ZvWidgetKit/dealwidget_allwidgets.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_buysell.h"
#include "ZvWidgetKit/dealwidget_delivery.h"
#include "ZvWidgetKit/dealwidget_revoke.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord.h"
#include "ZvWidgetKit/dealwidget_select_delegaterecord.h"
#include "ZvWidgetKit/dealwidget_select_delegatetoday.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow.h"
#include "ZvWidgetKit/widgetbackground.h"

#include <QLayout>

namespace {

// What the page of orders is for.
constexpr int BuyMode = 0;
constexpr int SellMode = 1;
constexpr int PrePayMode = 2;

} // namespace

DealWidget_AllWidgets::DealWidget_AllWidgets(QWidget *parent)
    : QStackedWidget(parent), m_buySell(new DealWidget_BuySell(this)),
      m_revoke(new DealWidget_Revoke(this)), m_delivery(new DealWidget_Delivery(this)),
      m_dealRecord(new DealWidget_Select_DealRecord(this)),
      m_delegateToday(new DealWidget_Select_DelegateToday(this)),
      m_delegateRecord(new DealWidget_Select_DelegateRecord(this)),
      m_applyRecord(new DealWidget_Select_ApplyRecord(this)),
      m_deliveryRecord(new DealWidget_Select_DeliveryRecord(this)),
      m_moneyFlow(new DealWidget_Select_MoneyFlow(this))
{
    for (QWidget *page :
         QList<QWidget *>{m_buySell, m_revoke, m_delivery, m_dealRecord, m_delegateToday,
                          m_delegateRecord, m_applyRecord, m_deliveryRecord, m_moneyFlow})
        addWidget(page);
    layout()->setContentsMargins(0, 0, 0, 0);
    layout()->setSpacing(0);
    setBackground(this, Qt::black);
    showBuy();
}

DealWidget_AllWidgets::~DealWidget_AllWidgets() = default;

void DealWidget_AllWidgets::showTicket(int mode)
{
    m_buySell->setTicketMode(mode);
    setCurrentWidget(m_buySell);
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
    setCurrentWidget(m_revoke);
}

void DealWidget_AllWidgets::showDelivery()
{
    setCurrentWidget(m_delivery);
}

void DealWidget_AllWidgets::showDealRecord()
{
    m_dealRecord->showRecordPanel();
    setCurrentWidget(m_dealRecord);
}

void DealWidget_AllWidgets::showDealToday()
{
    m_dealRecord->hideRecordPanel();
    setCurrentWidget(m_dealRecord);
}

void DealWidget_AllWidgets::showDelegateToday()
{
    setCurrentWidget(m_delegateToday);
}

void DealWidget_AllWidgets::showDelegateRecord()
{
    setCurrentWidget(m_delegateRecord);
}

void DealWidget_AllWidgets::showApplyRecord()
{
    setCurrentWidget(m_applyRecord);
}

void DealWidget_AllWidgets::showDeliveryRecord()
{
    setCurrentWidget(m_deliveryRecord);
}

void DealWidget_AllWidgets::showMoneyFlow()
{
    setCurrentWidget(m_moneyFlow);
}

void DealWidget_AllWidgets::reloadPages()
{
    m_revoke->slot_selectButton_clicked();
    m_dealRecord->slot_selectButton_clicked();
    m_delegateToday->slot_selectButton_clicked();
    m_delegateRecord->slot_selectButton_clicked();
    m_applyRecord->slot_selectButton_clicked();
    m_deliveryRecord->slot_selectButton_clicked();
    m_moneyFlow->slot_selectButton_clicked();
}
