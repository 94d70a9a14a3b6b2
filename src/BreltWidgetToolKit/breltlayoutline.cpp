#include "BreltWidgetToolKit/breltlayoutline.h"

#include "BreltWidgetToolKit/breltlook.h"

#include <QPainter>

BreltLayoutLine::BreltLayoutLine(QFrame::Shape shape, QWidget *parent)
    : QFrame(parent), m_color(brelt::look::line())
{
    setFrameShape(shape);
    setFrameShadow(QFrame::Plain);
    if (shape == QFrame::VLine) {
        setFixedWidth(1);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    } else if (shape == QFrame::HLine) {
        setFixedHeight(1);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
}

BreltLayoutLine::~BreltLayoutLine() = default;

void BreltLayoutLine::setColor(const QString &color)
{
    const QColor wanted(color);
    if (!wanted.isValid())
        return;
    m_color = wanted;
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, m_color);
    setPalette(colours);
    update();
}

QColor BreltLayoutLine::color() const
{
    return m_color;
}

QSize BreltLayoutLine::sizeHint() const
{
    return frameShape() == QFrame::VLine || frameShape() == QFrame::HLine ? QSize(1, 1)
                                                                          : QFrame::sizeHint();
}

void BreltLayoutLine::paintEvent(QPaintEvent *event)
{
    if (frameShape() != QFrame::VLine && frameShape() != QFrame::HLine) {
        QFrame::paintEvent(event);
        return;
    }
    // QFrame centres its line in the widget and may blur it at odd scales; the widget is the line.
    QPainter(this).fillRect(rect(), m_color);
}
