#include "BreltWidgetToolKit/breltwrappinglabel.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextDocument>
#include <QTextOption>

#include <cmath>

BreltWrappingLabel::BreltWrappingLabel(QWidget *parent)
    : QLabel(parent), m_document(std::make_unique<QTextDocument>())
{
    setWordWrap(true);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_document->setDefaultTextOption(option);
    m_document->setDocumentMargin(0);
    m_document->setUndoRedoEnabled(false);
    m_document->setDefaultStyleSheet(QStringLiteral("p { margin-top: 4px; margin-bottom: 4px; }"));
}

BreltWrappingLabel::~BreltWrappingLabel() = default;

int BreltWrappingLabel::naturalWidth() const
{
    QTextDocument &laidOut = document();
    laidOut.setTextWidth(-1);
    return int(std::ceil(laidOut.idealWidth()));
}

int BreltWrappingLabel::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    QTextDocument &laidOut = document();
    laidOut.setTextWidth(qMax(1, width - margins.left() - margins.right()));
    return int(std::ceil(laidOut.size().height())) + margins.top() + margins.bottom();
}

QSize BreltWrappingLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    const int width = naturalWidth() + margins.left() + margins.right();
    return QSize(width, heightForWidth(width));
}

QSize BreltWrappingLabel::minimumSizeHint() const
{
    return QSize(0, fontMetrics().height());
}

void BreltWrappingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintText(&painter, contentsRect());
}

void BreltWrappingLabel::paintText(QPainter *painter, const QRect &area) const
{
    QTextDocument &laidOut = document();
    laidOut.setTextWidth(qMax(1, area.width()));
    const int height = int(std::ceil(laidOut.size().height()));

    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));

    painter->save();
    painter->translate(area.x(), area.y() + qMax(0, (area.height() - height) / 2));
    laidOut.documentLayout()->draw(painter, context);
    painter->restore();
}

QTextDocument &BreltWrappingLabel::document() const
{
    if (m_document->defaultFont() != font())
        m_document->setDefaultFont(font());
    const QString shown = text();
    if (m_laidOutText != shown) {
        m_laidOutText = shown;
        const bool rich = textFormat() == Qt::RichText
            || (textFormat() == Qt::AutoText && Qt::mightBeRichText(shown));
        if (rich)
            m_document->setHtml(shown);
        else
            m_document->setPlainText(shown);
    }
    return *m_document;
}
