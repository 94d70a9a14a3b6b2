#include "BreltWidgetToolKit/breltdarkstyle.h"

#include "support/testregistry.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStyleOptionButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QToolTip>

#include <cmath>
#include <functional>
#include <memory>

namespace {

const QColor c_blue(0x26, 0x70, 0xd0);
const QColor c_vermilion(0xd4, 0x3b, 0x33);

double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
        + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return qMax(first, second) / qMin(first, second);
}

// The share of pixels that are light, from 0 to 1.
double lightShare(const QImage &picture)
{
    int light = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            light += qGray(picture.pixel(x, y)) > 128;
    }
    return double(light) / (picture.width() * picture.height());
}

QImage paintedButton(QStyle::State state, const QPalette &palette,
                     QStyleOptionButton::ButtonFeatures features = QStyleOptionButton::None)
{
    QImage image(100, 30, QImage::Format_RGB32);
    image.fill(Qt::black);
    QStyleOptionButton option;
    option.rect = image.rect();
    option.text = QStringLiteral("撤单");
    option.state = state;
    option.features = features;
    option.palette = palette;
    QPainter painter(&image);
    QApplication::style()->drawControl(QStyle::CE_PushButton, &option, &painter);
    return image;
}

} // namespace

class TestBreltDarkStyle : public QObject
{
    Q_OBJECT

private slots:
    void init() { BreltDarkStyle::install(*qApp, c_blue); }

    void textIsReadable_data();
    void textIsReadable();
    void textOnChoosesTheBetterReadable();
    void installAgainChangesTheAccent();
    void invalidAccentIsTheKitsOwn();
    void statesOfAPaintedButtonDiffer();
    void paintedButtonIsDarkWithALightPalette();
    void stockControlsAreDark_data();
    void stockControlsAreDark();
    void disabledControlsLookDifferent();
    void hoverAndFocusAreSeen();
    void edgesOfFieldsAreSeen();
    void menuHasAFrameAndSeparators();
    void toolTipsAreDark();
    void scrollBarIsDraggedAndPaged();
    void scrollBarPartsFillTheBar();
    void arrowOfASortedColumnLeavesItsTextAlone_data();
    void arrowOfASortedColumnLeavesItsTextAlone();
};

void TestBreltDarkStyle::textIsReadable_data()
{
    QTest::addColumn<QColor>("accent");
    QTest::newRow("blue") << c_blue;
    QTest::newRow("vermilion") << c_vermilion;
    QTest::newRow("yellow") << QColor(Qt::yellow);
    QTest::newRow("black") << QColor(Qt::black);
}

void TestBreltDarkStyle::textIsReadable()
{
    QFETCH(QColor, accent);
    const QPalette palette = BreltDarkStyle(accent).standardPalette();
    const QList<QPair<QPalette::ColorRole, QPalette::ColorRole>> pairs{
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::PlaceholderText, QPalette::Base},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::BrightText, QPalette::Window}};
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (const auto &pair : pairs) {
            const double found
                = contrast(palette.color(group, pair.first), palette.color(group, pair.second));
            QVERIFY2(
                found >= 4.5,
                qPrintable(
                    QStringLiteral("group %1, role %2: %3").arg(group).arg(pair.first).arg(found)));
        }
    }
}

void TestBreltDarkStyle::textOnChoosesTheBetterReadable()
{
    for (int hue = 0; hue < 360; hue += 5) {
        for (int value = 0; value < 256; value += 15) {
            const QColor background = QColor::fromHsv(hue, 200, value);
            QVERIFY(contrast(BreltDarkStyle::textOn(background), background) >= 4.3);
        }
    }
}

void TestBreltDarkStyle::installAgainChangesTheAccent()
{
    QCOMPARE(BreltDarkStyle::currentAccent(), c_blue);
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), c_blue);
    BreltDarkStyle::install(*qApp, c_vermilion);
    QCOMPARE(BreltDarkStyle::currentAccent(), c_vermilion);
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), c_vermilion);
    QLineEdit field;
    QCOMPARE(field.palette().color(QPalette::Highlight), c_vermilion);
}

void TestBreltDarkStyle::invalidAccentIsTheKitsOwn()
{
    QVERIFY(BreltDarkStyle(QColor()).accent().isValid());
}

void TestBreltDarkStyle::statesOfAPaintedButtonDiffer()
{
    const QPalette palette = QApplication::palette();
    const QStyle::State enabled = QStyle::State_Enabled | QStyle::State_Raised;
    const QList<QImage> pictures{
        paintedButton(enabled, palette),
        paintedButton(enabled | QStyle::State_MouseOver, palette),
        paintedButton(QStyle::State_Enabled | QStyle::State_Sunken, palette),
        paintedButton(QStyle::State_Enabled | QStyle::State_On, palette),
        paintedButton(enabled | QStyle::State_HasFocus, palette),
        paintedButton(QStyle::State_Raised, palette),
        paintedButton(enabled, palette, QStyleOptionButton::DefaultButton),
        paintedButton(QStyle::State_On, palette)};
    for (int i = 0; i < pictures.size(); ++i) {
        for (int j = 0; j < i; ++j)
            QVERIFY2(pictures.at(i) != pictures.at(j), qPrintable(QString("%1 %2").arg(i).arg(j)));
    }
}

void TestBreltDarkStyle::paintedButtonIsDarkWithALightPalette()
{
    const QPalette light{QColor(Qt::lightGray)};
    const QImage picture = paintedButton(QStyle::State_Enabled | QStyle::State_Raised, light);
    QVERIFY(lightShare(picture) < 0.2);
    QVERIFY(luminance(picture.pixelColor(6, 15)) < 0.05);

    QPalette red = QApplication::palette(); // a dark one of a delegate's own choice is kept
    red.setColor(QPalette::Button, QColor(0x60, 0x10, 0x10));
    const QImage own = paintedButton(QStyle::State_Enabled | QStyle::State_Raised, red);
    QCOMPARE(own.pixelColor(6, 15), QColor(0x60, 0x10, 0x10));
}

using Maker = std::function<QWidget *()>;
Q_DECLARE_METATYPE(Maker)

void TestBreltDarkStyle::stockControlsAreDark_data()
{
    QTest::addColumn<Maker>("make");
    const QString text = QStringLiteral("藏品");
    QTest::newRow("push button") << Maker([=] { return new QPushButton(text); });
    QTest::newRow("tool button") << Maker([=] {
        auto *button = new QToolButton;
        button->setText(text);
        return button;
    });
    QTest::newRow("tick box") << Maker([=] {
        auto *box = new QCheckBox(text);
        box->setChecked(true);
        return box;
    });
    QTest::newRow("radio button") << Maker([=] { return new QRadioButton(text); });
    QTest::newRow("line edit") << Maker([=] { return new QLineEdit(text); });
    QTest::newRow("text edit") << Maker([=] { return new QPlainTextEdit(text); });
    QTest::newRow("spin box") << Maker([] { return new QSpinBox; });
    QTest::newRow("date edit") << Maker([] { return new QDateEdit; });
    QTest::newRow("combo box") << Maker([=] {
        auto *box = new QComboBox;
        box->addItem(text);
        return box;
    });
    QTest::newRow("editable combo box") << Maker([=] {
        auto *box = new QComboBox;
        box->setEditable(true);
        box->addItem(text);
        return box;
    });
    QTest::newRow("scroll bar") << Maker([] { return new QScrollBar(Qt::Horizontal); });
    QTest::newRow("slider") << Maker([] { return new QSlider(Qt::Horizontal); });
    QTest::newRow("progress bar") << Maker([] { return new QProgressBar; });
    QTest::newRow("group box") << Maker([=] { return new QGroupBox(text); });
    QTest::newRow("menu") << Maker([=] {
        auto *menu = new QMenu;
        menu->addAction(text);
        menu->addSeparator();
        menu->addAction(text)->setEnabled(false);
        return menu;
    });
    QTest::newRow("tabs") << Maker([=] {
        auto *tabs = new QTabWidget;
        tabs->addTab(new QWidget, text);
        tabs->addTab(new QWidget, text);
        return tabs;
    });
    QTest::newRow("table") << Maker([=] {
        auto *table = new QTableWidget(4, 2);
        table->setAlternatingRowColors(true);
        return table;
    });
}

void TestBreltDarkStyle::stockControlsAreDark()
{
    QFETCH(Maker, make);
    const std::unique_ptr<QWidget> widget(make());
    widget->resize(widget->sizeHint().expandedTo(QSize(120, 24)));
    widget->setAttribute(Qt::WA_DontShowOnScreen);
    widget->show();
    const QImage enabled = widget->grab().toImage();
    QVERIFY2(lightShare(enabled) < 0.25, qPrintable(QString::number(lightShare(enabled))));
}

void TestBreltDarkStyle::disabledControlsLookDifferent()
{
    QPushButton push(QStringLiteral("买入"));
    QCheckBox tick(QStringLiteral("同意"));
    QLineEdit field(QStringLiteral("100"));
    QComboBox combo;
    combo.addItem(QStringLiteral("全部"));
    QSpinBox spin;
    for (QWidget *widget : QList<QWidget *>{&push, &tick, &field, &combo, &spin}) {
        const QImage enabled = widget->grab().toImage();
        widget->setEnabled(false);
        QVERIFY2(widget->grab().toImage() != enabled, widget->metaObject()->className());
    }
}

void TestBreltDarkStyle::hoverAndFocusAreSeen()
{
    QWidget page;
    QPushButton push(QStringLiteral("买入"), &page);
    QCheckBox tick(QStringLiteral("同意"), &page);
    tick.move(0, 40);
    QLineEdit field(&page);
    field.move(0, 80);
    QComboBox combo(&page);
    combo.move(0, 120);
    QPushButton last(&page);
    last.move(150, 0);
    page.resize(300, 200);
    page.show();
    page.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&page));
    for (QWidget *widget : QList<QWidget *>{&push, &tick, &field, &combo}) {
        last.setFocus();
        const QImage rest = widget->grab().toImage();
        widget->setFocus();
        const QImage focused = widget->grab().toImage();
        QVERIFY2(focused != rest, widget->metaObject()->className());
    }
    for (QWidget *widget : QList<QWidget *>{&push, &tick, &combo}) {
        last.setFocus();
        QVERIFY2(widget->testAttribute(Qt::WA_Hover), widget->metaObject()->className());
        const QImage rest = widget->grab().toImage();
        widget->setAttribute(Qt::WA_UnderMouse);
        const QImage hovered = widget->grab().toImage();
        widget->setAttribute(Qt::WA_UnderMouse, false);
        QVERIFY2(hovered != rest, widget->metaObject()->className());
    }
}

void TestBreltDarkStyle::edgesOfFieldsAreSeen()
{
    QLineEdit line;
    QSpinBox spin;
    QDateEdit date;
    QComboBox combo;
    QPushButton push(QStringLiteral("买入"));
    for (QWidget *widget : QList<QWidget *>{&line, &spin, &date, &combo, &push}) {
        const QImage picture = widget->grab().toImage();
        const QColor edge = picture.pixelColor(0, picture.height() / 2);
        QVERIFY2(qGray(edge.rgb()) - qGray(QApplication::palette().window().color().rgb()) > 30,
                 widget->metaObject()->className());
    }
}

void TestBreltDarkStyle::menuHasAFrameAndSeparators()
{
    QMenu menu;
    menu.addAction(QStringLiteral("添加自选"));
    const QAction *separator = menu.addSeparator();
    menu.addAction(QStringLiteral("撤单"));
    menu.popup(QPoint(20, 20));
    const QImage picture = menu.grab().toImage();
    const int ground = qGray(picture.pixel(2, 2));
    QVERIFY(qGray(picture.pixel(0, picture.height() / 2)) > ground + 30);
    const QPoint middle = menu.actionGeometry(const_cast<QAction *>(separator)).center();
    QVERIFY(qGray(picture.pixel(middle)) > ground + 30);
}

void TestBreltDarkStyle::toolTipsAreDark()
{
    const QPalette palette = QToolTip::palette();
    QVERIFY(luminance(palette.color(QPalette::ToolTipBase)) < 0.05);
    QVERIFY(contrast(palette.color(QPalette::ToolTipText), palette.color(QPalette::ToolTipBase))
            >= 4.5);
}

void TestBreltDarkStyle::scrollBarIsDraggedAndPaged()
{
    QScrollBar bar(Qt::Vertical);
    bar.setRange(0, 900);
    bar.setPageStep(100);
    bar.resize(bar.sizeHint().width(), 400);
    bar.show();

    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 395));
    QCOMPARE(bar.value(), 100);
    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 2));
    QCOMPARE(bar.value(), 0);

    QTest::mousePress(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 10));
    QMouseEvent move(QEvent::MouseMove, QPoint(5, 210), bar.mapToGlobal(QPoint(5, 210)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&bar, &move);
    QTest::mouseRelease(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 210));
    QCOMPARE(bar.value(), 500);
}

void TestBreltDarkStyle::scrollBarPartsFillTheBar()
{
    for (const int maximum : {0, 1, 10, 1000000, 2147483647}) {
        QStyleOptionSlider option;
        option.rect = QRect(0, 0, 10, 300);
        option.orientation = Qt::Vertical;
        option.maximum = maximum;
        option.pageStep = 10;
        option.sliderPosition = maximum / 2;
        const auto part = [&option](QStyle::SubControl control) {
            return QApplication::style()->subControlRect(QStyle::CC_ScrollBar, &option, control);
        };
        const QRect handle = part(QStyle::SC_ScrollBarSlider);
        QVERIFY(handle.height() >= 28);
        QVERIFY(option.rect.contains(handle));
        QCOMPARE(part(QStyle::SC_ScrollBarSubPage).height() + handle.height()
                     + part(QStyle::SC_ScrollBarAddPage).height(),
                 300);
    }
}

void TestBreltDarkStyle::arrowOfASortedColumnLeavesItsTextAlone_data()
{
    QTest::addColumn<int>("alignment");
    QTest::newRow("figures") << int(Qt::AlignRight);
    QTest::newRow("names") << int(Qt::AlignHCenter);
    QTest::newRow("left") << int(Qt::AlignLeft);
}

void TestBreltDarkStyle::arrowOfASortedColumnLeavesItsTextAlone()
{
    QFETCH(int, alignment);
    QTableWidget table(1, 3);
    QHeaderView *header = table.horizontalHeader();
    // As the tables of the client have one; without, the text makes room by itself.
    header->setStyleSheet("QHeaderView::section{background-color:#181a1e;border:none;}");
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::Alignment(alignment) | Qt::AlignVCenter);
    table.resize(400, 100);
    table.show();
    const auto pictureWith = [&](const QString &text, bool isSorted) {
        table.setHorizontalHeaderLabels({"", text, ""});
        header->setSortIndicatorShown(isSorted);
        header->setSortIndicator(1, Qt::DescendingOrder);
        return header->grab().toImage();
    };
    const auto changed = [](const QImage &before, const QImage &after) {
        QRect place;
        for (int y = 0; y < after.height(); ++y) {
            for (int x = 0; x < after.width(); ++x) {
                if (before.pixel(x, y) != after.pixel(x, y))
                    place |= QRect(x, y, 1, 1);
            }
        }
        return place;
    };
    const QImage named = pictureWith("rate%", false);
    const QRect text = changed(pictureWith(QString(), false), named);
    const QRect arrow = changed(named, pictureWith("rate%", true));
    QVERIFY(!text.isEmpty() && !arrow.isEmpty());
    QVERIFY2(!arrow.intersects(text),
             qPrintable(QStringLiteral("%1 to %2 over %3 to %4")
                            .arg(arrow.left())
                            .arg(arrow.right())
                            .arg(text.left())
                            .arg(text.right())));
    QVERIFY(arrow.left() >= header->sectionViewportPosition(1));
    QVERIFY(arrow.right() < header->sectionViewportPosition(2));
}

ZV_TEST(TestBreltDarkStyle)
#include "test_breltdarkstyle.moc"
