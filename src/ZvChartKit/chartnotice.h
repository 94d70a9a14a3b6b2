#pragma once

#include "ZvChartKit/charttext.h"

#include <QRect>

class QImage;
class QRegion;

namespace zvplot {

class ChartPlot;
class Pixels;

// What a chart says in words: instead of figures that it does not have, or of the age of those that
// it has.
class ChartNotice
{
public:
    enum Kind { None, Waiting, NoData, Stale };

    explicit ChartNotice(Kind kind = None, qint64 ageMs = 0) : m_kind(kind), m_ageMs(ageMs) { }

    Kind kind() const { return m_kind; }
    ChartText text() const;

    // Room at the end of the words above the prices that the age takes, in pixels of the device.
    int reserve(const ChartPlot &plot) const;

    void paint(QImage *image, const ChartPlot &plot, const QRegion &region) const;

private:
    void putAge(const ChartPlot &plot) const;
    void putInstead(Pixels pixels, const ChartPlot &plot) const;
    void putFigure(Pixels pixels, const ChartPlot &plot, const QRect &words) const;

    Kind m_kind;
    qint64 m_ageMs;
};

} // namespace zvplot
