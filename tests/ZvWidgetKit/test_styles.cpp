#include "buttonstyles.h"
#include "support/testregistry.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest/QtTest>

using zvtest::ButtonStyle;
using zvtest::buttonStyles;

namespace {

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

// A panel with one button that keeps away from the mouse until a test moves it there.
class Panel : public QWidget
{
public:
    Panel() : button(new QPushButton(QStringLiteral("买入"), this))
    {
        resize(200, 160);
        button->setGeometry(40, 40, 80, 80);
        button->setFocusPolicy(Qt::NoFocus);
        show();
    }

    QImage look() { return button->grab().toImage(); }
    void moveMouseAway() { QTest::mouseMove(this, QPoint(190, 150)); }
    void moveMouseIn() { QTest::mouseMove(button, QPoint(10, 10)); }

    QPushButton *button;
};

} // namespace

Q_DECLARE_METATYPE(const ButtonStyle *)

class StylesTest : public QObject
{
    Q_OBJECT

private slots:
    // The pictures that Qt draws, not the rules: a sheet that Qt cannot read warns, too.
    void buttonsShowTheirStates_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<const ButtonStyle *>("style");
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            for (const ButtonStyle &style : buttonStyles)
                QTest::addRow("%s on %d", style.name, int(platform)) << platform << &style;
        }
    }
    void buttonsShowTheirStates()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(const ButtonStyle *, style);
        config()->setCurrentPlatform(platform);
        Panel panel;
        panel.button->setStyleSheet((config()->*style->getter)());
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        panel.moveMouseAway();

        const QImage normal = panel.look();
        panel.moveMouseIn();
        QTRY_VERIFY(panel.look() != normal);
        const QImage hovered = panel.look();

        QTest::mousePress(panel.button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
        const QImage pressed = panel.look();
        QTest::mouseRelease(panel.button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
        QVERIFY(pressed != normal);
        QVERIFY(pressed != hovered);

        panel.moveMouseAway();
        QTRY_COMPARE(panel.look(), normal);
        panel.button->setEnabled(false);
        QVERIFY(panel.look() != normal);
        panel.button->setEnabled(true);

        panel.button->setFocusPolicy(Qt::StrongFocus);
        panel.button->setFocus();
        QTRY_VERIFY(panel.button->hasFocus());
        QVERIFY(panel.look() != normal);
        panel.button->clearFocus();

        if (!style->isCheckable)
            return;
        panel.button->setCheckable(true);
        panel.button->setChecked(true);
        const QImage checked = panel.look();
        QVERIFY(checked != normal);
        panel.moveMouseIn();
        QTRY_VERIFY(panel.look() != checked);
    }

    void promptsStandOutFromCaptions()
    {
        QLabel caption(QStringLiteral("手机号"));
        caption.setObjectName(QStringLiteral("label_login_phoneNunber"));
        QLabel prompt(QStringLiteral("ⓘ手机号有误"));
        prompt.setObjectName(QStringLiteral("label_login_phoneNumberPrompt"));
        QLabel referee(QStringLiteral("ⓘ请输入0/11位手机号"));
        referee.setObjectName(QStringLiteral("label_register_PhoneNumberPrompt_referee"));
        for (QLabel *label : {&caption, &prompt, &referee}) {
            label->setStyleSheet(config()->getStyleOf_LabelAndPrompt());
            label->ensurePolished();
        }
        const auto colourOf
            = [](const QLabel &label) { return label.palette().color(label.foregroundRole()); };
        QVERIFY(colourOf(prompt) != colourOf(caption));
        QCOMPARE(colourOf(referee), colourOf(prompt));
    }

    void dialogLeavesPlaceholdersTheirColour()
    {
        QDialog dialog;
        QPalette palette = dialog.palette();
        palette.setColor(QPalette::Text, Qt::white);
        palette.setColor(QPalette::PlaceholderText, Qt::gray);
        dialog.setPalette(palette);
        QLineEdit field(&dialog);
        field.setPalette(palette);
        dialog.setStyleSheet(config()->getStyleOf_TotalDialog());
        field.ensurePolished();
        QCOMPARE(field.palette().color(QPalette::Text), QColor(Qt::white));
        QCOMPARE(field.palette().color(QPalette::PlaceholderText), QColor(Qt::gray));
    }

    void dialogShowsTheAccent()
    {
        QVector<QRgb> tops;
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            config()->setCurrentPlatform(platform);
            QDialog dialog;
            dialog.resize(200, 100);
            dialog.setStyleSheet(config()->getStyleOf_TotalDialog());
            const QImage look = dialog.grab().toImage();
            QVERIFY(look.pixelColor(100, 50).lightness() < 40);
            tops.append(look.pixel(100, 1));
        }
        QVERIFY(tops.at(0) != tops.at(1));
    }
};

ZV_TEST(StylesTest)
#include "test_styles.moc"
