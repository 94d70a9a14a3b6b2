#pragma once

namespace zvplot {

// Which bars stand where: the window that a plot of some width opens on a row of bars.
//
// Everything is in whole pixels of the device, counted from the plot's left edge. A column is as
// wide as its bar, or one pixel for several bars; which bars share a column does not depend on
// where the window stands, nor on bars that are put in front.
class BarWindow
{
public:
    // How wide a bar is at first, and after showNewest() of another scale.
    void setUsualStep(int pixels);

    // Keeps the newest bars in view where the width changes.
    void setWidth(int width);
    int width() const { return m_width; }

    // Another row of bars, with the newest in view. The zoom stays.
    void reset(int bars);

    // The row has so many bars now, the new ones behind the last. Where the last one was in view,
    // the new last one is; elsewhere the window stays where it is.
    void grow(int bars);

    // So many bars were put in front; the picture stays.
    void prepend(int count);

    int barCount() const { return m_bars; }
    int step() const; // width of a column
    int barsPerColumn() const;

    // The column of a bar, and the left edge and the middle of a column.
    int columnOf(int bar) const;
    int leftOf(int column) const;
    int middleOf(int column) const { return leftOf(column) + step() / 2; }

    // The bars of a column, from `firstBarOf` up to but without `firstBarOf(column + 1)`.
    int firstBarOf(int column) const;

    // The columns that show at least in part; first above last where there are none.
    int firstColumn() const;
    int lastColumn() const;

    // The bar at a pixel, or the nearest one; of several the newest. -1 where there are no bars.
    int barAt(int x) const;

    bool isLastVisible() const;

    // True where no bar is left of the window, or hardly one.
    bool isNearFirst() const;

    void panBy(int pixels); // positive: to older bars
    void showFirst();
    void showLast();
    void show(int bar); // moves as little as brings the bar into view

    // Makes bars wider (positive) or narrower by so many levels; the middle of `bar` keeps its
    // pixel. False where nothing has changed.
    bool zoom(int levels, int bar);

    // Puts the middle of a bar's column at a pixel.
    void place(int bar, int x);

private:
    int leftEnd() const; // positions that dragging does not go beyond
    int rightEnd() const;
    bool fits() const;

    int m_width = 0;
    int m_bars = 0;
    int m_base = 0; // bars that were put in front since the reset
    int m_level = 0;
    int m_scroll = 0; // of the window's left edge on the row of columns
};

} // namespace zvplot
