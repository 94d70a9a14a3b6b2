#include "ZvWidgetKit/market_tablewidget.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/moneytext.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QResizeEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr QSize FooterButtonSize(80, 25);
constexpr int FooterHeight = 40;
constexpr int SettlingMilliseconds = 500; // after a resize
constexpr int WholeMarket = -1;
constexpr int CodeColumn = 1;
constexpr int CodeLength = 6;
constexpr int CellMargin = 4;
constexpr int OptionPage = 1;
constexpr int OptionPageSize = 100;

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

BreltGlobalFunction *globalFunction()
{
    return BreltGlobalFunction::getBreltGlobalFunciton();
}

void requestOptions()
{
    ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_getOptions(OptionPage,
                                                                                    OptionPageSize);
}

QPushButton *makeFooterButton(const QString &text, QWidget *parent)
{
    // A name from the server is no mnemonic.
    QString plain = text;
    plain.replace(QLatin1Char('&'), QLatin1String("&&"));
    auto *button = new QPushButton(plain, parent);
    button->setCheckable(true);
    button->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketFooterButton());
    button->setFixedSize(FooterButtonSize);
    // The group is one stop of the Tab key, its checked button, and a click takes no focus: the
    // arrow keys still walk through the table then.
    button->setFocusPolicy(Qt::NoFocus);
    QObject::connect(button, &QPushButton::toggled, button, [button](bool checked) {
        button->setFocusPolicy(checked ? Qt::TabFocus : Qt::NoFocus);
    });
    return button;
}

// Puts a button behind a widget in the order of the Tab key; Qt would leave one where it is that
// takes no focus at the moment.
void setTabOrderBehind(QWidget *widget, QAbstractButton *button)
{
    const Qt::FocusPolicy policy = button->focusPolicy();
    button->setFocusPolicy(Qt::TabFocus);
    QWidget::setTabOrder(widget, button);
    button->setFocusPolicy(policy);
}

// A refusal of the server is shown as it comes, one without words as `ownText`.
void alertFailure(const QString &message, const QString &ownText)
{
    globalFunction()->alertMessage(message.isEmpty() ? ownText : message);
}

} // namespace

Market_TableWidget::Market_TableWidget(QWidget *parent)
    : QWidget(parent), m_collectionTableView(new Collection_TableView),
      m_footerWidget(new QWidget(this)), m_buttonGroup(new QButtonGroup(this)),
      m_marketButton(makeFooterButton(QStringLiteral("行情"), m_footerWidget)),
      m_optionButton(makeFooterButton(QStringLiteral("自选"), m_footerWidget)),
      m_typeButtonLayout(new QHBoxLayout), m_qtyCaption(new QLabel(QStringLiteral("交易量"))),
      m_qtyValue(new QLabel(QStringLiteral("0"))),
      m_amountCaption(new QLabel(QStringLiteral("交易额"))),
      m_amountValue(new QLabel(QStringLiteral("0"))),
      m_marketValueCaption(new QLabel(QStringLiteral("总市值"))),
      m_marketValueValue(new QLabel(QStringLiteral("0"))), m_guideTabPage(nullptr)
{
    m_buttonGroup->addButton(m_marketButton);
    m_buttonGroup->addButton(m_optionButton);
    m_marketButton->setChecked(true);

    layOut();
    // The last child lies over all others.
    m_guideTabPage = new ZvGuideTabPage(this);
    m_guideTabPage->show();
    applyStyle();
    createConnections();
}

Market_TableWidget::~Market_TableWidget() = default;

void Market_TableWidget::layOut()
{
    auto *typeButtons = new QWidget;
    typeButtons->setLayout(m_typeButtonLayout);
    m_typeButtonLayout->setContentsMargins(0, 0, 0, 0);
    m_typeButtonLayout->setSpacing(0);

    auto *footer = new QHBoxLayout(m_footerWidget);
    footer->setContentsMargins(0, 0, 0, 0);
    footer->setSpacing(0);
    footer->addSpacing(20);
    footer->addWidget(m_marketButton);
    footer->addSpacing(1);
    footer->addWidget(typeButtons);
    footer->addSpacing(1);
    footer->addWidget(m_optionButton);
    footer->addStretch(1);
    footer->addWidget(m_qtyCaption);
    footer->addWidget(m_qtyValue);
    footer->addSpacing(50);
    footer->addWidget(m_amountCaption);
    footer->addWidget(m_amountValue);
    footer->addSpacing(50);
    footer->addWidget(m_marketValueCaption);
    footer->addWidget(m_marketValueValue);
    footer->addSpacing(50);

    auto *page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->setSpacing(0);
    page->addWidget(m_collectionTableView);
    page->addWidget(m_footerWidget);
}

void Market_TableWidget::applyStyle()
{
    // Its sheet works through those of its parts, so theirs come after it.
    m_footerWidget->setStyleSheet(QStringLiteral("font-style: normal;font-size: 10pt;"));
    m_footerWidget->setFixedHeight(FooterHeight);
    for (QLabel *caption : {m_qtyCaption, m_amountCaption, m_marketValueCaption})
        caption->setStyleSheet(
            QStringLiteral("QLabel{color:rgb(255,255,255);border-color:rgb(30,33,38)}"));
    for (QLabel *value : {m_qtyValue, m_amountValue, m_marketValueValue})
        value->setStyleSheet(
            QStringLiteral("QLabel{color:rgb(226,239,51);border-color:rgb(30,33,38)}"));
    setBackground(m_footerWidget, QColor(30, 33, 38));
    setBackground(this, QColor(21, 21, 21));

    m_collectionTableView->setAccessibleName(QStringLiteral("行情列表"));
    // Tab leads on to the buttons. From cell to cell it would move the selected row without the
    // collection.
    m_collectionTableView->setTabKeyNavigation(false);
    orderTabs();
}

// From the table to the strip over its edge, and then along the footer. New controls stand last in
// the window until they are put here.
void Market_TableWidget::orderTabs()
{
    const QList<QAbstractButton *> buttons = m_buttonGroup->buttons();
    for (auto button = buttons.crbegin(); button != buttons.crend(); ++button)
        setTabOrderBehind(m_collectionTableView, *button);
    m_guideTabPage->followInTabOrder(m_collectionTableView);
}

void Market_TableWidget::createConnections()
{
    connect(m_buttonGroup, QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked), this,
            &Market_TableWidget::slot_buttonGroupIsClicked);
    connect(m_guideTabPage, &ZvGuideTabPage::signal_updateCollectionTypes, this,
            &Market_TableWidget::slot_updateCollectionTypeButtons);

    connect(cache(), &ZvServerCache::signal_cache_MarketList_changed, this,
            &Market_TableWidget::slot_updateTotalQtyAndAmount);
    connect(cache(), &ZvServerCache::signal_cache_MarketList_changed, this,
            &Market_TableWidget::slot_updateMarketList);
    connect(cache(), &ZvServerCache::signal_cache_MarketInfo_changed, this,
            &Market_TableWidget::slot_updateMarketInfoList);
    connect(cache(), &ZvServerCache::signal_cache_CollectionType_Changed, this,
            &Market_TableWidget::slot_updateCollectionTypeList);

    const auto *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
    const auto *result = ZvServerActionResult::getZvServerActionResultInstance();
    connect(pool, &ZvWidgetSignalSLotPool::signal_turnoverOption_clicked, this,
            &Market_TableWidget::slot_turnoverOption_clicked);
    connect(result, &ZvServerActionResult::signal_addOption_succeed, this,
            &Market_TableWidget::slot_addOption_succeed);
    connect(result, &ZvServerActionResult::signal_addOption_failed, this,
            &Market_TableWidget::slot_addOption_failed);
    connect(result, &ZvServerActionResult::signal_removeOption_succeed, this,
            &Market_TableWidget::slot_removeOption_succeed);
    connect(result, &ZvServerActionResult::signal_removeOption_failed, this,
            &Market_TableWidget::slot_removeOption_failed);
    connect(pool, &ZvWidgetSignalSLotPool::signal_login_succeed, this,
            &Market_TableWidget::slot_syncOptionWhenLogged);
    connect(result, &ZvServerActionResult::signal_getOption_succeed, this,
            &Market_TableWidget::slot_syncOptional_succeed);
    connect(result, &ZvServerActionResult::signal_getOption_failed, this,
            &Market_TableWidget::slot_syncOptional_failed);
}

void Market_TableWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    QTimer::singleShot(SettlingMilliseconds, this, &Market_TableWidget::adjustGuidePagePos);
}

void Market_TableWidget::adjustGuidePagePos()
{
    m_guideTabPage->raise();
    m_guideTabPage->move(0, 0);
}

void Market_TableWidget::slot_buttonGroupIsClicked(QAbstractButton *button)
{
    const bool wasOption = engine()->getIsOptionalCollectionIds();
    const int typeBefore = engine()->getCollectionTypeId();

    const bool isOption = button == m_optionButton;
    engine()->setIsOptionalCollectionIds(isOption);
    m_collectionTableView->setIsOptionView(isOption);
    if (isOption) {
        if (engine()->isLogged)
            requestOptions();
    } else if (button == m_marketButton) {
        engine()->setCollectionTypeId(WholeMarket);
    } else {
        engine()->setCollectionTypeId(m_typeButtons.value(button));
    }

    if (isOption != wasOption || engine()->getCollectionTypeId() != typeBefore)
        dropRows();
    slot_updateMarketList();
    engine()->sendRequest_Market_List();
}

// The table takes a list of the length of the one before for the same rows at a later time, and
// would leave its selection on a row that holds another collection than the current one. Without
// rows in between the new list is a first one.
void Market_TableWidget::dropRows()
{
    m_collectionTableView->setMarketList({});
}

void Market_TableWidget::slot_updateMarketList()
{
    QList<ZvUBObject> list;
    if (engine()->getIsOptionalCollectionIds()) {
        const QStringList ids = cache()->getMarketListOption(QString());
        list = cache()->getMarketList(ids, QString());
    } else {
        const int typeId = engine()->getCollectionTypeId();
        list = cache()->getMarketListByTypeId(typeId, QString());
        if (typeId < 0) {
            ZvUBObject composite;
            if (cache()->getCompsite(composite, QString()))
                list.prepend(composite);
        }
    }
    m_collectionTableView->setMarketList(list);
}

void Market_TableWidget::slot_updateTotalQtyAndAmount()
{
    if (isHidden())
        return;
    int quantity = 0;
    double amount = 0;
    double marketValue = 0;
    cache()->getTotalQtyAndAmount(quantity, amount, marketValue);
    m_qtyValue->setText(QString::number(quantity));
    m_amountValue->setText(moneyText(amount));
    m_marketValueValue->setText(moneyText(marketValue));
}

void Market_TableWidget::slot_updateMarketInfoList()
{
    const QList<QPair<QString, QString>> servers = cache()->marketInfoList;
    if (servers.size() < 2) {
        m_guideTabPage->hide();
        return;
    }
    m_guideTabPage->setServerList(servers);
    orderTabs();
    m_guideTabPage->show();
    keepCodesClear();
}

// The strip lies over the edge of the code column. The codes are centred in it, so it is as wide as
// it takes for them to stand clear.
void Market_TableWidget::keepCodesClear()
{
    QHeaderView *header = m_collectionTableView->horizontalHeader();
    const QString code(CodeLength, QLatin1Char('0'));
    const int width = m_collectionTableView->fontMetrics().horizontalAdvance(code)
        + 2 * (m_guideTabPage->width() + CellMargin);
    if (header->sectionSize(CodeColumn) < width)
        header->resizeSection(CodeColumn, width);
}

void Market_TableWidget::slot_turnoverOption_clicked()
{
    if (!isVisible())
        return;
    const QList<QAbstractButton *> buttons = m_buttonGroup->buttons();
    const int position = qMax(0, buttons.indexOf(m_buttonGroup->checkedButton()));
    auto *next = qobject_cast<QPushButton *>(buttons.value((position + 1) % buttons.size()));
    choose(next ? next : m_marketButton);
}

// Does what a click on the button does. False where the listeners have ended the button, and maybe
// the page with it: the caller touches neither then.
bool Market_TableWidget::choose(QPushButton *button)
{
    const QPointer<QPushButton> alive(button);
    emit m_buttonGroup->buttonClicked(button);
    if (alive)
        alive->setChecked(true);
    return alive;
}

void Market_TableWidget::slot_updateCollectionTypeList()
{
    removeTypeButtons();
    makeTypeButtons(cache()->getCollectionTypeList(m_guideTabPage->getCurrentServer()));
}

void Market_TableWidget::slot_updateCollectionTypeButtons(QString server)
{
    const QList<QPair<QString, int>> types = cache()->getCollectionTypeList(server);
    removeTypeButtons();
    if (types.isEmpty()) {
        // The buttons follow with the answer; until then the whole market is shown.
        engine()->sendRequest_Collection_Type();
        choose(m_marketButton);
        return;
    }
    makeTypeButtons(types);
}

// Runs within a click on one of these buttons, too, when a listener of the click brings new types.
// Qt's button watches its own end there.
void Market_TableWidget::removeTypeButtons()
{
    const QList<QAbstractButton *> buttons = std::exchange(m_typeButtons, {}).keys();
    for (QAbstractButton *button : buttons) {
        if (button->hasFocus())
            m_collectionTableView->setFocus();
        m_typeButtonLayout->removeWidget(button);
        m_buttonGroup->removeButton(button);
        delete button;
    }
}

void Market_TableWidget::makeTypeButtons(const QList<QPair<QString, int>> &types)
{
    m_buttonGroup->removeButton(m_optionButton);
    // A group takes a checked button that comes in for its choice, and inside the group the button
    // could not be unchecked.
    if (!types.isEmpty())
        m_optionButton->setChecked(false);

    for (const QPair<QString, int> &type : types) {
        QPushButton *button = makeFooterButton(type.first, m_typeButtonLayout->parentWidget());
        m_typeButtonLayout->addWidget(button);
        m_typeButtons.insert(button, type.second);
        m_buttonGroup->addButton(button);
        // Types that came meanwhile have made their own buttons.
        if (m_typeButtons.size() == 1 && !choose(button))
            return;
    }
    m_buttonGroup->addButton(m_optionButton);
    orderTabs();

    // The type that is shown may be gone with all others.
    const bool isType
        = !engine()->getIsOptionalCollectionIds() && engine()->getCollectionTypeId() >= 0;
    if (isType && types.isEmpty())
        choose(m_marketButton);
}

void Market_TableWidget::slot_addOption_succeed()
{
    requestOptions();
}

void Market_TableWidget::slot_addOption_failed(QString msg)
{
    alertFailure(msg, QStringLiteral("添加自选失败"));
}

void Market_TableWidget::slot_removeOption_succeed()
{
    requestOptions();
}

void Market_TableWidget::slot_removeOption_failed(QString msg)
{
    alertFailure(msg, QStringLiteral("删除自选失败"));
}

void Market_TableWidget::slot_syncOptionWhenLogged()
{
    if (engine()->isLogged)
        requestOptions();
}

void Market_TableWidget::slot_syncOptional_succeed(QStringList optionList)
{
    const bool areOthers = optionList != cache()->getMarketListOption(QString());
    if (areOthers && engine()->getIsOptionalCollectionIds())
        dropRows();
    cache()->setMarketListOption(optionList, QString());
    engine()->sendRequest_Market_List();
}

void Market_TableWidget::slot_syncOptional_failed(QString msg)
{
    alertFailure(msg, QStringLiteral("同步自选失败"));
}
