#include "ZvNetworkKit/zvserverconfig.h"
#include "support/testregistry.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTextDocument>
#include <QtTest/QtTest>

namespace {

using Getter = QString (ZvServerConfig::*)() const;

enum class Kind { Button, Sheet, Colour, RichText };

struct Style {
    const char *name;
    Getter getter;
    Kind kind;
    bool showsAccent; // differs between the platforms
};

const Style styles[] = {
#define STYLE(Name, kind, accent)                                                                  \
    {                                                                                              \
#Name, &ZvServerConfig::getStyleOf_##Name, Kind::kind, accent                              \
    }
    STYLE(ContactUrl, RichText, true),
    STYLE(DealBuyButton, Button, true),
    STYLE(DealCheckButton, Button, true),
    STYLE(DealDarkButton, Button, true),
    STYLE(DealGrayRoundButton, Button, true),
    STYLE(DealLightButton, Button, true),
    STYLE(DealOtherButton, Button, true),
    STYLE(DealPaletteDeep, Colour, false),
    STYLE(DealPaletteShallowPanel, Colour, false),
    STYLE(DealPaletteShallowTop, Colour, false),
    STYLE(DealSelectButton, Button, true),
    STYLE(DealSellButton, Button, true),
    STYLE(DealTypeButton, Button, true),
    STYLE(LabelAndPrompt, Sheet, false),
    STYLE(LoginDlgCloseBtn, Button, true),
    STYLE(LoginDlgReturnBtn, Button, true),
    STYLE(MarketFooterButton, Button, true),
    STYLE(MarketOpenButton, Button, true),
    STYLE(MarketTableHeader, Colour, true),
    STYLE(MarketTableSelectRow, Colour, true),
    STYLE(MarketTitleKTimeButton, Button, true),
    STYLE(MarketTitleMarketButton, Button, true),
    STYLE(MarketTitlePaletteColor, Colour, true),
    STYLE(StatusBarLoginButton, Button, true),
    STYLE(ThreeBigButton, Button, true),
    STYLE(TitleBarButtonStyle, Button, true),
    STYLE(TitleBarLabel, Sheet, false),
    STYLE(TitleBarPaletteColor, Colour, true),
    STYLE(TotalDialog, Sheet, true),
    STYLE(TwoJumpButton, Button, true),
    STYLE(VertiCodeButton, Button, true),
    STYLE(ZvGuideTabItemButtonDisable, Button, true),
    STYLE(ZvGuideTabItemButtonEnable, Button, true),
#undef STYLE
};

constexpr ZvServerConfig::Platform platforms[]
    = {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan};

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

// The rules of a sheet as selector and body, or nothing when the text is no sequence of rules.
QVector<QPair<QString, QString>> rulesOf(const QString &sheet)
{
    static const QRegularExpression rule(QStringLiteral("\\G([^{}]+)\\{([^{}]+)\\}"));
    QVector<QPair<QString, QString>> rules;
    int end = 0;
    for (auto it = rule.globalMatch(sheet); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        rules.append({match.captured(1).trimmed(), match.captured(2)});
        end = match.capturedEnd();
    }
    return end == sheet.size() ? rules : QVector<QPair<QString, QString>>();
}

QStringList listedResources()
{
    static const QRegularExpression entry(QStringLiteral("<file>([^<]+)</file>"));
    const QDir folder(QStringLiteral(ZV_SOURCE_DIR "/src/ZvWidgetKit/resources"));
    QStringList names;
    for (const QString &qrc : folder.entryList({QStringLiteral("*.qrc")})) {
        QFile file(folder.filePath(qrc));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromUtf8(file.readAll());
        for (auto it = entry.globalMatch(text); it.hasNext();)
            names.append(it.next().captured(1));
    }
    return names;
}

QString bodyOf(const QString &sheet, const QString &selector)
{
    for (const auto &rule : rulesOf(sheet)) {
        if (rule.first.split(QLatin1Char(',')).contains(selector))
            return rule.second;
    }
    return QString();
}

} // namespace

class ServerConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { config()->setCurrentPlatform(ZvServerConfig::ChengHu); }

    void instanceIsOneObject()
    {
        QVERIFY(config());
        QCOMPARE(ZvServerConfig::getZvServerConfigInstance(), config());
    }

    void platformsHaveTheirNumbers()
    {
        QCOMPARE(int(ZvServerConfig::ChengHu), 1);
        QCOMPARE(int(ZvServerConfig::LanChuan), 2);
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::ChengHu);
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::LanChuan);
    }

    void unknownPlatformIsIgnored()
    {
        const QString before = config()->getStyleOf_ThreeBigButton();
        config()->setCurrentPlatform(static_cast<ZvServerConfig::Platform>(3));
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::ChengHu);
        QCOMPARE(config()->getStyleOf_ThreeBigButton(), before);
    }

    void everyGetterIsListedOnce()
    {
        QSet<QString> names;
        for (const Style &style : styles)
            names.insert(QLatin1String(style.name));
        QCOMPARE(names.size(), 33);
        QCOMPARE(std::size(styles), std::size_t(33));
    }

    void everyTextIsOfItsKind_data() { styleRows(); }
    void everyTextIsOfItsKind()
    {
        const Style &style = chosenStyle();
        const QString text = (config()->*style.getter)();
        QVERIFY(!text.isEmpty());
        QVERIFY2(!text.contains(QLatin1Char('@')) && !text.contains(QLatin1Char('%')),
                 qPrintable(text));

        switch (style.kind) {
        case Kind::Colour: {
            QColor colour;
            colour.setNamedColor(text);
            QVERIFY2(colour.isValid(), qPrintable(text));
            break;
        }
        case Kind::Button:
            for (const char *state : {"", ":hover", ":pressed", ":disabled", ":focus"})
                QVERIFY2(
                    !bodyOf(text, QLatin1String("QPushButton") + QLatin1String(state)).isEmpty(),
                    state);
            Q_FALLTHROUGH();
        case Kind::Sheet:
            QVERIFY2(!rulesOf(text).isEmpty(), qPrintable(text));
            break;
        case Kind::RichText:
            QVERIFY(Qt::mightBeRichText(text));
            break;
        }
    }

    // A user sees each state of a button by its own look.
    void buttonStatesDiffer_data() { styleRows(); }
    void buttonStatesDiffer()
    {
        const Style &style = chosenStyle();
        if (style.kind != Kind::Button)
            return;
        QSet<QString> bodies;
        int rules = 0;
        for (const auto &rule : rulesOf((config()->*style.getter)())) {
            bodies.insert(rule.second);
            ++rules;
        }
        QCOMPARE(bodies.size(), rules);
    }

    // Buttons that the library makes checkable show it.
    void checkableButtonsShowTheCheck()
    {
        for (const ZvServerConfig::Platform platform : platforms) {
            config()->setCurrentPlatform(platform);
            for (const QString &sheet :
                 {config()->getStyleOf_DealOtherButton(), config()->getStyleOf_DealSelectButton(),
                  config()->getStyleOf_DealTypeButton(), config()->getStyleOf_MarketFooterButton(),
                  config()->getStyleOf_MarketOpenButton(),
                  config()->getStyleOf_MarketTitleKTimeButton()})
                QVERIFY2(!bodyOf(sheet, QStringLiteral("QPushButton:checked")).isEmpty(),
                         qPrintable(sheet));
        }
    }

    void coloursOfSheetsAreColours_data() { styleRows(); }
    void coloursOfSheetsAreColours()
    {
        const Style &style = chosenStyle();
        const QString text = (config()->*style.getter)();
        static const QRegularExpression property(
            QStringLiteral("[{;\"](?:[a-z-]*color):([^;}\"]+)"));
        for (auto it = property.globalMatch(text); it.hasNext();) {
            for (const QString &name : it.next().captured(1).split(QLatin1Char(' ')))
                QVERIFY2(QColor::isValidColor(name), qPrintable(name));
        }
    }

    void accentFollowsThePlatform()
    {
        for (const Style &style : styles) {
            config()->setCurrentPlatform(ZvServerConfig::ChengHu);
            const QString chenghu = (config()->*style.getter)();
            config()->setCurrentPlatform(ZvServerConfig::LanChuan);
            const QString lanchuan = (config()->*style.getter)();
            QVERIFY2((chenghu != lanchuan) == style.showsAccent, style.name);
        }
    }

    void buyingIsRedAndSellingGreenOnBothPlatforms()
    {
        static const QRegularExpression background(QStringLiteral("background-color:(#\\w+)"));
        const auto fillOf = [](const QString &sheet) {
            return QColor(
                background.match(bodyOf(sheet, QStringLiteral("QPushButton"))).captured(1));
        };
        for (const ZvServerConfig::Platform platform : platforms) {
            config()->setCurrentPlatform(platform);
            const QColor buy = fillOf(config()->getStyleOf_DealBuyButton());
            const QColor sell = fillOf(config()->getStyleOf_DealSellButton());
            QVERIFY(buy.red() > 2 * buy.green() && buy.red() > 2 * buy.blue());
            QVERIFY(sell.green() > sell.red() && sell.green() > sell.blue());
        }
    }

    // The selected row lies under red, green, yellow and white digits.
    void selectedRowIsDark()
    {
        for (const ZvServerConfig::Platform platform : platforms) {
            config()->setCurrentPlatform(platform);
            const QColor row(config()->getStyleOf_MarketTableSelectRow());
            QVERIFY(row.lightness() < 70);
            QVERIFY(row != QColor(Qt::black));
        }
    }

    void moneyOverviewPictureFollowsThePlatform()
    {
        const QString chenghu = config()->getPathOf_zijingzonglanPNG();
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        const QString lanchuan = config()->getPathOf_zijingzonglanPNG();
        QVERIFY(chenghu != lanchuan);
        for (const QString &path : {chenghu, lanchuan})
            QVERIFY2(path.startsWith(QLatin1String(":/icons/"))
                         && path.endsWith(QLatin1String(".png")),
                     qPrintable(path));
    }

    // Pictures live in the widget library; the list of them is what both sides go by.
    void everyPictureIsListed()
    {
        static const QRegularExpression picture(QStringLiteral(":/([^)\"\\s]+)"));
        const QStringList listed = listedResources();
        QVERIFY(!listed.isEmpty());
        for (const ZvServerConfig::Platform platform : platforms) {
            config()->setCurrentPlatform(platform);
            QStringList texts{config()->getPathOf_zijingzonglanPNG()};
            for (const Style &style : styles) {
                if (style.kind == Kind::Button || style.kind == Kind::Sheet)
                    texts.append((config()->*style.getter)());
            }
            for (const QString &text : qAsConst(texts)) {
                for (auto it = picture.globalMatch(text); it.hasNext();) {
                    const QString name = it.next().captured(1);
                    QVERIFY2(listed.contains(name), qPrintable(name));
                }
            }
        }
    }

    void agreementLinksOnceTheServiceIsKnown()
    {
        config()->setServiceAddress(QString());
        QVERIFY(!config()->getStyleOf_ContactUrl().contains(QLatin1String("href")));

        config()->setServiceAddress(QStringLiteral("http://127.0.0.1:8080/"));
        QVERIFY(config()->getStyleOf_ContactUrl().contains(
            QLatin1String("href=\"http://127.0.0.1:8080/ch/agreement.html\"")));
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(config()->getStyleOf_ContactUrl().contains(
            QLatin1String("href=\"http://127.0.0.1:8080/lc/agreement.html\"")));

        config()->setServiceAddress(QStringLiteral("http://host/\"><b>"));
        QVERIFY(!config()->getStyleOf_ContactUrl().contains(QLatin1String("<b>")));
        config()->setServiceAddress(QString());
    }

    void openingCodeHasAPicture()
    {
        config()->setServiceAddress(QString());
        QCOMPARE(config()->getUrlOf_qrcodePrefix(), QString());
        for (const char *address : {"http://127.0.0.1:8080", "http://127.0.0.1:8080/"}) {
            config()->setServiceAddress(QString::fromLatin1(address));
            QCOMPARE(config()->getUrlOf_qrcodePrefix(),
                     QStringLiteral("http://127.0.0.1:8080/cgi-bin/qrcode.html?s="));
        }
        config()->setServiceAddress(QString());
    }

private:
    // The style of the current row, once its platform has been chosen.
    static const Style &chosenStyle()
    {
        const auto valueOf = [](const char *column) {
            return *static_cast<int *>(QTest::qData(column, qMetaTypeId<int>()));
        };
        config()->setCurrentPlatform(static_cast<ZvServerConfig::Platform>(valueOf("platform")));
        return styles[valueOf("index")];
    }

    static void styleRows()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<int>("index");
        for (const ZvServerConfig::Platform platform : platforms) {
            for (std::size_t i = 0; i < std::size(styles); ++i)
                QTest::addRow("%s on %d", styles[i].name, int(platform)) << int(platform) << int(i);
        }
    }
};

ZV_TEST(ServerConfigTest)
#include "test_serverconfig.moc"
