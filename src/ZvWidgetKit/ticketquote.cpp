#include "ZvWidgetKit/ticketquote.h"

#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ui_dealwidget_buysell.h"

#include <array>

namespace ticketquote {
namespace {

constexpr int LevelsOfLowWindow = 3;
constexpr int Levels = 5; // a side

enum Property { Latest = 24, Rate = 26, UpperLimit = 27, LowerLimit = 28 };

// The labels of one level. Its price is shown by `property`, its quantity by the next one.
struct Level {
    QLabel *caption;
    QLabel *price;
    QLabel *quantity;
    int property;
};

// The sells, then the buys, each from the best level on.
std::array<Level, 2 * Levels> levelsOf(const Form &form)
{
    return {{
        {form.label_sell1, form.label_sell1_price, form.label_sell1_qty, 11},
        {form.label_sell2, form.label_sell2_price, form.label_sell2_qty, 9},
        {form.label_sell3, form.label_sell3_price, form.label_sell3_qty, 7},
        {form.label_sell4, form.label_sell4_price, form.label_sell4_qty, 5},
        {form.label_sell5, form.label_sell5_price, form.label_sell5_qty, 3},
        {form.label_buy1, form.label_buy1_price, form.label_buy1_qty, 13},
        {form.label_buy2, form.label_buy2_price, form.label_buy2_qty, 15},
        {form.label_buy3, form.label_buy3_price, form.label_buy3_qty, 17},
        {form.label_buy4, form.label_buy4_price, form.label_buy4_qty, 19},
        {form.label_buy5, form.label_buy5_price, form.label_buy5_qty, 21},
    }};
}

enum class Colour { White, Yellow, Green, Red };

QString sheetOf(Colour colour)
{
    static const auto sheet = [](const char *name) {
        return QStringLiteral("QLabel{color:%1;border-color:#16181c; border-width:1px; "
                              "border-style:soli;}QLabel:hover{border-color:#e73f1e; "
                              "border-width:1px; border-style:solid;}")
            .arg(QLatin1String(name));
    };
    static const QString white = sheet("#ffffff");
    static const QString yellow = sheet("#f4f401");
    static const QString green = sheet("#4bff57");
    static const QString red = sheet("#ea3835");
    switch (colour) {
    case Colour::Yellow:
        return yellow;
    case Colour::Green:
        return green;
    case Colour::Red:
        return red;
    case Colour::White:
        break;
    }
    return white;
}

// A sheet costs more than all the texts of an update, and most of them stay as they are.
void setColour(QLabel *label, Colour colour)
{
    const QString sheet = sheetOf(colour);
    if (label->styleSheet() != sheet)
        label->setStyleSheet(sheet);
}

bool isMissing(const QString &text)
{
    return text == QLatin1String("--");
}

Colour colourOf(float value, float reference)
{
    if (value > reference)
        return Colour::Red;
    return value < reference ? Colour::Green : Colour::White;
}

Colour colourOfPrice(const QString &text, float reference)
{
    return isMissing(text) ? Colour::White : colourOf(text.toFloat(), reference);
}

Colour colourOfRate(QString text)
{
    return colourOf(text.remove(QLatin1Char('%')).toFloat(), 0);
}

} // namespace

void applyStyle(const Form &form)
{
    setColour(form.label_upperLimitPrice_value, Colour::Red);
    setColour(form.label_priceLimit_value, Colour::Green);
}

void write(const Form &form, const ZvUBTopFive &quote)
{
    form.label_rate_value->setText(quote.getPropertyString(Rate));
    form.label_latest_value->setText(quote.getPropertyString(Latest));
    form.label_priceLimit_value->setText(quote.getPropertyString(LowerLimit));
    form.label_upperLimitPrice_value->setText(quote.getPropertyString(UpperLimit));
    for (const Level &level : levelsOf(form)) {
        level.price->setText(quote.getPropertyString(level.property));
        level.quantity->setText(quote.getPropertyString(level.property + 1));
    }
}

void recolor(const Form &form, float reference)
{
    for (const Level &level : levelsOf(form)) {
        setColour(level.price, colourOfPrice(level.price->text(), reference));
        setColour(level.quantity,
                  isMissing(level.quantity->text()) ? Colour::White : Colour::Yellow);
    }
    setColour(form.label_latest_value, colourOfPrice(form.label_latest_value->text(), reference));
    setColour(form.label_rate_value, colourOfRate(form.label_rate_value->text()));
}

// Where levels are missing, four empty labels keep the rest in the middle.
void showAllLevels(const Form &form, bool all)
{
    const auto levels = levelsOf(form);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (i % Levels < LevelsOfLowWindow)
            continue;
        for (QLabel *label : {levels[i].caption, levels[i].price, levels[i].quantity})
            label->setVisible(all);
    }
    for (QLabel *spacer : {form.label_hide10, form.label_hide9, form.label_hide1, form.label_hide2})
        spacer->setVisible(!all);
}

} // namespace ticketquote
