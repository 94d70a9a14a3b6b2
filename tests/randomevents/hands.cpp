#include "randomevents/hands.h"

#include "randomevents/names.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/QtTest>

#include <algorithm>

namespace randomevents {

namespace {

constexpr int notch = 120; // of a wheel

QString nameOf(const QWidget *widget)
{
    if (!widget)
        return QStringLiteral("nothing");
    if (widget->objectName() == QLatin1String("qt_scrollarea_viewport"))
        return nameOf(widget->parentWidget());
    QString name = QString::fromLatin1(widget->metaObject()->className());
    if (!widget->objectName().isEmpty())
        name += QLatin1Char(' ') + widget->objectName();
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    if (button && !button->text().isEmpty())
        name += QStringLiteral(" \"%1\"").arg(button->text());
    return name;
}

// In this window, though perhaps scrolled out of sight.
bool isOpen(const QWidget *widget, const QWidget *window)
{
    return widget->window() == window && widget->isVisible();
}

template <typename Widget>
QList<QWidget *> allOf(const QWidget *window)
{
    QList<QWidget *> found;
    for (Widget *widget : window->findChildren<Widget *>()) {
        if (isOpen(widget, window))
            found << widget;
    }
    return found;
}

} // namespace

// The rare ones among a few: what has been touched least often.
Hands::Place Hands::leastTouched(const QList<QWidget *> &widgets)
{
    constexpr int candidates = 5;
    QWidget *best = nullptr;
    for (int i = 0; i < candidates && !widgets.isEmpty(); ++i) {
        QWidget *widget = m_chance.oneOf(widgets);
        if (widget->visibleRegion().isEmpty())
            continue;
        if (!best || m_touched.value(nameOf(widget)) < m_touched.value(nameOf(best)))
            best = widget;
    }
    if (!best)
        return {};
    ++m_touched[nameOf(best)];
    return {best, pointIn(best)};
}

QPoint Hands::pointIn(const QWidget *widget)
{
    const QRect seen = widget->visibleRegion().boundingRect();
    return seen.topLeft()
        + QPoint(m_chance.below(std::max(1, seen.width())),
                 m_chance.below(std::max(1, seen.height())));
}

Hands::Place Hands::somewhere(QWidget *window)
{
    const int where = m_chance.below(100);
    Place place;
    if (where < 45)
        place = leastTouched(allOf<QAbstractButton>(window));
    else if (where < 68)
        place = cellOf(window);
    else if (where < 77)
        place = fieldOf(window);
    else if (where < 90)
        place = leastTouched(allOf<QWidget>(window));
    return place.widget ? place : Place{window, pointIn(window)};
}

// The middle of a cell, which may have to be scrolled into sight, and often of one without text,
// where a painted button may be.
Hands::Place Hands::cellOf(QWidget *window)
{
    QList<QWidget *> views = allOf<QAbstractItemView>(window);
    views.erase(std::remove_if(views.begin(), views.end(),
                               [](const QWidget *view) {
                                   return qobject_cast<const QHeaderView *>(view) != nullptr;
                               }),
                views.end());
    const Place chosen = leastTouched(views);
    if (!chosen.widget)
        return {};
    auto *view = static_cast<QAbstractItemView *>(chosen.widget.data());
    const QAbstractItemModel *model = view->model();
    if (!model || model->rowCount() == 0 || model->columnCount() == 0)
        return {view->viewport(), pointIn(view->viewport())};
    const int row = m_chance.below(model->rowCount());
    const auto isEmpty = [&](int column) {
        const QModelIndex cell = model->index(row, column);
        return cell.data().toString().isEmpty() && !view->visualRect(cell).isEmpty();
    };
    int column = m_chance.below(model->columnCount());
    if (m_chance.happens(60)) {
        for (int i = 0; i < model->columnCount() && !isEmpty(column); ++i)
            column = (column + 1) % model->columnCount();
    }
    while (column > 0 && view->visualRect(model->index(row, column)).isEmpty())
        --column;
    const auto seen = [view, cell = model->index(row, column)] {
        return view->visualRect(cell) & view->viewport()->rect();
    };
    if (seen().isEmpty())
        view->scrollTo(model->index(row, column));
    return {view->viewport(), seen().isEmpty() ? pointIn(view->viewport()) : seen().center()};
}

Hands::Place Hands::fieldOf(QWidget *window)
{
    QList<QWidget *> fields = allOf<QLineEdit>(window);
    fields << allOf<QAbstractSpinBox>(window) << allOf<QComboBox>(window);
    return leastTouched(fields);
}

QPoint Hands::inWindow(const Place &place) const
{
    return place.widget->mapTo(place.widget->window(), place.inWidget);
}

Qt::MouseButton Hands::anyButton()
{
    return m_chance.happens(85)
        ? Qt::LeftButton
        : m_chance.oneOf({Qt::RightButton, Qt::MiddleButton, Qt::BackButton, Qt::ForwardButton});
}

Qt::KeyboardModifiers Hands::anyModifiers()
{
    if (m_chance.happens(85))
        return Qt::NoModifier;
    return m_chance.oneOf<Qt::KeyboardModifiers>({Qt::ShiftModifier, Qt::ControlModifier,
                                                  Qt::ShiftModifier | Qt::ControlModifier,
                                                  Qt::AltModifier, Qt::MetaModifier});
}

void Hands::mouse(QWidget *window, QEvent::Type type, const QPoint &point, Qt::MouseButton button)
{
    QWindow *handle = window->windowHandle();
    if (!handle)
        return;
    if (type == QEvent::MouseButtonPress)
        m_held |= button;
    else if (type == QEvent::MouseButtonRelease)
        m_held &= ~Qt::MouseButtons(button);
    qt_handleMouseEvent(handle, point, handle->mapToGlobal(point), m_held, button, type,
                        m_modifiers, static_cast<int>(m_clock.passed()));
}

void Hands::click(const Place &place, Qt::MouseButton button)
{
    const QPointer<QWidget> window(place.widget->window());
    const QPoint point = inWindow(place);
    mouse(window, QEvent::MouseMove, point, Qt::NoButton);
    if (window)
        mouse(window, QEvent::MouseButtonPress, point, button);
    ++m_counts[kPress];
    if (window)
        mouse(window, QEvent::MouseButtonRelease, point, button);
    m_held = Qt::NoButton;
    ++m_counts[kRelease];
}

void Hands::letGo(QWidget *window)
{
    for (const Qt::MouseButton button :
         {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton, Qt::BackButton, Qt::ForwardButton}) {
        if (m_held & button)
            mouse(window, QEvent::MouseButtonRelease, QPoint(), button);
    }
    m_held = Qt::NoButton;
    m_modifiers = Qt::NoModifier;
}

void Hands::act(QWidget *window)
{
    m_modifiers = anyModifiers();
    // A button that is held would keep the mouse for ever.
    if (m_held && m_chance.happens(50)) {
        m_note(QStringLiteral("mouse buttons released"));
        letGo(window);
        ++m_counts[kRelease];
        return;
    }
    const int what = m_chance.below(100);
    if (what < 45)
        clickSomewhere(window);
    else if (what < 51)
        drag(window);
    else if (what < 57)
        turnWheel(window);
    else if (what < 75)
        pressAnyKey(window);
    else if (what < 87)
        type(window);
    else if (what < 90)
        compose();
    else if (what < 95)
        askForMenu(window);
    else
        moveFocus(window);
}

void Hands::clickSomewhere(QWidget *window)
{
    const Place place = somewhere(window);
    const QString name = nameOf(place.widget);
    const QPoint point = inWindow(place);
    const Qt::MouseButton button = anyButton();
    const int how = m_chance.below(100);
    if (how < 75) {
        m_note(QStringLiteral("click with button %1 on %2").arg(int(button)).arg(name));
        click(place, button);
    } else if (how < 85) {
        // The second press comes soon enough to be told as a double click.
        m_note(QStringLiteral("double click with button %1 on %2").arg(int(button)).arg(name));
        click(place, button);
        if (place.widget)
            click(place, button);
        ++m_counts[kDoubleClick];
    } else if (how < 92) {
        m_note(QStringLiteral("mouse to %1").arg(name));
        mouse(window, QEvent::MouseMove, point, Qt::NoButton);
        ++m_counts[kMove];
    } else {
        m_note(QStringLiteral("button %1 held on %2").arg(int(button)).arg(name));
        mouse(window, QEvent::MouseButtonPress, point, button);
        ++m_counts[kPress];
    }
}

void Hands::drag(QWidget *window)
{
    const QPointer<QWidget> guarded(window);
    const Place from = somewhere(window);
    const QString name = nameOf(from.widget);
    const QPoint begin = inWindow(from);
    const QPoint by(m_chance.between(-400, 400), m_chance.between(-300, 300));
    m_note(QStringLiteral("drag by %1, %2 from %3").arg(by.x()).arg(by.y()).arg(name));
    mouse(window, QEvent::MouseMove, begin, Qt::NoButton);
    if (guarded)
        mouse(window, QEvent::MouseButtonPress, begin, Qt::LeftButton);
    constexpr int steps = 4;
    for (int i = 1; i <= steps && guarded; ++i)
        mouse(window, QEvent::MouseMove, begin + by * i / steps, Qt::NoButton);
    if (guarded)
        mouse(window, QEvent::MouseButtonRelease, begin + by, Qt::LeftButton);
    m_held = Qt::NoButton;
    ++m_counts[kDrag];
}

void Hands::turnWheel(QWidget *window)
{
    const Place place = somewhere(window);
    const QString name = nameOf(place.widget);
    const int turn = m_chance.oneOf({notch, -notch, 5 * notch, -5 * notch, 7, -30, 1 << 20});
    const QPoint angle = m_chance.happens(85) ? QPoint(0, turn) : QPoint(turn, 0);
    QWheelEvent event(place.inWidget, place.widget->mapToGlobal(place.inWidget), QPoint(), angle,
                      Qt::NoButton, m_modifiers, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    m_note(QStringLiteral("wheel by %1 over %2").arg(turn).arg(name));
    qApp->notify(place.widget, &event);
    ++m_counts[kWheel];
}

void Hands::press(QWidget *window, Qt::Key key, Qt::KeyboardModifiers modifiers,
                  const QString &text)
{
    const QPointer<QWidget> guarded(window);
    if (window->windowHandle())
        qt_handleKeyEvent(window->windowHandle(), QEvent::KeyPress, key, modifiers, text,
                          m_chance.happens(5));
    if (guarded && window->windowHandle())
        qt_handleKeyEvent(window->windowHandle(), QEvent::KeyRelease, key, modifiers, text);
}

void Hands::pressAnyKey(QWidget *window)
{
    static const QList<Qt::Key> keys{
        Qt::Key_F5,    Qt::Key_F6,     Qt::Key_Escape,    Qt::Key_Return, Qt::Key_Enter,
        Qt::Key_Space, Qt::Key_Tab,    Qt::Key_Backtab,   Qt::Key_PageUp, Qt::Key_PageDown,
        Qt::Key_Up,    Qt::Key_Down,   Qt::Key_Left,      Qt::Key_Right,  Qt::Key_Home,
        Qt::Key_End,   Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_Menu};
    Qt::Key key = m_chance.oneOf(keys);
    QString text;
    const int kind = m_chance.below(100);
    if (kind < 25) {
        const QChar letter(m_chance.happens(60) ? '0' + m_chance.below(10)
                                                : 'a' + m_chance.below(26));
        key = Qt::Key(letter.toUpper().unicode());
        text = letter;
    } else if (kind < 35) {
        // Copies, pastes, undoes.
        key = m_chance.oneOf({Qt::Key_A, Qt::Key_C, Qt::Key_V, Qt::Key_X, Qt::Key_Z});
        m_modifiers = Qt::ControlModifier;
    }
    m_note(QStringLiteral("key %1").arg(QKeySequence(int(m_modifiers) + key).toString()));
    press(window, key, m_modifiers, text);
    ++m_counts[kKey];
}

void Hands::type(QWidget *window)
{
    static const QList<QString> texts{
        QStringLiteral("13812345678"), QStringLiteral("secret1"), QStringLiteral("1234"),
        QStringLiteral("123456"),      QStringLiteral("1"),       QStringLiteral("10.55"),
        QStringLiteral("99999999999"), QStringLiteral("0"),       QStringLiteral("-5.001"),
        QStringLiteral("No. 7 Road"),  QStringLiteral("cp"),      QStringLiteral("1001")};
    const Place field = fieldOf(window);
    const QString text = m_chance.oneOf(texts);
    const QPointer<QWidget> guarded(window);
    m_note(QStringLiteral("\"%1\" typed into %2").arg(text, nameOf(field.widget)));
    if (field.widget)
        click(field, Qt::LeftButton);
    if (guarded && m_chance.happens(50))
        press(window, Qt::Key_A, Qt::ControlModifier);
    for (const QChar character : text) {
        if (guarded)
            press(window, Qt::Key(character.toUpper().unicode()), Qt::NoModifier, character);
    }
    ++m_counts[kTyped];
}

void Hands::compose()
{
    QObject *focus = QGuiApplication::focusObject();
    if (!focus)
        return;
    const QPointer<QObject> guarded(focus);
    QInputMethodEvent composing(QStringLiteral("zhong'wen"), {});
    m_note(QStringLiteral("Chinese composed"));
    QCoreApplication::sendEvent(focus, &composing);
    if (guarded && m_chance.happens(80)) {
        QInputMethodEvent done;
        done.setCommitString(m_chance.happens(70) ? QStringLiteral("中文龙") : QString());
        QCoreApplication::sendEvent(focus, &done);
    }
    ++m_counts[kComposed];
}

void Hands::askForMenu(QWidget *window)
{
    const Place place = somewhere(window);
    const QString name = nameOf(place.widget);
    QContextMenuEvent event(m_chance.happens(80) ? QContextMenuEvent::Mouse
                                                 : QContextMenuEvent::Keyboard,
                            place.inWidget, place.widget->mapToGlobal(place.inWidget), m_modifiers);
    m_note(QStringLiteral("context menu of %1").arg(name));
    QCoreApplication::sendEvent(place.widget, &event);
    ++m_counts[kContextMenu];
}

void Hands::moveFocus(QWidget *window)
{
    const QList<QWidget *> widgets = allOf<QWidget>(window);
    if (widgets.isEmpty())
        return;
    QWidget *widget = m_chance.oneOf(widgets);
    const QString name = nameOf(widget);
    m_note(QStringLiteral("focus to %1").arg(name));
    if (m_chance.happens(15))
        widget->clearFocus();
    else if (widget->focusPolicy() != Qt::NoFocus)
        widget->setFocus(m_chance.oneOf({Qt::MouseFocusReason, Qt::TabFocusReason,
                                         Qt::OtherFocusReason, Qt::ShortcutFocusReason}));
    ++m_counts[kFocus];
}

} // namespace randomevents
