#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "buttonclicks.h"
#include "support/testregistry.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QTimer>

#include <memory>

namespace {

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

} // namespace

class ZvGuideTabItemTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ZvGuideTabItem> m_item;

    QPushButton *button() const
    {
        return m_item->findChild<QPushButton *>(QStringLiteral("pushButton"));
    }
    QProgressBar *bar() const
    {
        return m_item->findChild<QProgressBar *>(QStringLiteral("progressBar"));
    }
    QTimer *timer() const
    {
        return m_item->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }
    void tick() { QVERIFY(QMetaObject::invokeMethod(timer(), "timeout")); }

    // The values of the bar, tick by tick, until the run ends; "end" stands for a hidden bar and a
    // timer at rest.
    QStringList run()
    {
        QStringList values;
        while (timer()->isActive() && values.size() < 100) {
            tick();
            values << QString::number(bar()->value());
        }
        if (bar()->isHidden() && !timer()->isActive())
            values << QStringLiteral("end");
        return values;
    }

private slots:
    void init() { m_item = std::make_unique<ZvGuideTabItem>(); }
    void cleanup()
    {
        m_item.reset();
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void formIsAsRequired()
    {
        QCOMPARE(m_item->size(), QSize(28, 112));
        QCOMPARE(m_item->minimumWidth(), 28);
        QCOMPARE(m_item->maximumWidth(), 28);

        auto *layout = qobject_cast<QHBoxLayout *>(m_item->layout());
        QVERIFY(layout);
        QCOMPARE(layout->objectName(), QStringLiteral("horizontalLayout"));
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 0);
        QCOMPARE(layout->count(), 2);
        QCOMPARE(layout->itemAt(0)->widget(), bar());
        QCOMPARE(layout->itemAt(1)->widget(), button());

        QCOMPARE(bar()->minimumSize(), QSize(5, 80));
        QCOMPARE(bar()->maximumSize(), QSize(5, 80));
        QCOMPARE(bar()->orientation(), Qt::Vertical);
        QVERIFY(!bar()->isTextVisible());
        QCOMPARE(bar()->minimum(), 0);
        QCOMPARE(bar()->maximum(), 100);
        QCOMPARE(bar()->value(), 24);
        QVERIFY(bar()->isHidden());
        QCOMPARE(bar()->styleSheet(),
                 QStringLiteral("QProgressBar {border: 1px solid grey;}"
                                "QProgressBar::chunk{background-color: #41cd52; height: 1px;}"));

        QCOMPARE(button()->minimumSize(), QSize(23, 80));
        QCOMPARE(button()->maximumSize(), QSize(28, 80));
        QCOMPARE(button()->text(), QString());
        QVERIFY(button()->isEnabled());
    }

    void startsWithoutPrefixAndAtRest()
    {
        QCOMPARE(m_item->getServerPrefix(), QString());
        QVERIFY(timer());
        QVERIFY(!timer()->isActive());
        QVERIFY(!timer()->isSingleShot());
    }

    void barStandsBesideTheButton()
    {
        m_item->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_item.get()));
        QCOMPARE(button()->width(), 28);
        QCOMPARE(button()->x(), 0);
        m_item->startProgress();
        QTRY_COMPARE(button()->width(), 23);
        QCOMPARE(bar()->geometry(), QRect(0, button()->y(), 5, 80));
        QCOMPARE(button()->geometry(), QRect(5, button()->y(), 23, 80));
        m_item->stopProgress();
        QTRY_COMPARE(button()->width(), 28);
        QCOMPARE(button()->x(), 0);
    }

    void nameBecomesUpright_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("pixels");
        const auto row = [](const char *what, const char *name, const char *text, int pixels) {
            QTest::newRow(what) << QString::fromUtf8(name) << QString::fromUtf8(text) << pixels;
        };
        row("two", "邮币", "邮\n币", 12);
        row("three", "宝玉石", "宝\n玉\n石", 10);
        row("four", "文玩杂项", "文\n玩\n杂\n项", 10);
        row("one", "玉", "玉", 10);
        row("nothing", "", "", 10);
        row("digit at the end", "和田玉2", "和\n田\n玉\n", 10);
        row("two digits at the end", "和田玉12", "和\n田\n玉\n", 10);
        row("digit at the start", "2和田玉", "和\n田\n玉", 10);
        row("digit within", "和2田玉", "和\n田\n玉", 10);
        row("Latin only", "ABC", "", 10);
        row("two Latin letters", "AB", "", 12);
        row("Latin and Chinese", "A玉", "玉", 12);
        row("Chinese and Latin", "玉A", "玉\n", 12);
        row("blank within", "邮 币", "邮\n币", 10);
        row("punctuation", "邮、币（新）", "邮\n币\n新\n", 10);
        row("line feed", "邮\n币", "邮\n币", 10);
        row("first of the range", "一丁", "一\n丁", 12);
        row("last of the range", "玉龥", "玉\n龥", 12);
        // U+4DFF and U+9FA6 stand beside the range, and U+20000 takes two places of the name.
        row("below the range", "䷿玉", "玉", 12);
        row("above the range", "玉龦", "玉\n", 12);
        row("outside the plane", "玉𠀀", "玉\n", 10);
    }
    void nameBecomesUpright()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(int, pixels);
        m_item->setServerName(name);
        QCOMPARE(button()->text(), text);
        QCOMPARE(button()->font().pixelSize(), pixels);
        QCOMPARE(button()->toolTip(), name);
    }

    void laterNameReplacesTheFirst()
    {
        m_item->setServerName(QStringLiteral("宝玉石"));
        m_item->setServerName(QStringLiteral("邮币"));
        QCOMPARE(button()->text(), QStringLiteral("邮\n币"));
        QCOMPARE(button()->font().pixelSize(), 12);
        m_item->setServerName(QStringLiteral("宝玉石"));
        QCOMPARE(button()->font().pixelSize(), 10);
    }

    void nameChangesOnlyTheSizeOfTheFont()
    {
        QFont font = button()->font();
        font.setItalic(true);
        font.setUnderline(true);
        button()->setFont(font);
        m_item->setServerName(QStringLiteral("邮币"));
        font.setPixelSize(12);
        QCOMPARE(button()->font(), font);
    }

    void sizeOfTheFontOutlivesTheLooks()
    {
        m_item->setServerName(QStringLiteral("邮币"));
        for (const auto look :
             {&ZvGuideTabItem::setEnabledLook, &ZvGuideTabItem::setDisabledLook}) {
            (m_item.get()->*look)();
            button()->ensurePolished();
            QCOMPARE(button()->font().pixelSize(), 12);
        }
    }

    void namesFitTheirButton_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            for (const char *name : {"邮币", "宝玉石", "和田玉2", "文玩杂项"})
                QTest::addRow("%s on %d", name, int(platform))
                    << QString::fromUtf8(name) << platform;
        }
    }
    void namesFitTheirButton()
    {
        QFETCH(QString, name);
        QFETCH(ZvServerConfig::Platform, platform);
        config()->setCurrentPlatform(platform);
        m_item->setServerName(name);
        m_item->setEnabledLook();
        m_item->show();
        m_item->startProgress(); // the bar leaves the least room
        QTRY_COMPARE(button()->width(), 23);
        QStyleOptionButton option;
        option.initFrom(button());
        option.text = button()->text();
        const QSize room = button()
                               ->style()
                               ->subElementRect(QStyle::SE_PushButtonContents, &option, button())
                               .size();
        const QSize text = button()->fontMetrics().size(0, button()->text());
        QVERIFY2(text.height() <= room.height(), QByteArray::number(text.height()));
        QVERIFY2(text.width() <= room.width(), QByteArray::number(text.width()));
    }

    void clickSendsThePrefix_data() { zvtest::addClickWays(); }
    void clickSendsThePrefix()
    {
        QFETCH(zvtest::ClickWay, way);
        m_item->setServerPrefix(QStringLiteral("/lc/youbika/"));
        QCOMPARE(m_item->getServerPrefix(), QStringLiteral("/lc/youbika/"));
        m_item->show();
        QVERIFY(QTest::qWaitForWindowActive(m_item.get()));
        QSignalSpy spy(m_item.get(), &ZvGuideTabItem::signal_ServerButtonClicked);
        zvtest::click(button(), way);
        QTRY_COMPARE(QList<QVariantList>(spy),
                     QList<QVariantList>{{QStringLiteral("/lc/youbika/")}});
        // Whatever the look is: it is the listener that knows the server in use.
        m_item->setEnabledLook();
        zvtest::click(button(), way);
        QTRY_COMPARE(spy.size(), 2);
        m_item->disableButton();
        zvtest::click(button(), way);
        QCOMPARE(spy.size(), 2);
        m_item->enableButton();
        zvtest::click(button(), way);
        QTRY_COMPARE(spy.size(), 3);
    }

    void otherMouseButtonsAndAReleaseOutsideSendNothing()
    {
        QSignalSpy spy(m_item.get(), &ZvGuideTabItem::signal_ServerButtonClicked);
        QTest::mouseClick(button(), Qt::RightButton);
        QTest::mouseClick(button(), Qt::MiddleButton);
        QTest::mousePress(button(), Qt::LeftButton);
        QTest::mouseRelease(button(), Qt::LeftButton, Qt::NoModifier, QPoint(-20, -20));
        QCOMPARE(spy.size(), 0);
    }

    void clickDoesNothingElse()
    {
        const QString sheet = button()->styleSheet();
        QTest::mouseClick(button(), Qt::LeftButton);
        QVERIFY(button()->isEnabled());
        QVERIFY(bar()->isHidden());
        QVERIFY(!timer()->isActive());
        QCOMPARE(button()->styleSheet(), sheet);
    }

    void looksFollowThePlatform()
    {
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            config()->setCurrentPlatform(platform);
            m_item->setEnabledLook();
            QCOMPARE(button()->styleSheet(), config()->getStyleOf_ZvGuideTabItemButtonEnable());
            m_item->setDisabledLook();
            QCOMPARE(button()->styleSheet(), config()->getStyleOf_ZvGuideTabItemButtonDisable());
        }
    }

    void lookAndEnabledStateAreSeparate()
    {
        m_item->setEnabledLook();
        const QString inUse = button()->styleSheet();
        m_item->disableButton();
        QVERIFY(!button()->isEnabled());
        QVERIFY(m_item->isEnabled());
        QCOMPARE(button()->styleSheet(), inUse);
        m_item->setDisabledLook();
        QVERIFY(!button()->isEnabled());
        const QString notInUse = button()->styleSheet();
        QVERIFY(notInUse != inUse);
        m_item->enableButton();
        QVERIFY(button()->isEnabled());
        QCOMPARE(button()->styleSheet(), notInUse);
    }

    void intervalIsATenthOfTheDuration_data()
    {
        QTest::addColumn<int>("duration");
        QTest::addColumn<int>("interval");
        QTest::newRow("of the strip") << 1500 << 150;
        QTest::newRow("rest of nine") << 1999 << 199;
        QTest::newRow("one tick a millisecond") << 10 << 1;
        QTest::newRow("less than ten") << 9 << 0;
    }
    void intervalIsATenthOfTheDuration()
    {
        QFETCH(int, duration);
        QFETCH(int, interval);
        m_item->startProgress();
        QCOMPARE(timer()->interval(), 200);
        m_item->setProgressDuration(duration);
        QCOMPARE(timer()->interval(), 200); // the run that is under way keeps its pace
        m_item->startProgress();
        QCOMPARE(timer()->interval(), interval);
    }

    void firstRunTakesEightTicksAndTheNextTen()
    {
        m_item->startProgress();
        QVERIFY(timer()->isActive());
        QVERIFY(!bar()->isHidden());
        QCOMPARE(run().join(' '), QStringLiteral("34 44 54 64 74 84 94 0 end"));
        for (int i = 0; i < 2; ++i) {
            m_item->startProgress();
            QVERIFY(!bar()->isHidden());
            QCOMPARE(run().join(' '), QStringLiteral("10 20 30 40 50 60 70 80 90 0 end"));
        }
    }

    void runEndsAboveNinetyNine()
    {
        m_item->startProgress();
        bar()->setValue(89);
        tick();
        QCOMPARE(bar()->value(), 99);
        QVERIFY(!bar()->isHidden());
        QVERIFY(timer()->isActive());
        tick();
        QCOMPARE(bar()->value(), 0);
        QVERIFY(bar()->isHidden());
        QVERIFY(!timer()->isActive());
    }

    void stoppedRunGoesOnFromWhereItStood()
    {
        m_item->startProgress();
        tick();
        m_item->stopProgress();
        QVERIFY(bar()->isHidden());
        QVERIFY(!timer()->isActive());
        QCOMPARE(bar()->value(), 34);
        m_item->startProgress();
        QCOMPARE(run().first(), QStringLiteral("44"));
    }

    void startDuringARunKeepsTheValue()
    {
        m_item->startProgress();
        tick();
        m_item->startProgress();
        QCOMPARE(bar()->value(), 34);
        QVERIFY(timer()->isActive());
    }

    void runEndsByItself()
    {
        m_item->setProgressDuration(100);
        m_item->show();
        m_item->startProgress();
        QVERIFY(bar()->isVisible());
        QTRY_VERIFY(!bar()->isVisible());
        QCOMPARE(bar()->value(), 0);
    }

    void barIsSeenToGrow()
    {
        m_item->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_item.get()));
        m_item->startProgress();
        timer()->stop();
        const QRgb green = QColor(0x41, 0xcd, 0x52).rgb();
        int before = 0;
        for (const int value : {10, 50, 90}) {
            bar()->setValue(value);
            const QImage look = bar()->grab().toImage();
            int rows = 0;
            for (int y = 0; y < look.height(); ++y)
                rows += look.pixel(look.width() / 2, y) == green;
            QVERIFY2(rows > before, QByteArray::number(rows));
            before = rows;
            QCOMPARE(look.pixelColor(0, look.height() / 2), QColor(QStringLiteral("grey")));
        }
    }

    void itemMayDieInItsOwnClick_data() { zvtest::addClickWays(); }
    void itemMayDieInItsOwnClick()
    {
        QFETCH(zvtest::ClickWay, way);
        m_item->setServerPrefix(QStringLiteral("/ch/wenwan/"));
        m_item->show();
        QVERIFY(QTest::qWaitForWindowActive(m_item.get()));
        QString heard;
        QObject context;
        connect(m_item.get(), &ZvGuideTabItem::signal_ServerButtonClicked, &context,
                [&](const QString &prefix) {
                    m_item.reset();
                    heard = prefix;
                });
        zvtest::click(button(), way);
        QTRY_VERIFY(!m_item);
        QCOMPARE(heard, QStringLiteral("/ch/wenwan/"));
        QCoreApplication::processEvents();
    }
};

ZV_TEST(ZvGuideTabItemTest)
#include "test_zvguidetabitem.moc"
