#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QSpinBox>

/// A spin box for whole numbers that tells when Return is pressed in it.
///
/// The wheel turns the value only while the field has the focus, so that scrolling past it cannot
/// change an order. Digits are read and shown as 0 to 9, whatever the system's way of writing them
/// is.
class BRELTWIDGETTOOLKIT_EXPORT BreltSpinBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit BreltSpinBox(QWidget *parent = nullptr);
    ~BreltSpinBox() override;

    /// Writes digits in `text` in the plain way, then judges it as a QSpinBox.
    QValidator::State validate(QString &text, int &place) const override;

signals:
    /// Return, or Enter of the keypad, was pressed; value() already holds what was typed. Repeats
    /// of a held key send nothing, and the key never reaches a dialog's default button.
    void signal_returnClicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};
