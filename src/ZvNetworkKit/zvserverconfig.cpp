#include "ZvNetworkKit/zvserverconfig.h"

#include "ZvNetworkKit/zvserverconfig_styles.h"

using zvstyles::Style;

// The texts are made once per choice: painters ask for their colours with every cell they draw.
struct ZvServerConfig::Looks {
    Platform platform = ChengHu;
    QString address;
    zvstyles::Styles styles = zvstyles::makeStyles(ChengHu);

    const QString &of(Style style) const { return styles[static_cast<std::size_t>(style)]; }
};

ZvServerConfig *ZvServerConfig::getZvServerConfigInstance()
{
    static ZvServerConfig instance;
    return &instance;
}

ZvServerConfig::ZvServerConfig()
    : m_looks(std::make_unique<Looks>())
{
}

ZvServerConfig::~ZvServerConfig() = default;

ZvServerConfig::Platform ZvServerConfig::getCurrentPlatform() const
{
    return m_looks->platform;
}

void ZvServerConfig::setCurrentPlatform(ZvServerConfig::Platform platform)
{
    if (platform != ChengHu && platform != LanChuan)
        return;
    m_looks->platform = platform;
    m_looks->styles = zvstyles::makeStyles(platform);
}

void ZvServerConfig::setServiceAddress(const QString &address)
{
    m_looks->address = address;
}

QString ZvServerConfig::getUrlOf_qrcodePrefix() const
{
    const QString &address = m_looks->address;
    if (address.isEmpty())
        return QString();
    const QString root = address.endsWith(QLatin1Char('/')) ? address.chopped(1) : address;
    return root + QStringLiteral("/cgi-bin/qrcode.html?s=");
}

QString ZvServerConfig::getPathOf_zijingzonglanPNG() const
{
    return zvstyles::moneyOverviewPicture(m_looks->platform);
}

QString ZvServerConfig::getStyleOf_ContactUrl() const
{
    return zvstyles::agreementText(m_looks->platform, m_looks->address);
}

QString ZvServerConfig::getStyleOf_DealBuyButton() const
{
    return m_looks->of(Style::DealBuyButton);
}

QString ZvServerConfig::getStyleOf_DealCheckButton() const
{
    return m_looks->of(Style::DealCheckButton);
}

QString ZvServerConfig::getStyleOf_DealDarkButton() const
{
    return m_looks->of(Style::DealDarkButton);
}

QString ZvServerConfig::getStyleOf_DealGrayRoundButton() const
{
    return m_looks->of(Style::DealGrayRoundButton);
}

QString ZvServerConfig::getStyleOf_DealLightButton() const
{
    return m_looks->of(Style::DealLightButton);
}

QString ZvServerConfig::getStyleOf_DealOtherButton() const
{
    return m_looks->of(Style::DealOtherButton);
}

QString ZvServerConfig::getStyleOf_DealPaletteDeep() const
{
    return m_looks->of(Style::DealPaletteDeep);
}

QString ZvServerConfig::getStyleOf_DealPaletteShallowPanel() const
{
    return m_looks->of(Style::DealPaletteShallowPanel);
}

QString ZvServerConfig::getStyleOf_DealPaletteShallowTop() const
{
    return m_looks->of(Style::DealPaletteShallowTop);
}

QString ZvServerConfig::getStyleOf_DealSelectButton() const
{
    return m_looks->of(Style::DealSelectButton);
}

QString ZvServerConfig::getStyleOf_DealSellButton() const
{
    return m_looks->of(Style::DealSellButton);
}

QString ZvServerConfig::getStyleOf_DealTypeButton() const
{
    return m_looks->of(Style::DealTypeButton);
}

QString ZvServerConfig::getStyleOf_LabelAndPrompt() const
{
    return m_looks->of(Style::LabelAndPrompt);
}

QString ZvServerConfig::getStyleOf_LoginDlgCloseBtn() const
{
    return m_looks->of(Style::LoginDlgCloseBtn);
}

QString ZvServerConfig::getStyleOf_LoginDlgReturnBtn() const
{
    return m_looks->of(Style::LoginDlgReturnBtn);
}

QString ZvServerConfig::getStyleOf_MarketFooterButton() const
{
    return m_looks->of(Style::MarketFooterButton);
}

QString ZvServerConfig::getStyleOf_MarketOpenButton() const
{
    return m_looks->of(Style::MarketOpenButton);
}

QString ZvServerConfig::getStyleOf_MarketTableHeader() const
{
    return m_looks->of(Style::MarketTableHeader);
}

QString ZvServerConfig::getStyleOf_MarketTableSelectRow() const
{
    return m_looks->of(Style::MarketTableSelectRow);
}

QString ZvServerConfig::getStyleOf_MarketTitleKTimeButton() const
{
    return m_looks->of(Style::MarketTitleKTimeButton);
}

QString ZvServerConfig::getStyleOf_MarketTitleMarketButton() const
{
    return m_looks->of(Style::MarketTitleMarketButton);
}

QString ZvServerConfig::getStyleOf_MarketTitlePaletteColor() const
{
    return m_looks->of(Style::MarketTitlePaletteColor);
}

QString ZvServerConfig::getStyleOf_StatusBarLoginButton() const
{
    return m_looks->of(Style::StatusBarLoginButton);
}

QString ZvServerConfig::getStyleOf_ThreeBigButton() const
{
    return m_looks->of(Style::ThreeBigButton);
}

QString ZvServerConfig::getStyleOf_TitleBarButtonStyle() const
{
    return m_looks->of(Style::TitleBarButtonStyle);
}

QString ZvServerConfig::getStyleOf_TitleBarLabel() const
{
    return m_looks->of(Style::TitleBarLabel);
}

QString ZvServerConfig::getStyleOf_TitleBarPaletteColor() const
{
    return m_looks->of(Style::TitleBarPaletteColor);
}

QString ZvServerConfig::getStyleOf_TotalDialog() const
{
    return m_looks->of(Style::TotalDialog);
}

QString ZvServerConfig::getStyleOf_TwoJumpButton() const
{
    return m_looks->of(Style::TwoJumpButton);
}

QString ZvServerConfig::getStyleOf_VertiCodeButton() const
{
    return m_looks->of(Style::VertiCodeButton);
}

QString ZvServerConfig::getStyleOf_ZvGuideTabItemButtonDisable() const
{
    return m_looks->of(Style::ZvGuideTabItemButtonDisable);
}

QString ZvServerConfig::getStyleOf_ZvGuideTabItemButtonEnable() const
{
    return m_looks->of(Style::ZvGuideTabItemButtonEnable);
}
