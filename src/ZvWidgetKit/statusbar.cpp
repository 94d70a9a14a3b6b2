#include "ZvWidgetKit/statusbar.h"

#include "BreltWidgetToolKit/breltlayoutline.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/elidedlabel.h"
#include "ZvWidgetKit/status_message_scrollarea.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr int BarHeight = 37;
constexpr int WideGap = 20;
constexpr int NarrowGap = 6;
constexpr int AccountGap = 10;
constexpr int SettlementGap = 70;
constexpr QColor BarColour(30, 33, 38);

QString hideText()
{
    return QStringLiteral("隐藏交易");
}

QString showText()
{
    return QStringLiteral("显示交易");
}

QString accountText(const QString &number)
{
    return QStringLiteral("交易商：") + number;
}

QString usualAccountText()
{
    return accountText(QStringLiteral("000000000000"));
}

// A number of the usual length is always to be seen whole. A longer one gives way where there is no
// room: it must not push the window over the edge of the screen.
class AccountLabel : public ElidedLabel
{
public:
    using ElidedLabel::ElidedLabel;

    QSize minimumSizeHint() const override
    {
        const QSize whole = sizeHint();
        const int usual = fontMetrics().horizontalAdvance(usualAccountText());
        return {qMin(whole.width(), usual), whole.height()};
    }
};

} // namespace

StatusBar::StatusBar(QWidget *parent)
    : QWidget(parent), m_loginButton(new QPushButton(QStringLiteral("登录"), this)),
      m_hideButton(new QPushButton(hideText(), this)),
      m_lockButton(new QPushButton(QStringLiteral("锁定交易"), this)), m_loggedLine(makeLine()),
      m_accountLabel(new AccountLabel(usualAccountText(), this)),
      m_settlementLabel(new QLabel(this)),
      m_marketStatusLabel(new QLabel(QStringLiteral("市场状态"), this)),
      m_messageArea(new Status_Message_ScrollArea(this)), m_clockLabel(new QLabel(this))
{
    m_accountLabel->setTextFormat(Qt::PlainText);
    QSizePolicy policy = m_messageArea->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Expanding);
    m_messageArea->setSizePolicy(policy);
    showAsLogged(false);
    layOut();
    slot_updateTheTime(int(QDateTime::currentSecsSinceEpoch()));
    createConnections();
    applyStyle();
}

StatusBar::~StatusBar() = default;

BreltLayoutLine *StatusBar::makeLine()
{
    auto *line = new BreltLayoutLine(QFrame::VLine, this);
    line->setColor(QStringLiteral("#242931"));
    return line;
}

void StatusBar::layOut()
{
    auto *row = new QHBoxLayout(this);
    row->addSpacing(WideGap);
    row->addWidget(m_loginButton);
    row->addWidget(m_accountLabel);
    row->addSpacing(AccountGap);
    row->addWidget(m_settlementLabel);
    row->addSpacing(SettlementGap);

    row->addWidget(makeLine());
    row->addSpacing(WideGap);
    row->addWidget(m_marketStatusLabel);
    row->addSpacing(WideGap);
    row->addWidget(makeLine());

    row->addWidget(m_messageArea);
    row->addWidget(makeLine());

    row->addSpacing(NarrowGap);
    row->addWidget(m_hideButton);
    row->addWidget(m_lockButton);
    row->addSpacing(NarrowGap);
    row->addWidget(m_loggedLine);

    row->addSpacing(WideGap);
    row->addWidget(m_clockLabel);
    row->addSpacing(WideGap);
}

void StatusBar::createConnections()
{
    using Self = StatusBar;
    using Pool = ZvWidgetSignalSLotPool;
    using Cache = ZvServerCache;
    const Pool *pool = Pool::getSignalSlotPoolInstance();
    const Cache *cache = Cache::getZvServerCacheInstance();
    connect(m_loginButton, &QPushButton::clicked, pool, &Pool::slot_statusLogin_clicked);
    connect(m_hideButton, &QPushButton::clicked, this, &Self::slot_hideTransactions_clicked);
    connect(m_lockButton, &QPushButton::clicked, this, &Self::slot_lockTransactions_clicked);
    connect(cache, &Cache::signal_cache_MarketCheck_changed, this, &Self::slot_marketStatusChanged);
    connect(cache, &Cache::signal_cache_globalTime_Changed, this, &Self::slot_updateTheTime);
    connect(cache, &Cache::signal_cache_Myaccount_changed, this, &Self::slot_myaccountChanged);
    connect(cache, &Cache::signal_cache_MessageList_changed, m_messageArea,
            &Status_Message_ScrollArea::slot_updateMassage);
    connect(pool, &Pool::signal_login_succeed, this, &Self::slot_afterLoginSucceed);
    connect(pool, &Pool::signal_loggedOtherPlace, this, &Self::slot_afterLoginOtherPlace);
    connect(pool, &Pool::signal_adjustSize, m_messageArea,
            &Status_Message_ScrollArea::slot_adjustSize);
}

void StatusBar::applyStyle()
{
    m_loginButton->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_StatusBarLoginButton());
    for (QLabel *label : {m_clockLabel, m_accountLabel, m_settlementLabel})
        label->setStyleSheet(
            QStringLiteral("color:rgb(255,255,255);background-color:rgb(30,33,38)"));
    // A click leaves the keys where they are used; the tab key still comes by.
    for (QPushButton *button : {m_loginButton, m_hideButton, m_lockButton})
        button->setFocusPolicy(Qt::TabFocus);
    for (QPushButton *button : {m_hideButton, m_lockButton})
        button->setStyleSheet(
            QStringLiteral("QPushButton{background-color:rgb(22,25,34); color:rgb(255,255,255);}"));
    // In a window with a style sheet no palette comes down from the bar to the ticker.
    for (QWidget *ground :
         {static_cast<QWidget *>(this), m_messageArea->viewport(), m_messageArea->widget()})
        setBackground(ground, BarColour);
    layout()->setContentsMargins(0, 0, 0, 0);
    layout()->setSpacing(0);
    setMinimumHeight(BarHeight);
}

void StatusBar::showAsLogged(bool isLogged)
{
    m_loginButton->setHidden(isLogged);
    for (QWidget *widget :
         QList<QWidget *>{m_hideButton, m_lockButton, m_loggedLine, m_accountLabel})
        widget->setVisible(isLogged);
}

void StatusBar::slot_updateTheTime(int timestamp)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    const QDateTime time = QDateTime::fromTime_t(uint(timestamp));
    QT_WARNING_POP
    m_settlementLabel->setText(
        QStringLiteral("结算日: %1").arg(time.toString(QStringLiteral("yyyy-MM-dd"))));
    m_clockLabel->setText(time.toString(QStringLiteral("hh:mm:ss")));
}

void StatusBar::slot_marketStatusChanged(bool opened)
{
    m_marketStatusLabel->setText(opened ? QStringLiteral("开市") : QStringLiteral("闭市"));
    m_marketStatusLabel->setStyleSheet(
        opened ? QStringLiteral("color:#ff3c38;background-color:rgb(30,33,38)")
               : QStringLiteral("color:#4bff57;background-color:rgb(30,33,38)"));
}

void StatusBar::slot_myaccountChanged()
{
    const ZvUBMyAcount account = ZvServerCache::getZvServerCacheInstance()->myAccount;
    m_accountLabel->setText(accountText(account.accountNumber()));
}

void StatusBar::slot_afterLoginSucceed()
{
    showAsLogged(true);
    m_hideButton->setText(hideText()); // without a word to the host, which may still hide them
}

void StatusBar::slot_afterLoginOtherPlace()
{
    showAsLogged(false);
}

// The text of the button is the state.
void StatusBar::slot_hideTransactions_clicked()
{
    const bool hides = m_hideButton->text() == hideText();
    m_hideButton->setText(hides ? showText() : hideText());
    emit signal_hideTransactions_toggled(hides);
}

void StatusBar::slot_lockTransactions_clicked()
{
    emit signal_lockTransactions_clicked();
}
