#pragma once

#include "BreltWidgetToolKit/keys.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtTest/QtTest>

// A dialog with a default button and one field in it: what a ticket page is to its fields.
template <typename Field>
struct FieldInDialog {
    FieldInDialog()
    {
        auto *rows = new QVBoxLayout(&dialog);
        field = new Field(&dialog);
        rows->addWidget(field);
        other = new QLineEdit(&dialog);
        rows->addWidget(other);
        button = new QPushButton(QStringLiteral("下单"), &dialog);
        button->setDefault(true);
        rows->addWidget(button);
        dialog.show();
        dialog.activateWindow();
        field->setFocus();
    }

    bool isReady() { return QTest::qWaitForWindowActive(&dialog) && field->hasFocus(); }

    QDialog dialog;
    Field *field = nullptr;
    QLineEdit *other = nullptr;
    QPushButton *button = nullptr;
};

inline void turnWheel(QWidget *receiver, int steps)
{
    const QPointF centre = receiver->rect().center();
    QWheelEvent wheel(centre, receiver->mapToGlobal(centre.toPoint()), QPoint(),
                      QPoint(0, 120 * steps), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(receiver, &wheel);
}
