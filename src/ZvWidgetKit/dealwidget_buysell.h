#pragma once

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"

#include <QList>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <vector>

class DealWidget_BuySell_CapTableView;
class DealWidget_BuySell_DealTableView;
class DealWidget_PrePay_TableView;
class QComboBox;
class QLabel;
class QPushButton;
class QStringListModel;
struct TicketOrder;

namespace Ui {
class DealWidget_BuySell;
}

// The page where orders are made: the ticket, the five levels of its collection beside it, and
// below both what the account holds and has dealt, or the orders that are prepared.
//
// It draws what the cache announces and has nothing of its own but the prepared orders. What comes
// back of an order does not say which one it was.
class DealWidget_BuySell : public QWidget
{
    Q_OBJECT

public:
    enum TicketMode { BuyMode, SellMode, PreparedMode };

    explicit DealWidget_BuySell(QWidget *parent = nullptr);
    ~DealWidget_BuySell() override;

    // Turns the ticket to one of its modes; the one that is set already changes nothing.
    void setTicketMode(int mode);

private slots:
    void slot_buysell_licked();
    void slot_subPrice_clicked();
    void slot_addPrice_clicked();
    void slot_subCount_clicked();
    void slot_addCount_clicked();
    void slot_resetPriceCount_clicked();
    void slot_preBuyClicked();
    void slot_preSellClicked();
    void slot_prepay_deleteSelected_clicked();
    void slot_prepay_sendSelected_clicked();
    void slot_price_changed();
    void slot_count_changed();

public slots:
    void slot_trade_buy_succeed();
    void slot_trade_buy_failed(QString msg);
    void slot_trade_sell_succeed();
    void slot_trade_sell_failed(QString msg);
    void slot_prepay_succeed(QString md5);
    void slot_prepay_failed(QString md5, QString msg);
    void slot_updateCapInfo();
    void slot_updateGatherInfo();

    // Draws levels and limits of the ticket's collection; nothing for any other.
    void slot_updateTop5(QString collectionID);

private slots:
    void slot_updateBriefInfo(QString server);
    void slot_comboxCode_activated();
    void slot_comboxName_activated();
    void lockBuysellLimit();
    void unlockBuysellLimit();
    void flushTopFive();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void createTicketConnections();
    void connectTradeResults();
    void disconnectTradeResults();
    void applyTicketStyle();
    void createTables();

    TicketOrder readOrder();
    void placeOrder(const TicketOrder &order);
    void prepareOrder(const TicketOrder &order);
    int largestCount() const;
    bool isBuying() const;
    double feeRate() const;
    void updateCanBuySell();
    void showSide(bool sells);
    void setPrepayDirection(int direction);
    void tellTradeSucceeded(const QString &text);
    void tellTradeFailed(const QString &msg, const QString &usualText);

    void slot_globalCollectionChanged(const QString &id);
    void slot_adjustTopFiveRows(QSize mainSize);
    void recolorTopFive(float reference);
    void setComboEntries(QComboBox *combo, const QStringList &entries);

    void showCapData();
    void showDealData();
    void showCashData();
    void showData(const QPushButton *button, QWidget *page);

    QString m_currentCollectionID;
    bool m_orderAllowed = true; // guards orders that leave at once, not prepared ones
    bool m_flushAfterSuccess = true; // the last order's price reached into the five levels
    ZvUBTopFive m_topFive;
    std::unique_ptr<Ui::DealWidget_BuySell> ui;
    DealWidget_BuySell_CapTableView *m_capTable = nullptr;
    DealWidget_BuySell_DealTableView *m_dealTable = nullptr;
    DealWidget_PrePay_TableView *m_prepayTable = nullptr;
    DealWidget_PrePay_TableModel m_prepayModel;
    int m_mode = SellMode; // another one than the first that is set
    int m_prepayDirection = 0; // 0 buy, 1 sell
    QList<QLabel *> m_priceLabels; // a click fills the price
    QList<QLabel *> m_countLabels; // a click fills the count
    float m_availableMoney = 0; // yuan, as the limits
    float m_lowerLimitPrice = 0;
    float m_upperLimitPrice = 0;
    int m_maxBuyCount = 0;
    int m_maxSellCount = 0;
    QStringList m_codeList; // parallel to the names
    QStringList m_nameList;
    ZvUBBriefInfo m_briefInfo;

    // All that the two combo boxes ever showed. A list that was replaced stays until the page goes,
    // since whoever looks into it at that moment must not lose it.
    std::vector<std::unique_ptr<QStringListModel>> m_comboModels;
};
