#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "ZvChartKit/chartcanvas.h"
#include "ZvModelKit/zvubkline.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "marketrows.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QMenu>
#include <QPixmapCache>
#include <QPushButton>
#include <QSpinBox>
#include <QSplitter>
#include <QToolButton>
#include <QtTest/QtTest>

namespace {

using Servers = QList<QPair<QString, QString>>;

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

QString folder()
{
    return QStringLiteral(":/icons/controls/");
}

QImage look(QWidget *widget)
{
    return widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// How many rows of the middle of an image are not of one colour.
int inkRows(const QImage &image)
{
    int rows = 0;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb ground = image.pixel(image.width() / 2 - 60, y);
        bool isInk = false;
        for (int x = image.width() / 2 - 60; x < image.width() / 2 + 60; ++x)
            isInk = isInk || image.pixel(x, y) != ground;
        rows += isInk;
    }
    return rows;
}

// A server's button in a window that the mouse can leave it for.
class Strip : public QWidget
{
public:
    explicit Strip(const QString &name, bool isInUse) : item(new ZvGuideTabItem(this))
    {
        resize(120, 120);
        item->setGeometry(20, 0, 28, 112);
        item->setServerName(name);
        if (isInUse)
            item->setEnabledLook();
        else
            item->setDisabledLook();
        button = item->findChild<QPushButton *>();
        button->setFocusPolicy(Qt::NoFocus);
        show();
    }

    void moveMouseAway() { QTest::mouseMove(this, QPoint(110, 110)); }

    ZvGuideTabItem *item;
    QPushButton *button;
};

} // namespace

// The pictures that styles show: the plates of the guide strip, the signs in the fields of the
// sign-in dialog, the figure of an empty chart, and the arrows and grips of the dark style.
class LookPicturesTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        zvtest::wearTheClientsLook();
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void cleanupTestCase() { BreltDarkStyle::setPictures(QString()); }

    void guideStrips_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<Servers>("servers");
        const auto name = [](const char *text) { return qMakePair(QString(text), QString(text)); };
        QTest::newRow("guidestrip_ch")
            << 1 << Servers{name("邮票"), name("钱币"), name("磁卡"), name("宝玉石"), name("其他")};
        QTest::newRow("guidestrip_lc")
            << 2 << Servers{name("邮币"), name("茶酒"), name("玉石"), name("书画"), name("陶艺")};
        QTest::newRow("guidestrip_lc_stones")
            << 2
            << Servers{name("翡翠"), name("和田玉"), name("蓝宝石"), name("钻石"), name("影视")};
    }
    void guideStrips()
    {
        QFETCH(int, platform);
        QFETCH(Servers, servers);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        ZvGuideTabPage page(nullptr);
        page.setServerList(servers);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        const QString difference
            = zvtest::differenceFromPictures(&page, QString(QTest::currentDataTag()));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // A market is known by its sign; one that has none gets a plain face.
    void aPlateFollowsTheName_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("ch") << 1 << QStringList{"邮票", "玉器", "钱币", "磁卡", "其他"};
        QTest::newRow("lc") << 2 << QStringList{"邮币", "蓝宝", "影视", "钻石", "翡翠",
                                                "玉石", "茶酒", "书画", "陶艺", "其他"};
    }
    void aPlateFollowsTheName()
    {
        QFETCH(int, platform);
        QFETCH(QStringList, names);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        for (const bool isInUse : {true, false}) {
            QList<QImage> signs;
            for (const QString &name : qAsConst(names)) {
                Strip strip(name, isInUse);
                QVERIFY(QTest::qWaitForWindowExposed(&strip));
                strip.moveMouseAway();
                // Above the text there is nothing but the sign.
                const QImage sign = look(strip.button).copy(6, 2, 16, 18);
                QVERIFY2(!signs.contains(sign), qPrintable(name));
                signs.append(sign);
            }
        }
    }

    void aPlateShowsItsStates_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<bool>("isInUse");
        for (const int platform : {1, 2}) {
            for (const bool isInUse : {true, false})
                QTest::addRow("%d %s", platform, isInUse ? "in use" : "idle")
                    << platform << isInUse;
        }
    }
    void aPlateShowsItsStates()
    {
        QFETCH(int, platform);
        QFETCH(bool, isInUse);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        Strip strip(QStringLiteral("邮币"), isInUse);
        QVERIFY(QTest::qWaitForWindowExposed(&strip));
        strip.moveMouseAway();
        // A pixel of the face, away from sign and text.
        const auto face = [&] { return look(strip.button).pixelColor(22, 74); };
        const QColor still = face();
        QTest::mouseMove(strip.button);
        QTRY_VERIFY(face() != still);
        const QColor hovered = face();
        QTest::mousePress(strip.button, Qt::LeftButton);
        const QColor pressed = face();
        QTest::mouseRelease(strip.button, Qt::LeftButton);
        strip.moveMouseAway();
        QTRY_COMPARE(face(), still);
        strip.item->disableButton();
        const QList<QColor> all{still, hovered, pressed, face()};
        for (int i = 0; i < all.size(); ++i) {
            for (int j = 0; j < i; ++j)
                QVERIFY2(all.at(i) != all.at(j), qPrintable(QStringLiteral("%1 %2").arg(i).arg(j)));
        }
    }

    void fieldsOfTheSignInDialog_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("page");
        for (const int platform : {1, 2}) {
            const QString name = platform == 1 ? QStringLiteral("ch") : QStringLiteral("lc");
            QTest::newRow(qPrintable("signin_" + name)) << platform << QString();
            QTest::newRow(qPrintable("signin_register_" + name))
                << platform << QStringLiteral("pushButton_login_immediatelyRegister");
        }
    }
    void fieldsOfTheSignInDialog()
    {
        QFETCH(int, platform);
        QFETCH(QString, page);
        config()->setCurrentPlatform(ZvServerConfig::Platform(platform));
        LoginDialog dialog;
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        if (!page.isEmpty())
            QTest::mouseClick(dialog.findChild<QPushButton *>(page), Qt::LeftButton);
        QTest::mouseMove(&dialog, QPoint(2, 2));
        if (dialog.focusWidget())
            dialog.focusWidget()->clearFocus();
        const QString difference
            = zvtest::differenceFromPictures(&dialog, QString(QTest::currentDataTag()));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void controls()
    {
        QWidget panel;
        auto *row = new QHBoxLayout(&panel);
        for (const bool isEnabled : {true, false}) {
            auto *box = new QComboBox;
            box->addItem(QStringLiteral("全部"));
            auto *date = new QDateEdit(QDate(2019, 12, 31));
            date->setCalendarPopup(true);
            auto *count = new QSpinBox; // at its lowest value: there is no way down
            for (QWidget *field : QList<QWidget *>{box, date, count}) {
                field->setEnabled(isEnabled);
                row->addWidget(field);
            }
        }
        for (const Qt::ArrowType arrow :
             {Qt::LeftArrow, Qt::RightArrow, Qt::UpArrow, Qt::DownArrow}) {
            auto *button = new QToolButton;
            button->setArrowType(arrow);
            row->addWidget(button);
        }
        for (const Qt::Orientation orientation : {Qt::Vertical, Qt::Horizontal}) {
            auto *splitter = new QSplitter(orientation);
            for (int i = 0; i < 2; ++i) {
                auto *half = new QWidget;
                half->setMinimumSize(30, 30);
                splitter->addWidget(half);
            }
            row->addWidget(splitter);
        }
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        const QString difference
            = zvtest::differenceFromPictures(&panel, QStringLiteral("controls"));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void arrowsShowTheMouse_data()
    {
        QTest::addColumn<bool>("isSpinBox");
        QTest::newRow("combo box") << false;
        QTest::newRow("spin box") << true;
    }
    void arrowsShowTheMouse()
    {
        QFETCH(bool, isSpinBox);
        QWidget panel;
        panel.resize(300, 100);
        QWidget *field;
        QPoint arrow;
        if (isSpinBox)
            field = new QSpinBox(&panel);
        else
            field = new QComboBox(&panel);
        field->setFocusPolicy(Qt::NoFocus);
        field->setGeometry(20, 20, 120, 30);
        arrow = QPoint(isSpinBox ? 112 : 108, isSpinBox ? 8 : 15);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QTest::mouseMove(&panel, QPoint(290, 90));
        const auto brightest = [&] {
            int most = 0;
            const QImage image = look(field).copy(QRect(arrow - QPoint(5, 5), QSize(11, 11)));
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    most = qMax(most, qGray(image.pixel(x, y)));
            }
            return most;
        };
        const int still = brightest();
        QVERIFY2(still > 120, "an arrow is to be seen");
        QTest::mouseMove(field, arrow);
        QTRY_VERIFY(brightest() > still + 20);
        field->setEnabled(false);
        QVERIFY(brightest() < still - 40);
    }

    // The signs of the window's buttons light up, and the button that closes it turns red.
    void windowButtonsShowTheMouse_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("window_minimize_hovered") << QStringLiteral("最小化");
        QTest::newRow("window_normal_hovered") << QStringLiteral("最大化/还原");
        QTest::newRow("window_close_hovered") << QStringLiteral("关闭");
    }
    void windowButtonsShowTheMouse()
    {
        QFETCH(QString, name);
        TitleBar bar(nullptr);
        bar.resize(800, 35);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        QTest::mouseMove(&bar, QPoint(20, 20));
        for (auto *button : bar.findChildren<QPushButton *>()) {
            if (button->accessibleName() != name)
                continue;
            const auto hasWhite = [button] {
                const QImage image = look(button);
                for (int y = 0; y < image.height(); ++y) {
                    for (int x = 0; x < image.width(); ++x) {
                        if (qGray(image.pixel(x, y)) > 240)
                            return true;
                    }
                }
                return false;
            };
            QVERIFY(!hasWhite());
            QTest::mouseMove(button);
            QTRY_VERIFY(hasWhite());
            const QString difference
                = zvtest::differenceFromPictures(button, QString(QTest::currentDataTag()));
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
            return;
        }
        QFAIL("no button of this name");
    }

    // A favourite or not, and with what cannot be done greyed out.
    void menusOfTheTable_data()
    {
        QTest::addColumn<bool>("isOptionView");
        QTest::addColumn<bool>("isComposite");
        QTest::newRow("marketmenu") << false << false;
        QTest::newRow("marketmenu_favourite") << true << false;
        QTest::newRow("marketmenu_composite") << false << true;
    }
    void menusOfTheTable()
    {
        QFETCH(bool, isOptionView);
        QFETCH(bool, isComposite);
        Collection_TableView view;
        view.resize(780, 500);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.setMarketList({isComposite ? zvtest::composite() : zvtest::collection(1001)});
        view.setIsOptionView(isOptionView);
        const QPoint place = view.visualRect(view.model()->index(0, 0)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, view.mapToGlobal(place));
        QCoreApplication::sendEvent(view.viewport(), &event);
        auto *menu = view.findChild<QMenu *>();
        QVERIFY(menu);
        for (const QAction *action : menu->actions())
            QCOMPARE(action->icon().isNull(), action->isSeparator());
        menu->setActiveAction(menu->actions().at(3));
        const QString difference
            = zvtest::differenceFromPictures(menu, QString(QTest::currentDataTag()));
        menu->close();
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void aChartWithoutDataHasAFigure()
    {
        zvplot::ChartCanvas canvas;
        canvas.resize(900, 500);
        canvas.showKLine(ZvUBKLine(), zvplot::KLinePlot::Period::Day);
        canvas.show();
        QVERIFY(QTest::qWaitForWindowExposed(&canvas));
        canvas.setNotice(zvplot::ChartNotice(zvplot::ChartNotice::NoData));
        const QString difference
            = zvtest::differenceFromPictures(&canvas, QStringLiteral("chart_without_data"));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        // Where there is no room for it the words stand alone.
        const QImage large = look(&canvas);
        canvas.resize(900, 200);
        QVERIFY(inkRows(look(&canvas)) < inkRows(large));
    }

    void aSplitterShowsTheMouse()
    {
        QSplitter splitter(Qt::Vertical);
        splitter.setHandleWidth(5);
        splitter.addWidget(new QWidget);
        splitter.addWidget(new QWidget);
        splitter.resize(200, 105);
        splitter.show();
        QVERIFY(QTest::qWaitForWindowExposed(&splitter));
        QWidget *handle = splitter.handle(1);
        QTest::mouseMove(&splitter, QPoint(10, 10));
        const QImage still = look(handle);
        // A grip in the middle, and nothing beside it.
        QVERIFY(still.copy(80, 0, 40, 5) != still.copy(0, 0, 40, 5));
        QTest::mouseMove(handle);
        QTRY_VERIFY(look(handle) != still);
        QVERIFY(look(handle).pixelColor(10, 2).lightness() > still.pixelColor(10, 2).lightness());
    }

    // A program that has no such pictures still has arrows.
    void withoutPicturesTheStyleDrawsItsOwn()
    {
        const auto arrow = [](const QString &pictures) {
            BreltDarkStyle::setPictures(pictures);
            QPixmapCache::clear();
            QComboBox box;
            box.resize(120, 30);
            return look(&box).copy(94, 4, 22, 22);
        };
        const QImage pictured = arrow(folder());
        const QImage drawn = arrow(QString());
        QVERIFY(pictured != drawn);
        QImage blank(drawn.size(), drawn.format());
        blank.fill(drawn.pixel(0, 0));
        QVERIFY(drawn != blank);
        QVERIFY(pictured != blank);
    }
};

ZV_TEST(LookPicturesTest)
#include "test_lookpictures.moc"
