#include "ZvNetworkKit/zvserverconfig.h"
#include "support/testregistry.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSet>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QtTest/QtTest>

#include <algorithm>

namespace {

QDir sources()
{
    return QDir(QStringLiteral(ZV_SOURCE_DIR "/src"));
}

QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The paths below the three trees that a text names. Names with a part filled in later, such as
// "%1" or "@accent", are no paths yet.
QStringList pathsIn(const QString &text)
{
    static const QRegularExpression path(
        QStringLiteral(":/(?:icons|icons_vedio|qsss)/[^\"')\\s\\\\;{}<]+"));
    QStringList paths;
    for (auto it = path.globalMatch(text); it.hasNext();) {
        const QString found = it.next().captured();
        if (!found.contains(QLatin1Char('%')) && !found.contains(QLatin1Char('@')))
            paths.append(found);
    }
    return paths;
}

QStringList entriesOf(const QString &qrc)
{
    static const QRegularExpression entry(QStringLiteral("<file>([^<]+)</file>"));
    QStringList entries;
    const QString text = textOf(sources().filePath(QLatin1String("ZvWidgetKit/resources/") + qrc));
    for (auto it = entry.globalMatch(text); it.hasNext();)
        entries.append(QLatin1String(":/") + it.next().captured(1));
    return entries;
}

QStringList allEntries()
{
    return entriesOf(QStringLiteral("icons.qrc")) + entriesOf(QStringLiteral("icons_vedio.qrc"));
}

// All that names pictures in the program.
QStringList sourceTexts()
{
    QStringList texts;
    QDirIterator files(sources().path(),
                       {QStringLiteral("*.cpp"), QStringLiteral("*.h"), QStringLiteral("*.ui"),
                        QStringLiteral("*.qss")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        texts.append(textOf(files.next()));
    return texts;
}

// The texts of the getters in which there are pictures.
QStringList styleTexts()
{
    ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    QStringList texts;
    for (const auto platform : {ZvServerConfig::LanChuan, ZvServerConfig::ChengHu}) {
        config->setCurrentPlatform(platform);
        texts << config->getPathOf_zijingzonglanPNG() << config->getStyleOf_LoginDlgCloseBtn()
              << config->getStyleOf_LoginDlgReturnBtn() << config->getStyleOf_MarketOpenButton()
              << config->getStyleOf_TitleBarButtonStyle() << config->getStyleOf_TotalDialog()
              << config->getStyleOf_ZvGuideTabItemButtonEnable()
              << config->getStyleOf_ZvGuideTabItemButtonDisable();
    }
    return texts;
}

// The guide pictures are there for the sheets of hosts as well, under these names.
QStringList promisedPaths()
{
    static const char *const names[] = {
        "btn_color_youbika",
        "btn_color_youbika_lc",
        "btn_color_lanbaoshi",
        "btn_color_yingshi",
        "btn_color_zuanshi",
        "btn_color_feicui",
        "btn_color_hetianyu",
        "btn-color-ch-youbika",
        "btn-color-ch-baoyushi",
        "btn_gray_youbika",
        "btn_gray_lanbaoshi",
        "btn_gray_yingshi",
        "btn_gray_zuanshi",
        "btn_gray_feicui",
        "btn_gray_hetianyu",
        "btn-gray-ch-youbika",
        "btn-gray-ch-baoyushi",
        "btn_yellow_youbika",
        "btn_yellow_wenwan",
        "btn_yellow_lanbaoshi",
        "btn_yellow_baoyushi",
        "btn_white_youbika",
        "btn_white_wenwan",
        "btn_white_lanbaoshi",
        "btn_white_baoyushi",
        "huodong_img_youbika",
        "huodong_img_feicui",
        "huodong_img_lanbaoshi",
        "huodong_img_zuanshi",
        "huodong_img_yingshi",
        "huodong_img_hetianyu",
        "huodong_btn_notOpen",
        "arrow_left",
        "arrow_right",
        "arrow-ch-left",
        "arrow-ch-right",
        "arrow-rd-left",
        "arrow-rd-right",
        "arrow-pn-left",
        "arrow-pn-right",
        "lanchuan-splash",
        "chenghu-splash",
        "movie-splash",
        "blue-splash",
        "lc_top_title",
        "ch_top_title",
        "lc_startbtn",
        "ch_startbtn",
        "close1",
        "close2",
    };
    QStringList paths;
    for (const char *name : names)
        paths += QStringLiteral(":/icons/guidepage/%1.png").arg(QLatin1String(name));
    return paths;
}

// What the dark style looks for in its folder.
const char *const stylePictures[] = {
    "arrow_up",       "arrow_up_hover",   "arrow_up_disabled",
    "arrow_down",     "arrow_down_hover", "arrow_down_disabled",
    "arrow_previous", "arrow_next",       "grip",
};

bool isOfTheStyle(const QString &path)
{
    return std::any_of(std::begin(stylePictures), std::end(stylePictures), [&](const char *name) {
        return path == QStringLiteral(":/icons/controls/%1.png").arg(QLatin1String(name));
    });
}

QSet<QString> namedIn(const QString &text)
{
    const QStringList paths = pathsIn(text);
    return QSet<QString>(paths.begin(), paths.end());
}

QString scrollBarSheet()
{
    return textOf(QStringLiteral(":/qsss/scrollbar.qss"));
}

} // namespace

class ResourcesTest : public QObject
{
    Q_OBJECT

private slots:
    void everyEntryIsThere_data()
    {
        QTest::addColumn<QString>("path");
        for (const QString &path : allEntries())
            QTest::addRow("%s", qPrintable(path)) << path;
    }
    void everyEntryIsThere()
    {
        QFETCH(QString, path);
        QVERIFY(QFile::exists(path));
        if (!path.endsWith(QLatin1String(".png")))
            return;

        const QImage picture(path);
        QVERIFY(!picture.isNull());
        QVERIFY2(!isBlank(picture), "nothing is drawn");

        const QImage doubled(
            QString(path).replace(QLatin1String(".png"), QLatin1String("@2x.png")));
        QCOMPARE(doubled.size(), picture.size() * 2);
        QVERIFY2(doubled.convertToFormat(QImage::Format_ARGB32)
                     != picture.convertToFormat(QImage::Format_ARGB32).scaled(doubled.size()),
                 "the picture for scale 2 is not drawn but enlarged");
    }

    // What hosts and their sheets count on.
    void theTreesAreComplete()
    {
        QCOMPARE(entriesOf(QStringLiteral("icons.qrc")).size()
                     + entriesOf(QStringLiteral("icons_vedio.qrc")).size(),
                 124);
        for (const QString &path : promisedPaths())
            QVERIFY2(QFile::exists(path), qPrintable(path));
    }

    // A picture that nothing shows is none that belongs here.
    void everyEntryIsUsed()
    {
        QSet<QString> used;
        for (const QString &path : promisedPaths())
            used.insert(path);
        for (const QString &text : sourceTexts())
            used += namedIn(text);
        for (const QString &text : styleTexts())
            used += namedIn(text);
        for (const QString &path : allEntries())
            QVERIFY2(used.contains(path) || isOfTheStyle(path), qPrintable(path));
    }

    void theStyleFindsItsPictures()
    {
        for (const char *name : stylePictures)
            QVERIFY2(allEntries().contains(QLatin1String(":/icons/controls/") + QLatin1String(name)
                                           + QLatin1String(".png")),
                     name);
        const QString style
            = textOf(sources().filePath(QStringLiteral("BreltWidgetToolKit/breltdarkstyle.cpp")));
        for (const char *name : {"arrow_up", "arrow_down", "_hover", "_disabled", "arrow_previous",
                                 "arrow_next", "grip"})
            QVERIFY2(style.contains(QLatin1Char('"') + QLatin1String(name) + QLatin1Char('"')),
                     name);
    }

    void sizes_data()
    {
        QTest::addColumn<QString>("paths"); // a pattern
        QTest::addColumn<QSize>("size");
        const auto row = [](const char *paths, int width, int height) {
            QTest::newRow(paths) << QString::fromLatin1(paths) << QSize(width, height);
        };
        row("/button/button_", 240, 240);
        row("/button/client_interface", 801, 433);
        row("/guidepage/btn[-_]", 28, 80);
        row("/guidepage/.*-splash", 640, 400);
        row("/guidepage/arrow", 16, 16);
        row("/guidepage/huodong_img_", 240, 150);
        row("/icon_(mini|narrow|close)_", 16, 16);
        row("/menu/", 16, 16);
        row("/login/", 32, 16);
        row("/transaction/", 16, 16);
        row("/controls/arrow_(up|down)", 12, 12);
        row("/icons_vedio/(online|offline|connecting)", 16, 16);
    }
    void sizes()
    {
        QFETCH(QString, paths);
        QFETCH(QSize, size);
        const QStringList found = allEntries().filter(QRegularExpression(paths));
        QVERIFY(!found.isEmpty());
        for (const QString &path : found)
            QCOMPARE(QImage(path).size(), size);
    }

    void noEntryIsListedTwice()
    {
        QStringList entries = allEntries();
        QVERIFY(!entries.isEmpty());
        QCOMPARE(entries.removeDuplicates(), 0);
    }

    // A picture that is missing at run time is a warning at best and a hole in the window at worst.
    void everyNamedPathExists()
    {
        int found = 0;
        for (const QString &text : sourceTexts()) {
            for (const QString &path : pathsIn(text)) {
                ++found;
                QVERIFY2(path == QLatin1String(":/icons/controls/") || QFile::exists(path),
                         qPrintable(path));
            }
        }
        QVERIFY(found > 0);
    }

    void everyPictureOfTheStylesExists()
    {
        for (const QString &text : styleTexts()) {
            const QStringList paths = pathsIn(text);
            QVERIFY2(!paths.isEmpty(), qPrintable(text));
            for (const QString &path : paths)
                QVERIFY2(QFile::exists(path), qPrintable(path));
        }
    }

    void drawingsAreAllUsed()
    {
        const QDir art(sources().filePath(QStringLiteral("../art")));
        const QString variants = textOf(art.filePath(QStringLiteral("variants.txt")));
        const QStringList entries = allEntries();
        QDirIterator drawings(art.path(), {QStringLiteral("*.svg"), QStringLiteral("*.css")},
                              QDir::Files, QDirIterator::Subdirectories);
        while (drawings.hasNext()) {
            const QString name = art.relativeFilePath(drawings.next());
            if (name.startsWith(QLatin1String("banks/")))
                continue; // the exchange serves that folder as it is
            const QString word = name.startsWith(QLatin1String("looks/")) ? name.mid(6) : name;
            const QString entry = QLatin1String(":/")
                + QString(name).replace(QLatin1String(".svg"), QLatin1String(".png"));
            QVERIFY2(entries.contains(entry) || variants.contains(QLatin1Char(' ') + word),
                     qPrintable(name));
        }
    }

    void platformsSharePicturesOnlyByIntent()
    {
        for (const char *state : {"normal", "hover", "pressed"}) {
            const QString name = QStringLiteral(":/icons/button/button_%1_%2.png");
            const QImage left(name.arg(QLatin1String(state)).arg(1));
            const QImage right(name.arg(QLatin1String(state)).arg(2));
            QCOMPARE(left.size(), QSize(240, 240));
            QCOMPARE(right.size(), QSize(240, 240));
            QVERIFY(left != right);
        }
    }

    // The table shrinks the triangles without smoothing: what is left must still be a triangle.
    void trianglesSurviveTheirScaling()
    {
        for (int size = 5; size <= 16; ++size) {
            const QImage up = triangle(QStringLiteral(":/icons/TriangleUpRed.png"), size);
            const QImage down = triangle(QStringLiteral(":/icons/TriangleDownGreen.png"), size);
            QVERIFY(pixelsInRow(up, size / 4) < pixelsInRow(up, size * 3 / 4));
            QVERIFY(pixelsInRow(down, size / 4) > pixelsInRow(down, size * 3 / 4));
            for (int x = 0; x < size; ++x) {
                for (int y = 0; y < size; ++y) {
                    const QRgb upPixel = up.pixel(x, y);
                    const QRgb downPixel = down.pixel(x, y);
                    QVERIFY(qAlpha(upPixel) == 0 || upPixel == QColor(Qt::red).rgb());
                    QVERIFY(qAlpha(downPixel) == 0 || downPixel == QColor(Qt::green).rgb());
                }
            }
        }
    }

    void scrollBarSheetParsesWithoutWarning()
    {
        QVERIFY(!scrollBarSheet().isEmpty());
        QScrollBar bar;
        bar.setStyleSheet(scrollBarSheet());
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
    }

    void scrollBarsHaveNoArrows_data()
    {
        QTest::addColumn<Qt::Orientation>("orientation");
        QTest::newRow("vertical") << Qt::Vertical;
        QTest::newRow("horizontal") << Qt::Horizontal;
    }
    void scrollBarsHaveNoArrows()
    {
        QFETCH(Qt::Orientation, orientation);
        QScrollBar bar(orientation);
        bar.setStyleSheet(scrollBarSheet());
        bar.setRange(0, 100);
        bar.setPageStep(50);
        bar.resize(orientation == Qt::Vertical ? QSize(10, 200) : QSize(200, 10));
        QCOMPARE(orientation == Qt::Vertical ? bar.sizeHint().width() : bar.sizeHint().height(),
                 10);

        QStyleOptionSlider option;
        option.initFrom(&bar);
        option.orientation = orientation;
        option.minimum = bar.minimum();
        option.maximum = bar.maximum();
        option.pageStep = bar.pageStep();
        const auto rectOf = [&](QStyle::SubControl part) {
            return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, part, &bar);
        };
        QVERIFY(rectOf(QStyle::SC_ScrollBarAddLine).isEmpty());
        QVERIFY(rectOf(QStyle::SC_ScrollBarSubLine).isEmpty());
        const QSize groove = rectOf(QStyle::SC_ScrollBarGroove).size();
        QCOMPARE(qMax(groove.width(), groove.height()), 200);
    }

    void scrollBarHandleShowsTheMouse()
    {
        QScrollBar bar(Qt::Vertical);
        bar.setStyleSheet(scrollBarSheet());
        bar.setRange(0, 100);
        bar.setPageStep(100);
        bar.resize(10, 200);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        const QColor still = bar.grab().toImage().pixelColor(5, 50);
        QTest::mouseMove(&bar, QPoint(5, 50));
        QTRY_VERIFY(bar.grab().toImage().pixelColor(5, 50) != still);
        QTest::mousePress(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 50));
        const QColor pressed = bar.grab().toImage().pixelColor(5, 50);
        QTest::mouseRelease(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(5, 50));
        QVERIFY(pressed != still);
    }

private:
    static bool isBlank(const QImage &picture)
    {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (qAlpha(picture.pixel(x, y)) != 0)
                    return false;
            }
        }
        return true;
    }

    static QImage triangle(const QString &path, int size)
    {
        return QImage(path)
            .convertToFormat(QImage::Format_ARGB32)
            .scaled(size, size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    }

    static int pixelsInRow(const QImage &picture, int row)
    {
        int count = 0;
        for (int x = 0; x < picture.width(); ++x)
            count += qAlpha(picture.pixel(x, row)) != 0;
        return count;
    }
};

ZV_TEST(ResourcesTest)
#include "test_resources.moc"
