#include "ZvWidgetKit/market_widget.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "ZvWidgetKit/openaddress.h"
#include "ZvWidgetKit/small_money_inout.h"
#include "ZvWidgetKit/small_money_overview.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDebug>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int TitleHeight = 45;
constexpr int TitleGap = 20;
constexpr QSize WideButtonSize(95, 30);
constexpr QSize ChartButtonSize(60, 30);
constexpr QSize IntroductionButtonSize(70, 30);
constexpr int QrcodeMilliseconds = 30000;
constexpr int FirstPage = 1;

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

// An address that is not known yet is asked for, and the user clicks again.
void openOrAskFor(const QString &address)
{
    if (address.isEmpty())
        engine()->sendRequest_getURL_INOUT();
    else
        openAddress(address);
}

} // namespace

Market_Widget::Market_Widget(QWidget *parent)
    : QWidget(parent), m_titleWidget(new QWidget(this)),
      m_marketTableButton(makeButton(QStringLiteral("行情列表"))),
      m_timeChartButton(makeButton(QStringLiteral("分时"))),
      m_dayKButton(makeButton(QStringLiteral("日K"))),
      m_weekKButton(makeButton(QStringLiteral("周K"))),
      m_monthKButton(makeButton(QStringLiteral("月K"))),
      m_min5Button(makeButton(QStringLiteral("5分钟"))),
      m_min15Button(makeButton(QStringLiteral("15分钟"))),
      m_min30Button(makeButton(QStringLiteral("30分钟"))),
      m_min60Button(makeButton(QStringLiteral("60分钟"))),
      m_introductionButton(makeButton(QStringLiteral("藏品介绍"))),
      m_moneyOverviewButton(makeButton(QStringLiteral("资金总览"))),
      m_inOutButton(makeButton(QStringLiteral("出/入金"))),
      m_purchaseApplyButton(makeButton(QStringLiteral("藏品申购"))),
      m_inMoneyButton(makeButton(QStringLiteral("入金"))),
      m_outMoneyButton(makeButton(QStringLiteral("出金"))), m_marketTableWidget(nullptr),
      m_kTimeWidget(nullptr), m_marketDetailWidget(nullptr), m_stackedWidget(nullptr),
      m_lastKTimeButton(nullptr), m_moneyOverviewDialog(nullptr), m_moneyInOutDialog(nullptr),
      m_establishAccountDialog(nullptr), m_qrcodeTimer(nullptr)
{
    for (QPushButton *button : {m_timeChartButton, m_dayKButton, m_weekKButton, m_monthKButton,
                                m_min5Button, m_min15Button, m_min30Button, m_min60Button}) {
        button->setCheckable(true);
        button->setChecked(false);
    }
    layOutTitle();

    // Listeners of the pool run in the order in which they were made: the table before its page's
    // controller, the chart before the page of deals.
    m_marketTableWidget = new Market_TableWidget;
    m_kTimeWidget = new Market_KTimeWidget;
    m_marketDetailWidget = new Market_DetailWidget;
    m_stackedWidget = new QStackedWidget;
    m_stackedWidget->addWidget(m_marketTableWidget);
    m_stackedWidget->addWidget(m_kTimeWidget);
    m_stackedWidget->addWidget(m_marketDetailWidget);

    auto *page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->setSpacing(0);
    page->addWidget(m_titleWidget);
    page->addWidget(m_stackedWidget);

    m_establishAccountDialog = new EstablishAccountDialog(this);
    m_establishAccountDialog->hide();
    m_qrcodeTimer = new QTimer(this);
    m_qrcodeUrlPrefix = config()->getUrlOf_qrcodePrefix();
    m_establishAccountDialog->setWindowTitle(QStringLiteral("申请开户"));
    m_establishAccountDialog->setStyleSheet(
        QStringLiteral("QDialog#EstablishAccountDialog{border-image: "
                       "url(:/icons/smallwidget/kaihu_lanchuan.png);}"));

    createConnections();
    applyStyle();
    hideButtonsNeedLog();
}

Market_Widget::~Market_Widget() = default;

QPushButton *Market_Widget::makeButton(const QString &text)
{
    return new QPushButton(text, m_titleWidget);
}

void Market_Widget::layOutTitle()
{
    auto *row = new QHBoxLayout(m_titleWidget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addSpacing(TitleGap);
    row->addWidget(m_marketTableButton);
    row->addSpacing(TitleGap);
    for (QPushButton *button : {m_timeChartButton, m_dayKButton, m_weekKButton, m_monthKButton,
                                m_min5Button, m_min15Button, m_min30Button, m_min60Button})
        row->addWidget(button);
    row->addSpacing(TitleGap);
    row->addWidget(m_introductionButton);
    row->addStretch(1);
    for (QPushButton *button : {m_moneyOverviewButton, m_inOutButton, m_inMoneyButton,
                                m_outMoneyButton, m_purchaseApplyButton})
        row->addWidget(button);
    row->addSpacing(TitleGap);
}

void Market_Widget::applyStyle()
{
    // The focus stays in the table or the chart, where the keys walk.
    for (QPushButton *button :
         {m_marketTableButton, m_timeChartButton, m_dayKButton, m_weekKButton, m_monthKButton,
          m_introductionButton, m_moneyOverviewButton, m_inOutButton, m_inMoneyButton,
          m_outMoneyButton, m_purchaseApplyButton})
        button->setFocusPolicy(Qt::NoFocus);
    for (QPushButton *button : {m_min5Button, m_min15Button, m_min30Button, m_min60Button})
        button->hide();

    m_titleWidget->setFixedHeight(TitleHeight);
    m_titleWidget->setStyleSheet(QStringLiteral("font-style: normal;font-size: 10pt;"));
    QColor background;
    background.setNamedColor(config()->getStyleOf_MarketTitlePaletteColor());
    setBackground(m_titleWidget, background);

    m_styleMarketButton = config()->getStyleOf_MarketTitleMarketButton();
    m_styleKTimeButton = config()->getStyleOf_MarketTitleKTimeButton();
    m_marketTableButton->setStyleSheet(m_styleMarketButton);
    m_marketTableButton->setFixedSize(WideButtonSize);
    const auto dress = [this](const QList<QPushButton *> &buttons, const QSize &size) {
        for (QPushButton *button : buttons) {
            button->setStyleSheet(m_styleKTimeButton);
            button->setFixedSize(size);
        }
    };
    dress({m_timeChartButton, m_dayKButton, m_weekKButton, m_monthKButton, m_min5Button,
           m_min15Button, m_min30Button, m_min60Button},
          ChartButtonSize);
    dress({m_introductionButton}, IntroductionButtonSize);
    dress({m_moneyOverviewButton, m_inMoneyButton, m_outMoneyButton, m_inOutButton,
           m_purchaseApplyButton},
          WideButtonSize);
}

void Market_Widget::createConnections()
{
    using Self = Market_Widget;
    using Pool = ZvWidgetSignalSLotPool;
    using Cache = ZvServerCache;
    const auto onClick = [this](const QPushButton *button, void (Self::*slot)()) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    onClick(m_marketTableButton, &Self::slot_changeToPage_marketTable);
    onClick(m_timeChartButton, &Self::slot_changeToPage_TimeChart);
    onClick(m_dayKButton, &Self::slot_changeToPage_KLine_day);
    onClick(m_weekKButton, &Self::slot_changeToPage_KLine_week);
    onClick(m_monthKButton, &Self::slot_changeToPage_KLine_month);
    connect(pool(), &Pool::signal_collectionTimeLine_action, this,
            &Self::slot_changeToPage_TimeChart);
    connect(pool(), &Pool::signal_collectionKDayLine_action, this,
            &Self::slot_changeToPage_KLine_day);
    connect(pool(), &Pool::signal_collectionKWeekLine_action, this,
            &Self::slot_changeToPage_KLine_week);
    connect(pool(), &Pool::signal_collectionKMonthLine_action, this,
            &Self::slot_changeToPage_KLine_month);
    connect(pool(), &Pool::signal_turnoverOption_clicked, this, &Self::slot_turnoverOption);
    connect(pool(), &Pool::signal_turnoverKTime_clicked, this, &Self::slot_turnoverKTime);
    connect(pool(), &Pool::signal_marketDeatil_clicked, this,
            &Self::slot_changeToPage_marketDetail);
    connect(cache(), &Cache::signal_cache_MyBankcard_finded, this, &Self::slot_showInputOutput);
    connect(cache(), &Cache::signal_cache_MyBankcard_notFinded, this,
            &Self::slot_showNotBankCardFind);
    connect(cache(), &Cache::signal_cache_openApplyList_changed, this,
            &Self::slot_showOpenApplyList);
    connect(pool(), &Pool::signal_timeKChart_collectionID_escape_clicked, this,
            &Self::slot_changeToPage_marketTable);
    onClick(m_introductionButton, &Self::slot_showIntroduction_clicked);
    onClick(m_moneyOverviewButton, &Self::slot_moneyOverview_clicked);
    onClick(m_inOutButton, &Self::slot_inputoutput_clicked);
    onClick(m_purchaseApplyButton, &Self::slot_purchaseApply_clicked);
    onClick(m_inMoneyButton, &Self::slot_gotoUrl_input);
    onClick(m_outMoneyButton, &Self::slot_gotoUrl_output);
    connect(m_establishAccountDialog, &EstablishAccountDialog::signal_closed, m_qrcodeTimer,
            &QTimer::stop);
    connect(m_qrcodeTimer, &QTimer::timeout, this, &Self::slot_flushQrcodeWhenShow);
}

void Market_Widget::showButtonsNeedLog()
{
    for (QPushButton *button :
         {m_moneyOverviewButton, m_purchaseApplyButton, m_inMoneyButton, m_outMoneyButton})
        button->show();
    m_inOutButton->hide();
}

void Market_Widget::hideButtonsNeedLog()
{
    for (QPushButton *button : {m_moneyOverviewButton, m_inOutButton, m_purchaseApplyButton,
                                m_inMoneyButton, m_outMoneyButton})
        button->hide();
}

void Market_Widget::slot_showIntroduction_clicked()
{
    pool()->slot_showCollectionInfo_clicked();
}

// The dialogs run event loops, in which the host may end this page: nothing is touched after them,
// neither the page nor a dialog, which has deleted itself.

void Market_Widget::slot_moneyOverview_clicked()
{
    m_moneyOverviewDialog = new Small_Money_Overview(this);
    m_moneyOverviewDialog->exec();
}

void Market_Widget::slot_inputoutput_clicked()
{
    slot_flushQrcodeWhenShow();
}

void Market_Widget::slot_flushQrcodeWhenShow()
{
    engine()->sendRequest_Mybankcard();
}

void Market_Widget::slot_showInputOutput()
{
    m_establishAccountDialog->close();
    m_qrcodeTimer->stop();
    m_moneyInOutDialog = new Small_Money_InOut(this);
    m_moneyInOutDialog->exec();
}

void Market_Widget::slot_showNotBankCardFind(QString qrcode)
{
    // A service that was started again may answer at another address.
    m_qrcodeUrlPrefix = config()->getUrlOf_qrcodePrefix();
    m_establishAccountDialog->setQrCodeUrl(m_qrcodeUrlPrefix + qrcode);
    m_qrcodeTimer->start(QrcodeMilliseconds);
    if (m_establishAccountDialog->isHidden()) {
        qDebug("隐藏着 刷到了没有绑卡");
        // Closed below another dialog it still runs, and no dialog runs twice.
        if (m_establishAccountDialog->isModal())
            m_establishAccountDialog->show();
        else
            m_establishAccountDialog->exec();
    } else {
        qDebug("显示着 刷到了没有绑卡");
    }
}

void Market_Widget::slot_gotoUrl_input()
{
    openOrAskFor(cache()->urlInMoney);
}

void Market_Widget::slot_gotoUrl_output()
{
    openOrAskFor(cache()->urlOutMoney);
}

void Market_Widget::slot_purchaseApply_clicked()
{
    engine()->sendRequest_ApplyList(FirstPage);
}

void Market_Widget::slot_showOpenApplyList()
{
    if (cache()->openApplyList.isEmpty()) {
        BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(
            QStringLiteral("暂无可申购藏品！"));
        return;
    }
    framedmessage::show(
        framedmessage::paragraph(QStringLiteral("PC客户端的申购功能尚未开放"))
            + framedmessage::paragraph(QStringLiteral("请您前往手机客户端完成申购")),
        QStringLiteral("温馨提示"));
}

void Market_Widget::changeButtonCheckedStatus(QPushButton *button)
{
    for (QPushButton *each : {m_timeChartButton, m_dayKButton, m_weekKButton, m_monthKButton})
        each->setChecked(false);
    if (button)
        button->setChecked(true);
}

// The engine knows of a page before it is shown.
void Market_Widget::changeToChart(void (ZvServerEngine::*tell)(),
                                  void (Market_KTimeWidget::*change)(), QPushButton *button)
{
    (engine()->*tell)();
    m_stackedWidget->setCurrentWidget(m_kTimeWidget);
    (m_kTimeWidget->*change)();
    changeButtonCheckedStatus(button);
}

void Market_Widget::slot_changeToPage_marketTable()
{
    engine()->changedToMarketList();
    m_stackedWidget->setCurrentWidget(m_marketTableWidget);
    changeButtonCheckedStatus(nullptr);
}

void Market_Widget::slot_changeToPage_TimeChart()
{
    changeToChart(&ZvServerEngine::changedToTimeLine, &Market_KTimeWidget::changeToPage_timeChart,
                  m_timeChartButton);
}

void Market_Widget::slot_changeToPage_KLine_day()
{
    changeToChart(&ZvServerEngine::changedToDayKLine, &Market_KTimeWidget::changeToPage_kline_day,
                  m_dayKButton);
}

void Market_Widget::slot_changeToPage_KLine_week()
{
    changeToChart(&ZvServerEngine::changedToWeekKLine, &Market_KTimeWidget::changeToPage_kline_week,
                  m_weekKButton);
}

void Market_Widget::slot_changeToPage_KLine_month()
{
    changeToChart(&ZvServerEngine::changedToMonthKLine,
                  &Market_KTimeWidget::changeToPage_kline_month, m_monthKButton);
}

void Market_Widget::slot_changeToPage_marketDetail()
{
    if (engine()->getGlobalCollectionID().toInt() < 0)
        return;
    if (m_stackedWidget->currentWidget() != m_kTimeWidget)
        return;
    for (QPushButton *button : {m_dayKButton, m_weekKButton, m_monthKButton, m_timeChartButton}) {
        if (button->isChecked()) {
            m_lastKTimeButton = button;
            break;
        }
    }
    changeButtonCheckedStatus(nullptr);
    engine()->changedToMaketDetail();
    m_stackedWidget->setCurrentWidget(m_marketDetailWidget);
}

// F6 has already moved the table to its next type.
void Market_Widget::slot_turnoverOption()
{
    slot_changeToPage_marketTable();
}

void Market_Widget::slot_turnoverKTime()
{
    if (m_timeChartButton->isChecked())
        slot_changeToPage_KLine_day();
    else
        slot_changeToPage_TimeChart();
}

void Market_Widget::slot_changePageWhenKeybordFairy(QString code)
{
    const QString id = cache()->getCurrentBriefInfo().getCollectionIDFromCode(code);
    qDebug() << "keyboard code" << id;
    if (id.isEmpty())
        return;
    if (m_stackedWidget->currentWidget() == m_kTimeWidget)
        pool()->slot_collectionTableView_clicked(id);
    else
        pool()->slot_collectionTableView_clicked_and_changeToTimeLine(id);
}

bool Market_Widget::slot_escapeToTimeKline()
{
    if (m_stackedWidget->currentWidget() != m_marketDetailWidget || !m_lastKTimeButton)
        return false;
    m_lastKTimeButton->setChecked(true);
    if (m_timeChartButton->isChecked())
        slot_changeToPage_TimeChart();
    else if (m_dayKButton->isChecked())
        slot_changeToPage_KLine_day();
    else if (m_weekKButton->isChecked())
        slot_changeToPage_KLine_week();
    else if (m_monthKButton->isChecked())
        slot_changeToPage_KLine_month();
    else
        return false;
    return true;
}

bool Market_Widget::slot_escapeToTableView()
{
    for (const QPushButton *button :
         {m_dayKButton, m_weekKButton, m_monthKButton, m_timeChartButton}) {
        if (button->isChecked()) {
            slot_changeToPage_marketTable();
            return true;
        }
    }
    return false;
}
