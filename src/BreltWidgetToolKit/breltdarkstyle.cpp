#include "BreltWidgetToolKit/breltdarkstyle.h"

#include "BreltWidgetToolKit/breltlook.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>
#include <QStyleOption>
#include <QTabBar>
#include <QToolTip>

#include <cmath>

using namespace brelt;

namespace {

const int c_scrollBarExtent = 10;
const int c_smallestHandle = 28;

QColor &installedAccent()
{
    static QColor colour = look::defaultAccent();
    return colour;
}

QString &pictureFolder()
{
    static QString folder;
    return folder;
}

// Draws the picture of this name in the middle of `area`, where there is one, and smaller where it
// would not fit.
bool drawPicture(QPainter *painter, const QString &name, const QRect &area)
{
    if (pictureFolder().isEmpty())
        return false;
    const QPixmap picture(pictureFolder() + name + QStringLiteral(".png"));
    if (picture.isNull())
        return false;
    QSize size = picture.size() / picture.devicePixelRatio();
    if (size.width() > area.width() || size.height() > area.height())
        size.scale(area.size(), Qt::KeepAspectRatio);
    QRect place(QPoint(), size);
    place.moveCenter(area.center());
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawPixmap(place, picture);
    painter->restore();
    return true;
}

// An arrow that points up or down, in one of its states.
bool drawArrow(QPainter *painter, bool isUp, const QRect &area, bool isEnabled, bool isHovered)
{
    QString name = isUp ? QStringLiteral("arrow_up") : QStringLiteral("arrow_down");
    if (!isEnabled)
        name += QLatin1String("_disabled");
    else if (isHovered)
        name += QLatin1String("_hover");
    return drawPicture(painter, name, area);
}

// Where the arrow of a sorted column is: on the right, where the text of a column of figures is
// too, so that there it goes to the left of the text, as far as the section has room.
QRect arrowRect(const QStyleOptionHeader &option, const QWidget *widget)
{
    const auto *header = qobject_cast<const QHeaderView *>(widget);
    if (!header || header->orientation() != Qt::Horizontal
        || !(option.textAlignment & Qt::AlignRight))
        return option.rect;
    const int room = option.rect.left() - header->sectionViewportPosition(option.section);
    const int text = option.fontMetrics.horizontalAdvance(option.text);
    constexpr int gap = 6;
    return option.rect.translated(-qBound(0, text + gap, qMax(0, room)), 0);
}

// Relative luminance, from 0 for black to 1 for white.
double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
        + 0.0722 * linear(colour.blueF());
}

QColor mix(const QColor &from, const QColor &to, double share)
{
    return QColor(qRound(from.red() + (to.red() - from.red()) * share),
                  qRound(from.green() + (to.green() - from.green()) * share),
                  qRound(from.blue() + (to.blue() - from.blue()) * share));
}

QColor lit(const QColor &colour, double share = 0.12)
{
    return mix(colour, Qt::white, share);
}

bool isEnabled(const QStyleOption *option)
{
    return option->state & QStyle::State_Enabled;
}

bool isHovered(const QStyleOption *option)
{
    return isEnabled(option) && (option->state & QStyle::State_MouseOver);
}

bool isDefault(const QStyleOption *option)
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    return button && isEnabled(button) && (button->features & QStyleOptionButton::DefaultButton)
        && !(button->state & QStyle::State_On);
}

// A frame of one sharp pixel with the corners taken off.
void drawPanel(QPainter *painter, const QRect &rect, const QColor &fill, const QColor &frame)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(frame);
    painter->setBrush(fill);
    painter->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    painter->restore();
}

bool wantsHover(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget)
        || qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QComboBox *>(widget)
        || qobject_cast<const QScrollBar *>(widget) || qobject_cast<const QTabBar *>(widget);
}

QPalette makePalette(const QColor &accent)
{
    const QColor onAccent = BreltDarkStyle::textOn(accent);
    QPalette palette;
    palette.setColor(QPalette::Window, look::surface());
    palette.setColor(QPalette::WindowText, look::text());
    palette.setColor(QPalette::Base, look::deep());
    palette.setColor(QPalette::AlternateBase, look::surface());
    palette.setColor(QPalette::Text, look::text());
    palette.setColor(QPalette::PlaceholderText, look::dimText());
    palette.setColor(QPalette::Button, look::raised());
    palette.setColor(QPalette::ButtonText, look::text());
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Light, lit(look::raised(), 0.16));
    palette.setColor(QPalette::Midlight, lit(look::raised(), 0.08));
    palette.setColor(QPalette::Mid, look::line());
    palette.setColor(QPalette::Dark, look::deep());
    palette.setColor(QPalette::Shadow, Qt::black);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    palette.setColor(QPalette::Link, mix(accent, Qt::white, 0.45));
    palette.setColor(QPalette::LinkVisited, mix(accent, Qt::white, 0.6));
    palette.setColor(QPalette::ToolTipBase, look::raised());
    palette.setColor(QPalette::ToolTipText, look::text());

    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText})
        palette.setColor(QPalette::Disabled, role, look::disabledText());
    palette.setColor(QPalette::Disabled, QPalette::Button, look::surface());
    palette.setColor(QPalette::Disabled, QPalette::Highlight, look::border());
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, look::text());
    return palette;
}

} // namespace

BreltDarkStyle::BreltDarkStyle(const QColor &accent)
    : QProxyStyle(QStringLiteral("Fusion")),
      m_accent(accent.isValid() ? accent : look::defaultAccent()), m_palette(makePalette(m_accent))
{
}

BreltDarkStyle::~BreltDarkStyle() = default;

void BreltDarkStyle::install(QApplication &application, const QColor &accent)
{
    auto *style = new BreltDarkStyle(accent);
    installedAccent() = style->accent();
    const QPalette palette = style->standardPalette();
    application.setStyle(style); // the application owns it and deletes the one before
    application.setPalette(palette);
    QToolTip::setPalette(palette);
}

QColor BreltDarkStyle::currentAccent()
{
    return installedAccent();
}

void BreltDarkStyle::setPictures(const QString &folder)
{
    pictureFolder() = folder;
}

QColor BreltDarkStyle::textOn(const QColor &background)
{
    const double light = 1.05 / (luminance(background) + 0.05);
    const double dark = (luminance(background) + 0.05) / (luminance(look::deep()) + 0.05);
    return light >= dark ? QColor(Qt::white) : look::deep();
}

QColor BreltDarkStyle::accent() const
{
    return m_accent;
}

QPalette BreltDarkStyle::standardPalette() const
{
    return m_palette;
}

void BreltDarkStyle::polish(QPalette &palette)
{
    palette = m_palette;
}

void BreltDarkStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (wantsHover(widget))
        widget->setAttribute(Qt::WA_Hover);
}

void BreltDarkStyle::polish(QApplication *application)
{
    QProxyStyle::polish(application);
}

void BreltDarkStyle::unpolish(QWidget *widget)
{
    if (wantsHover(widget))
        widget->setAttribute(Qt::WA_Hover, false);
    QProxyStyle::unpolish(widget);
}

void BreltDarkStyle::unpolish(QApplication *application)
{
    QProxyStyle::unpolish(application);
}

void BreltDarkStyle::drawControl(ControlElement element, const QStyleOption *option,
                                 QPainter *painter, const QWidget *widget) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (button && element == CE_PushButton && !widget) {
        // Delegates make their options by hand: the palette may be that of another style, and its
        // group need not agree with the state.
        QStyleOptionButton copy(*button);
        if (luminance(copy.palette.color(QPalette::Active, QPalette::Button)) > 0.2)
            copy.palette = m_palette;
        copy.palette.setCurrentColorGroup(isEnabled(button) ? QPalette::Active
                                                            : QPalette::Disabled);
        QProxyStyle::drawControl(element, &copy, painter, widget);
        return;
    }
    if (button && element == CE_PushButtonLabel && isDefault(button)) {
        QStyleOptionButton copy(*button);
        copy.palette.setColor(QPalette::ButtonText, textOn(m_accent));
        QProxyStyle::drawControl(element, &copy, painter, widget);
        return;
    }
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (item && element == CE_MenuItem && item->menuItemType == QStyleOptionMenuItem::Separator
        && item->text.isEmpty()) {
        const QRect row = item->rect;
        painter->fillRect(QRect(row.x() + 8, row.center().y(), row.width() - 16, 1),
                          look::border());
        return;
    }
    if (element == CE_Splitter && !pictureFolder().isEmpty()) {
        painter->fillRect(option->rect, isHovered(option) ? lit(look::border()) : look::line());
        const QRect bar = option->rect;
        painter->save();
        painter->translate(bar.topLeft());
        if (bar.height() > bar.width()) { // the same, turned by a quarter
            painter->translate(bar.width(), 0);
            painter->rotate(90);
            drawPicture(painter, QStringLiteral("grip"), QRect(0, 0, bar.height(), bar.width()));
        } else {
            drawPicture(painter, QStringLiteral("grip"), QRect(QPoint(), bar.size()));
        }
        painter->restore();
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void BreltDarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                                   QPainter *painter, const QWidget *widget) const
{
    switch (element) {
    case PE_FrameDefaultButton:
        return; // the default button is told by its fill
    case PE_PanelButtonCommand:
    case PE_PanelButtonTool:
        drawPushButton(option, painter);
        return;
    case PE_IndicatorCheckBox:
    case PE_IndicatorRadioButton:
    case PE_IndicatorItemViewItemCheck:
        drawIndicator(element, option, painter);
        return;
    case PE_FrameLineEdit:
        drawField(option, painter);
        return;
    case PE_FrameFocusRect:
        painter->save();
        painter->setPen(mix(m_accent, Qt::white, 0.35));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
        return;
    case PE_IndicatorArrowUp:
    case PE_IndicatorArrowDown:
        if (drawArrow(painter, element == PE_IndicatorArrowUp, option->rect, isEnabled(option),
                      isHovered(option)))
            return;
        break;
    case PE_IndicatorArrowLeft:
    case PE_IndicatorArrowRight:
        if (drawPicture(painter,
                        element == PE_IndicatorArrowLeft ? QStringLiteral("arrow_previous")
                                                         : QStringLiteral("arrow_next"),
                        option->rect))
            return;
        break;
    case PE_IndicatorHeaderArrow:
        if (const auto *header = qstyleoption_cast<const QStyleOptionHeader *>(option)) {
            QStyleOptionHeader copy(*header);
            copy.rect = arrowRect(*header, widget);
            const bool isUp = header->sortIndicator == QStyleOptionHeader::SortUp;
            if (header->sortIndicator == QStyleOptionHeader::None
                || !drawArrow(painter, isUp, copy.rect, true, isHovered(option)))
                QProxyStyle::drawPrimitive(element, &copy, painter, widget);
            return;
        }
        break;
    case PE_FrameMenu:
    case PE_PanelTipLabel:
        painter->save();
        painter->setPen(look::border());
        painter->setBrush(element == PE_PanelTipLabel ? QBrush(look::raised()) : QBrush());
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
        return;
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void BreltDarkStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                        QPainter *painter, const QWidget *widget) const
{
    if (control == CC_ScrollBar && option) {
        drawScrollBar(option, painter, widget);
        return;
    }
    if (control == CC_ComboBox && option) {
        drawComboBox(option, painter, widget);
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    // Fusion outlines spin boxes in a shade of the window, which nobody sees on dark surfaces.
    const auto *spin = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
    if (control == CC_SpinBox && spin && spin->buttonSymbols == QAbstractSpinBox::UpDownArrows)
        drawSteps(option, painter, widget);
    if (control == CC_SpinBox && spin && spin->frame)
        drawField(option, painter);
}

QRect BreltDarkStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                     SubControl subControl, const QWidget *widget) const
{
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar)
        return QProxyStyle::subControlRect(control, option, subControl, widget);

    // No arrows: the groove is the whole bar, and the handle shows how much is to be seen.
    const bool horizontal = bar->orientation == Qt::Horizontal;
    const int length = horizontal ? bar->rect.width() : bar->rect.height();
    const qint64 range = qint64(bar->maximum) - bar->minimum;
    int handle = length;
    if (range > 0) {
        handle = int(qint64(bar->pageStep) * length / (range + qMax(1, bar->pageStep)));
        handle = qMin(length, qMax(handle, c_smallestHandle));
    }
    const int start = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                              length - handle, bar->upsideDown);
    const auto part = [&](int from, int extent) {
        const QRect rect = horizontal
            ? QRect(bar->rect.x() + from, bar->rect.y(), extent, bar->rect.height())
            : QRect(bar->rect.x(), bar->rect.y() + from, bar->rect.width(), extent);
        return visualRect(bar->direction, bar->rect, rect);
    };
    switch (subControl) {
    case SC_ScrollBarGroove:
        return bar->rect;
    case SC_ScrollBarSlider:
        return part(start, handle);
    case SC_ScrollBarSubPage:
        return part(0, start);
    case SC_ScrollBarAddPage:
        return part(start + handle, length - start - handle);
    default:
        return QRect();
    }
}

int BreltDarkStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                                const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return c_scrollBarExtent;
    case PM_MenuPanelWidth:
        return 1;
    case PM_ScrollBarSliderMin:
        return c_smallestHandle;
    case PM_ButtonDefaultIndicator:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int BreltDarkStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                              QStyleHintReturn *returnData) const
{
    switch (hint) {
    case SH_ComboBox_Popup: // a list below the field, not a menu over it
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

void BreltDarkStyle::drawPushButton(const QStyleOption *option, QPainter *painter) const
{
    const bool enabled = isEnabled(option);
    const bool sunken = enabled && (option->state & State_Sunken);
    const bool checked = option->state & State_On;
    QColor fill
        = option->palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::Button);
    QColor frame = enabled ? look::border() : look::line();
    if (isDefault(option)) {
        fill = m_accent;
        frame = m_accent;
    } else if (checked) {
        fill = mix(fill, m_accent, enabled ? 0.45 : 0.2);
        frame = enabled ? m_accent : look::border();
    }
    if (sunken) {
        fill = mix(fill, Qt::black, 0.4);
        frame = m_accent;
    } else if (isHovered(option)) {
        fill = lit(fill, 0.1);
        frame = lit(frame, 0.25);
    }
    if (enabled && (option->state & State_HasFocus))
        frame = mix(m_accent, Qt::white, 0.6);
    drawPanel(painter, option->rect, fill, frame);
}

void BreltDarkStyle::drawIndicator(PrimitiveElement element, const QStyleOption *option,
                                   QPainter *painter) const
{
    const bool enabled = isEnabled(option);
    const bool marked = option->state & (State_On | State_NoChange);
    const int side = qMin(option->rect.width(), option->rect.height());
    QRectF box(0, 0, side, side);
    box.moveCenter(QRectF(option->rect).center());
    box.adjust(0.5, 0.5, -0.5, -0.5);

    QColor fill = marked ? m_accent : look::deep();
    QColor frame = marked ? m_accent : look::border();
    if (!enabled) {
        fill = marked ? look::border() : look::surface();
        frame = look::border();
    } else if (option->state & State_Sunken) {
        fill = mix(fill, Qt::black, 0.4);
    } else if (isHovered(option)) {
        fill = lit(fill);
        frame = lit(frame, 0.35);
    }
    if (enabled && (option->state & State_HasFocus))
        frame = mix(m_accent, Qt::white, 0.6);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(frame);
    painter->setBrush(fill);
    const QColor mark = enabled ? textOn(m_accent) : look::dimText();
    if (element == PE_IndicatorRadioButton) {
        painter->drawEllipse(box);
        if (marked) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(mark);
            painter->drawEllipse(box.center(), side * 0.2, side * 0.2);
        }
    } else {
        painter->drawRoundedRect(box, 2, 2);
        painter->setPen(
            QPen(mark, qMax(1.5, side * 0.13), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const auto at = [&box](qreal x, qreal y) {
            return QPointF(box.x() + box.width() * x, box.y() + box.height() * y);
        };
        if (option->state & State_On) {
            const QPointF tick[] = {at(0.22, 0.52), at(0.43, 0.72), at(0.78, 0.3)};
            painter->drawPolyline(tick, 3);
        } else if (option->state & State_NoChange) {
            painter->drawLine(at(0.25, 0.5), at(0.75, 0.5));
        }
    }
    painter->restore();
}

void BreltDarkStyle::drawField(const QStyleOption *option, QPainter *painter) const
{
    QColor frame = look::border();
    if (!isEnabled(option))
        frame = look::line();
    else if (option->state & State_HasFocus)
        frame = mix(m_accent, Qt::white, 0.35);
    else if (isHovered(option))
        frame = lit(frame, 0.25);
    painter->save();
    painter->setPen(frame);
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

void BreltDarkStyle::drawComboBox(const QStyleOptionComplex *option, QPainter *painter,
                                  const QWidget *widget) const
{
    const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
    const QRect arrow = proxy()->subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
    if (!box || pictureFolder().isEmpty() || !(box->subControls & SC_ComboBoxArrow)) {
        QProxyStyle::drawComplexControl(CC_ComboBox, option, painter, widget);
        return;
    }
    QStyleOptionComboBox bare(*box);
    bare.subControls &= ~SC_ComboBoxArrow;
    QProxyStyle::drawComplexControl(CC_ComboBox, &bare, painter, widget);
    drawArrow(painter, false, arrow, isEnabled(option), isHovered(option));
}

// The two step buttons of a spin box. Fusion cannot leave its own arrows out, so they are covered.
void BreltDarkStyle::drawSteps(const QStyleOptionComplex *option, QPainter *painter,
                               const QWidget *widget) const
{
    const auto *spin = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
    if (pictureFolder().isEmpty())
        return;
    for (const SubControl step : {SC_SpinBoxUp, SC_SpinBoxDown}) {
        const bool isUp = step == SC_SpinBoxUp;
        const bool canStep = isEnabled(option)
            && (spin->stepEnabled
                & (isUp ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled));
        const bool isActive = canStep && spin->activeSubControls == step;
        const bool isSunken = isActive && (option->state & State_Sunken);
        const bool isLit = isActive && isHovered(option);
        const QRect place = proxy()->subControlRect(CC_SpinBox, option, step, widget);
        QColor fill = look::raised();
        if (isSunken)
            fill = mix(fill, Qt::black, 0.4);
        else if (isLit)
            fill = lit(fill, 0.1);
        painter->fillRect(place, fill);
        drawArrow(painter, isUp, place, canStep, isLit);
    }
}

void BreltDarkStyle::drawScrollBar(const QStyleOptionComplex *option, QPainter *painter,
                                   const QWidget *widget) const
{
    painter->fillRect(option->rect, look::deep());
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (!bar || bar->maximum <= bar->minimum)
        return;
    const QRect handle
        = subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget).adjusted(2, 2, -2, -2);
    QColor fill = look::border();
    if (!isEnabled(option))
        fill = look::line();
    else if ((option->state & State_Sunken) && (option->activeSubControls & SC_ScrollBarSlider))
        fill = m_accent;
    else if (isHovered(option))
        fill = lit(fill, 0.25);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRoundedRect(handle, 3, 3);
    painter->restore();
}
