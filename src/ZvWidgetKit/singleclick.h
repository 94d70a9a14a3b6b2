#pragma once

#include <QAbstractButton>
#include <QEvent>

// Makes one click of a double click on a button.
class SingleClick : public QObject
{
public:
    // For a button that sends a request: the second half would send it once more.
    static void watch(QAbstractButton *button)
    {
        button->installEventFilter(new SingleClick(button));
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        return event->type() == QEvent::MouseButtonDblClick;
    }

private:
    using QObject::QObject;
};
