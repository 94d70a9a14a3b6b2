#include "ZvWidgetKit/collection_detailwidget.h"

#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "ui_collection_detailwidget.h"

#include <QFontInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QTimer>

#include <array>

namespace {

using Form = Ui::Collection_DetailWidget;

constexpr int SettlingMilliseconds = 500; // after a resize
constexpr int LowWindowHeight = 780;
constexpr int WidestPanel = 325;
constexpr int HeadHeight = 32;
constexpr int HeadWeight = 75;
constexpr int TextPixels = 14;
constexpr int LeastTextHeight = 16; // no stroke of a character of TextPixels is cut yet
constexpr int LeastDealsHeight = 62; // the header and two rows, which one deal is counted for
constexpr int LevelsOfLowWindow = 3;
constexpr int Levels = 5; // a side
constexpr float FirstReference = 50.0F;

enum TopFiveProperty {
    Name = 0,
    Code = 1,
    BeforePrice = 23,
    Latest = 24,
    Change = 25,
    Rate = 26,
    UpperLimit = 27,
    LowerLimit = 28
};

// A label, and the property of the item whose text it shows.
struct Place {
    QLabel *label;
    int property;
};

// The labels of one level. Its price is shown by `property`, its quantity by the next one.
struct Level {
    QLabel *caption;
    QLabel *price;
    QLabel *spacer;
    QLabel *quantity;
    int property;
};

// The buys, then the sells, each from the best level on, in the order in which they are written.
std::array<Level, 2 * Levels> levelsOf(const Form &form)
{
    return {{
        {form.label_buy1, form.label_buy1_Price, form.label_hide6, form.label_buy1_qty, 13},
        {form.label_buy2, form.label_buy2_Price, form.label_hide7, form.label_buy2_qty, 15},
        {form.label_buy3, form.label_buy3_Price, form.label_hide8, form.label_buy3_qty, 17},
        {form.label_buy4, form.label_buy4_Price, form.label_hide9, form.label_buy4_qty, 19},
        {form.label_buy5, form.label_buy5_Price, form.label_hide10, form.label_buy5_qty, 21},
        {form.label_sell1, form.label_sell1_price, form.label_hide5, form.label_sell1_qty, 11},
        {form.label_sell2, form.label_sell2_price, form.label_hide4, form.label_sell2_qty, 9},
        {form.label_sell3, form.label_sell3_price, form.label_hide3, form.label_sell3_qty, 7},
        {form.label_sell4, form.label_sell4_price, form.label_hide2, form.label_sell4_qty, 5},
        {form.label_sell5, form.label_sell5_price, form.label_hide1, form.label_sell5_qty, 3},
    }};
}

// The quote's figures beside the levels, in the order in which they are written.
std::array<Place, 6> quoteOf(const Form &form)
{
    return {{{form.label_uppeLimitPrice_value, UpperLimit},
             {form.label_beforePrice_value, BeforePrice},
             {form.label_priceLimit_value, LowerLimit},
             {form.label_latest_value, Latest},
             {form.label_rate_value, Rate},
             {form.label_chgValue, Change}}};
}

// The day's figures, in the order in which they are written.
std::array<Place, 10> dayOf(const Form &form)
{
    return {{{form.label_frist_value, 2},
             {form.label_max_value, 4},
             {form.label_min_value, 6},
             {form.label_avg_value, 0},
             {form.label_qty_value, 3},
             {form.label_amount_value, 7},
             {form.label_turnover_value, 1},
             {form.label_entrustRate_value, 5},
             {form.label_invol_value, 9},
             {form.label_outvol_value, 8}}};
}

std::array<QLabel *, 16> captionsOf(const Form &form)
{
    return {form.label_latest,
            form.label_avg,
            form.label_chg,
            form.label_turnover,
            form.label_rate,
            form.label_frist,
            form.label_qty,
            form.label_max,
            form.label_entrustRate,
            form.label_min,
            form.label_amount,
            form.label_beforePrice,
            form.label_upperLimitPrice,
            form.label_priceLimit,
            form.label_outvol,
            form.label_invol};
}

// The prices of the day that are coloured like those of the levels, in their order.
std::array<QLabel *, 7> pricesOf(const Form &form)
{
    return {form.label_latest_value,    form.label_avg_value, form.label_frist_value,
            form.label_max_value,       form.label_min_value, form.label_uppeLimitPrice_value,
            form.label_priceLimit_value};
}

template <typename Places, typename Item>
void write(const Places &places, const Item &item)
{
    for (const Place &place : places)
        place.label->setText(item.getPropertyString(place.property));
}

// A sheet costs more than all the texts of an update, and most of them stay as they are.
void setSheet(QLabel *label, const QString &sheet)
{
    if (label->styleSheet() != sheet)
        label->setStyleSheet(sheet);
}

// White for nothing and for no change, red above the reference, green below it. A text that is no
// number counts as nothing.
QString sheetFor(const QLabel *label, float reference)
{
    const float value = label->text().toFloat();
    if (value != 0 && value > reference)
        return QStringLiteral("QLabel{color:#ea3835;}");
    if (value != 0 && value < reference)
        return QStringLiteral("QLabel{color:#4bff57;}");
    return QStringLiteral("QLabel{color:#ffffff;}");
}

void makeBold(QLabel *label)
{
    QFont font = label->font();
    font.setWeight(HeadWeight);
    label->setFont(font);
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

} // namespace

Collection_DetailWidget::Collection_DetailWidget(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Form>()), m_dealHistoryView(nullptr)
{
    ui->setupUi(this);
    m_dealHistoryView = new Collection_DealHistory_View;
    m_dealHistoryView->setAccessibleName(QStringLiteral("最新成交"));
    auto *deals = new QHBoxLayout(ui->widget_dealDetailHistory);
    deals->setContentsMargins(0, 0, 0, 0);
    deals->addWidget(m_dealHistoryView);
    createConnections();
    applyStyle();
    colourPrices(FirstReference);
}

Collection_DetailWidget::~Collection_DetailWidget() = default;

void Collection_DetailWidget::createConnections()
{
    connect(cache(), &ZvServerCache::signal_cache_CollectionItem_changed, this,
            &Collection_DetailWidget::slot_updateCollectionProItem);
    connect(cache(), &ZvServerCache::signal_cache_CollectionTrade_changed, this,
            &Collection_DetailWidget::slot_updateCollectionTradeTop5);
    connect(cache(), &ZvServerCache::signal_cache_SellbuyTrade_changed, this,
            &Collection_DetailWidget::slot_updateCollectionTradeTop5);
    connect(cache(), &ZvServerCache::signal_cache_CollectionLatestDeal_changed, m_dealHistoryView,
            &Collection_DealHistory_View::slot_updateLatestDeal);
    connect(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
            &ZvWidgetSignalSLotPool::signal_adjustSize, this,
            &Collection_DetailWidget::slot_adjustSize);
}

// What a later step sets of a label is what remains.
void Collection_DetailWidget::applyStyle()
{
    setMaximumWidth(WidestPanel);
    ui->gridLayout_total->setSpacing(0);
    ui->gridLayout_total->setContentsMargins(0, 0, 0, 0);
    // That font brings room of its own between the lines. What counts is the font that the system
    // found, not the one that was asked for.
    const bool hasRoomOfItsOwn
        = QFontInfo(ui->label_buy1->font()).family() == QStringLiteral("微软雅黑");
    for (QGridLayout *grid :
         {ui->gridLayout_vol, ui->gridLayout_buy, ui->gridLayout_sell, ui->gridLayout_pro})
        grid->setVerticalSpacing(hasRoomOfItsOwn ? 0 : 3);

    for (QLabel *label : {ui->label_collectionName, ui->label_collectionCode}) {
        label->setFixedHeight(HeadHeight);
        makeBold(label);
    }

    for (QLabel *label : {ui->label_collectionCode, ui->label_collectionName,
                          ui->label_amount_value, ui->label_entrustRate_value})
        label->setStyleSheet(QStringLiteral("QLabel{color:#ffff00;}"));
    for (QLabel *label : {ui->label_turnover_value, ui->label_qty_value})
        label->setStyleSheet(QStringLiteral("QLabel{color:#ffff00}"));
    ui->label_beforePrice_value->setStyleSheet(QStringLiteral("QLabel{color:#ffffff}"));
    ui->label_outvol_value->setStyleSheet(QStringLiteral("QLabel{color:#ff3c38;}"));
    ui->label_invol_value->setStyleSheet(QStringLiteral("QLabel{color:#4bff57;}"));
    for (QFrame *line : {ui->line_1, ui->line_2, ui->line_3, ui->line_4, ui->line_5})
        line->setStyleSheet(QStringLiteral("color:gray;"));

    QFont textFont = ui->label_invol->font();
    textFont.setPixelSize(TextPixels);
    const auto styleCaption = [&textFont](QLabel *caption) {
        caption->setFont(textFont);
        caption->setStyleSheet(QStringLiteral("QLabel{color:#ffffff;}"));
    };
    for (QLabel *caption : captionsOf(*ui))
        styleCaption(caption);
    for (const Level &level : levelsOf(*ui)) {
        styleCaption(level.caption);
        level.spacer->setStyleSheet(QStringLiteral("color:#16181c;"));
        level.price->setFont(textFont);
        level.price->setStyleSheet(QStringLiteral("QLabel{color:#ff3c38;}"));
        level.quantity->setFont(textFont);
        level.quantity->setStyleSheet(QStringLiteral("QLabel{color:#ffff00}"));
    }
    for (const Place &place : quoteOf(*ui))
        place.label->setFont(textFont);
    for (const Place &place : dayOf(*ui))
        place.label->setFont(textFont);

    setBackground(this, QColor(0x16, 0x18, 0x1c));
    m_dealHistoryView->applySmallStyle();
    makeYielding();
}

// In a low window the lines of text move together, so that the latest deals are seen below them.
void Collection_DetailWidget::makeYielding()
{
    for (QGridLayout *grid :
         {ui->gridLayout_vol, ui->gridLayout_buy, ui->gridLayout_sell, ui->gridLayout_pro}) {
        for (int i = 0; i < grid->count(); ++i)
            grid->itemAt(i)->widget()->setMinimumHeight(LeastTextHeight);
    }
    ui->widget_dealDetailHistory->setMinimumHeight(LeastDealsHeight);
}

void Collection_DetailWidget::slot_updateCollectionTradeTop5(QString collectionID)
{
    if (collectionID != engine()->getGlobalCollectionID())
        return;

    const ZvUBTopFive quote = cache()->getTopFive(collectionID);
    write(quoteOf(*ui), quote);
    ui->label_collectionCode->setText(quote.getPropertyString(Code));
    const QString name = quote.getPropertyString(Name);
    const QFontMetrics metrics(ui->label_collectionName->font());
    ui->label_collectionName->setText(
        metrics.elidedText(name, Qt::ElideRight, ui->label_collectionName->width() - 1));
    ui->label_collectionName->setToolTip(brelt::plainToolTip(name));
    for (const Level &level : levelsOf(*ui)) {
        level.price->setText(quote.getPropertyString(level.property));
        level.quantity->setText(quote.getPropertyString(level.property + 1));
    }
    colourPrices(static_cast<float>(quote.referencePrice()));
}

// An answer for another collection is drawn, too: the kit asks for none but the current one's.
void Collection_DetailWidget::slot_updateCollectionProItem(QString collectionID)
{
    write(dayOf(*ui), cache()->getProItem(collectionID));
}

void Collection_DetailWidget::colourPrices(float reference)
{
    for (const Level &level : levelsOf(*ui))
        setSheet(level.price, sheetFor(level.price, reference));
    for (QLabel *price : pricesOf(*ui))
        setSheet(price, sheetFor(price, reference));

    const QString direction = sheetFor(ui->label_chgValue, 0);
    setSheet(ui->label_chgValue, direction);
    setSheet(ui->label_rate_value, direction);
}

void Collection_DetailWidget::slot_adjustSize(QSize mainSize)
{
    const bool hasRoom = mainSize.height() > LowWindowHeight;
    const auto levels = levelsOf(*ui);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (i % Levels < LevelsOfLowWindow)
            continue;
        for (QLabel *label :
             {levels[i].caption, levels[i].price, levels[i].quantity, levels[i].spacer})
            label->setVisible(hasRoom);
    }
}

void Collection_DetailWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    QTimer::singleShot(SettlingMilliseconds, this,
                       &Collection_DetailWidget::slot_adjustDealLatestLimit);
}

void Collection_DetailWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    QTimer::singleShot(SettlingMilliseconds, this,
                       &Collection_DetailWidget::slot_adjustDealLatestLimit);
}

void Collection_DetailWidget::slot_adjustDealLatestLimit()
{
    const int available
        = m_dealHistoryView->height() - m_dealHistoryView->horizontalHeader()->height();
    const int rows = available / m_dealHistoryView->verticalHeader()->defaultSectionSize();
    const int limit = rows > 0 ? rows - 1 : 1;
    m_dealHistoryView->setDealLimit(limit);
    engine()->setDealLatestLimit(limit);
}
