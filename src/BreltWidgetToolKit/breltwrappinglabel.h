#pragma once

#include <QLabel>

#include <memory>

class QTextDocument;

// A label that never cuts its text: what has no place to break is broken anywhere, where a plain
// QLabel lets a long number or word run out of its side. Not part of the exported interface.
class BreltWrappingLabel : public QLabel
{
public:
    explicit BreltWrappingLabel(QWidget *parent = nullptr);
    ~BreltWrappingLabel() override;

    // The width of the text in pixels when nothing is wrapped.
    int naturalWidth() const;

    // The height that the text needs at `width` pixels, contents margins of the label included.
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

    // Draws the text into `area`, centred in its height.
    void paintText(QPainter *painter, const QRect &area) const;

private:
    QTextDocument &document() const;

    std::unique_ptr<QTextDocument> m_document;
    mutable QString m_laidOutText;
};
