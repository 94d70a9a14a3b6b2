#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QComboBox>

/// The combo box of the order ticket, made for long lists of collections.
///
/// The wheel changes it only while it has the focus. Return ends in the field: it never presses a
/// dialog's default button, and repeats of a held key do nothing. While completions are offered, it
/// takes the marked one. The list opens wide enough for its longest text, and the size of the field
/// does not depend on the number of entries.
class BRELTWIDGETTOOLKIT_EXPORT BreltComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit BreltComboBox(QWidget *parent = nullptr);
    ~BreltComboBox() override;

    /// Opens the list; its width is that of its longest text, at most 480 pixels.
    void showPopup() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};
