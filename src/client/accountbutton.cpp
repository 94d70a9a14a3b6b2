#include "client/accountbutton.h"

#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QFontMetrics>
#include <QMenu>
#include <QTimer>

namespace {

constexpr int widestAccount = 160;

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

AccountButton::AccountButton(QWidget *parent)
    : QPushButton(parent), m_menu(new QMenu(this)), m_hideAction(nullptr)
{
    setObjectName(QStringLiteral("AccountButton"));
    setStyleSheet(ZvServerConfig::getZvServerConfigInstance()->getStyleOf_StatusBarLoginButton());
    // A click leaves the keys to the market.
    setFocusPolicy(Qt::TabFocus);
    QFont small = font();
    small.setPixelSize(12);
    setFont(small);
    m_menu->addAction(QStringLiteral("出/入金"), this, &AccountButton::transferWanted);
    m_hideAction = m_menu->addAction(QString(), this, &AccountButton::toggleHide);
    setHideText(false);
    m_menu->addAction(QStringLiteral("锁定交易"), this, &AccountButton::lockTransactionsWanted);
    m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("退出登录"), this, &AccountButton::signOut);

    connect(this, &QPushButton::clicked, this, &AccountButton::act);
    connect(ZvServerActionResult::getZvServerActionResultInstance(),
            &ZvServerActionResult::signal_login_succeed, this, &AccountButton::takeSignIn);
    connect(cache(), &ZvServerCache::signal_cache_Myaccount_changed, this, &AccountButton::refresh);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, this, [this] {
        // Whoever signs in sees the trading half.
        setHideText(false);
        refresh();
    });
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, this,
            &AccountButton::refresh);
    refresh();
}

AccountButton::~AccountButton() = default;

void AccountButton::refresh()
{
    const bool isLogged = engine()->isLogged;
    const QString words = isLogged ? nameOf(cache()->myAccount) : QStringLiteral("登录");
    QString text = fontMetrics().elidedText(words, Qt::ElideRight, widestAccount);
    setText(text.replace(QLatin1Char('&'), QLatin1String("&&")));
    // A new text takes the shortcut with it.
    const QKeySequence keys(Qt::CTRL | Qt::Key_L);
    setShortcut(keys);
    setToolTip(brelt::plainToolTip(
        QStringLiteral("%1 (%2)").arg(words, keys.toString(QKeySequence::NativeText))));
    setAccessibleName(isLogged ? QStringLiteral("账户 %1").arg(words) : words);
}

void AccountButton::act()
{
    if (!engine()->isLogged) {
        signIn();
        return;
    }
    const QSize size = m_menu->sizeHint();
    m_menu->popup(mapToGlobal(QPoint(width() - size.width(), -size.height())));
}

void AccountButton::signIn()
{
    // A dialog that was closed is still there until the event loop deletes it.
    if (m_dialog && m_dialog->isVisible()) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    QWidget *owner = window();
    m_dialog = new LoginDialog(owner);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setWindowModality(Qt::WindowModal);
    QRect place(QPoint(), m_dialog->size());
    place.moveCenter(owner->frameGeometry().center());
    m_dialog->move(place.topLeft());
    m_dialog->show();
}

// A dialog that was closed meanwhile takes no answer. The exchange has begun the session all the
// same, and ended the account's session elsewhere for it, so the window does not say otherwise.
void AccountButton::takeSignIn()
{
    if (m_dialog)
        return;
    engine()->startLoggedEngine();
    pool()->slot_login_succeed();
}

void AccountButton::signOut()
{
    engine()->startUnloggedEngine();
    pool()->slot_loggedOtherPlace();
}

void AccountButton::toggleHide()
{
    setHideText(!m_isHidden);
    emit hideTransactionsToggled(m_isHidden);
}

void AccountButton::setHideText(bool isHidden)
{
    m_isHidden = isHidden;
    m_hideAction->setText(isHidden ? QStringLiteral("显示交易") : QStringLiteral("隐藏交易"));
}
