#pragma once

#include "campaign/campaign.h"
#include "randomevents/chance.h"
#include "randomevents/heldclock.h"

#include <QEvent>
#include <QHash>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <utility>

namespace randomevents {

// A user who does anything: mouse, wheel, keys and an input method, on whatever there is in a
// window. Mouse and keys go in where those of the window system do, so that popups, grabs and modal
// windows have their say.
class Hands
{
public:
    // `note` hears of each thing before it is done.
    Hands(Chance &chance, campaign::Counts &counts, HeldClock &clock,
          std::function<void(const QString &)> note)
        : m_chance(chance), m_counts(counts), m_clock(clock), m_note(std::move(note))
    {
    }

    // Does one thing in a window that can be seen.
    void act(QWidget *window);

    // Lets go of what is held down.
    void letGo(QWidget *window);

    void press(QWidget *window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               const QString &text = QString());

private:
    struct Place {
        QPointer<QWidget> widget;
        QPoint inWidget;
    };

    Place somewhere(QWidget *window);
    Place cellOf(QWidget *window);
    Place fieldOf(QWidget *window);
    Place leastTouched(const QList<QWidget *> &widgets);
    QPoint pointIn(const QWidget *widget);
    QPoint inWindow(const Place &place) const;

    void mouse(QWidget *window, QEvent::Type type, const QPoint &point, Qt::MouseButton button);
    void click(const Place &place, Qt::MouseButton button);
    Qt::MouseButton anyButton();
    Qt::KeyboardModifiers anyModifiers();
    void clickSomewhere(QWidget *window);
    void drag(QWidget *window);
    void turnWheel(QWidget *window);
    void pressAnyKey(QWidget *window);
    void type(QWidget *window);
    void compose();
    void askForMenu(QWidget *window);
    void moveFocus(QWidget *window);

    Chance &m_chance;
    campaign::Counts &m_counts;
    HeldClock &m_clock;
    std::function<void(const QString &)> m_note;
    Qt::MouseButtons m_held;
    Qt::KeyboardModifiers m_modifiers;
    QHash<QString, int> m_touched; // how often, by class and name
};

} // namespace randomevents
