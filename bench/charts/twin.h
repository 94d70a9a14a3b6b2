#pragma once

#include "ZvModelKit/zvubkline.h"

#include <memory>

class QWidget;

// A chart of another library beside ours: candles, three averages, volumes and axes over all bars.
class Twin
{
public:
    virtual ~Twin() = default;

    virtual const char *name() const = 0;
    virtual QWidget *widget() = 0;

    virtual void load(const ZvUBKLine &line) = 0;

    // Takes over the last bar and paints.
    virtual void changeLast(const ZvUBKLine &line) = 0;

    // Shows so many bars from `first` on and paints.
    virtual void show(int first, int bars) = 0;

    // What it holds, for the look whether both sides show the same.
    virtual int barCount() const = 0;
    virtual double lastClose() const = 0;
    virtual double highest() const = 0;
};

// Null where the library was not there when this was built.
std::unique_ptr<Twin> makeCustomPlot();
std::unique_ptr<Twin> makeQtCharts();
