#pragma once

#include "ZvNetworkKit/zvserverconfig.h"

namespace zvtest {

struct ButtonStyle {
    const char *name;
    QString (ZvServerConfig::*getter)() const;
    bool isCheckable; // the library makes such a button checkable
    bool hasText; // and no mere picture
};

// The style sheets of push buttons, one for each getter.
constexpr ButtonStyle buttonStyles[] = {
#define STYLE(Name, isCheckable, hasText)                                                          \
    {                                                                                              \
#Name, &ZvServerConfig::getStyleOf_##Name, isCheckable, hasText                            \
    }
    STYLE(DealBuyButton, false, true),
    STYLE(DealCheckButton, false, true),
    STYLE(DealDarkButton, false, true),
    STYLE(DealGrayRoundButton, true, true),
    STYLE(DealLightButton, false, true),
    STYLE(DealOtherButton, true, true),
    STYLE(DealSelectButton, true, true),
    STYLE(DealSellButton, false, true),
    STYLE(DealTypeButton, true, true),
    STYLE(LoginDlgCloseBtn, false, false),
    STYLE(LoginDlgReturnBtn, false, false),
    STYLE(MarketFooterButton, true, true),
    STYLE(MarketOpenButton, true, false),
    STYLE(MarketTitleKTimeButton, true, true),
    STYLE(MarketTitleMarketButton, false, true),
    STYLE(StatusBarLoginButton, false, true),
    STYLE(ThreeBigButton, false, true),
    STYLE(TitleBarButtonStyle, false, true),
    STYLE(TwoJumpButton, false, true),
    STYLE(VertiCodeButton, false, true),
    STYLE(ZvGuideTabItemButtonDisable, false, true),
    STYLE(ZvGuideTabItemButtonEnable, false, true),
#undef STYLE
};

} // namespace zvtest
