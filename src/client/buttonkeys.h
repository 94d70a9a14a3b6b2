#pragma once

#include <QObject>

class QAbstractButton;
class QKeySequence;
class QWidget;

// Keys for the buttons that leave the focus where it is, and so are out of the Tab key's reach: the
// bars, the title row of the market half, the column of the trading half. A key does what a click
// does, while its button can be clicked, and the button's tool tip names it.
class ButtonKeys : public QObject
{
    Q_OBJECT

public:
    // What lies in the window by now. Ends with it.
    explicit ButtonKeys(QWidget *window);

private:
    void giveBars();
    void giveMarket();
    void giveTrading();
    void give(QAbstractButton *button, const QKeySequence &keys, const QString &words);

    QWidget *m_window;
};
