#include "ZvWidgetKit/dealwidget_buysell.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "ZvWidgetKit/dealwidget_prepay_tableview.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/ticketorder.h"
#include "ZvWidgetKit/ticketquote.h"
#include "ZvWidgetKit/ticketsummary.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "ui_dealwidget_buysell.h"

#include <QCompleter>
#include <QDebug>
#include <QHBoxLayout>
#include <QLocale>
#include <QMouseEvent>
#include <QPointer>
#include <QSignalBlocker>
#include <QStringListModel>
#include <QTime>
#include <QTimer>

#include <limits>

namespace {

constexpr int ThrottleMilliseconds = 1000; // an order without an answer holds the next one back
constexpr int FlushMilliseconds = 700; // after which an order is seen among the levels
constexpr int LowWindowHeight = 780;
constexpr double PriceStep = 0.01; // yuan
constexpr double UsualFeeRate = 0.003;
constexpr float FirstReference = 60.0F;

using Result = ZvServerActionResult;
using Pool = ZvWidgetSignalSLotPool;

Result *server()
{
    return Result::getZvServerActionResultInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

void alertMessage(const QString &text)
{
    BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(text);
}

// Lets a table fill its container, under the name by which a screen reader tells of it.
void fillContainer(QWidget *content, const QString &name)
{
    content->setAccessibleName(name);
    auto *layout = new QHBoxLayout(content->parentWidget());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(content);
}

} // namespace

DealWidget_BuySell::DealWidget_BuySell(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::DealWidget_BuySell>())
{
    ui->setupUi(this);
    m_priceLabels << ui->label_priceLimit_value << ui->label_upperLimitPrice_value
                  << ui->label_latest_value << ui->label_buy1_price << ui->label_buy2_price
                  << ui->label_buy3_price << ui->label_buy4_price << ui->label_buy5_price
                  << ui->label_sell1_price << ui->label_sell2_price << ui->label_sell3_price
                  << ui->label_sell4_price << ui->label_sell5_price;
    m_countLabels << ui->label_buy1_qty << ui->label_buy2_qty << ui->label_buy3_qty
                  << ui->label_buy4_qty << ui->label_buy5_qty << ui->label_sell1_qty
                  << ui->label_sell2_qty << ui->label_sell3_qty << ui->label_sell4_qty
                  << ui->label_sell5_qty << ui->label_canBuySellValue;
    createTicketConnections();
    setTicketMode(BuyMode);
    applyTicketStyle();
    recolorTopFive(FirstReference);
    createTables();
    for (QComboBox *combo : {ui->comboBox_goodsCode, ui->comboBox_goodsName}) {
        combo->setInsertPolicy(QComboBox::NoInsert);
        combo->completer()->setCompletionMode(QCompleter::PopupCompletion);
    }
    // Return in a field still makes an order there.
    if (config()->getCurrentPlatform() == ZvServerConfig::LanChuan)
        ui->pushButton_buysell->setEnabled(false);
}

DealWidget_BuySell::~DealWidget_BuySell() = default;

void DealWidget_BuySell::createTables()
{
    m_capTable = new DealWidget_BuySell_CapTableView(ui->widget_tableViewContainer_capData);
    m_dealTable = new DealWidget_BuySell_DealTableView(ui->widget_tableViewContainer_dealData);
    m_prepayTable = new DealWidget_PrePay_TableView(ui->widget_tableViewContainer_prepay);
    m_prepayTable->setModel(&m_prepayModel);
    m_prepayTable->setupView();
    fillContainer(m_capTable, QStringLiteral("持仓汇总"));
    fillContainer(m_dealTable, QStringLiteral("成交汇总"));
    fillContainer(m_prepayTable, QStringLiteral("预埋单"));
}

void DealWidget_BuySell::createTicketConnections()
{
    using Self = DealWidget_BuySell;
    for (QLabel *label : m_priceLabels + m_countLabels)
        label->installEventFilter(this);

    connect(cache(), &ZvServerCache::signal_cache_briefInfo_changed, this,
            &Self::slot_updateBriefInfo);
    connect(cache(), &ZvServerCache::signal_cache_CapInfo_changed, this, &Self::slot_updateCapInfo);
    connect(cache(), &ZvServerCache::signal_cache_GatherInfo_changed, this,
            &Self::slot_updateGatherInfo);
    connect(cache(), &ZvServerCache::signal_cache_CollectionTrade_changed, this,
            &Self::slot_updateTop5);
    connect(cache(), &ZvServerCache::signal_cache_SellbuyTrade_changed, this,
            &Self::slot_updateTop5);

    connectTradeResults();
    connect(server(), &Result::signal_prepay_send_succeed, this, &Self::slot_prepay_succeed);
    connect(server(), &Result::signal_prepay_send_failed, this, &Self::slot_prepay_failed);

    connect(ui->pushButton_enter, &QPushButton::clicked, this, &Self::slot_preBuyClicked);
    connect(ui->pushButton_out, &QPushButton::clicked, this, &Self::slot_preSellClicked);

    // The signal with a text: what a user picks or completes, not what a program sets. Qt's newer
    // name for it says the same twice.
    connect(ui->comboBox_goodsCode, SIGNAL(activated(QString)), this,
            SLOT(slot_comboxCode_activated()));
    connect(ui->comboBox_goodsName, SIGNAL(activated(QString)), this,
            SLOT(slot_comboxName_activated()));
    connect(pool(), &Pool::signal_global_colletionId_changed, this,
            &Self::slot_globalCollectionChanged);

    connect(ui->doubleSpinBox_buysellPrice, &BreltDoubleSpinBox::signal_returnClicked, this,
            &Self::slot_buysell_licked);
    connect(ui->spinBox_buysellNumber, &BreltSpinBox::signal_returnClicked, this,
            &Self::slot_buysell_licked);

    const auto onClick = [this](QPushButton *button, void (Self::*slot)()) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    onClick(ui->pushButton_count_add, &Self::slot_addCount_clicked);
    onClick(ui->pushButton_count_sub, &Self::slot_subCount_clicked);
    onClick(ui->pushButton_price_add, &Self::slot_addPrice_clicked);
    onClick(ui->pushButton_price_sub, &Self::slot_subPrice_clicked);
    onClick(ui->pushButton_reset, &Self::slot_resetPriceCount_clicked);
    onClick(ui->pushButton_buysell, &Self::slot_buysell_licked);

    connect(ui->pushButton_selectAllPrePayItem, &QPushButton::clicked, &m_prepayModel,
            &DealWidget_PrePay_TableModel::selectAll);
    connect(ui->pushButton_deselectAllPrePayItem, &QPushButton::clicked, &m_prepayModel,
            &DealWidget_PrePay_TableModel::deselectAll);
    onClick(ui->pushButton_deletePrePayItem, &Self::slot_prepay_deleteSelected_clicked);
    onClick(ui->pushButton_sendPrePayItem, &Self::slot_prepay_sendSelected_clicked);

    connect(pool(), &Pool::signal_adjustSize, this, &Self::slot_adjustTopFiveRows);

    onClick(ui->pushButton_capData, &Self::showCapData);
    onClick(ui->pushButton_dealData, &Self::showDealData);
    onClick(ui->pushButton_cashData, &Self::showCashData);
    for (QPushButton *button :
         {ui->pushButton_capData, ui->pushButton_dealData, ui->pushButton_cashData})
        button->setCheckable(true);
    showCapData();
}

void DealWidget_BuySell::connectTradeResults()
{
    using Self = DealWidget_BuySell;
    connect(server(), &Result::signal_trade_buy_succeed, this, &Self::slot_trade_buy_succeed);
    connect(server(), &Result::signal_trade_buy_failed, this, &Self::slot_trade_buy_failed);
    connect(server(), &Result::signal_trade_sell_succeed, this, &Self::slot_trade_sell_succeed);
    connect(server(), &Result::signal_trade_sell_failed, this, &Self::slot_trade_sell_failed);
}

void DealWidget_BuySell::disconnectTradeResults()
{
    using Self = DealWidget_BuySell;
    disconnect(server(), &Result::signal_trade_buy_succeed, this, &Self::slot_trade_buy_succeed);
    disconnect(server(), &Result::signal_trade_buy_failed, this, &Self::slot_trade_buy_failed);
    disconnect(server(), &Result::signal_trade_sell_succeed, this, &Self::slot_trade_sell_succeed);
    disconnect(server(), &Result::signal_trade_sell_failed, this, &Self::slot_trade_sell_failed);
}

void DealWidget_BuySell::applyTicketStyle()
{
    ui->pushButton_cashData->hide();

    const QList<QPushButton *> dataButtons{ui->pushButton_capData, ui->pushButton_dealData,
                                           ui->pushButton_cashData};
    const QList<QPushButton *> prepayButtons{
        ui->pushButton_enter,
        ui->pushButton_out,
        ui->pushButton_selectAllPrePayItem,
        ui->pushButton_deselectAllPrePayItem,
        ui->pushButton_deletePrePayItem,
        ui->pushButton_sendPrePayItem,
    };
    const QList<QPushButton *> stepButtons{ui->pushButton_count_add, ui->pushButton_count_sub,
                                           ui->pushButton_price_add, ui->pushButton_price_sub};
    const QList<QPushButton *> orderButtons{ui->pushButton_buysell, ui->pushButton_reset};

    // Tab and Return stay in the fields.
    for (QPushButton *button : dataButtons + prepayButtons + stepButtons + orderButtons)
        button->setFocusPolicy(Qt::NoFocus);
    for (QPushButton *button : stepButtons)
        button->setFixedSize(20, 20);
    for (QPushButton *button : orderButtons)
        button->setMinimumSize(70, 20);
    for (QPushButton *button : dataButtons + prepayButtons)
        button->setFixedSize(70, 24);
    for (QPushButton *button : dataButtons)
        button->setStyleSheet(config()->getStyleOf_DealOtherButton());
    for (QPushButton *button : prepayButtons)
        button->setStyleSheet(config()->getStyleOf_DealGrayRoundButton());

    // The ground of the upper half shows between its panels as their separators.
    const QColor deep(config()->getStyleOf_DealPaletteDeep());
    const QColor panel(config()->getStyleOf_DealPaletteShallowPanel());
    const QColor top(config()->getStyleOf_DealPaletteShallowTop());
    for (QWidget *widget : {static_cast<QWidget *>(this), ui->widget_upper})
        setBackground(widget, deep);
    for (QWidget *widget : {ui->widget_ticket, ui->widget_quote, ui->widget_limits})
        setBackground(widget, panel);
    for (QWidget *widget : {ui->widget_top_capData, ui->widget_top_dealData,
                            ui->widget_top_cashData, ui->widget_top_prepay})
        setBackground(widget, top);

    ticketquote::applyStyle(*ui);
    for (QLabel *label : m_priceLabels + m_countLabels)
        label->setCursor(Qt::PointingHandCursor);
}

void DealWidget_BuySell::setTicketMode(int mode)
{
    if (mode == m_mode)
        return;
    m_mode = mode;

    const bool isPrepared = mode == PreparedMode;
    ui->label_buysellGoods->setHidden(isPrepared);
    ui->pushButton_enter->setVisible(isPrepared);
    ui->pushButton_out->setVisible(isPrepared);
    ui->stackedWidget_buysell_prepay->setCurrentIndex(isPrepared ? 1 : 0);
    for (QLabel *label :
         {ui->label_canBuySell, static_cast<QLabel *>(ui->label_canBuySellValue),
          ui->label_availableMoney, static_cast<QLabel *>(ui->label_availableMoneyValue)})
        label->setHidden(isPrepared);

    if (isPrepared) {
        setPrepayDirection(m_prepayDirection);
    } else {
        showSide(mode == SellMode);
        updateCanBuySell();
    }
}

void DealWidget_BuySell::setPrepayDirection(int direction)
{
    m_prepayDirection = direction;
    showSide(direction == 1);
    updateCanBuySell();
}

void DealWidget_BuySell::showSide(bool sells)
{
    ui->pushButton_buysell->setText(sells ? QStringLiteral("卖出") : QStringLiteral("买入"));
    ui->label_buysellGoods->setText(sells ? QStringLiteral("卖出商品")
                                          : QStringLiteral("买入商品"));
    ui->label_buysellPrice->setText(sells ? QStringLiteral("卖出价格")
                                          : QStringLiteral("买入价格"));
    ui->label_buysellCount->setText(sells ? QStringLiteral("卖出数量")
                                          : QStringLiteral("买入数量"));
    ui->label_canBuySell->setText(sells ? QStringLiteral("可卖数量：")
                                        : QStringLiteral("可买数量："));
    const QString sheet
        = sells ? config()->getStyleOf_DealSellButton() : config()->getStyleOf_DealBuyButton();
    ui->pushButton_buysell->setStyleSheet(sheet);
    ui->pushButton_reset->setStyleSheet(sheet);
}

void DealWidget_BuySell::slot_preBuyClicked()
{
    ui->pushButton_enter->setChecked(true);
    ui->pushButton_out->setChecked(false);
    setPrepayDirection(0);
}

void DealWidget_BuySell::slot_preSellClicked()
{
    ui->pushButton_enter->setChecked(false);
    ui->pushButton_out->setChecked(true);
    setPrepayDirection(1);
}

// A field that was left half empty goes back to its last number first, so that it shows what is
// ordered.
TicketOrder DealWidget_BuySell::readOrder()
{
    ui->doubleSpinBox_buysellPrice->interpretText();
    ui->spinBox_buysellNumber->interpretText();
    TicketOrder order;
    order.code = ui->comboBox_goodsCode->currentText();
    order.name = ui->comboBox_goodsName->currentText();
    order.price = float(ui->doubleSpinBox_buysellPrice->value());
    order.count = ui->spinBox_buysellNumber->value();
    return order;
}

int DealWidget_BuySell::largestCount() const
{
    if (m_mode == PreparedMode)
        return std::numeric_limits<int>::max();
    return m_mode == BuyMode ? m_maxBuyCount : m_maxSellCount;
}

void DealWidget_BuySell::slot_buysell_licked()
{
    if (m_mode != PreparedMode && !m_orderAllowed) {
        qDebug() << "拦截了";
        return;
    }
    const TicketOrder order = readOrder();
    const QString fault = faultOf(
        order, {m_codeList, m_nameList, m_lowerLimitPrice, m_upperLimitPrice, largestCount()});
    if (!fault.isEmpty())
        framedmessage::show(framedmessage::paragraph(fault), QStringLiteral("错误提示"));
    else if (m_mode == PreparedMode)
        prepareOrder(order);
    else
        placeOrder(order);
}

// While the box asks, answers go on arriving, and the page may even turn to another mode or go. The
// order is the one that was asked about; its collection is that of the code afterwards.
void DealWidget_BuySell::placeOrder(const TicketOrder &order)
{
    const QPointer<DealWidget_BuySell> self(this);
    const bool buys = m_mode == BuyMode;
    const bool isConfirmed = framedmessage::show(confirmationOf(order),
                                                 buys ? QStringLiteral("买前信息确认")
                                                      : QStringLiteral("卖前信息确认"),
                                                 QStringLiteral("取消"));
    if (!isConfirmed) {
        if (buys)
            qDebug() << "rejected";
        return;
    }
    if (!self)
        return;

    const QString id = m_briefInfo.getCollectionIDFromCode(order.code);
    m_orderAllowed = false;
    QTimer::singleShot(ThrottleMilliseconds, this, &DealWidget_BuySell::unlockBuysellLimit);
    if (buys) {
        m_flushAfterSuccess = order.price >= m_topFive.getBuy5Price();
        server()->sendRequest_trade_buy(id, order.price, order.count);
    } else {
        m_flushAfterSuccess = m_topFive.getSell5Price() >= order.price;
        server()->sendRequest_trade_sell(id, order.price, order.count);
    }
}

void DealWidget_BuySell::prepareOrder(const TicketOrder &order)
{
    ZvUBTradeItem item;
    item.code = order.code;
    item.name = order.name;
    item.direction = m_prepayDirection == 0 ? 1 : 2;
    item.price = order.price;
    item.count = order.count;
    item.state = ZvUBTradeItem::Kept;
    item.createTime = QLocale::c().toString(QTime::currentTime(), QStringLiteral("hh:mm:ss"));
    m_prepayModel.addTradeItem(item);
}

void DealWidget_BuySell::lockBuysellLimit()
{
    m_orderAllowed = false;
}

void DealWidget_BuySell::unlockBuysellLimit()
{
    m_orderAllowed = true;
}

void DealWidget_BuySell::slot_trade_buy_succeed()
{
    tellTradeSucceeded(QStringLiteral("买入委托成功"));
}

void DealWidget_BuySell::slot_trade_buy_failed(QString msg)
{
    tellTradeFailed(msg, QStringLiteral("买入委托失败"));
}

void DealWidget_BuySell::slot_trade_sell_succeed()
{
    tellTradeSucceeded(QStringLiteral("卖出委托成功"));
}

void DealWidget_BuySell::slot_trade_sell_failed(QString msg)
{
    tellTradeFailed(msg, QStringLiteral("卖出委托失败"));
}

void DealWidget_BuySell::tellTradeSucceeded(const QString &text)
{
    m_orderAllowed = true;
    if (m_flushAfterSuccess)
        QTimer::singleShot(FlushMilliseconds, this, &DealWidget_BuySell::flushTopFive);
    alertMessage(text);
}

void DealWidget_BuySell::tellTradeFailed(const QString &msg, const QString &usualText)
{
    m_orderAllowed = true;
    alertMessage(msg.isEmpty() ? usualText : msg);
}

// Shows an order among the levels at once rather than with the next poll.
void DealWidget_BuySell::flushTopFive()
{
    engine()->flushCurrentTop5();
}

void DealWidget_BuySell::slot_prepay_deleteSelected_clicked()
{
    if (m_prepayModel.checkedRows().isEmpty()) {
        alertMessage(QStringLiteral("当前未选中任何预埋单"));
        return;
    }
    const QPointer<DealWidget_BuySell> self(this);
    if (framedmessage::show(framedmessage::paragraph(QStringLiteral("删除选中的预埋单？")),
                            QStringLiteral("信息确认"), QStringLiteral("取消"))
        && self)
        m_prepayModel.removeCheckedRows();
}

// The rows stay until their answers come. Meanwhile an order of the ticket itself may be answered,
// which is not told between the sends.
void DealWidget_BuySell::slot_prepay_sendSelected_clicked()
{
    if (m_prepayModel.checkedRows().isEmpty()) {
        alertMessage(QStringLiteral("当前未选中任何预埋单"));
        return;
    }
    const QPointer<DealWidget_BuySell> self(this);
    if (!framedmessage::show(framedmessage::paragraph(QStringLiteral("发送选中的预埋单？")),
                             QStringLiteral("信息确认"), QStringLiteral("取消"))
        || !self)
        return;

    disconnectTradeResults();
    for (const int row : m_prepayModel.checkedRows()) {
        const ZvUBTradeItem item = m_prepayModel.itemAt(row);
        server()->sendRequest_prepay_send(item.md5, item.direction,
                                          m_briefInfo.getCollectionIDFromCode(item.code),
                                          item.price, item.count);
    }
    connectTradeResults();
}

void DealWidget_BuySell::slot_prepay_succeed(QString md5)
{
    m_prepayModel.removeByMd5(md5);
}

void DealWidget_BuySell::slot_prepay_failed(QString md5, QString msg)
{
    m_prepayModel.markFailed(md5, msg);
}

bool DealWidget_BuySell::isBuying() const
{
    return m_mode == BuyMode || (m_mode == PreparedMode && m_prepayDirection == 0);
}

// The first row of the list always pays the usual rate, whatever the account's rate for it.
double DealWidget_BuySell::feeRate() const
{
    const int row = ui->comboBox_goodsCode->currentIndex();
    if (row <= 0 || row >= m_codeList.size())
        return UsualFeeRate;
    return cache()->myAccount.getPoundageRage(
        m_briefInfo.getCollectionIDFromCode(m_codeList.at(row)));
}

void DealWidget_BuySell::updateCanBuySell()
{
    int count = 0;
    bool isKnown = true;
    if (isBuying()) {
        const auto price = float(ui->doubleSpinBox_buysellPrice->value());
        isKnown = price > 0;
        count = isKnown ? buyableCount(m_availableMoney, price, feeRate()) : 0;
        m_maxBuyCount = count;
    } else {
        const ZvUBCapInfo info = cache()->capInfo;
        count = info.getCapItem(ui->comboBox_goodsCode->currentText()).sellableQuantity();
        m_maxSellCount = count;
    }
    ui->label_canBuySellValue->setText(isKnown && count >= 0 ? QString::number(count)
                                                             : QStringLiteral("--"));
}

void DealWidget_BuySell::slot_subPrice_clicked()
{
    ui->doubleSpinBox_buysellPrice->setValue(ui->doubleSpinBox_buysellPrice->value() - PriceStep);
    slot_price_changed();
}

void DealWidget_BuySell::slot_addPrice_clicked()
{
    ui->doubleSpinBox_buysellPrice->setValue(ui->doubleSpinBox_buysellPrice->value() + PriceStep);
    slot_price_changed();
}

// The buttons do not leave the limits. Typing may, and is refused with the order.
void DealWidget_BuySell::slot_price_changed()
{
    BreltDoubleSpinBox *field = ui->doubleSpinBox_buysellPrice;
    field->setFocus(Qt::OtherFocusReason);
    const auto price = float(field->value());
    const float held = price > m_upperLimitPrice ? m_upperLimitPrice
        : price < m_lowerLimitPrice              ? m_lowerLimitPrice
                                                 : price;
    if (held != price) {
        const QSignalBlocker blocker(field);
        field->setValue(double(held));
    }
    updateCanBuySell();
}

void DealWidget_BuySell::slot_subCount_clicked()
{
    ui->spinBox_buysellNumber->setValue(ui->spinBox_buysellNumber->value() - 1);
    ui->spinBox_buysellNumber->setFocus(Qt::OtherFocusReason);
}

void DealWidget_BuySell::slot_addCount_clicked()
{
    ui->spinBox_buysellNumber->setValue(ui->spinBox_buysellNumber->value() + 1);
    ui->spinBox_buysellNumber->setFocus(Qt::OtherFocusReason);
}

void DealWidget_BuySell::slot_count_changed()
{
    ui->spinBox_buysellNumber->setFocus(Qt::OtherFocusReason);
}

void DealWidget_BuySell::slot_resetPriceCount_clicked()
{
    ui->doubleSpinBox_buysellPrice->setValue(0);
    ui->spinBox_buysellNumber->setValue(0);
    updateCanBuySell();
}

void DealWidget_BuySell::slot_comboxCode_activated()
{
    {
        const QSignalBlocker blocker(ui->comboBox_goodsName);
        const QString code = ui->comboBox_goodsCode->currentText();
        const int row = m_codeList.indexOf(code);
        if (row >= 0) {
            ui->comboBox_goodsName->setCurrentIndex(row);
            ui->comboBox_goodsName->lineEdit()->setCursorPosition(0);
            pool()->slot_collectionTableView_clicked_and_changeToTimeLine(
                m_briefInfo.getCollectionIDFromCode(code));
        }
    }
    slot_resetPriceCount_clicked();
}

void DealWidget_BuySell::slot_comboxName_activated()
{
    {
        const QSignalBlocker blocker(ui->comboBox_goodsCode);
        const QString name = ui->comboBox_goodsName->currentText();
        const int row = m_nameList.indexOf(name);
        if (row >= 0) {
            ui->comboBox_goodsCode->setCurrentIndex(row);
            pool()->slot_collectionTableView_clicked_and_changeToTimeLine(
                m_briefInfo.getCollectionIDFromName(name));
        }
    }
    slot_resetPriceCount_clicked();
}

void DealWidget_BuySell::slot_globalCollectionChanged(const QString &id)
{
    if (id.toInt() < 0 || id == m_currentCollectionID)
        return;
    const QSignalBlocker codeBlocker(ui->comboBox_goodsCode);
    const QSignalBlocker nameBlocker(ui->comboBox_goodsName);
    const QString code = m_briefInfo.getCodeFromCollectionID(id);
    if (code.isEmpty())
        return;
    const int row = m_codeList.indexOf(code);
    ui->comboBox_goodsCode->setCurrentIndex(row);
    ui->comboBox_goodsName->setCurrentIndex(row);
    ui->comboBox_goodsName->lineEdit()->setCursorPosition(0);
    m_currentCollectionID = id;
    slot_resetPriceCount_clicked();
}

void DealWidget_BuySell::slot_updateBriefInfo(QString server)
{
    m_briefInfo = cache()->getBriefInfo(server);
    m_codeList = m_briefInfo.getCodeList();
    m_nameList = m_briefInfo.getNameList();
    setComboEntries(ui->comboBox_goodsCode, m_codeList);
    setComboEntries(ui->comboBox_goodsName, m_nameList);
    ui->comboBox_goodsName->lineEdit()->setCursorPosition(0);
    m_currentCollectionID
        = m_briefInfo.getCollectionIDFromCode(ui->comboBox_goodsCode->currentText());
}

void DealWidget_BuySell::setComboEntries(QComboBox *combo, const QStringList &entries)
{
    m_comboModels.push_back(std::make_unique<QStringListModel>(entries));
    combo->setModel(m_comboModels.back().get());
}

void DealWidget_BuySell::slot_updateTop5(QString collectionID)
{
    if (collectionID.toInt() < 0 || collectionID != m_currentCollectionID)
        return;
    m_topFive = cache()->getTopFive(collectionID);
    m_lowerLimitPrice = float(m_topFive.lowerLimitPrice());
    m_upperLimitPrice = float(m_topFive.upperLimitPrice());
    ticketquote::write(*ui, m_topFive);
    recolorTopFive(float(m_topFive.referencePrice()));
    updateCanBuySell();
}

void DealWidget_BuySell::recolorTopFive(float reference)
{
    ticketquote::recolor(*ui, reference);
}

void DealWidget_BuySell::slot_adjustTopFiveRows(QSize mainSize)
{
    ticketquote::showAllLevels(*ui, mainSize.height() > LowWindowHeight);
}

void DealWidget_BuySell::slot_updateCapInfo()
{
    const ZvUBCapInfo info = cache()->capInfo;
    m_availableMoney = float(info.availableMoney());
    ticketsummary::write(*ui, info);
    m_capTable->setCapList(info.items());
    updateCanBuySell();
}

void DealWidget_BuySell::slot_updateGatherInfo()
{
    const ZvUBGatherInfo info = cache()->gatherInfo;
    m_dealTable->setGatherList(info.items());
    ticketsummary::write(*ui, info);
}

void DealWidget_BuySell::showCapData()
{
    showData(ui->pushButton_capData, ui->page_capData);
}

void DealWidget_BuySell::showDealData()
{
    showData(ui->pushButton_dealData, ui->page_dealData);
}

void DealWidget_BuySell::showCashData()
{
    showData(ui->pushButton_cashData, ui->page_cashData);
}

void DealWidget_BuySell::showData(const QPushButton *button, QWidget *page)
{
    for (QPushButton *each :
         {ui->pushButton_capData, ui->pushButton_dealData, ui->pushButton_cashData})
        each->setChecked(each == button);
    ui->stackedWidget_buysell_data->setCurrentWidget(page);
}

// A click on a figure of the quote fills the field that it belongs to. Where there is no price to
// fill, the click ends here, too; where there is no quantity, the count becomes 0.
bool DealWidget_BuySell::eventFilter(QObject *watched, QEvent *event)
{
    auto *label = qobject_cast<QLabel *>(watched);
    if (!label || event->type() != QEvent::MouseButtonPress)
        return false;
    if (m_priceLabels.contains(label)) {
        const float price = label->text().toFloat();
        if (price > 0) {
            ui->doubleSpinBox_buysellPrice->setValue(double(price));
            ui->doubleSpinBox_buysellPrice->setFocus(Qt::OtherFocusReason);
            updateCanBuySell();
        }
        return true;
    }
    if (m_countLabels.contains(label)) {
        ui->spinBox_buysellNumber->setValue(label->text().toInt());
        ui->spinBox_buysellNumber->setFocus(Qt::OtherFocusReason);
        updateCanBuySell();
        return true;
    }
    return false;
}

// QWidget's own handlers do nothing, and are not called.

void DealWidget_BuySell::showEvent(QShowEvent *)
{
    engine()->changedToTransctionVisible();
}

void DealWidget_BuySell::hideEvent(QHideEvent *)
{
    engine()->changedToTransctionHidden();
}
