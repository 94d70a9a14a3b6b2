#include "client/accountbutton.h"

#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QFontMetrics>
#include <QMenu>

namespace {

constexpr int widestAccount = 160;
constexpr int buttonHeight = 20;

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

// "13900000001" is shown as "139****0001": others see the screen, too.
QString maskedPhone(const QString &phone)
{
    constexpr int head = 3;
    constexpr int tail = 4;
    if (phone.size() <= head + tail)
        return phone;
    return phone.left(head) + QString(phone.size() - head - tail, QLatin1Char('*'))
        + phone.right(tail);
}

QString nameOf(const ZvUBMyAcount &account)
{
    if (!account.name().isEmpty())
        return account.name();
    return account.phone().isEmpty() ? QStringLiteral("已登录") : maskedPhone(account.phone());
}

} // namespace

AccountButton::AccountButton(QWidget *parent) : QPushButton(parent), m_menu(new QMenu(this))
{
    setObjectName(QStringLiteral("AccountButton"));
    // As the login button of the status bar, and lower.
    setStyleSheet(ZvServerConfig::getZvServerConfigInstance()->getStyleOf_StatusBarLoginButton()
                  + QStringLiteral("QPushButton{padding:0px 12px;}"));
    setFixedHeight(buttonHeight);
    // A click leaves the keys to the market.
    setFocusPolicy(Qt::TabFocus);
    QFont small = font();
    small.setPixelSize(12);
    setFont(small);
    m_menu->addAction(QStringLiteral("出/入金"), this, &AccountButton::transferWanted);
    m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("退出登录"), this, &AccountButton::signOut);

    connect(this, &QPushButton::clicked, this, &AccountButton::openMenu);
    connect(cache(), &ZvServerCache::signal_cache_Myaccount_changed, this, &AccountButton::refresh);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, this, &AccountButton::refresh);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, this,
            &AccountButton::refresh);
    refresh();
}

AccountButton::~AccountButton() = default;

void AccountButton::refresh()
{
    const bool isLogged = engine()->isLogged;
    const QString words = isLogged ? nameOf(cache()->myAccount) : QString();
    QString text = fontMetrics().elidedText(words, Qt::ElideRight, widestAccount);
    setText(text.replace(QLatin1Char('&'), QLatin1String("&&")));
    setToolTip(brelt::plainToolTip(words));
    setAccessibleName(QStringLiteral("账户 %1").arg(words));
    if (!isLogged)
        m_menu->close();
    setVisible(isLogged);
}

void AccountButton::openMenu()
{
    const QSize size = m_menu->sizeHint();
    m_menu->popup(mapToGlobal(QPoint(width() - size.width(), -size.height())));
}

void AccountButton::signOut()
{
    engine()->startUnloggedEngine();
    pool()->slot_loggedOtherPlace();
}
