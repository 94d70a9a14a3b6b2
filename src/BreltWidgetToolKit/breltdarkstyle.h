#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QColor>
#include <QPalette>
#include <QProxyStyle>

class QApplication;

/// The dark look of the client for every stock control: dark surfaces, light text, one accent.
///
/// It draws over Fusion. Buttons, tick boxes, fields and scroll bars show the mouse over them,
/// being pressed, being checked, having the focus and being disabled. Buttons that a delegate
/// paints with CE_PushButton and no widget are dark too, even when their option still holds a light
/// palette.
class BRELTWIDGETTOOLKIT_EXPORT BreltDarkStyle : public QProxyStyle
{
    Q_OBJECT

public:
    explicit BreltDarkStyle(const QColor &accent);
    ~BreltDarkStyle() override;

    /// Gives `application` this style with `accent`, its palette, and the palette of tool tips. May
    /// be called again, when the accent changes; an invalid colour means the clear blue of the kit.
    static void install(QApplication &application, const QColor &accent);

    /// The accent that was installed last, or the clear blue of the kit.
    static QColor currentAccent();

    /// From now on arrows and the grips of splitters are the pictures in `folder`, such as
    /// ":/icons/controls/": arrow_up.png and arrow_down.png, both with _hover and _disabled,
    /// arrow_previous.png, arrow_next.png and grip.png. Without them they are those of Fusion.
    static void setPictures(const QString &folder);

    /// White or near black, whichever reads better on `background`.
    static QColor textOn(const QColor &background);

    QColor accent() const;

    QPalette standardPalette() const override;
    void polish(QPalette &palette) override;
    void polish(QWidget *widget) override;
    void polish(QApplication *application) override;
    void unpolish(QWidget *widget) override;
    void unpolish(QApplication *application) override;

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget = nullptr) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                            QPainter *painter, const QWidget *widget = nullptr) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                         SubControl subControl, const QWidget *widget = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option = nullptr,
                    const QWidget *widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption *option = nullptr,
                  const QWidget *widget = nullptr,
                  QStyleHintReturn *returnData = nullptr) const override;

private:
    void drawPushButton(const QStyleOption *option, QPainter *painter) const;
    void drawIndicator(PrimitiveElement element, const QStyleOption *option,
                       QPainter *painter) const;
    void drawField(const QStyleOption *option, QPainter *painter) const;
    void drawComboBox(const QStyleOptionComplex *option, QPainter *painter,
                      const QWidget *widget) const;
    void drawSteps(const QStyleOptionComplex *option, QPainter *painter,
                   const QWidget *widget) const;
    void drawScrollBar(const QStyleOptionComplex *option, QPainter *painter,
                       const QWidget *widget) const;

    QColor m_accent;
    QPalette m_palette;
};
