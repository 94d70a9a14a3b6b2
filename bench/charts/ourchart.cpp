#include "ourchart.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

using zvplot::ChartCanvas;
using zvplot::KLinePlot;

namespace {

constexpr int rowOfDrag = 200;

void turn()
{
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

} // namespace

OurChart::OurChart()
{
    m_canvas.resize(1200, 600);
    m_canvas.show();
    turn();
}

void OurChart::load(const ZvUBKLine &line)
{
    m_canvas.showKLine(line, KLinePlot::Period::Day);
    QKeyEvent narrower(QEvent::KeyPress, Qt::Key_Minus, Qt::NoModifier);
    for (int i = 0; i < 60; ++i)
        QCoreApplication::sendEvent(&m_canvas, &narrower);
    turn();
}

void OurChart::paintAll(const ZvUBKLine &line)
{
    m_canvas.growKLine(line, line.bars.size() - 2);
    turn();
}

void OurChart::changeLast(const ZvUBKLine &line)
{
    m_canvas.growKLine(line, line.bars.size() - 1);
    turn();
}

void OurChart::moveCrosshair(const QPoint &at)
{
    QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_canvas, &move);
    turn();
}

void OurChart::beginDrag(int x)
{
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(x, rowOfDrag), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_canvas, &press);
    turn();
}

void OurChart::drag(int x)
{
    QMouseEvent move(QEvent::MouseMove, QPointF(x, rowOfDrag), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&m_canvas, &move);
    turn();
}

void OurChart::endDrag(int x)
{
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(x, rowOfDrag), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_canvas, &release);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&m_canvas, &leave);
    turn();
}

QImage OurChart::picture()
{
    return m_canvas.grab().toImage().convertToFormat(QImage::Format_RGB32);
}
