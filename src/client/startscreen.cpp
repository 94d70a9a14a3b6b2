#include "client/startscreen.h"

#include "client/embeddedexchange.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvplatformselectdialog.h"
#include "ZvWidgetKit/zvsplashscreen.h"

#include <QEvent>
#include <QPixmap>

namespace {

// A new folder of the service is filled with the history of its market first.
constexpr int serviceMs = 20000;
constexpr int connectionMs = 5000;
constexpr int rowsMs = 8000;

constexpr int everyType = -1;
constexpr QRect messagePlace(40, 344, 560, 32); // of the pictures of 640 by 400
constexpr QColor messageColour(0xe6, 0xe9, 0xee);

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

QPixmap picture()
{
    const bool isLanChuan = ZvServerConfig::getZvServerConfigInstance()->getCurrentPlatform()
        == ZvServerConfig::LanChuan;
    return QPixmap(isLanChuan ? QStringLiteral(":/icons/guidepage/lanchuan-splash.png")
                              : QStringLiteral(":/icons/guidepage/chenghu-splash.png"));
}

} // namespace

bool StartScreen::choosePlatform()
{
    ZvPlatformSelectDialog dialog(nullptr);
    return dialog.exec() == QDialog::Accepted;
}

StartScreen::StartScreen(QObject *parent) : QObject(parent)
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, &StartScreen::end);
    connect(access(), &ZvServerAccessManager::signal_connection_changed, this,
            [this](bool isConnected) {
                if (isConnected)
                    waitForRows();
            });
    connect(cache(), &ZvServerCache::signal_cache_MarketList_changed, this, &StartScreen::takeRows);
}

StartScreen::~StartScreen() = default;

void StartScreen::show()
{
    m_splash = std::make_unique<ZvSplashScreen>(picture());
    m_splash->setMessageRect(messagePlace, Qt::AlignCenter);
    m_splash->installEventFilter(this);
    m_splash->show();
    waitForConnection();
}

void StartScreen::followExchange(EmbeddedExchange *exchange)
{
    wait(QStringLiteral("正在启动交易服务…"), serviceMs);
    connect(exchange, &EmbeddedExchange::available, this, &StartScreen::waitForConnection);
    connect(exchange, &EmbeddedExchange::lost, this, &StartScreen::end);
}

void StartScreen::waitForConnection()
{
    wait(QStringLiteral("正在连接…"), connectionMs);
}

void StartScreen::waitForRows()
{
    wait(QStringLiteral("正在读取行情…"), rowsMs);
}

void StartScreen::wait(const QString &words, int milliseconds)
{
    if (m_isOver || !m_splash)
        return;
    m_words = words;
    m_patience.start(milliseconds);
    m_splash->showStatusMessage(words, messageColour); // lets events pass, the last one among them
}

void StartScreen::takeRows()
{
    if (!cache()->getMarketListByTypeId(everyType, QString()).isEmpty())
        end();
}

void StartScreen::end()
{
    if (m_isOver)
        return;
    m_isOver = true;
    m_patience.stop();
    emit over();
}

void StartScreen::leaveTo(QWidget *window)
{
    if (!m_splash)
        return;
    m_splash->finish(window);
    // Its picture is no small one. Later, since this may be the end of one of its own events.
    m_splash.release()->deleteLater();
}

// A splash goes away at a click, and nothing would be left to look at.
bool StartScreen::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::KeyPress) {
        end();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
