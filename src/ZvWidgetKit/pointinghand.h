#pragma once

#include <QCursor>
#include <QGuiApplication>

// The pointing hand as the cursor of the whole application. It is held once at most, however often
// it is asked for, and given back at the end of this object at the latest.
class PointingHand
{
public:
    PointingHand() = default;
    ~PointingHand() { giveBack(); }
    PointingHand(const PointingHand &) = delete;
    PointingHand &operator=(const PointingHand &) = delete;

    void take()
    {
        if (!m_isHeld)
            QGuiApplication::setOverrideCursor(Qt::PointingHandCursor);
        m_isHeld = true;
    }

    void giveBack()
    {
        if (m_isHeld)
            QGuiApplication::restoreOverrideCursor();
        m_isHeld = false;
    }

private:
    bool m_isHeld = false;
};
