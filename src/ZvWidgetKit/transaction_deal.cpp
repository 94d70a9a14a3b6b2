#include "ZvWidgetKit/transaction_deal.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_allwidgets.h"
#include "ZvWidgetKit/scrollbarstyle.h"
#include "ui_transactionpanel.h"

#include <QEvent>
#include <QHBoxLayout>

namespace {

constexpr int ButtonHeight = 25;
constexpr int ColumnWidth = 124;

} // namespace

Transaction_Deal::Transaction_Deal(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::TransactionPanel>()), m_allWidgets(nullptr),
      m_currentTypeButton(nullptr), m_currentSelectButton(nullptr)
{
    ui->setupUi(this);
    m_typeButtons = {ui->pushButton_purchase,         ui->pushButton_sell,
                     ui->pushButton_select,           ui->pushButton_prePay,
                     ui->pushButton_deliveryHandling, ui->pushButton_withdrawal};
    m_selectButtons
        = {ui->pushButton_select_currentDeal,      ui->pushButton_select_currentDelegate,
           ui->pushButton_select_historyDeal,      ui->pushButton_select_historyDelegate,
           ui->pushButton_select_deliveryRecord,   ui->pushButton_select_purchaseApplyRecord,
           ui->pushButton_select_inputOutputRecord};
    m_allWidgets = new DealWidget_AllWidgets(ui->frame_dealControl);
    auto *page = new QHBoxLayout(ui->frame_dealControl);
    page->setSpacing(0);
    page->setContentsMargins(0, 0, 0, 0);
    page->addWidget(m_allWidgets);
    setupNavigationButtons();
    applyStyle();
    resetNavigation();
}

Transaction_Deal::~Transaction_Deal() = default;

void Transaction_Deal::setupNavigationButtons()
{
    for (QPushButton *button : m_typeButtons + m_selectButtons) {
        button->setCheckable(true);
        button->setMinimumHeight(ButtonHeight);
        button->installEventFilter(this);
    }
}

void Transaction_Deal::applyStyle()
{
    // The sheet of a frame works through those of its buttons, so theirs come after it.
    ui->frame_dealStyle->setStyleSheet(QStringLiteral("QFrame{background-color:#121417;}"));
    ui->frame_select->setStyleSheet(QStringLiteral("QFrame{border:none;}"));
    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    const QString typeStyle = config->getStyleOf_DealTypeButton();
    for (QPushButton *button : qAsConst(m_typeButtons))
        button->setStyleSheet(typeStyle);
    const QString selectStyle = config->getStyleOf_DealSelectButton();
    for (QPushButton *button : qAsConst(m_selectButtons))
        button->setStyleSheet(selectStyle);

    for (QLayout *layout : ui->scrollAreaWidgetContents->findChildren<QLayout *>()) {
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
    }
    ui->scrollArea->setFixedWidth(ColumnWidth);
    applyScrollBarStyle(ui->scrollArea);
}

// The release acts, wherever the button was pressed, and ends here: the button would toggle its own
// check mark. It does not hear of the release then, so it is told that it is not held down any
// more.
bool Transaction_Deal::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::MouseButtonRelease)
        return false;
    auto *button = qobject_cast<QPushButton *>(watched);
    if (!button)
        return false;
    if (m_typeButtons.contains(button)) {
        button->setDown(false);
        onTypeButtonReleased(button);
        return true;
    }
    if (m_selectButtons.contains(button)) {
        button->setDown(false);
        onSelectButtonReleased(button);
        return true;
    }
    return false;
}

void Transaction_Deal::onTypeButtonReleased(QPushButton *button)
{
    if (button == ui->pushButton_select) {
        m_currentTypeButton->setChecked(false);
        button->setChecked(true);
        m_currentTypeButton = button;
        ui->frame_select->setHidden(!ui->frame_select->isHidden());
        m_currentSelectButton->setChecked(true);
        showPageOfButton(m_currentSelectButton);
        return;
    }
    ui->frame_select->setHidden(true);
    m_currentTypeButton->setChecked(false);
    button->setChecked(true);
    showPageOfButton(button);
    m_currentTypeButton = button;
    m_currentSelectButton->setChecked(false);
}

void Transaction_Deal::onSelectButtonReleased(QPushButton *button)
{
    m_currentTypeButton = ui->pushButton_select;
    m_currentTypeButton->setChecked(true);
    m_currentSelectButton->setChecked(false);
    button->setChecked(true);
    m_currentSelectButton = button;
    showPageOfButton(button);
}

void Transaction_Deal::resetNavigation()
{
    for (QPushButton *button : m_typeButtons + m_selectButtons)
        button->setChecked(false);
    // The deals of today are a page of their own that users cannot reach.
    ui->pushButton_select_currentDeal->setVisible(false);
    m_currentTypeButton = ui->pushButton_purchase;
    m_currentSelectButton = ui->pushButton_select_historyDeal;
    ui->frame_select->setHidden(true);
    m_currentTypeButton->setChecked(true);
    m_currentSelectButton->setChecked(true);
    showPageOfButton(ui->pushButton_purchase);
}

void Transaction_Deal::reloadPages()
{
    m_allWidgets->reloadPages();
}

void Transaction_Deal::resetAfterLogin()
{
    resetNavigation();
    reloadPages();
}

void Transaction_Deal::showPageOfButton(QPushButton *button)
{
    using Pages = DealWidget_AllWidgets;
    const struct {
        QPushButton *button;
        void (Pages::*show)();
    } ways[] = {
        {ui->pushButton_purchase, &Pages::showBuy},
        {ui->pushButton_sell, &Pages::showSell},
        {ui->pushButton_withdrawal, &Pages::showRevoke},
        {ui->pushButton_select_currentDelegate, &Pages::showDelegateToday},
        {ui->pushButton_select_currentDeal, &Pages::showDealToday},
        {ui->pushButton_select_historyDelegate, &Pages::showDelegateRecord},
        {ui->pushButton_select_historyDeal, &Pages::showDealRecord},
        {ui->pushButton_select_purchaseApplyRecord, &Pages::showApplyRecord},
        {ui->pushButton_select_deliveryRecord, &Pages::showDeliveryRecord},
        {ui->pushButton_select_inputOutputRecord, &Pages::showMoneyFlow},
        {ui->pushButton_prePay, &Pages::showPrePay},
        {ui->pushButton_deliveryHandling, &Pages::showDelivery},
    };
    for (const auto &way : ways) {
        if (way.button == button) {
            (m_allWidgets->*way.show)();
            return;
        }
    }
}
