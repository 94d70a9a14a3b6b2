#include "ZvWidgetKit/zvguidetabpage.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDebug>
#include <QEvent>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {

constexpr int PageWidth = 28;
constexpr int PageHeight = 500;
constexpr int SwitchSize = 30;
constexpr int WheelStep = 81; // a button and the gap below it

} // namespace

ZvGuideTabPage::ZvGuideTabPage(QWidget *parent)
    : QWidget(parent), m_kaiguanButton(new QPushButton(this)), m_itemsWidget(new QWidget(this)),
      m_itemsLayout(new QVBoxLayout(m_itemsWidget)), m_disableTimer(new QTimer(this)),
      m_disableDuration(1500)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(m_kaiguanButton);
    layout->addWidget(m_itemsWidget);
    layout->addStretch(1);
    applyStyle();
    createConnections();
}

ZvGuideTabPage::~ZvGuideTabPage() = default;

void ZvGuideTabPage::applyStyle()
{
    setFixedSize(PageWidth, PageHeight);
    m_kaiguanButton->setCheckable(true);
    m_kaiguanButton->setChecked(true);
    m_kaiguanButton->setMinimumHeight(SwitchSize);
    m_kaiguanButton->setMaximumWidth(SwitchSize);
    m_kaiguanButton->setAccessibleName(QStringLiteral("显示市场"));
    m_kaiguanButton->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketOpenButton());
    m_itemsLayout->setContentsMargins(0, 0, 0, 0);
    m_itemsLayout->setSpacing(1);
}

void ZvGuideTabPage::createConnections()
{
    connect(m_kaiguanButton, &QPushButton::clicked, this, &ZvGuideTabPage::slot_kaiguan_clicked);
    connect(m_disableTimer, &QTimer::timeout, this, &ZvGuideTabPage::slot_disable_timeout);
}

void ZvGuideTabPage::setServerList(QList<QPair<QString, QString>> list)
{
    removeItems();
    for (int i = 0; i < list.size(); ++i) {
        auto *item = new ZvGuideTabItem;
        item->setProgressDuration(m_disableDuration);
        connect(item, &ZvGuideTabItem::signal_ServerButtonClicked, this,
                &ZvGuideTabPage::slot_ServerType_clicked);
        item->setServerName(list.at(i).first);
        item->setServerPrefix(list.at(i).second);
        if (i == 0) {
            m_currentServer = list.at(i).second;
            item->setEnabledLook();
        } else {
            item->setDisabledLook();
        }
        m_items.append(item);
        m_itemsLayout->insertWidget(m_itemsLayout->count(), item);
    }
}

void ZvGuideTabPage::followInTabOrder(QWidget *widget)
{
    QWidget::setTabOrder(widget, m_kaiguanButton);
    QWidget *last = m_kaiguanButton;
    for (const ZvGuideTabItem *item : qAsConst(m_items)) {
        auto *button = item->findChild<QPushButton *>();
        QWidget::setTabOrder(last, button);
        last = button;
    }
}

QString ZvGuideTabPage::getCurrentServer() const
{
    return m_currentServer;
}

// A new list may come while a click on one of the items is still on its way. Neither the item nor
// Qt's button touches itself after its signal, so they go at once: a dead item that waited for the
// event loop would still be a child of the strip.
void ZvGuideTabPage::removeItems()
{
    while (!m_items.isEmpty()) {
        ZvGuideTabItem *item = m_items.takeFirst();
        m_itemsLayout->removeWidget(item);
        delete item;
    }
}

// The strip is higher than what it shows, and must not stand between the mouse and the rows of the
// table.
bool ZvGuideTabPage::event(QEvent *event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest)
        setMask(childrenRegion());
    return isHandled;
}

// A notch moves the strip by about one button, and never further than to its last one.
void ZvGuideTabPage::wheelEvent(QWheelEvent *event)
{
    const QWidget *table = parentWidget();
    const int hidden = table ? childrenRect().height() - table->height() : 0;
    if (hidden > 0)
        move(x(), qBound(-hidden, y() + event->angleDelta().y() * WheelStep / 120, 0));
    event->accept();
}

void ZvGuideTabPage::slot_kaiguan_clicked(bool checked)
{
    m_itemsWidget->setVisible(checked);
    move(x(), 0);
}

void ZvGuideTabPage::slot_ServerType_clicked(QString serverPrefix)
{
    qDebug() << "old server：" << m_currentServer;
    qDebug() << "want turn to：" << serverPrefix;
    if (serverPrefix == m_currentServer)
        return;
    m_currentServer = serverPrefix;

    ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    access->setUrlPrefix(serverPrefix);
    ZvServerEngine *engine = ZvServerEngine::getZvServerEngineInstance();
    engine->sendRequest_Market_Collection();
    engine->sendRequest_Message();

    // A listener may end the page, and the trading side must hear of the change all the same.
    const QPointer<ZvGuideTabPage> page(this);
    emit signal_updateCollectionTypes(serverPrefix);
    emit ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->signal_loadTradeData_fromServer();
    if (!page)
        return;

    // A listener that ran an event loop may have let a further change through, which has marked
    // its own server.
    if (access->urlPrefix() != serverPrefix)
        return;

    for (ZvGuideTabItem *item : qAsConst(m_items)) {
        if (item->getServerPrefix() == serverPrefix) {
            item->setEnabledLook();
            item->startProgress();
        } else {
            item->setDisabledLook();
        }
    }
    for (ZvGuideTabItem *item : qAsConst(m_items))
        item->disableButton();
    m_disableTimer->start(m_disableDuration);
}

// The timer goes on, which does no harm; a change of server starts it anew.
void ZvGuideTabPage::slot_disable_timeout()
{
    for (ZvGuideTabItem *item : qAsConst(m_items))
        item->enableButton();
}
