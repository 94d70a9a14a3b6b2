#pragma once

#include <QSplitter>

class Market_Widget;
class Transaction_Widget;

// The market half over the trading half. The trading half is as high as it asks to be for the size
// of the window, until the user draws the bar between the two; what the window grows by is the
// market's.
class Halves : public QSplitter
{
    Q_OBJECT

public:
    Halves(Market_Widget *market, Transaction_Widget *trading, QWidget *parent = nullptr);

    // Leaves room for the trading half on the smallest window, whatever it asks for on this one: a
    // window that could not be drawn smaller would never be small enough for it to ask for less.
    QSize minimumSizeHint() const override;

    // Tells the whole library the size of the window, and shares out the room of the halves.
    void fit(const QSize &window);

    // The height that the user gave the trading half, in device-independent pixels; 0 while it has
    // the one it asks for.
    int chosenHeight() const { return m_chosen; }
    void choose(int height);

private:
    int tradingHeight() const;
    void share(int trading);
    void takeDraw();

    Transaction_Widget *m_trading;
    int m_least; // of the trading half, on any window so far
    int m_chosen = 0;
    bool m_isFitted = false; // the halves have had a size of the window
};
