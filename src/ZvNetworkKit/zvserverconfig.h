#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QString>

#include <memory>

// The platform in use and all looks that depend on it. One object a process, used from the GUI
// thread. A widget reads its style once, when it is made; so the platform is chosen before that.
class ZVNETWORKKIT_EXPORT ZvServerConfig : public QObject
{
    Q_OBJECT

public:
    // The exchange platforms. The numbers are part of the contract.
    enum Platform {
        ChengHu = 1, // 澄湖, accent vermilion
        LanChuan = 2 // 岚川, accent blue
    };
    Q_ENUM(Platform)

    static ZvServerConfig *getZvServerConfigInstance();

    ~ZvServerConfig() override;

    // ChengHu until a platform has been chosen.
    Platform getCurrentPlatform() const;

    // From here on all getters answer for `platform`. A value outside the enumeration is ignored.
    void setCurrentPlatform(ZvServerConfig::Platform platform);

    // The root of the exchange service, such as "http://127.0.0.1:8080", below which the pages of
    // getStyleOf_ContactUrl() and the pictures of getUrlOf_qrcodePrefix() stand; empty at first,
    // and the agreement has no links then.
    void setServiceAddress(const QString &address);

    // The address of the QR picture of an account-opening code, up to the code itself; empty
    // without a service address.
    QString getUrlOf_qrcodePrefix() const;

    // The resource path of the background of the money overview.
    QString getPathOf_zijingzonglanPNG() const;

    // Style sheets for push buttons; each has rules for hover, pressed, checked, disabled and
    // focus.
    QString getStyleOf_DealBuyButton() const;
    QString getStyleOf_DealCheckButton() const;
    QString getStyleOf_DealDarkButton() const;
    QString getStyleOf_DealGrayRoundButton() const;
    QString getStyleOf_DealLightButton() const;
    QString getStyleOf_DealOtherButton() const;
    QString getStyleOf_DealSelectButton() const;
    QString getStyleOf_DealSellButton() const;
    QString getStyleOf_DealTypeButton() const;
    QString getStyleOf_LoginDlgCloseBtn() const;
    QString getStyleOf_LoginDlgReturnBtn() const;
    QString getStyleOf_MarketFooterButton() const;
    QString getStyleOf_MarketOpenButton() const;
    QString getStyleOf_MarketTitleKTimeButton() const;
    QString getStyleOf_MarketTitleMarketButton() const;
    QString getStyleOf_StatusBarLoginButton() const;
    QString getStyleOf_ThreeBigButton() const;
    QString getStyleOf_TitleBarButtonStyle() const;
    QString getStyleOf_TwoJumpButton() const;
    QString getStyleOf_VertiCodeButton() const;
    QString getStyleOf_ZvGuideTabItemButtonDisable() const;
    QString getStyleOf_ZvGuideTabItemButtonEnable() const;

    // Style sheets for the labels they name, and for the whole sign-in dialog.
    QString getStyleOf_LabelAndPrompt() const;
    QString getStyleOf_TitleBarLabel() const;
    QString getStyleOf_TotalDialog() const;

    // Colour names for QColor::setNamedColor, which go into palettes and painters, not into sheets.
    QString getStyleOf_DealPaletteDeep() const;
    QString getStyleOf_DealPaletteShallowPanel() const;
    QString getStyleOf_DealPaletteShallowTop() const;
    QString getStyleOf_MarketTableHeader() const;
    QString getStyleOf_MarketTableSelectRow() const;
    QString getStyleOf_MarketTitlePaletteColor() const;
    QString getStyleOf_TitleBarPaletteColor() const;

    // The agreement sentence of the register page: rich text for a label, no sheet. Its links lead
    // to pages below the service address.
    QString getStyleOf_ContactUrl() const;

private:
    ZvServerConfig();

    struct Looks;
    std::unique_ptr<Looks> m_looks;
};
