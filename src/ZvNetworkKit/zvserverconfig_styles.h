#pragma once

#include <QString>

#include <array>

// The one visual family behind the style getters of ZvServerConfig: dark surfaces, red for buying,
// green for selling, and one accent a platform. A sheet is written once, with colour names such as
// @accent; a platform is nothing but the values of those names.
namespace zvstyles
{

// One entry for each style getter but that of the agreement, which is a text of its own.
enum class Style {
    DealBuyButton,
    DealCheckButton,
    DealDarkButton,
    DealGrayRoundButton,
    DealLightButton,
    DealOtherButton,
    DealPaletteDeep,
    DealPaletteShallowPanel,
    DealPaletteShallowTop,
    DealSelectButton,
    DealSellButton,
    DealTypeButton,
    LabelAndPrompt,
    LoginDlgCloseBtn,
    LoginDlgReturnBtn,
    MarketFooterButton,
    MarketOpenButton,
    MarketTableHeader,
    MarketTableSelectRow,
    MarketTitleKTimeButton,
    MarketTitleMarketButton,
    MarketTitlePaletteColor,
    StatusBarLoginButton,
    ThreeBigButton,
    TitleBarButtonStyle,
    TitleBarLabel,
    TitleBarPaletteColor,
    TotalDialog,
    TwoJumpButton,
    VertiCodeButton,
    ZvGuideTabItemButtonDisable,
    ZvGuideTabItemButtonEnable,
    Count
};

using Styles = std::array<QString, static_cast<std::size_t>(Style::Count)>;

// All texts of one platform, ready for use; `platform` is 1 or 2.
Styles makeStyles(int platform);

// The agreement sentence of the register page as rich text. Its two titles link to pages below
// `address`, the root of the exchange service; with an empty address they stand there unlinked.
QString agreementText(int platform, const QString &address);

// The resource path of the money overview's background.
QString moneyOverviewPicture(int platform);

} // namespace zvstyles
