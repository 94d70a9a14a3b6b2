#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"
#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <memory>

class BreltDarkStyle;
class BreltWrappingLabel;
class QPushButton;
class QScrollArea;
class QToolButton;

/// The framed modal message box: a title band to drag it by, one text, one or two buttons.
///
/// Run it with exec(). The result is 1 when the first button was pressed; the second button, Escape
/// and the cross in the band give 0, and so does the death of the box with its parent meanwhile.
/// Return presses the button that has the focus, which is the first one when the box opens. Repeats
/// of a held key press nothing.
///
/// The box grows with its text between a smallest and a largest width; a text that is higher than
/// most of the screen scrolls. It opens over the window that was active when it was made.
class BRELTWIDGETTOOLKIT_EXPORT BreltFramlessMessageBox : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    /// `text` may be rich text and is shown as it stands by the one label of the box.
    /// `confirmText` and `secondText` are the texts of the push buttons; an empty `secondText`
    /// leaves the second button out. `title` stands in the band and names the window; `titleHeight`
    /// is the height of the band in pixels, held between 24 and 120.
    BreltFramlessMessageBox(const QString &text, const QString &confirmText,
                            const QString &secondText, const QString &title, int titleHeight,
                            QWidget *parent = nullptr);
    ~BreltFramlessMessageBox() override;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QPushButton *addButton(const QString &text);
    void fitToText();
    void placeOverOwner();

    std::unique_ptr<BreltDarkStyle> m_style;
    BreltWrappingLabel *m_label;
    QScrollArea *m_scrollArea;
    QToolButton *m_closeButton;
    QPushButton *m_confirmButton;
    QRect m_owner; // the window over which the box opens; null without one
};
