#include "ZvWidgetKit/dealwidget_delivery.h"

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_delivery_tableview.h"
#include "ui_dealwidget_delivery.h"

#include <QHBoxLayout>

namespace {

constexpr QSize ShortButtonSize(70, 20);
constexpr QSize LongButtonSize(90, 20);

} // namespace

DealWidget_Delivery::DealWidget_Delivery(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::DealWidget_Delivery>()), m_tableView(nullptr)
{
    ui->setupUi(this);
    // The sheet of the page works through all others below it, so it comes before them.
    setStyleSheet(QStringLiteral("QFrame{background-color:#101114;}"));
    m_tableView = new DealWidget_Delivery_TableView(this);
    m_tableView->setAccessibleName(QStringLiteral("可提藏品"));
    auto *container = new QHBoxLayout(ui->widget_tableview_container);
    container->setContentsMargins(0, 0, 0, 0);
    container->setSpacing(0);
    container->addWidget(m_tableView);
    applyStyle();
    connect(ZvServerCache::getZvServerCacheInstance(), &ZvServerCache::signal_cache_CapInfo_changed,
            this, &DealWidget_Delivery::slot_updateCapInfo);
}

DealWidget_Delivery::~DealWidget_Delivery() = default;

void DealWidget_Delivery::applyStyle()
{
    ui->frame_function->hide();
    ui->frame_show->hide();

    ui->frame_function->setStyleSheet(
        QStringLiteral("QFrame#frame_function{background-color:rgb(16,17,20);}"));
    setAutoFillBackground(true);

    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    for (QPushButton *button : {ui->pushButton_deliveryApply, ui->pushButton_find}) {
        button->setStyleSheet(config->getStyleOf_DealLightButton());
        button->setFixedSize(ShortButtonSize);
    }
    for (QPushButton *button :
         {ui->pushButton_deliveryDetailsFind, ui->pushButton_historyDelivery}) {
        button->setStyleSheet(config->getStyleOf_DealDarkButton());
        button->setFixedSize(LongButtonSize);
    }
    ui->dateEdit_startDate->setAutoFillBackground(true);
    ui->dateEdit_stopDate->setAutoFillBackground(true);

    const QString captionStyle = QStringLiteral("QLabel{color:rgb(255,255,255)}");
    for (QLabel *caption :
         {ui->label_startDate, ui->label_stopDate, ui->label_total, ui->label_ticketNumber,
          ui->label_holdingMarketValue, ui->label_profitAndLoss, ui->label_availableFunds,
          ui->label_totalAssets})
        caption->setStyleSheet(captionStyle);
    const QString valueStyle = QStringLiteral("QLabel{color:rgb(244,244,1)}");
    for (QLabel *value : {ui->label_ticketNumber_value, ui->label_holdingMarketValue_value,
                          ui->label_profitAndLoss_value, ui->label_totalAssets_value})
        value->setStyleSheet(valueStyle);
    ui->label_availableFunds_value->setStyleSheet(QStringLiteral("QLabel{color:rgb(255,60,56)}"));
}

// Of a holding that is frozen altogether nothing can be taken out.
void DealWidget_Delivery::slot_updateCapInfo()
{
    const ZvUBCapInfo capInfo = ZvServerCache::getZvServerCacheInstance()->capInfo;
    QList<ZvUBCapItem> items = capInfo.items();
    for (int i = items.size() - 1; i >= 0; --i) {
        if (items.at(i).sellableQuantity() <= 0)
            items.removeAt(i);
    }
    m_tableView->setRecordList(items);
}
