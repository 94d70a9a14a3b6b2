#pragma once

#include "ZvChartKit/chartframe.h"
#include "ZvChartKit/chartglyphs.h"
#include "ZvChartKit/chartplot.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

// A frame for plots, as a canvas would give them one.
struct PlotBench {
    explicit PlotBench(const QSize &size = QSize(900, 600), double scale = 1)
    {
        frame.size = size;
        frame.scale = scale;
        glyphs.setUp(QGuiApplication::font(), frame.px(12));
        frame.glyphs = &glyphs;
        frame.colours = &colours;
    }

    zvplot::ChartColours colours;
    zvplot::ChartGlyphs glyphs;
    zvplot::ChartFrame frame;
};

inline int countOf(const QImage &image, QRgb colour, const QRect &within = QRect())
{
    const QRect area = within.isNull() ? image.rect() : within & image.rect();
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixel(x, y) == colour ? 1 : 0;
    }
    return count;
}

// True where two pictures are the same but for what stands within a rectangle.
inline bool areEqualBut(QImage one, QImage two, const QRect &within)
{
    for (QImage *image : {&one, &two}) {
        QPainter painter(image);
        painter.fillRect(within, Qt::black);
    }
    return one == two;
}

// The rows of a colour in one column; the first above the last where there is none.
struct RowSpan {
    int first = 1;
    int last = 0;
    bool isEmpty() const { return first > last; }
};

inline RowSpan rowsOf(const QImage &image, int x, QRgb colour, const QRect &within)
{
    RowSpan span;
    for (int y = within.top(); y <= within.bottom(); ++y) {
        if (image.pixel(x, y) != colour)
            continue;
        if (span.isEmpty())
            span.first = y;
        span.last = y;
    }
    return span;
}
