#include "ZvWidgetKit/zvsplashscreen.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QPainter>

namespace {

constexpr int MessagePixelSize = 16;

} // namespace

ZvSplashScreen::ZvSplashScreen(QPixmap const &pixmap) : QSplashScreen(QPixmap())
{
    setPixmap(pixmap);
}

ZvSplashScreen::~ZvSplashScreen() = default;

void ZvSplashScreen::setMessageRect(QRect rect, int alignment)
{
    m_messageRect = rect;
    m_alignment = alignment;
}

void ZvSplashScreen::showStatusMessage(QString const &message, QColor const &color)
{
    m_message = message;
    m_color = color;
    QSplashScreen::showMessage(message, m_alignment, color);
}

void ZvSplashScreen::drawContents(QPainter *painter)
{
    painter->setPen(m_color);
    QFont font = painter->font();
    font.setPixelSize(MessagePixelSize);
    painter->setFont(font);
    painter->drawText(m_messageRect, m_alignment, m_message);
}
