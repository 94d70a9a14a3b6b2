#include "client/connectionstrip.h"

#include "client/accountbutton.h"
#include "client/checkwords.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QTimer>

namespace {

constexpr int stripHeight = 26;
constexpr int markSide = 16;

ZvActionChecks *checks()
{
    return ZvServerActionResult::getZvServerActionResultInstance()->checks();
}

void giveNotice(const ZvIntent &intent, ZvActionChecks::Outcome outcome, const QString &message)
{
    BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(
        checkwords::notice(intent, outcome, message));
}

QString span(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    if (seconds < 60)
        return QStringLiteral("%1 秒").arg(seconds);
    if (seconds < 3600)
        return QStringLiteral("%1 分 %2 秒").arg(seconds / 60).arg(seconds % 60);
    return QStringLiteral("%1 小时 %2 分").arg(seconds / 3600).arg(seconds / 60 % 60);
}

} // namespace

ConnectionStrip::ConnectionStrip(QWidget *parent)
    : QWidget(parent), m_mark(new QLabel(this)), m_words(new QLabel(this)),
      m_account(new AccountButton(this)), m_timer(new QTimer(this))
{
    setFixedHeight(stripHeight);
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("ConnectionStrip{background-color:#101114;"
                                 "border-top:1px solid #242931;}"));
    m_mark->setFixedSize(markSide, markSide);
    // The words come and go; the window keeps its size, whatever they are.
    m_words->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(20, 0, 20, 0);
    layout->setSpacing(8);
    layout->addWidget(m_mark);
    layout->addWidget(m_words, 1);
    layout->addWidget(m_account);

    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &ConnectionStrip::refresh);
    connect(ZvServerAccessManager::getZvServerAccessManagerInstance(),
            &ZvServerAccessManager::signal_connection_changed, this, &ConnectionStrip::refresh);
    connect(checks(), &ZvActionChecks::changed, this, &ConnectionStrip::refresh);
    connect(checks(), &ZvActionChecks::settled, this, giveNotice);
    refresh();
}

void ConnectionStrip::setServiceNotice(const QString &notice)
{
    m_serviceNotice = notice;
    refresh();
}

void ConnectionStrip::refresh()
{
    const auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    const bool isConnected = access->isConnected();
    QStringList parts;
    if (isConnected) {
        parts << QStringLiteral("已连接") << QStringLiteral("行情实时更新");
    } else if (access->dataAge() < 0) {
        parts << QStringLiteral("正在连接交易所 %1").arg(span(access->awayFor()));
    } else {
        parts << QStringLiteral("连接已断开")
              << QStringLiteral("行情停在 %1前").arg(span(access->dataAge()))
              << QStringLiteral("正在重新连接");
    }
    if (!isConnected && !m_serviceNotice.isEmpty())
        parts << m_serviceNotice;
    const QString checked = checkwords::sentence(checks()->open(), checks()->waiting());
    if (!checked.isEmpty())
        parts << checked;
    const bool isCalm = isConnected && checked.isEmpty();
    const bool isLost = !isConnected && access->dataAge() >= 0;
    const QString words = parts.join(QStringLiteral("  ·  "));
    m_words->setText(words);
    m_words->setAccessibleName(QStringLiteral("连接状态 %1").arg(words));
    m_words->setToolTip(isCalm ? QString() : words);
    showMark(isCalm       ? QStringLiteral(":/icons_vedio/online.png")
                 : isLost ? QStringLiteral(":/icons_vedio/offline.png")
                          : QStringLiteral(":/icons_vedio/connecting.png"));
    if (!m_shownState || *m_shownState != isCalm)
        showColours(isCalm);
    // While connected nothing here moves, so nothing is painted either.
    if (isConnected)
        m_timer->stop();
    else if (!m_timer->isActive())
        m_timer->start();
}

void ConnectionStrip::showMark(const QString &picture)
{
    if (m_shownMark == picture)
        return;
    m_shownMark = picture;
    m_mark->setPixmap(QPixmap(picture));
}

void ConnectionStrip::showColours(bool isCalm)
{
    m_shownState = isCalm;
    const QString words = isCalm ? QStringLiteral("#8c939d") : QStringLiteral("#e2ef33");
    m_words->setStyleSheet(QStringLiteral("color:%1;font-size:12px;").arg(words));
}

QString ConnectionStrip::text() const
{
    return m_words->text();
}
