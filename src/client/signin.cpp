#include "client/signin.h"

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

namespace {

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

} // namespace

SignIn::SignIn(QWidget *window) : QObject(window), m_window(window)
{
    connect(ZvServerActionResult::getZvServerActionResultInstance(),
            &ZvServerActionResult::signal_login_succeed, this, &SignIn::takeAnswer);
    // After everybody else has heard of it.
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, this,
            &SignIn::takeEndOfSession, Qt::QueuedConnection);
}

SignIn::~SignIn() = default;

void SignIn::open()
{
    // A dialog that was closed is still there until the event loop deletes it.
    if (m_dialog && m_dialog->isVisible()) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    m_dialog = new LoginDialog(m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->setWindowModality(Qt::WindowModal);
    QRect place(QPoint(), m_dialog->size());
    place.moveCenter(m_window->frameGeometry().center());
    m_dialog->move(place.topLeft());
    m_dialog->show();
}

// A dialog that was closed meanwhile takes no answer. The exchange has begun the session all the
// same, and ended the account's session elsewhere for it, so the window does not say otherwise.
void SignIn::takeAnswer()
{
    if (m_dialog)
        return;
    engine()->startLoggedEngine();
    pool()->slot_login_succeed();
}

// The end of a session is told when its box has been closed, and somebody may have signed in
// meanwhile. The window does not say otherwise then, either. Where nobody has, whoever comes to the
// screen next sees no money and no holdings of the one who is gone.
void SignIn::takeEndOfSession()
{
    if (engine()->isLogged) {
        pool()->slot_login_succeed();
        return;
    }
    cache()->dropAccountRecords();
    cache()->storeCapInfo(ZvUBCapInfo());
    cache()->storeGatherInfo(ZvUBGatherInfo());
}
