#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QDoubleSpinBox>

/// A field for an amount of money or a price.
///
/// It reads and shows numbers as the client's labels do, with a point and without marks between
/// thousands, whatever the system's way of writing them is. A comma and its like are taken for the
/// point; a text with two of them is refused.
///
/// It has no meta-object of its own: for style sheets and introspection it is a QDoubleSpinBox.
class BRELTWIDGETTOOLKIT_EXPORT BreltAmountSpinBox : public QDoubleSpinBox
{
public:
    explicit BreltAmountSpinBox(QWidget *parent = nullptr);
    ~BreltAmountSpinBox() override;

    /// Writes digits and points in `text` in the plain way, then judges it as a QDoubleSpinBox.
    QValidator::State validate(QString &text, int &place) const override;
};
