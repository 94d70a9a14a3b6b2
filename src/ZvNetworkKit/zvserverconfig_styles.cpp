#include "ZvNetworkKit/zvserverconfig_styles.h"

#include <QLatin1String>

namespace zvstyles {
namespace {

struct NamedValue {
    const char *name;
    const char *value;
};

// What both platforms share. Surfaces go from deep (behind the tables) to raised (buttons). A face
// that carries small white text is dark enough for it, also when it lights up under the mouse.
const NamedValue sharedValues[] = {
    {"deep", "#101114"},          {"surface", "#16181c"},  {"top", "#1a1d22"},
    {"panel", "#1e2126"},         {"raised", "#2a2e36"},   {"raisedHover", "#363b45"},
    {"raisedPressed", "#1b1e23"}, {"light", "#4a505c"},    {"lightHover", "#5a616f"},
    {"lightPressed", "#3a3f49"},  {"line", "#3a3f49"},     {"lineHover", "#59606d"},
    {"text", "#ffffff"},          {"soft", "#c3c8d1"},     {"muted", "#8b93a1"},
    {"off", "#5f6672"},           {"offBack", "#1c1f24"},  {"offLine", "#2a2e36"},
    {"warning", "#ff6a5f"},       {"buy", "#c42e2e"},      {"buyHover", "#d93636"},
    {"buyPressed", "#a12525"},    {"sell", "#19753a"},     {"sellHover", "#1d8743"},
    {"sellPressed", "#135a2c"},   {"none", "transparent"},
};

// 澄湖: vermilion.
const NamedValue chenghuValues[] = {
    {"accent", "#d84a22"},        {"accentFace", "#bd3e1b"},      {"accentHover", "#d1471f"},
    {"accentPressed", "#a03415"}, {"accentText", "#ff8a62"},      {"accentTint", "#35231d"},
    {"titleBar", "#231b19"},      {"titleRow", "#201c1c"},        {"tableHeader", "#d0b5a8"},
    {"selectedRow", "#40291f"},   {"backArrow", "arrow-ch-left"}, {"openArrow", "arrow-ch-right"},
};

// 岚川: clear blue.
const NamedValue lanchuanValues[] = {
    {"accent", "#1f7be0"},        {"accentFace", "#1868c4"},   {"accentHover", "#1d76d9"},
    {"accentPressed", "#12539d"}, {"accentText", "#6bb2ff"},   {"accentTint", "#19293c"},
    {"titleBar", "#151d28"},      {"titleRow", "#1a1e26"},     {"tableHeader", "#a6bcd6"},
    {"selectedRow", "#1c3350"},   {"backArrow", "arrow_left"}, {"openArrow", "arrow_right"},
};

// The plates of the guide strip for a market that has a picture of its own. It is known by a
// character of its name, which is what the exchange calls it.
struct Plate {
    const char *character;
    const char *inUse;
    const char *idle;
};

const Plate chenghuPlates[] = {
    {"邮", "btn-color-ch-youbika", "btn-gray-ch-youbika"},
    {"玉", "btn-color-ch-baoyushi", "btn-gray-ch-baoyushi"},
    {"钱", "btn-color-ch-qianbi", "btn-gray-ch-qianbi"},
    {"磁", "btn-color-ch-cika", "btn-gray-ch-cika"},
};

const Plate lanchuanPlates[] = {
    {"邮", "btn_color_youbika_lc", "btn_gray_youbika"},
    {"蓝", "btn_color_lanbaoshi", "btn_gray_lanbaoshi"},
    {"影", "btn_color_yingshi", "btn_gray_yingshi"},
    {"钻", "btn_color_zuanshi", "btn_gray_zuanshi"},
    {"翡", "btn_color_feicui", "btn_gray_feicui"},
    {"玉", "btn_color_hetianyu", "btn_gray_hetianyu"},
    {"茶", "btn_color_chajiu", "btn_gray_chajiu"},
    {"书", "btn_color_shuhua", "btn_gray_shuhua"},
    {"陶", "btn_color_taoyi", "btn_gray_taoyi"},
};

struct Platform {
    const NamedValue *begin;
    const NamedValue *end;
    const Plate *firstPlate;
    const Plate *lastPlate; // and one beyond
    QString center;
    QString prefix;
};

Platform platformOf(int platform)
{
    if (platform == 2)
        return {std::begin(lanchuanValues),         std::end(lanchuanValues),
                std::begin(lanchuanPlates),         std::end(lanchuanPlates),
                QStringLiteral("岚川商品交易中心"), QStringLiteral("lc")};
    return {std::begin(chenghuValues),          std::end(chenghuValues),
            std::begin(chenghuPlates),          std::end(chenghuPlates),
            QStringLiteral("澄湖文化交易中心"), QStringLiteral("ch")};
}

QString valueOf(const QString &name, const Platform &platform)
{
    for (const NamedValue *value = platform.begin; value != platform.end; ++value) {
        if (name == QLatin1String(value->name))
            return QLatin1String(value->value);
    }
    for (const NamedValue &value : sharedValues) {
        if (name == QLatin1String(value.name))
            return QLatin1String(value.value);
    }
    Q_ASSERT_X(false, "zvstyles", qPrintable(name));
    return QString();
}

// Puts the platform's values in the place of the @names.
QString filled(const QString &sheet, const Platform &platform)
{
    QString result;
    result.reserve(sheet.size());
    for (int i = 0; i < sheet.size();) {
        if (sheet.at(i) != QLatin1Char('@')) {
            result.append(sheet.at(i++));
            continue;
        }
        int end = i + 1;
        while (end < sheet.size() && sheet.at(end).isLetter())
            ++end;
        result.append(valueOf(sheet.mid(i + 1, end - i - 1), platform));
        i = end;
    }
    return result;
}

// Text, background and border of a button in one state.
struct Colours {
    const char *text;
    const char *back;
    const char *border;
};

// A push button of the family. A button that is never checked or never takes the focus simply
// does not reach those states; every other state differs from the one before.
struct Button {
    const char *shape;
    Colours normal;
    Colours hover;
    Colours pressed;
    Colours checked;
    Colours checkedHover;
    Colours disabled;
};

QString coloursText(const Colours &colours)
{
    return QStringLiteral("color:%1;background-color:%2;border-color:%3;")
        .arg(QLatin1String(colours.text), QLatin1String(colours.back),
             QLatin1String(colours.border));
}

QString buttonSheet(const Button &button)
{
    return QStringLiteral("QPushButton{outline:none;border-style:solid;border-width:1px;%1%2}"
                          "QPushButton:focus{border-color:@accentText;}"
                          "QPushButton:hover{%3}"
                          "QPushButton:checked{%4}"
                          "QPushButton:checked:hover{%5}"
                          "QPushButton:checked:focus{border-color:@text;}"
                          "QPushButton:pressed,QPushButton:checked:pressed{%6}"
                          "QPushButton:disabled,QPushButton:checked:disabled{%7}")
        .arg(coloursText(button.normal), QLatin1String(button.shape), coloursText(button.hover),
             coloursText(button.checked), coloursText(button.checkedHover),
             coloursText(button.pressed), coloursText(button.disabled));
}

constexpr Colours disabledSolid{"@off", "@offBack", "@offLine"};
constexpr Colours disabledPlain{"@off", "@none", "@none"};
constexpr Colours checkedTint{"@accentText", "@accentTint", "@accent"};
constexpr Colours checkedHover{"@text", "@accentPressed", "@accent"};

// Filled with one colour that says what the button does.
constexpr Button solid(const char *shape, const char *fill, const char *hover, const char *pressed)
{
    return {shape,
            {"@text", fill, fill},
            {"@text", hover, hover},
            {"@text", pressed, pressed},
            {"@text", pressed, "@text"},
            {"@text", hover, "@text"},
            disabledSolid};
}

constexpr Button accentButton(const char *shape)
{
    return solid(shape, "@accentFace", "@accentHover", "@accentPressed");
}

// Without a face of its own until the mouse or a check gives it one.
constexpr Button plain(const char *shape, const Colours &checked)
{
    return {shape,
            {"@soft", "@none", "@none"},
            {"@text", "@raised", "@raised"},
            {"@muted", "@raisedPressed", "@raisedPressed"},
            checked,
            checkedHover,
            disabledPlain};
}

// A tab: the checked one has a line of the accent below it.
constexpr Button tab(const char *shape)
{
    return plain(shape, {"@accentText", "@accentTint", "@none @none @accent @none"});
}

// An entry of the navigation column: the checked one has a bar of the accent on its left.
constexpr Button entry(const char *shape)
{
    return plain(shape,
                 {"@accentText", "@accentTint", "@accentTint @accentTint @accentTint @accent"});
}

// A button of 32 pixels that is a picture of `size`. Its pictures are named for the normal, the
// hovered (and pressed) and the disabled state. The padding leaves them no more room than their own
// size: in a larger one Qt blows the doubled picture up at scales such as 1.25.
QString pictureSheet(int size, const char *normal, const char *hover, const char *disabled)
{
    return QStringLiteral(
               "QPushButton{outline:none;border:1px solid transparent;border-radius:4px;"
               "padding:%4px;background-color:transparent;image:url(:/icons/%1.png);}"
               "QPushButton:focus{border-color:@accentText;}"
               "QPushButton:hover{background-color:@raised;image:url(:/icons/%2.png);}"
               "QPushButton:pressed{background-color:@accentPressed;"
               "image:url(:/icons/%2.png);}"
               "QPushButton:disabled{background-color:@offBack;image:url(:/icons/%3.png);}")
        .arg(QLatin1String(normal), QLatin1String(hover), QLatin1String(disabled))
        .arg((32 - 2 - size) / 2);
}

// The switch of the guide strip: it points to where the strip would go. Its arrow is an icon, which
// Qt scales smoothly to any screen; the picture of an `image` gets steps at scales such as 1.25.
QString openButtonSheet()
{
    return QStringLiteral(
        "QPushButton{outline:none;border:1px solid @line;border-left:none;"
        "border-top-right-radius:4px;border-bottom-right-radius:4px;background-color:@panel;"
        "icon-size:16px;icon:url(:/icons/guidepage/@openArrow.png);}"
        "QPushButton:checked{background-color:@surface;icon:url(:/icons/guidepage/"
        "@backArrow.png);}"
        "QPushButton:focus{border-color:@accentText;}"
        "QPushButton:hover{background-color:@raisedHover;border-color:@lineHover;}"
        "QPushButton:pressed{background-color:@accentTint;border-color:@accent;}"
        "QPushButton:disabled{icon:url(:/icons/guidepage/arrow-pn-right.png);}"
        "QPushButton:checked:disabled{icon:url(:/icons/guidepage/arrow-pn-left.png);}");
}

// A server's button in the guide strip, 28 by 80 pixels with upright text. Its states are told by
// the colour of its face, which shines through the plate of a market that has one. A plate carries
// a sign above the text and is drawn as a whole: Qt takes the parts of a border picture for other
// ones at scale 2, and where corners are round. The focus draws a frame around the text: a line
// below each of its small characters would read as a stroke of it.
QString guideTabSheet(bool isInUse, const Platform &platform)
{
    const char *colours[][2] = {
        // text and face of the server in use, and of another
        {"color:@text;background-color:@accentPressed;", "color:@soft;background-color:@deep;"},
        {"color:@text;background-color:@accentHover;",
         "color:@text;background-color:@raisedHover;"},
        {"color:@accentText;background-color:@deep;",
         "color:@text;background-color:@accentPressed;"},
        {"color:@soft;background-color:@accentTint;", "color:@muted;background-color:@offBack;"},
    };
    enum State { Normal, Hover, Pressed, Disabled };
    const auto of = [&](State state) { return QLatin1String(colours[state][isInUse ? 0 : 1]); };
    QString sheet
        = QStringLiteral("QPushButton{outline:none;padding:0px;border:1px solid %1;"
                         "border-left:3px solid %2;%3}"
                         "QPushButton:focus{outline:1px solid @text;}"
                         "QPushButton:hover{%4}QPushButton:pressed{%5}QPushButton:disabled{%6}")
              .arg(QLatin1String(isInUse ? "@accent" : "@line"),
                   QLatin1String(isInUse ? "@accentText" : "@off"), of(Normal), of(Hover),
                   of(Pressed), of(Disabled));
    for (const Plate *plate = platform.firstPlate; plate != platform.lastPlate; ++plate)
        sheet
            += QStringLiteral("QPushButton[text*=\"%1\"]{padding:18px 5px 5px 5px;border-width:0px;"
                              "border-image:url(:/icons/guidepage/%2.png) 0 0 0 0 "
                              "stretch stretch;}")
                   .arg(QString::fromUtf8(plate->character),
                        QLatin1String(isInUse ? plate->inUse : plate->idle));
    return sheet;
}

// The sign-in dialog and the fields in it, each with a sign of what it takes. The texts of the
// fields keep the palette's colours: a colour in the sheet would paint placeholders as if they had
// been typed.
QString dialogSheet()
{
    return QStringLiteral(
        "QDialog{background-color:@surface;border:1px solid @line;border-top:3px solid @accent;}"
        "QLabel{color:@soft;background-color:transparent;}"
        "QLabel#label_page_title{color:@text;font-size:14pt;}"
        "QLineEdit{background-color:@deep;border:1px solid @line;border-radius:4px;"
        "padding:4px 8px 4px 32px;background-repeat:no-repeat;background-position:left center;"
        "selection-color:@text;selection-background-color:@accentFace;}"
        "QLineEdit[objectName*=\"assword\"]{background-image:url(:/icons/login/password.png);}"
        "QLineEdit[objectName*=\"honeNumber\"]{background-image:url(:/icons/login/phone.png);}"
        "QLineEdit[objectName*=\"erificationCode\"]{background-image:url(:/icons/login/code.png);}"
        "QLineEdit[objectName*=\"referee\"]{background-image:url(:/icons/login/referee.png);}"
        "QLineEdit:hover{border-color:@lineHover;}"
        "QLineEdit:focus{border-color:@accent;background-color:@top;}"
        "QLineEdit:disabled{background-color:@offBack;border-color:@offLine;}");
}

// One sheet for the captions and the prompts below the fields; their names tell them apart.
QString labelAndPromptSheet()
{
    return QStringLiteral("QLabel{color:@soft;background-color:transparent;border:none;}"
                          "QLabel:disabled{color:@off;}"
                          "QLabel[objectName*=\"Prompt\"]{color:@warning;font-size:9pt;}");
}

// The buttons of the window itself light up with their signs, and the one that closes it turns red.
// Their bar has large bold letters for its title, which would reach their tool tips.
QString windowButtonRules()
{
    return QStringLiteral(
        "QToolTip{font-size:10pt;font-weight:normal;}"
        "QPushButton[accessibleName=\"最小化\"]:hover{icon:url(:/icons/icon_mini_white.png);}"
        "QPushButton[accessibleName=\"最大化/还原\"]:hover{"
        "icon:url(:/icons/icon_narrow_white.png);}"
        "QPushButton[accessibleName=\"关闭\"]:hover{icon:url(:/icons/icon_close_white.png);"
        "background-color:@buy;border-color:@buy;}"
        "QPushButton[accessibleName=\"关闭\"]:pressed{background-color:@buyPressed;"
        "border-color:@buyPressed;}");
}

QString sheetOf(Style style, const Platform &platform)
{
    switch (style) {
    case Style::DealBuyButton:
        return buttonSheet(
            solid("border-radius:3px;padding:2px 8px;", "@buy", "@buyHover", "@buyPressed"));
    case Style::DealSellButton:
        return buttonSheet(
            solid("border-radius:3px;padding:2px 8px;", "@sell", "@sellHover", "@sellPressed"));
    case Style::DealCheckButton:
        return buttonSheet(accentButton("border-radius:3px;padding:2px 14px;"));
    case Style::DealDarkButton:
        return buttonSheet({"border-radius:3px;padding:0px;font-size:9pt;",
                            {"@soft", "@panel", "@line"},
                            {"@text", "@raised", "@lineHover"},
                            {"@muted", "@deep", "@line"},
                            checkedTint,
                            checkedHover,
                            disabledSolid});
    case Style::DealLightButton:
        return buttonSheet(solid("border-radius:3px;padding:0px;font-size:9pt;", "@light",
                                 "@lightHover", "@lightPressed"));
    case Style::DealGrayRoundButton:
        return buttonSheet({"border-radius:10px;padding:0px 6px;",
                            {"@soft", "@raised", "@line"},
                            {"@text", "@raisedHover", "@lineHover"},
                            {"@muted", "@raisedPressed", "@line"},
                            checkedTint,
                            checkedHover,
                            disabledSolid});
    case Style::DealOtherButton:
        return buttonSheet(tab("border-bottom-width:2px;padding:0px 4px;"));
    case Style::DealTypeButton:
        return buttonSheet(
            entry("border-left-width:3px;padding:0px 4px 0px 16px;height:34px;text-align:left;"));
    case Style::DealSelectButton:
        return buttonSheet(
            entry("border-left-width:3px;padding:0px 2px;text-align:left;font-size:9pt;"));
    case Style::MarketFooterButton:
        return buttonSheet(
            plain("border-radius:3px;padding:0px 4px;", {"@text", "@accentFace", "@accent"}));
    case Style::MarketTitleKTimeButton:
        return buttonSheet(tab("border-bottom-width:2px;padding:0px 4px;"));
    case Style::MarketTitleMarketButton:
        return buttonSheet(accentButton("border-radius:3px;padding:0px 4px;font-weight:bold;"));
    case Style::StatusBarLoginButton:
        return buttonSheet({"border-radius:3px;padding:3px 16px;",
                            {"@accentText", "@accentTint", "@accent"},
                            {"@text", "@accentFace", "@accentText"},
                            {"@text", "@accentPressed", "@accentPressed"},
                            {"@text", "@accentPressed", "@text"},
                            {"@text", "@accentHover", "@text"},
                            disabledSolid});
    case Style::TitleBarButtonStyle:
        return buttonSheet(plain("padding:0px 10px;font-size:10pt;font-weight:normal;",
                                 {"@accentText", "@accentTint", "@none"}))
            + windowButtonRules();
    case Style::ThreeBigButton:
        return buttonSheet(accentButton("border-radius:4px;padding:6px 12px;font-size:12pt;"));
    case Style::TwoJumpButton:
        return buttonSheet({"padding:2px 4px;border-radius:3px;",
                            {"@accentText", "@none", "@none"},
                            {"@text", "@none", "@none @none @accentText @none"},
                            {"@soft", "@none", "@none"},
                            {"@text", "@accentTint", "@none"},
                            checkedHover,
                            disabledPlain});
    case Style::VertiCodeButton:
        return buttonSheet(accentButton("border-radius:4px;padding:4px 8px;"));
    case Style::LoginDlgCloseBtn:
        return pictureSheet(20, "smallwidget/close1", "smallwidget/close2", "smallwidget/close1");
    case Style::LoginDlgReturnBtn:
        return pictureSheet(16, "guidepage/@backArrow", "guidepage/arrow-rd-left",
                            "guidepage/arrow-pn-left");
    case Style::MarketOpenButton:
        return openButtonSheet();
    case Style::ZvGuideTabItemButtonEnable:
        return guideTabSheet(true, platform);
    case Style::ZvGuideTabItemButtonDisable:
        return guideTabSheet(false, platform);
    case Style::LabelAndPrompt:
        return labelAndPromptSheet();
    case Style::TotalDialog:
        return dialogSheet();
    case Style::TitleBarLabel:
        return QStringLiteral("QLabel{color:@text;background-color:transparent;}"
                              "QLabel:disabled{color:@muted;}");
    case Style::DealPaletteDeep:
        return QStringLiteral("@deep");
    case Style::DealPaletteShallowPanel:
        return QStringLiteral("@surface");
    case Style::DealPaletteShallowTop:
        return QStringLiteral("@top");
    case Style::MarketTableHeader:
        return QStringLiteral("@tableHeader");
    case Style::MarketTableSelectRow:
        return QStringLiteral("@selectedRow");
    case Style::MarketTitlePaletteColor:
        return QStringLiteral("@titleRow");
    case Style::TitleBarPaletteColor:
        return QStringLiteral("@titleBar");
    case Style::Count:
        break;
    }
    return QString();
}

} // namespace

Styles makeStyles(int platform)
{
    const Platform values = platformOf(platform);
    Styles styles;
    for (std::size_t i = 0; i < styles.size(); ++i)
        styles[i] = filled(sheetOf(static_cast<Style>(i), values), values);
    return styles;
}

QString agreementText(int platform, const QString &address)
{
    const Platform values = platformOf(platform);
    const QString colour = valueOf(QStringLiteral("accentText"), values);
    const auto title = [&](const QString &text, const QString &page) {
        if (address.isEmpty())
            return QStringLiteral("<span style=\"color:%1;\">%2</span>").arg(colour, text);
        const QString root = address.endsWith(QLatin1Char('/')) ? address.chopped(1) : address;
        return QStringLiteral("<a style=\"color:%1;\" href=\"%2/%3/%4\">%5</a>")
            .arg(colour, root.toHtmlEscaped(), values.prefix, page, text);
    };
    return QStringLiteral("<p style=\"color:%1;\">我已阅读并同意%2的%3和%4</p>")
        .arg(valueOf(QStringLiteral("soft"), values), values.center,
             title(QStringLiteral("《用户服务协议》"), QStringLiteral("agreement.html")),
             title(QStringLiteral("《风险揭示书》"), QStringLiteral("risk.html")));
}

QString moneyOverviewPicture(int platform)
{
    return platform == 2 ? QStringLiteral(":/icons/smallwidget/zijingzonglan_lanchuan.png")
                         : QStringLiteral(":/icons/smallwidget/zijingzonglan_chenghu.png");
}

} // namespace zvstyles
