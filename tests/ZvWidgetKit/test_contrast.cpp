#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "buttonstyles.h"
#include "chromebench.h"
#include "contrast.h"
#include "loginbench.h"
#include "marketbench.h"
#include "moneybench.h"
#include "pictures.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHash>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QTextDocument>
#include <QtTest/QtTest>

#include <algorithm>

using zvtest::ButtonStyle;
using zvtest::contrast;

namespace {

constexpr double enough = 4.5; // for small text
constexpr double enoughDisabled = 2.0; // a button that waits need not be read, but has to be seen

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

// The colours of a part of a picture, the most common one first.
QList<QColor> coloursOf(const QImage &picture, const QRect &part)
{
    QHash<QRgb, int> counts;
    const QRect inside = part & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    QList<QRgb> all = counts.keys();
    std::sort(all.begin(), all.end(),
              [&](QRgb one, QRgb other) { return counts.value(one) > counts.value(other); });
    QList<QColor> colours;
    for (const QRgb each : qAsConst(all))
        colours << QColor(each);
    return colours;
}

// A button that poses in a state, whatever the mouse does. Its text is solid: a picture of it shows
// the very colour of the text, which thin strokes do not.
class Poser : public QPushButton
{
public:
    explicit Poser(QWidget *parent) : QPushButton(QStringLiteral("██"), parent) { }

    QStyle::State pose = QStyle::State_None;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        option.state &= ~(QStyle::State_MouseOver | QStyle::State_Sunken | QStyle::State_On
                          | QStyle::State_Raised | QStyle::State_HasFocus | QStyle::State_Off);
        option.state |= pose;
        QStylePainter(this).drawControl(QStyle::CE_PushButton, option);
    }
};

struct Pose {
    const char *name;
    QStyle::State state;
    bool isForCheckable;
};

const Pose poses[] = {
    {"at rest", QStyle::State_Raised, false},
    {"hovered", QStyle::State_Raised | QStyle::State_MouseOver, false},
    {"pressed", QStyle::State_Sunken | QStyle::State_MouseOver, false},
    {"checked", QStyle::State_On, true},
    {"checked and hovered", QStyle::State_On | QStyle::State_MouseOver, true},
};

// Texts that cannot be read as they are drawn in a window: each with its contrast.
class Reader
{
public:
    explicit Reader(QWidget *window) : m_window(window), m_picture(window->grab().toImage()) { }

    QStringList hardToRead()
    {
        for (const QLabel *label : m_window->findChildren<QLabel *>()) {
            // These keep a place and are painted in the colour of the panel.
            if (label->objectName().startsWith(QLatin1String("label_hide")))
                continue;
            if (!label->text().trimmed().isEmpty())
                read(label, label->text(), label->palette().color(label->foregroundRole()), 0);
        }
        for (const QAbstractButton *button : m_window->findChildren<QAbstractButton *>()) {
            // The palette knows a button's colours at rest alone; the checked ones pose above.
            if (!button->isChecked() && !button->text().trimmed().isEmpty())
                read(button, button->text(), button->palette().color(QPalette::ButtonText), 6);
        }
        for (const QLineEdit *edit : m_window->findChildren<QLineEdit *>()) {
            read(edit, edit->text(), edit->palette().color(QPalette::Text), 6);
            if (!edit->placeholderText().isEmpty())
                read(edit, edit->placeholderText(),
                     edit->palette().color(QPalette::PlaceholderText), 6);
        }
        for (const QComboBox *box : m_window->findChildren<QComboBox *>()) {
            if (!box->isEditable())
                read(box, box->currentText(), box->palette().color(QPalette::ButtonText), 6);
        }
        return m_found;
    }

    int count() const { return m_count; }

private:
    void read(const QWidget *widget, const QString &text, QColor colour, int border)
    {
        if (!widget->isVisible() || !widget->isEnabled() || widget->visibleRegion().isEmpty())
            return;
        const QRect seen
            = widget->visibleRegion().boundingRect().adjusted(border, border, -border, -border);
        const QList<QColor> colours
            = coloursOf(m_picture, seen.translated(widget->mapTo(m_window, QPoint())));
        if (colours.isEmpty())
            return;
        const QColor ground = colours.first();
        // Markup has colours of its own: what stands out most is the text.
        if (Qt::mightBeRichText(text)) {
            for (const QColor &each : colours) {
                if (contrast(each, ground) > contrast(colour, ground) || each == colours.first())
                    colour = each;
            }
        }
        ++m_count;
        const double reached = contrast(colour, ground);
        if (reached < enough)
            m_found << QStringLiteral("%1 \"%2\" %3 on %4: %5")
                           .arg(widget->objectName(), text, colour.name(), ground.name())
                           .arg(reached, 0, 'f', 2);
    }

    QWidget *m_window;
    QImage m_picture;
    QStringList m_found;
    int m_count = 0;
};

} // namespace

Q_DECLARE_METATYPE(const ButtonStyle *)

// Whether texts stand out from what they stand on.
class ContrastTest : public QObject
{
    Q_OBJECT

private:
    // Colours of sheets that are required as they are.
    static bool isGiven(const QString &text)
    {
        static const QStringList given{
            QStringLiteral("#ffffff on #e53535"), // the button of the lock page
            QStringLiteral("#ffffff on #e73c3c"), // the buttons of money in and out
        };
        return std::any_of(given.cbegin(), given.cend(),
                           [&](const QString &each) { return text.contains(each); });
    }

    static void readAll(QWidget *window, int least)
    {
        QCoreApplication::processEvents();
        Reader reader(window);
        QStringList found = reader.hardToRead();
        found.erase(std::remove_if(found.begin(), found.end(), isGiven), found.end());
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
        QVERIFY2(reader.count() >= least, qPrintable(QString::number(reader.count())));
    }

    static void addPlatforms()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("ch") << 1;
        QTest::newRow("lc") << 2;
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void buttonsCanBeReadInEachState_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<const ButtonStyle *>("style");
        for (const int platform : {1, 2}) {
            for (const ButtonStyle &style : zvtest::buttonStyles) {
                if (style.hasText)
                    QTest::addRow("%s on %d", style.name, platform) << platform << &style;
            }
        }
    }
    void buttonsCanBeReadInEachState()
    {
        QFETCH(int, platform);
        QFETCH(const ButtonStyle *, style);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        // The lightest ground on which the library puts one.
        QWidget ground;
        ground.resize(160, 80);
        QPalette palette;
        palette.setColor(QPalette::Window, QColor(30, 33, 38));
        ground.setPalette(palette);
        Poser button(&ground);
        button.setStyleSheet((config()->*style->getter)());
        button.setCheckable(style->isCheckable);
        button.setGeometry(10, 10, 140, 60);

        QStringList found;
        const auto look = [&](const char *name, double least) {
            const QList<QColor> colours
                = coloursOf(ground.grab().toImage(), button.geometry().adjusted(8, 8, -8, -8));
            QVERIFY2(colours.size() >= 2, name);
            const double reached = contrast(colours.at(0), colours.at(1));
            if (reached < least)
                found << QStringLiteral("%1: %2 on %3: %4")
                             .arg(QLatin1String(name), colours.at(1).name(), colours.at(0).name())
                             .arg(reached, 0, 'f', 2);
        };
        for (const Pose &pose : poses) {
            if (pose.isForCheckable && !style->isCheckable)
                continue;
            button.pose = pose.state;
            look(pose.name, enough);
        }
        button.pose = QStyle::State_None;
        button.setEnabled(false);
        look("disabled", enoughDisabled);
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QStringLiteral("; "))));
    }

    // What stands in the row of the market table that is chosen.
    void figuresCanBeReadOnTheChosenRow_data() { addPlatforms(); }
    void figuresCanBeReadOnTheChosenRow()
    {
        QFETCH(int, platform);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        const QColor row(config()->getStyleOf_MarketTableSelectRow());
        for (const QColor &figure : {QColor(Qt::white), QColor(Qt::yellow)})
            QVERIFY(contrast(figure, row) >= enough);
        QVERIFY(contrast(QColor(config()->getStyleOf_MarketTableHeader()), QColor("#1e2126"))
                >= enough);
    }

    void theBars_data() { addPlatforms(); }
    void theBars()
    {
        QFETCH(int, platform);
        zvtest::ChromeBench bench(platform);
        bench.titleBar->setTitle(QStringLiteral("藏品交易"));
        ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
        cache->storeMessageList({{"公告", "http://127.0.0.1/1"}});
        readAll(&bench, 6);
        for (const bool isOpen : {true, false}) {
            cache->storeMarketCheck(isOpen);
            bench.signIn();
            readAll(&bench, 8);
        }
    }

    void theMarketHalf_data() { addPlatforms(); }
    void theMarketHalf()
    {
        QFETCH(int, platform);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        zvtest::MarketBench bench;
        bench.call("showButtonsNeedLog");
        readAll(bench.market.get(), 10);
        bench.call("slot_changeToPage_KLine_day");
        readAll(bench.market.get(), 10);
        bench.call("slot_changeToPage_marketDetail");
        readAll(bench.market.get(), 10);
    }

    void theTradingHalf_data() { addPlatforms(); }
    void theTradingHalf()
    {
        QFETCH(int, platform);
        zvtest::TransactionBench bench(platform);
        bench.click("pushButton_select");
        for (const QString &button : zvtest::navigationButtons) {
            if (!bench.shown().contains(button) || button == QLatin1String("pushButton_select"))
                continue;
            bench.button(button)->click();
            QTest::mouseMove(bench.trading.get(), QPoint(1300, 300));
            readAll(bench.trading.get(), 10);
            if (QTest::currentTestFailed())
                QWARN(qPrintable(button));
        }
        bench.call("slot_showTransctionLock");
        readAll(bench.trading.get(), 3);
    }

    void moneyInAndOut_data() { addPlatforms(); }
    void moneyInAndOut()
    {
        QFETCH(int, platform);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        zvtest::MoneyBench bench;
        bench.click("pushButton_ok"); // prompts come up
        readAll(bench.dialog, 8);
    }

    void signingIn_data() { addPlatforms(); }
    void signingIn()
    {
        QFETCH(int, platform);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        zvtest::LoginBench bench;
        readAll(bench.dialog, 4);
    }
};

ZV_TEST(ContrastTest)
#include "test_contrast.moc"
