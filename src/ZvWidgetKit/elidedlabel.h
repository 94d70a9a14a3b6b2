#pragma once

#include <QEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

// A label of one line that may become narrower than its text: it draws what fits with "…" at the
// end, so that a number that lost digits cannot be taken for a smaller one, and shows the whole
// text as a tool tip. It has no meta-object of its own: for style sheets it is a QLabel.
class ElidedLabel : public QLabel
{
public:
    using QLabel::QLabel;

    QSize minimumSizeHint() const override
    {
        return {fontMetrics().horizontalAdvance(QStringLiteral("0…")), sizeHint().height()};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        style()->drawItemText(&painter, contentsRect(), int(alignment()), palette(), isEnabled(),
                              shown(), foregroundRole());
    }

    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::ToolTip && shown() != text()) {
            QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), text(), this);
            return true;
        }
        return QLabel::event(event);
    }

private:
    QString shown() const
    {
        return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
    }
};
