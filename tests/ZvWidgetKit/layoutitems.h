#pragma once

#include "BreltWidgetToolKit/breltlayoutline.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>

namespace zvtest {

// What stands in a row: "20" for a space, "stretch 1", the text of a label or a button, "|" for a
// line, "[]" for any other widget.
inline QStringList itemsOf(const QLayout *layout)
{
    QStringList items;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem *item = layout->itemAt(i);
        if (const QSpacerItem *space = item->spacerItem()) {
            const bool isStretch = space->expandingDirections() & Qt::Horizontal;
            items << (isStretch ? QStringLiteral("stretch %1")
                                      .arg(qobject_cast<const QBoxLayout *>(layout)->stretch(i))
                                : QString::number(space->sizeHint().width()));
        } else if (const auto *label = qobject_cast<const QLabel *>(item->widget())) {
            items << label->text();
        } else if (const auto *button = qobject_cast<const QPushButton *>(item->widget())) {
            items << button->text();
        } else if (qobject_cast<const BreltLayoutLine *>(item->widget())) {
            items << QStringLiteral("|");
        } else {
            items << QStringLiteral("[]");
        }
    }
    return items;
}

} // namespace zvtest
