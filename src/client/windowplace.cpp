#include "client/windowplace.h"

#include "client/halves.h"
#include "client/screenareas.h"
#include "client/windowframe.h"

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QWidget>

namespace {

Q_LOGGING_CATEGORY(clientLog, "zv.client", QtInfoMsg)

constexpr int soonMs = 500;

const QString geometryKey = QStringLiteral("window/geometry");
const QString maximizedKey = QStringLiteral("window/maximized");
const QString tradingHeightKey = QStringLiteral("window/tradingHeight");

// Five sixths of the first screen, in its middle.
QRect firstPlace()
{
    const QRect area = screenareas::all().value(0);
    QRect place(QPoint(), area.size() * 5 / 6);
    place.moveCenter(area.center());
    return place;
}

} // namespace

WindowPlace::WindowPlace(QWidget *window, WindowFrame *frame, Halves *halves, const QString &file)
    : QObject(window), m_window(window), m_frame(frame), m_halves(halves), m_file(file)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(soonMs);
    connect(&m_soon, &QTimer::timeout, this, &WindowPlace::save);
    connect(halves, &QSplitter::splitterMoved, &m_soon, qOverload<>(&QTimer::start));
    watchScreens();
}

QString WindowPlace::usualFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/zvclient/window.ini");
}

void WindowPlace::show()
{
    const QSettings settings(m_file, QSettings::IniFormat);
    const QRect saved = settings.value(geometryKey).toRect();
    m_window->setGeometry(
        screenareas::rescued(saved.isValid() ? saved : firstPlace(), screenareas::all()));
    m_halves->choose(settings.value(tradingHeightKey).toInt());
    if (settings.value(maximizedKey, true).toBool())
        m_frame->maximize();
    m_window->show();
    m_window->installEventFilter(this);
}

bool WindowPlace::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        m_soon.start();
        break;
    case QEvent::Close:
        save();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WindowPlace::save()
{
    m_soon.stop();
    QDir().mkpath(QFileInfo(m_file).path());
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setValue(geometryKey, m_frame->normalGeometry());
    settings.setValue(maximizedKey, m_frame->isMaximized());
    settings.setValue(tradingHeightKey, m_halves->chosenHeight());
    settings.sync();
    // What was no INI file before is one now.
    if (settings.status() != QSettings::AccessError || m_isTold)
        return;
    m_isTold = true;
    qCWarning(clientLog).noquote() << "The place of the window cannot be kept in" << m_file;
}

void WindowPlace::watchScreens()
{
    const auto watch = [this](QScreen *screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, &WindowPlace::rescue,
                Qt::QueuedConnection);
    };
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WindowPlace::rescue,
            Qt::QueuedConnection);
}

void WindowPlace::rescue()
{
    if (m_window->isHidden() || m_window->isMaximized())
        return;
    const QRect place = screenareas::rescued(m_window->geometry(), screenareas::all());
    if (place != m_window->geometry())
        m_window->setGeometry(place);
}
