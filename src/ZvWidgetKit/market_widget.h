#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QString>
#include <QWidget>

class EstablishAccountDialog;
class Market_DetailWidget;
class Market_KTimeWidget;
class Market_TableWidget;
class QPushButton;
class QStackedWidget;
class QTimer;
class Small_Money_InOut;
class Small_Money_Overview;
class ZvServerEngine;

// The market half of the main window: a row of buttons over the market table, the chart of one
// collection, and the page of its deals. It says which page is in front and tells the engine, and
// it holds what a signed-in user does with money.
//
// The checked button of the row is the only record of the chart's mode: one is checked on the chart
// page, none on the other two.
class ZVWIDGETKIT_EXPORT Market_Widget : public QWidget
{
    Q_OBJECT

public:
    explicit Market_Widget(QWidget *parent = nullptr);
    ~Market_Widget() override;

public slots:
    // The buttons that only a signed-in user sees. The host calls these when a session begins and
    // ends; they are hidden at the start.
    void showButtonsNeedLog();
    void hideButtonsNeedLog();

    void slot_showIntroduction_clicked();
    void slot_moneyOverview_clicked();

    // Asks for the bound bank card. Where there is one, the dialog for money in and out follows,
    // otherwise the one that opens an account.
    void slot_inputoutput_clicked();
    void slot_showInputOutput();
    void slot_showNotBankCardFind(QString qrcode);

    // Opens the page for money in or out in the browser. The first call only fetches its address.
    void slot_gotoUrl_input();
    void slot_gotoUrl_output();

    void slot_purchaseApply_clicked();
    void slot_showOpenApplyList();

    void slot_changeToPage_marketTable();
    void slot_changeToPage_TimeChart();
    void slot_changeToPage_KLine_day();
    void slot_changeToPage_KLine_week();
    void slot_changeToPage_KLine_month();

    // From the chart page alone, and not for the composite.
    void slot_changeToPage_marketDetail();

    void slot_turnoverOption();

    // From the time line to the day K line, from everywhere else to the time line.
    void slot_turnoverKTime();

    // A collection's code was typed. One that does not exist changes nothing.
    void slot_changePageWhenKeybordFairy(QString code);

    // The two ways back. A host tries the first, from the page of deals to the chart it was opened
    // from, and then the second, from the chart to the table. False where there was nothing to do.
    bool slot_escapeToTimeKline();
    bool slot_escapeToTableView();

private slots:
    void slot_flushQrcodeWhenShow();

private:
    QPushButton *makeButton(const QString &text);
    void layOutTitle();
    void changeButtonCheckedStatus(QPushButton *button);
    void changeToChart(void (ZvServerEngine::*tell)(), void (Market_KTimeWidget::*change)(),
                       QPushButton *button);
    void applyStyle();
    void createConnections();

    QWidget *m_titleWidget;
    QPushButton *m_marketTableButton;
    QPushButton *m_timeChartButton;
    QPushButton *m_dayKButton;
    QPushButton *m_weekKButton;
    QPushButton *m_monthKButton;
    QPushButton *m_min5Button; // the four minute ones are always hidden
    QPushButton *m_min15Button;
    QPushButton *m_min30Button;
    QPushButton *m_min60Button;
    QPushButton *m_introductionButton;
    QPushButton *m_moneyOverviewButton;
    QPushButton *m_inOutButton; // always hidden, too
    QPushButton *m_purchaseApplyButton;
    QPushButton *m_inMoneyButton;
    QPushButton *m_outMoneyButton;
    Market_TableWidget *m_marketTableWidget;
    Market_KTimeWidget *m_kTimeWidget;
    Market_DetailWidget *m_marketDetailWidget;
    QStackedWidget *m_stackedWidget;
    QPushButton *m_lastKTimeButton; // checked when the page of deals was entered last

    // Written and never read: each dialog deletes itself, and these point on.
    Small_Money_Overview *m_moneyOverviewDialog;
    Small_Money_InOut *m_moneyInOutDialog;

    QString m_styleMarketButton;
    QString m_styleKTimeButton;
    EstablishAccountDialog *m_establishAccountDialog;
    QString m_qrcodeUrlPrefix;
    QTimer *m_qrcodeTimer; // asks for the bank card while the dialog above is up
};
