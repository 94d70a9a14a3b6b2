#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QColor>
#include <QFrame>

/// A separator of one pixel between the items of a layout, sharp at every scale.
class BRELTWIDGETTOOLKIT_EXPORT BreltLayoutLine : public QFrame
{
    Q_OBJECT

public:
    /// `shape` is QFrame::HLine or QFrame::VLine; the line fills the length that the layout gives
    /// it. Any other shape is drawn by QFrame in the same colour.
    explicit BreltLayoutLine(QFrame::Shape shape, QWidget *parent = nullptr);
    ~BreltLayoutLine() override;

    /// Takes a colour in any form that QColor reads, such as "#242931", which is also the colour at
    /// the start. A text that names no colour changes nothing.
    void setColor(const QString &color);

    /// The colour of the line.
    QColor color() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color;
};
