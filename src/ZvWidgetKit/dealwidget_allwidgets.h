#pragma once

#include <QStackedWidget>

class DealWidget_BuySell;
class DealWidget_Delivery;
class DealWidget_Revoke;
class DealWidget_Select_ApplyRecord;
class DealWidget_Select_DealRecord;
class DealWidget_Select_DelegateRecord;
class DealWidget_Select_DelegateToday;
class DealWidget_Select_DeliveryRecord;
class DealWidget_Select_MoneyFlow;

// The pages of the trading panel, which live as long as it does. Each `show...` brings one of them
// to the front; the page of orders serves to buy, to sell and to prepare orders.
class DealWidget_AllWidgets : public QStackedWidget
{
    Q_OBJECT

public:
    explicit DealWidget_AllWidgets(QWidget *parent = nullptr);
    ~DealWidget_AllWidgets() override;

    void showBuy();
    void showSell();
    void showRevoke();
    void showDealRecord();
    void showDelegateToday();
    void showDealToday();
    void showDelegateRecord();
    void showApplyRecord();
    void showDeliveryRecord();
    void showMoneyFlow();
    void showPrePay();
    void showDelivery();

    // Asks the lists for their first page. The others live from what the kit keeps current.
    void reloadPages();

private:
    void showTicket(int mode);

    DealWidget_BuySell *m_buySell;
    DealWidget_Revoke *m_revoke;
    DealWidget_Delivery *m_delivery;
    DealWidget_Select_DealRecord *m_dealRecord;
    DealWidget_Select_DelegateToday *m_delegateToday;
    DealWidget_Select_DelegateRecord *m_delegateRecord;
    DealWidget_Select_ApplyRecord *m_applyRecord;
    DealWidget_Select_DeliveryRecord *m_deliveryRecord;
    DealWidget_Select_MoneyFlow *m_moneyFlow;
};
