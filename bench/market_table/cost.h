#pragma once

#include "support/stopwatch.h"

#include <QObject>

#include <functional>

class QWidget;

// What a tick cost. `settled` is the time from the answer to a model and a proxy that are in order,
// `painted` the time to the frame on screen. CPU time of the GUI thread in milliseconds: other
// programs on the machine hardly show in it.
struct Cost {
    double settled = 0;
    double painted = 0;
    double wall = 0; // milliseconds on the clock from the answer to the frame
    int paints = 0; // of the table's viewport
    int signalsSeen = 0; // dataChanged and layoutChanged of the model that the view shows
};

// Counts the paint events of a widget while it lives.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget);
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_count = 0;
};

// Turns the event loop until `isDone`; false when it was not within half a minute.
bool turnUntil(const std::function<bool()> &isDone);

// Turns the event loop until nothing is left to do at once.
void turnUntilQuiet();

// Turns the event loop for a while.
void turnFor(int milliseconds);
