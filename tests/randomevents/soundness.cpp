#include "randomevents/soundness.h"

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QStackedWidget>

namespace randomevents {

namespace {

constexpr int largestSide = 100'000; // of a widget, that of a long list's content included
constexpr int mostObjects = 3; // times those of the beginning
constexpr int mostTopLevels = 200;

QString nameOf(const QObject *object)
{
    return QStringLiteral("%1 \"%2\"")
        .arg(QString::fromLatin1(object->metaObject()->className()), object->objectName());
}

// The cursors that are laid over each other; Qt tells of the uppermost alone.
int overrideCursors()
{
    QList<QCursor> cursors;
    while (const QCursor *cursor = QGuiApplication::overrideCursor()) {
        cursors.prepend(*cursor);
        QGuiApplication::restoreOverrideCursor();
    }
    for (const QCursor &cursor : qAsConst(cursors))
        QGuiApplication::setOverrideCursor(cursor);
    return cursors.size();
}

// Those that are open and those that are not.
QHash<QString, int> dialogs()
{
    QHash<QString, int> found;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<const QDialog *>(widget))
            ++found[QString::fromLatin1(widget->metaObject()->className())];
    }
    return found;
}

QString faultOf(const QWidget *widget)
{
    if (widget->width() > largestSide || widget->height() > largestSide)
        return QStringLiteral("%1 is %2 by %3")
            .arg(nameOf(widget))
            .arg(widget->width())
            .arg(widget->height());
    const auto *pages = qobject_cast<const QStackedWidget *>(widget);
    if (pages && pages->count() > 0 && !pages->currentWidget())
        return QStringLiteral("%1 shows none of its pages").arg(nameOf(pages));
    return QString();
}

} // namespace

QString Soundness::fault(const QWidget *window)
{
    for (const QWidget *widget : QApplication::allWidgets()) {
        const QString fault = faultOf(widget);
        if (!fault.isEmpty())
            return fault;
    }
    const int cursors = overrideCursors();
    if (cursors > 1)
        return QStringLiteral("%1 cursors lie over each other").arg(cursors);
    const QWidget *focus = QApplication::focusWidget();
    if (focus && window && window->isVisible() && window->isAncestorOf(focus)
        && !focus->isVisible()) {
        const QWidget *hidden = focus;
        while (!hidden->isHidden())
            hidden = hidden->parentWidget();
        return QStringLiteral("the keys go to %1, and %2 is hidden")
            .arg(nameOf(focus), nameOf(hidden));
    }
    if (QApplication::topLevelWidgets().size() > mostTopLevels)
        return QStringLiteral("there are %1 windows").arg(QApplication::topLevelWidgets().size());
    if (!window)
        return QString();
    const int objects = window->findChildren<QObject *>().size();
    if (m_usualObjects == 0) {
        m_usualObjects = objects;
        m_usualDialogs = dialogs();
    }
    if (objects > m_usualObjects * mostObjects)
        return QStringLiteral("of %1 objects there are %2 now").arg(m_usualObjects).arg(objects);
    return QString();
}

QString Soundness::faultAtRest() const
{
    if (const QWidget *modal = QApplication::activeModalWidget())
        return QStringLiteral("%1 was left behind").arg(nameOf(modal));
    if (const QWidget *popup = QApplication::activePopupWidget())
        return QStringLiteral("%1 was left behind").arg(nameOf(popup));
    if (overrideCursors() > 0)
        return QStringLiteral("a cursor was left behind");
    const QHash<QString, int> found = dialogs();
    for (auto each = found.begin(); each != found.end(); ++each) {
        if (each.value() > m_usualDialogs.value(each.key()))
            return QStringLiteral("%1 was not deleted").arg(each.key());
    }
    return QString();
}

} // namespace randomevents
