#pragma once

#include "BreltWidgetToolKit/breltcountspinbox.h"
#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

/// A spin box for whole numbers that tells when Return is pressed in it.
///
/// The wheel turns the value only while the field has the focus, so that scrolling past it cannot
/// change an order.
class BRELTWIDGETTOOLKIT_EXPORT BreltSpinBox : public BreltCountSpinBox
{
    Q_OBJECT

public:
    explicit BreltSpinBox(QWidget *parent = nullptr);
    ~BreltSpinBox() override;

signals:
    /// Return, or Enter of the keypad, was pressed; value() already holds what was typed. Repeats
    /// of a held key send nothing, and the key never reaches a dialog's default button.
    void signal_returnClicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};
