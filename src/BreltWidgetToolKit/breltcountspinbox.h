#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QSpinBox>

/// A field for a number of pieces.
///
/// It reads and shows whole numbers as 0 to 9 alone, without marks between thousands, whatever the
/// system's way of writing them is. A text with a point or a comma may be typed, and is no number:
/// "2,5" neither is 25, nor becomes it for a key that is refused on the way.
///
/// It has no meta-object of its own: for style sheets and introspection it is a QSpinBox.
class BRELTWIDGETTOOLKIT_EXPORT BreltCountSpinBox : public QSpinBox
{
public:
    explicit BreltCountSpinBox(QWidget *parent = nullptr);
    ~BreltCountSpinBox() override;

    /// Writes digits and points in `text` in the plain way, then judges it as a QSpinBox; with a
    /// point, it is Intermediate at best.
    QValidator::State validate(QString &text, int &place) const override;
};
