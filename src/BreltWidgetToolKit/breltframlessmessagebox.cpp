#include "BreltWidgetToolKit/breltframlessmessagebox.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "BreltWidgetToolKit/breltlook.h"
#include "BreltWidgetToolKit/breltreturnkey.h"
#include "BreltWidgetToolKit/breltwrappinglabel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>

using namespace brelt;

namespace {

const int c_smallestTextWidth = 280;
const int c_largestTextWidth = 480;
const int c_smallestTextHeight = 56;
const int c_margin = 24;
const int c_titleInset = 16;

// The cross in the title band. A tool button, so that the push buttons of the box are exactly those
// that it was made with.
class CrossButton : public QToolButton
{
public:
    explicit CrossButton(QWidget *parent) : QToolButton(parent)
    {
        setFocusPolicy(Qt::NoFocus);
        setAccessibleName(QStringLiteral("关闭"));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        if (isDown() || underMouse())
            painter.fillRect(rect(),
                             isDown() ? QColor(0xa8, 0x2a, 0x24) : QColor(0xd4, 0x3b, 0x33));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(underMouse() ? look::text() : look::dimText(), 1.5));
        const QPointF centre = QRectF(rect()).center();
        const qreal arm = 5;
        painter.drawLine(centre + QPointF(-arm, -arm), centre + QPointF(arm, arm));
        painter.drawLine(centre + QPointF(-arm, arm), centre + QPointF(arm, -arm));
    }
};

// Keys whose repeats must do nothing: they press a button or close the box.
bool isDecidingKey(const QKeyEvent *event)
{
    return isReturnKey(event) || event->key() == Qt::Key_Escape;
}

} // namespace

BreltFramlessMessageBox::BreltFramlessMessageBox(const QString &text, const QString &confirmText,
                                                 const QString &secondText, const QString &title,
                                                 int titleHeight, QWidget *parent)
    : BreltFramlessMoveableDialog(parent),
      m_style(std::make_unique<BreltDarkStyle>(BreltDarkStyle::currentAccent())),
      m_label(new BreltWrappingLabel), m_scrollArea(new QScrollArea(this)),
      m_closeButton(new CrossButton(this))
{
    setModal(true);
    setWindowTitle(title);
    setTitleHeight(qBound(24, titleHeight, 120));
    setPalette(m_style->standardPalette());

    m_label->setText(text);
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setFocusPolicy(Qt::NoFocus);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setWidget(m_label);
    m_scrollArea->verticalScrollBar()->setStyle(m_style.get());

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(16);
    buttons->addStretch();
    m_confirmButton = addButton(confirmText);
    m_confirmButton->setDefault(true);
    buttons->addWidget(m_confirmButton);
    connect(m_confirmButton, &QPushButton::clicked, this, &QDialog::accept);
    if (!secondText.isEmpty()) {
        QPushButton *second = addButton(secondText);
        buttons->addWidget(second);
        connect(second, &QPushButton::clicked, this, &QDialog::reject);
    }
    buttons->addStretch();
    connect(m_closeButton, &QToolButton::clicked, this, &QDialog::reject);

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(c_margin, this->titleHeight() + c_margin - 8, c_margin, 20);
    rows->setSpacing(20);
    rows->addWidget(m_scrollArea, 0, Qt::AlignHCenter);
    rows->addLayout(buttons);
    rows->setSizeConstraint(QLayout::SetFixedSize);

    const QWidget *owner = parent ? parent->window() : QApplication::activeWindow();
    if (owner && owner->isVisible())
        m_owner = owner->frameGeometry();

    m_confirmButton->setFocus();
    fitToText();
}

BreltFramlessMessageBox::~BreltFramlessMessageBox() = default;

bool BreltFramlessMessageBox::event(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange) {
        const bool handled = BreltFramlessMoveableDialog::event(event);
        fitToText();
        return handled;
    }
    if (event->type() == QEvent::Show && !event->spontaneous() && !testAttribute(Qt::WA_Moved)) {
        // The base brings the box back to the screen, should its owner stand half outside.
        placeOverOwner();
    }
    return BreltFramlessMoveableDialog::event(event);
}

bool BreltFramlessMessageBox::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->isAutoRepeat() && isDecidingKey(key))
            return true;
    }
    return BreltFramlessMoveableDialog::eventFilter(watched, event);
}

void BreltFramlessMessageBox::keyPressEvent(QKeyEvent *event)
{
    if (event->isAutoRepeat() && isDecidingKey(event)) {
        event->accept();
        return;
    }
    BreltFramlessMoveableDialog::keyPressEvent(event);
}

void BreltFramlessMessageBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), look::surface());

    const QRect band(0, 0, width(), titleHeight());
    painter.fillRect(band, look::deep());
    painter.fillRect(QRect(0, band.bottom(), width(), 1), look::line());
    painter.fillRect(QRect(0, 0, width(), 2), m_style->accent());

    painter.setPen(look::text());
    const QRect place = band.adjusted(c_titleInset, 0, -m_closeButton->width() - 8, 0);
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(windowTitle(), Qt::ElideRight, place.width()));

    painter.setPen(look::border());
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void BreltFramlessMessageBox::resizeEvent(QResizeEvent *event)
{
    const int side = titleHeight() - 3;
    m_closeButton->setGeometry(width() - 1 - side, 2, side, side);
    BreltFramlessMoveableDialog::resizeEvent(event);
}

QPushButton *BreltFramlessMessageBox::addButton(const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setStyle(m_style.get());
    button->setAutoDefault(true);
    button->setMinimumSize(104, 32);
    button->installEventFilter(this);
    return button;
}

void BreltFramlessMessageBox::fitToText()
{
    const QRect area = screen()->availableGeometry();
    const int scrollBar = m_style->pixelMetric(QStyle::PM_ScrollBarExtent);
    const int largestWidth = qMax(120, qMin(c_largestTextWidth, area.width() - 2 * c_margin));
    const int largestHeight = qMax(c_smallestTextHeight, area.height() * 6 / 10);

    const int width
        = qBound(qMin(c_smallestTextWidth, largestWidth), m_label->naturalWidth(), largestWidth);
    const int height = qMax(c_smallestTextHeight, m_label->heightForWidth(width));
    m_label->setFixedSize(width, height);
    const bool scrolls = height > largestHeight;
    m_scrollArea->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn
                                                     : Qt::ScrollBarAlwaysOff);
    m_scrollArea->setFixedSize(width + (scrolls ? scrollBar : 0), qMin(height, largestHeight));
}

void BreltFramlessMessageBox::placeOverOwner()
{
    if (m_owner.isNull())
        return;
    QRect place(QPoint(), sizeHint());
    place.moveCenter(m_owner.center());
    move(place.topLeft());
}
