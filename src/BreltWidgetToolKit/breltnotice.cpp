#include "BreltWidgetToolKit/breltnotice.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "BreltWidgetToolKit/breltlook.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QVariantAnimation>

#include <algorithm>

namespace {

const int c_mostNotices = 5;
const int c_mostCharacters = 500;
const int c_largestWidth = 420;
const int c_smallestWidth = 160;
const int c_gap = 8;
const int c_fading = 240;

// Two seconds and a half, and more for long texts: about fifteen characters are read in a second.
int readingTime(const QString &text)
{
    return qBound(2500, 1500 + int(text.size()) * 65, 8000);
}

// The window over which notices appear: the one in use, or the largest that is to be seen. A dialog
// in use does not count, since the notice would cover what it asks.
QWidget *windowInUse()
{
    QWidget *active = QApplication::activeWindow();
    if (active && active->windowType() == Qt::Window)
        return active;
    QWidget *largest = nullptr;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        const Qt::WindowType type = window->windowType();
        const bool counts = window->isVisible() && !window->isMinimized()
            && (type == Qt::Window || type == Qt::Widget || type == Qt::Dialog);
        if (counts
            && (!largest
                || window->width() * window->height() > largest->width() * largest->height()))
            largest = window;
    }
    return largest;
}

} // namespace

BreltNotice::BreltNotice(const QString &text)
    : m_time(new QTimer(this)), m_fading(new QVariantAnimation(this))
{
    setObjectName(QStringLiteral("BreltNotice"));
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus
                   | Qt::WindowTransparentForInput);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    setFocusPolicy(Qt::NoFocus);
    setContentsMargins(20, 12, 16, 12);

    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, brelt::look::text());
    colours.setColor(QPalette::ToolTipText, brelt::look::text());
    setPalette(colours);
    setForegroundRole(QPalette::WindowText);

    // Refusals of the server are shown as they come, whatever signs they hold.
    setTextFormat(Qt::PlainText);
    setText(text.size() > c_mostCharacters ? text.left(c_mostCharacters) + QStringLiteral("…")
                                           : text);

    m_time->setSingleShot(true);
    connect(m_time, &QTimer::timeout, this, [this] { m_fading->start(); });
    m_fading->setDuration(c_fading);
    m_fading->setStartValue(1.0);
    m_fading->setEndValue(0.0);
    connect(m_fading, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_opacity = value.toReal();
        update();
    });
    connect(m_fading, &QVariantAnimation::finished, this, &BreltNotice::passed);
}

BreltNotice::~BreltNotice() = default;

void BreltNotice::begin(int duration)
{
    m_time->start(duration);
    show();
}

void BreltNotice::fitInto(int largestWidth)
{
    const QMargins margins = contentsMargins();
    const int around = margins.left() + margins.right();
    const int most = qMax(around + 1, qMin(largestWidth, c_largestWidth));
    const int width = qBound(qMin(c_smallestWidth, most), naturalWidth() + around, most);
    setFixedSize(width, heightForWidth(width));
}

void BreltNotice::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    // The window's own opacity is not there on every platform, so the notice paints itself paler.
    painter.setOpacity(m_opacity);
    painter.fillRect(rect(), brelt::look::raised());
    painter.fillRect(QRect(0, 0, 4, height()), BreltDarkStyle::currentAccent());
    painter.setPen(brelt::look::border());
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    paintText(&painter, contentsRect());
}

BreltNoticeStack::BreltNoticeStack() = default;

BreltNoticeStack::~BreltNoticeStack()
{
    clear();
}

void BreltNoticeStack::add(const QString &text)
{
    if (text.trimmed().isEmpty())
        return;
    const std::vector<BreltNotice *> before = standing();
    if (before.size() >= c_mostNotices)
        pass(before.front());

    auto *notice = new BreltNotice(text);
    m_notices.emplace_back(notice);
    connect(notice, &BreltNotice::passed, this, [this, notice] {
        pass(notice);
        restack();
    });
    restack();
    notice->begin(m_duration > 0 ? m_duration : readingTime(text));
}

void BreltNoticeStack::setDuration(int milliseconds)
{
    m_duration = qMax(0, milliseconds);
}

QStringList BreltNoticeStack::texts() const
{
    QStringList texts;
    for (const BreltNotice *notice : standing())
        texts.append(notice->text());
    return texts;
}

void BreltNoticeStack::clear()
{
    const std::vector<QPointer<BreltNotice>> notices = std::move(m_notices);
    m_notices.clear();
    for (const QPointer<BreltNotice> &notice : notices)
        delete notice.data();
}

void BreltNoticeStack::pass(BreltNotice *notice)
{
    // It may be the sender of the signal that brought us here, so it is deleted by the event loop,
    // and stays listed until then for a loop that never runs again.
    notice->disconnect(this);
    notice->hide();
    notice->setEnabled(false);
    notice->deleteLater();
}

void BreltNoticeStack::restack()
{
    m_notices.erase(std::remove_if(m_notices.begin(), m_notices.end(),
                                   [](const QPointer<BreltNotice> &notice) { return !notice; }),
                    m_notices.end());
    std::vector<BreltNotice *> notices = standing();
    if (notices.empty())
        return;

    const QWidget *window = windowInUse();
    const QScreen *screen = window ? window->screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect area = screen->availableGeometry();
    const QRect anchor = window ? window->frameGeometry() : area;

    int total = 0;
    for (BreltNotice *notice : notices) {
        notice->fitInto(area.width() - 2 * c_gap);
        total += notice->height() + c_gap;
    }
    while (notices.size() > 1 && total > area.height()) {
        total -= notices.front()->height() + c_gap;
        pass(notices.front());
        notices.erase(notices.begin());
    }

    const int lowest = area.y() + area.height() - total;
    int y = qMax(area.y(), qMin(anchor.y() + qMax(48, anchor.height() / 6), lowest));
    for (BreltNotice *notice : notices) {
        const int x = anchor.center().x() - notice->width() / 2;
        const int rightmost = area.x() + area.width() - notice->width();
        notice->move(qMax(area.x(), qMin(x, rightmost)), y);
        y += notice->height() + c_gap;
    }
}

std::vector<BreltNotice *> BreltNoticeStack::standing() const
{
    std::vector<BreltNotice *> notices;
    for (const QPointer<BreltNotice> &notice : m_notices) {
        if (notice && notice->isEnabled())
            notices.push_back(notice);
    }
    return notices;
}
