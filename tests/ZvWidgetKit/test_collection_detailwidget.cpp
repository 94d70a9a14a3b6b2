#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "dealrows.h"
#include "detailfigures.h"
#include "renamedfont.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTextDocument>
#include <QtTest/QtTest>

#include <memory>

namespace {

const QString current = QStringLiteral("1001");
const QString other = QStringLiteral("2002");

const QString white = QStringLiteral("QLabel{color:#ffffff;}");
const QString red = QStringLiteral("QLabel{color:#ea3835;}");
const QString green = QStringLiteral("QLabel{color:#4bff57;}");

struct Shown {
    const char *label;
    int property;
};

constexpr Shown quoteLabels[] = {
    {"label_uppeLimitPrice_value", 27},
    {"label_beforePrice_value", 23},
    {"label_priceLimit_value", 28},
    {"label_latest_value", 24},
    {"label_rate_value", 26},
    {"label_chgValue", 25},
    {"label_collectionCode", 1},
    {"label_sell5_price", 3},
    {"label_sell5_qty", 4},
    {"label_sell4_price", 5},
    {"label_sell4_qty", 6},
    {"label_sell3_price", 7},
    {"label_sell3_qty", 8},
    {"label_sell2_price", 9},
    {"label_sell2_qty", 10},
    {"label_sell1_price", 11},
    {"label_sell1_qty", 12},
    {"label_buy1_Price", 13},
    {"label_buy1_qty", 14},
    {"label_buy2_Price", 15},
    {"label_buy2_qty", 16},
    {"label_buy3_Price", 17},
    {"label_buy3_qty", 18},
    {"label_buy4_Price", 19},
    {"label_buy4_qty", 20},
    {"label_buy5_Price", 21},
    {"label_buy5_qty", 22},
};

constexpr Shown dayLabels[] = {
    {"label_avg_value", 0},   {"label_turnover_value", 1}, {"label_frist_value", 2},
    {"label_qty_value", 3},   {"label_max_value", 4},      {"label_entrustRate_value", 5},
    {"label_min_value", 6},   {"label_amount_value", 7},   {"label_outvol_value", 8},
    {"label_invol_value", 9},
};

struct Caption {
    const char *label;
    const char *text;
};

constexpr Caption captions[] = {
    {"label_latest", "最新"},
    {"label_avg", "均价"},
    {"label_chg", "涨跌"},
    {"label_turnover", "换手"},
    {"label_rate", "幅度"},
    {"label_frist", "开盘"},
    {"label_qty", "总量"},
    {"label_max", "最高"},
    {"label_entrustRate", "委比"},
    {"label_min", "最低"},
    {"label_amount", "总额"},
    {"label_beforePrice", "昨收"},
    {"label_upperLimitPrice", "涨停"},
    {"label_priceLimit", "跌停"},
    {"label_outvol", "外盘"},
    {"label_invol", "内盘"},
    {"label_sell5", "卖五"},
    {"label_sell4", "卖四"},
    {"label_sell3", "卖三"},
    {"label_sell2", "卖二"},
    {"label_sell1", "卖一"},
    {"label_buy1", "买一"},
    {"label_buy2", "买二"},
    {"label_buy3", "买三"},
    {"label_buy4", "买四"},
    {"label_buy5", "买五"},
};

// The seventeen labels that are coloured by the reference price, without those of the change.
const QStringList colouredLabels{
    "label_buy1_Price",           "label_buy2_Price",      "label_buy3_Price",
    "label_buy4_Price",           "label_buy5_Price",      "label_sell1_price",
    "label_sell2_price",          "label_sell3_price",     "label_sell4_price",
    "label_sell5_price",          "label_latest_value",    "label_avg_value",
    "label_frist_value",          "label_max_value",       "label_min_value",
    "label_uppeLimitPrice_value", "label_priceLimit_value"};

const QStringList rowsOfHighWindows{
    "label_buy5",  "label_buy5_Price",  "label_buy5_qty",  "label_hide10",
    "label_buy4",  "label_buy4_Price",  "label_buy4_qty",  "label_hide9",
    "label_sell5", "label_sell5_price", "label_sell5_qty", "label_hide1",
    "label_sell4", "label_sell4_price", "label_sell4_qty", "label_hide2"};

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvUBTopFive::Data quoteData()
{
    return zvtest::quoteData(current);
}

ZvUBProItem::Data dayData()
{
    return zvtest::dayData(current);
}

QString colourOfChange(const QLabel *label, const QLabel *rate)
{
    return label->styleSheet() == rate->styleSheet() ? label->styleSheet()
                                                     : QStringLiteral("they differ");
}

// Counts what a widget's children hear of one type of event.
class EventCounter : public QObject
{
public:
    EventCounter(QWidget *widget, QEvent::Type type) : m_type(type)
    {
        for (QWidget *child : widget->findChildren<QWidget *>())
            child->installEventFilter(this);
    }
    QStringList heard;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == m_type)
            heard << watched->objectName();
        return false;
    }

private:
    QEvent::Type m_type;
};

} // namespace

class CollectionDetailWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Collection_DetailWidget> m_panel;

    QLabel *label(const QString &name) const { return m_panel->findChild<QLabel *>(name); }
    QString text(const QString &name) const { return label(name)->text(); }
    QString sheet(const QString &name) const { return label(name)->styleSheet(); }
    Collection_DealHistory_View *list() const
    {
        return m_panel->findChild<Collection_DealHistory_View *>();
    }

    void showPanel(int height = 900)
    {
        m_panel->resize(325, height);
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
    }

    static void storeQuote(const ZvUBTopFive::Data &data)
    {
        cache()->storeTopFive(data.collectionId, ZvUBTopFive(data));
    }

    // Colours one price, the others being "--".
    QString colourOf(qint64 price, qint64 reference)
    {
        ZvUBTopFive::Data data;
        data.collectionId = current;
        data.previousClose = reference;
        data.buys[0].price = price;
        storeQuote(data);
        return sheet(QStringLiteral("label_buy1_Price"));
    }

    void measure()
    {
        QVERIFY(QMetaObject::invokeMethod(m_panel.get(), "slot_adjustDealLatestLimit"));
    }

    // Makes the list so high that so many pixels are left below its header.
    void leaveForDeals(int pixels)
    {
        list()->parentWidget()->setMinimumHeight(0); // also where a window leaves less
        const int header = list()->horizontalHeader()->height();
        for (int i = 0; i < 3; ++i) {
            const int missing = header + pixels - list()->height();
            m_panel->resize(m_panel->width(), m_panel->height() + missing);
            QCoreApplication::processEvents();
        }
        QCOMPARE(list()->height() - list()->horizontalHeader()->height(), pixels);
    }

private slots:
    void initTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setTransport(
            std::make_unique<ZvScriptedTransport>());
    }

    void init()
    {
        engine()->setGlobalCollectionID(current);
        QCoreApplication::processEvents();
        m_panel = std::make_unique<Collection_DetailWidget>();
    }

    void cleanup()
    {
        m_panel.reset();
        for (const QString &id : {current, other}) {
            cache()->storeTopFive(id, ZvUBTopFive());
            cache()->storeProItem(id, ZvUBProItem());
            cache()->storeLatestDealList(id, {});
        }
    }

    void captionsStandInTheForm()
    {
        for (const Caption &caption : captions) {
            const QLabel *found = label(QLatin1String(caption.label));
            QVERIFY2(found, caption.label);
            QCOMPARE(found->text(), QString::fromUtf8(caption.text));
            QCOMPARE(found->font().pixelSize(), 14);
            QCOMPARE(found->styleSheet(), white);
        }
        QCOMPARE(text("label_collectionName"), QStringLiteral("藏品名称"));
        QCOMPARE(text("label_collectionCode"), QStringLiteral("藏品代码"));
        for (int i = 1; i <= 10; ++i) {
            const QLabel *spacer = label(QStringLiteral("label_hide%1").arg(i));
            QVERIFY(spacer);
            QCOMPARE(spacer->text(), QStringLiteral("隐藏"));
            QCOMPARE(spacer->styleSheet(), QStringLiteral("color:#16181c;"));
            QCOMPARE(spacer->font(), QApplication::font());
        }
        QCOMPARE(m_panel->findChildren<QLabel *>().size(), 26 + 10 + 20 + 16 + 2);
    }

    void nothingIsKnownAtFirst()
    {
        for (const Shown &shown : quoteLabels) {
            if (QLatin1String(shown.label) != QLatin1String("label_collectionCode"))
                QCOMPARE(text(shown.label), QStringLiteral("--"));
        }
        for (const Shown &shown : dayLabels)
            QCOMPARE(text(shown.label), QStringLiteral("--"));
        for (const QString &name : colouredLabels)
            QCOMPARE(sheet(name), white);
        QCOMPARE(sheet("label_chgValue"), white);
        QCOMPARE(sheet("label_rate_value"), white);
    }

    void fixedColours()
    {
        for (const char *name : {"label_collectionCode", "label_collectionName",
                                 "label_amount_value", "label_entrustRate_value"})
            QCOMPARE(sheet(name), QStringLiteral("QLabel{color:#ffff00;}"));
        for (const char *name : {"label_turnover_value", "label_qty_value"})
            QCOMPARE(sheet(name), QStringLiteral("QLabel{color:#ffff00}"));
        QCOMPARE(sheet("label_beforePrice_value"), QStringLiteral("QLabel{color:#ffffff}"));
        QCOMPARE(sheet("label_outvol_value"), QStringLiteral("QLabel{color:#ff3c38;}"));
        QCOMPARE(sheet("label_invol_value"), QStringLiteral("QLabel{color:#4bff57;}"));
        for (int i = 1; i <= 5; ++i) {
            for (const QString &name : {QStringLiteral("label_buy%1_qty").arg(i),
                                        QStringLiteral("label_sell%1_qty").arg(i)})
                QCOMPARE(sheet(name), QStringLiteral("QLabel{color:#ffff00}"));
            auto *line = m_panel->findChild<QFrame *>(QStringLiteral("line_%1").arg(i));
            QVERIFY(line);
            QCOMPARE(line->styleSheet(), QStringLiteral("color:gray;"));
        }
    }

    // Figures do not touch what they do not tell of.
    void fixedColoursStay()
    {
        storeQuote(quoteData());
        cache()->storeProItem(current, ZvUBProItem(dayData()));
        fixedColours();
    }

    void fontsAndHead()
    {
        for (const Shown &shown : dayLabels)
            QCOMPARE(label(shown.label)->font().pixelSize(), 14);
        for (const Shown &shown : quoteLabels) {
            if (QLatin1String(shown.label) != QLatin1String("label_collectionCode"))
                QCOMPARE(label(shown.label)->font().pixelSize(), 14);
        }
        for (const char *name : {"label_collectionName", "label_collectionCode"}) {
            QCOMPARE(label(name)->minimumHeight(), 32);
            QCOMPARE(label(name)->maximumHeight(), 32);
            QCOMPARE(label(name)->font().weight(), 75);
            QCOMPARE(label(name)->font().pointSize(), QApplication::font().pointSize());
        }
    }

    void spacing()
    {
        QCOMPARE(m_panel->maximumWidth(), 325);
        auto *total = qobject_cast<QGridLayout *>(m_panel->layout());
        QVERIFY(total);
        QCOMPARE(total->objectName(), QStringLiteral("gridLayout_total"));
        QCOMPARE(total->contentsMargins(), QMargins());
        QCOMPARE(total->horizontalSpacing(), 0);
        QCOMPARE(total->verticalSpacing(), 0);
        for (const char *name :
             {"gridLayout_vol", "gridLayout_buy", "gridLayout_sell", "gridLayout_pro"}) {
            auto *grid = m_panel->findChild<QGridLayout *>(name);
            QVERIFY2(grid, name);
            QCOMPARE(grid->verticalSpacing(), 3);
        }
    }

    void listOfDeals()
    {
        auto *place = m_panel->findChild<QWidget *>("widget_dealDetailHistory");
        QVERIFY(place);
        QCOMPARE(list()->parentWidget(), place);
        auto *layout = qobject_cast<QHBoxLayout *>(place->layout());
        QVERIFY(layout);
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(list()->verticalHeader()->defaultSectionSize(), 16);
        QCOMPARE(list()->horizontalHeader()->font().pixelSize(), 14);
        cache()->storeLatestDealList(current, zvtest::deals(3));
        QCOMPARE(zvtest::shownDeals(list()->model()), zvtest::numbers(3));
        // Whatever collection is told of: the engine watches none but the current one.
        cache()->storeLatestDealList(other, zvtest::deals(2, 50));
        QCOMPARE(zvtest::shownDeals(list()->model()), zvtest::numbers(2, 50));
    }

    void quoteIsWrittenLabelByLabel()
    {
        const ZvUBTopFive quote(quoteData());
        cache()->storeTopFive(current, quote);
        for (const Shown &shown : quoteLabels)
            QCOMPARE(text(shown.label), quote.getPropertyString(shown.property));
        QCOMPARE(text("label_sell5_price"), QStringLiteral("100.07"));
        QCOMPARE(text("label_sell1_qty"), QStringLiteral("31"));
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("100.01"));
        QCOMPARE(text("label_buy5_qty"), QStringLiteral("55"));
        QCOMPARE(text("label_latest_value"), QStringLiteral("100.02"));
        QCOMPARE(text("label_chgValue"), QStringLiteral("0.02"));
        QCOMPARE(text("label_rate_value"), QStringLiteral("0.02%"));
        // The figures of the day come by themselves.
        for (const Shown &shown : dayLabels)
            QCOMPARE(text(shown.label), QStringLiteral("--"));
    }

    void quoteOfAnotherWayIsWrittenToo()
    {
        cache()->storeFlushedTopFive(current, ZvUBTopFive(quoteData()));
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("100.01"));
    }

    void quoteOfAnotherCollectionLeavesAllAsItIs()
    {
        showPanel();
        storeQuote(quoteData());
        ZvUBTopFive::Data data;
        data.collectionId = other;
        data.name = QStringLiteral("别的");
        data.previousClose = 99999;
        storeQuote(data);
        cache()->storeFlushedTopFive(other, ZvUBTopFive(data));
        const ZvUBTopFive quote(quoteData());
        for (const Shown &shown : quoteLabels)
            QCOMPARE(text(shown.label), quote.getPropertyString(shown.property));
        QCOMPARE(text("label_collectionName"), QStringLiteral("庚申猴票"));
        QCOMPARE(label("label_collectionName")->toolTip(), QStringLiteral("庚申猴票"));
        QCOMPARE(sheet("label_buy1_Price"), red);
    }

    void aChangeOfCollectionLeavesTheOldFiguresUntilTheNewOnesCome()
    {
        storeQuote(quoteData());
        engine()->setGlobalCollectionID(other);
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("100.01"));
        ZvUBTopFive::Data data = quoteData();
        data.collectionId = other;
        data.buys[0].price = 5000;
        storeQuote(data);
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("50.00"));
        storeQuote(quoteData());
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("50.00"));
    }

    void figuresOfTheDayAreWrittenForAnyCollection()
    {
        const ZvUBProItem item(dayData());
        for (const QString &id : {current, other}) {
            cache()->storeProItem(current, ZvUBProItem());
            QCOMPARE(text("label_frist_value"), QStringLiteral("--"));
            cache()->storeProItem(id, item);
            for (const Shown &shown : dayLabels)
                QCOMPARE(text(shown.label), item.getPropertyString(shown.property));
        }
        QCOMPARE(text("label_frist_value"), QStringLiteral("100.10"));
        QCOMPARE(text("label_max_value"), QStringLiteral("109.00"));
        QCOMPARE(text("label_avg_value"), QStringLiteral("100.10"));
        QCOMPARE(text("label_outvol_value"), QStringLiteral("400"));
        QCOMPARE(text("label_invol_value"), QStringLiteral("300"));
        QCOMPARE(text("label_buy1_Price"), QStringLiteral("--"));
    }

    void aLongNameIsCutAndToldWhole()
    {
        showPanel();
        ZvUBTopFive::Data data = quoteData();
        data.name = QString(40, QChar(0x9f98));
        storeQuote(data);
        const QLabel *name = label("label_collectionName");
        QVERIFY(name->width() > 100);
        QCOMPARE(
            name->text(),
            QFontMetrics(name->font()).elidedText(data.name, Qt::ElideRight, name->width() - 1));
        QVERIFY(name->text().size() < 40);
        QCOMPARE(name->toolTip(), data.name);
        QVERIFY(QFontMetrics(name->font()).horizontalAdvance(name->text()) < name->width());
        QCOMPARE(m_panel->width(), 325);
        // The next short name stands whole in the same place.
        const int width = name->width();
        storeQuote(quoteData());
        QCoreApplication::processEvents();
        QCOMPARE(name->text(), QStringLiteral("庚申猴票"));
        QCOMPARE(name->width(), width);
    }

    void aNameIsNoMarkup()
    {
        showPanel();
        ZvUBTopFive::Data data = quoteData();
        data.name = QStringLiteral("<b>龙</b>");
        data.code = QStringLiteral("<i>1</i>");
        storeQuote(data);
        for (const char *name : {"label_collectionName", "label_collectionCode"})
            QCOMPARE(label(name)->textFormat(), Qt::PlainText);
        QCOMPARE(text("label_collectionCode"), data.code);
        // The tool tip, which guesses, is told to the letter, too.
        QTextDocument shown;
        shown.setHtml(label("label_collectionName")->toolTip());
        QCOMPARE(shown.toPlainText(), data.name);
    }

    void endlessNamesKeepThePanelTogether()
    {
        showPanel();
        ZvUBTopFive::Data data = quoteData();
        data.name = QString(200, QLatin1Char('W'));
        data.code = QString(200, QLatin1Char('8'));
        storeQuote(data);
        QCoreApplication::processEvents();
        QCOMPARE(m_panel->width(), 325);
        QCOMPARE(text("label_collectionCode"), data.code);
        QVERIFY(label("label_collectionName")->width() >= 100);
        for (const QLabel *each : m_panel->findChildren<QLabel *>())
            QVERIFY2(
                m_panel->rect().contains(QRect(each->mapTo(m_panel.get(), QPoint()), each->size())),
                qPrintable(each->objectName()));
    }

    void pricesAreColouredByTheReference()
    {
        cache()->storeProItem(current, ZvUBProItem(dayData()));
        for (const char *name :
             {"label_avg_value", "label_frist_value", "label_max_value", "label_min_value"})
            QCOMPARE(sheet(name), white); // they take colour with the quote
        storeQuote(quoteData());
        for (const char *name : {"label_buy1_Price", "label_sell1_price", "label_sell5_price",
                                 "label_latest_value", "label_avg_value", "label_frist_value",
                                 "label_max_value", "label_uppeLimitPrice_value"})
            QCOMPARE(sheet(name), red);
        for (const char *name : {"label_buy3_Price", "label_buy4_Price", "label_buy5_Price",
                                 "label_min_value", "label_priceLimit_value"})
            QCOMPARE(sheet(name), green);
        QCOMPARE(sheet("label_buy2_Price"), white); // the reference itself

        ZvUBTopFive::Data data = quoteData();
        data.previousClose = 20000;
        storeQuote(data);
        for (const QString &name : colouredLabels)
            QCOMPARE(sheet(name), green);
        data.previousClose = 100;
        storeQuote(data);
        for (const QString &name : colouredLabels)
            QCOMPARE(sheet(name), red);
    }

    void colourOfAPrice_data()
    {
        QTest::addColumn<qint64>("price");
        QTest::addColumn<qint64>("reference");
        QTest::addColumn<QString>("expected");
        QTest::newRow("above") << qint64(1011) << qint64(1010) << red;
        QTest::newRow("below") << qint64(1009) << qint64(1010) << green;
        // As double, the reference would be another number than its text.
        QTest::newRow("equal") << qint64(1010) << qint64(1010) << white;
        QTest::newRow("none") << zvub::noValue << qint64(1010) << white;
        QTest::newRow("zero") << qint64(0) << qint64(1010) << white;
        QTest::newRow("zero, no reference") << qint64(0) << zvub::noValue << white;
        QTest::newRow("no reference") << qint64(1) << zvub::noValue << red;
        QTest::newRow("highest price, a fen above") << qint64(13107199) << qint64(13107198) << red;
        QTest::newRow("one float, a fen above") << qint64(30000001) << qint64(30000000) << white;
    }

    void colourOfAPrice()
    {
        QFETCH(qint64, price);
        QFETCH(qint64, reference);
        QFETCH(QString, expected);
        QCOMPARE(colourOf(price, reference), expected);
        QCOMPARE(sheet("label_sell1_price"), white); // an empty level
    }

    void changeAndRateAreColouredByTheSignOfTheChange_data()
    {
        QTest::addColumn<qint64>("latest");
        QTest::addColumn<QString>("expected");
        QTest::newRow("up") << qint64(10001) << red;
        QTest::newRow("down") << qint64(9999) << green;
        QTest::newRow("still") << qint64(10000) << white;
        QTest::newRow("no deal") << zvub::noValue << white;
    }

    void changeAndRateAreColouredByTheSignOfTheChange()
    {
        QFETCH(qint64, latest);
        QFETCH(QString, expected);
        ZvUBTopFive::Data data = quoteData();
        data.latest = latest;
        storeQuote(data);
        QCOMPARE(colourOfChange(label("label_chgValue"), label("label_rate_value")), expected);
        QCOMPARE(sheet("label_latest_value"), expected);
    }

    void sameFiguresStyleAndWriteNothing()
    {
        showPanel();
        cache()->storeProItem(current, ZvUBProItem(dayData()));
        storeQuote(quoteData());
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        EventCounter styles(m_panel.get(), QEvent::StyleChange);
        EventCounter layouts(m_panel.get(), QEvent::LayoutRequest);
        EventCounter paints(m_panel.get(), QEvent::Paint);
        storeQuote(quoteData());
        QCoreApplication::processEvents();
        QCOMPARE((styles.heard + layouts.heard + paints.heard).join(QLatin1Char(' ')), QString());
        // A price that crosses the reference is the only one to take another sheet.
        ZvUBTopFive::Data data = quoteData();
        data.buys[2].price = 10050;
        storeQuote(data);
        QCOMPARE(styles.heard, QStringList{"label_buy3_Price"});
    }

    void aLowWindowShowsThreeLevels_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("five");
        QTest::newRow("780") << 780 << false;
        QTest::newRow("781") << 781 << true;
        QTest::newRow("768") << 768 << false;
        QTest::newRow("1080") << 1080 << true;
        QTest::newRow("0") << 0 << false;
    }

    void aLowWindowShowsThreeLevels()
    {
        QFETCH(int, height);
        QFETCH(bool, five);
        showPanel();
        auto *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
        for (const int before : {2000, 100}) {
            pool->slot_adjustSize(QSize(1920, before));
            pool->slot_adjustSize(QSize(1920, height));
            for (const QLabel *each : m_panel->findChildren<QLabel *>()) {
                const bool isExtra = rowsOfHighWindows.contains(each->objectName());
                QVERIFY2(each->isVisible() == (five || !isExtra), qPrintable(each->objectName()));
            }
        }
    }

    void theLimitIsWhatFitsLessOne_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("limit");
        QTest::newRow("ten and a bit") << 175 << 9;
        QTest::newRow("ten") << 160 << 9;
        QTest::newRow("two") << 32 << 1;
        QTest::newRow("not quite two") << 31 << 0;
        QTest::newRow("one") << 16 << 0;
        QTest::newRow("none") << 15 << 1;
        QTest::newRow("header alone") << 0 << 1;
    }

    void theLimitIsWhatFitsLessOne()
    {
        QFETCH(int, pixels);
        QFETCH(int, limit);
        showPanel();
        leaveForDeals(pixels);
        zvtest::CallTrace trace;
        measure();
        QCOMPARE(trace.take(),
                 QStringList{QStringLiteral("ZvServerEngine::setDealLatestLimit(%1)").arg(limit)});
        cache()->storeLatestDealList(current, zvtest::deals(30));
        QCOMPARE(zvtest::shownDeals(list()->model()), zvtest::numbers(limit, 31 - limit));
    }

    void aListLowerThanItsHeaderHasTheLimitOne()
    {
        showPanel();
        list()->setFixedHeight(5);
        QTRY_COMPARE(list()->height(), 5);
        zvtest::CallTrace trace;
        measure();
        QCOMPARE(trace.take(), QStringList{"ZvServerEngine::setDealLatestLimit(1)"});
    }

    void whatIsShownFitsIntoTheList()
    {
        showPanel();
        measure();
        cache()->storeLatestDealList(current, zvtest::deals(150));
        QCoreApplication::processEvents();
        const QAbstractItemModel *model = list()->model();
        QVERIFY(model->rowCount() > 10);
        for (int row = 0; row < model->rowCount(); ++row)
            QVERIFY(list()->viewport()->rect().contains(list()->visualRect(model->index(row, 0))));
    }

    // Each resize and each show measures by itself, half a second later.
    void measuringWaitsUntilTheLayoutHasSettled()
    {
        zvtest::CallTrace trace;
        QElapsedTimer clock;
        clock.start();
        m_panel->resize(325, 700);
        m_panel->show(); // brings the resize, too
        QStringList calls;
        const auto count = [&] {
            calls += trace.take();
            return calls.size();
        };
        QCOMPARE(count(), 0);
        QTRY_COMPARE(count(), 2);
        QVERIFY2(clock.elapsed() >= 490, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(calls.first().startsWith(QLatin1String("ZvServerEngine::setDealLatestLimit(")));

        calls.clear();
        clock.start();
        for (const int height : {720, 740, 760})
            m_panel->resize(325, height);
        m_panel->hide();
        m_panel->show();
        QTRY_COMPARE(count(), 4);
        QVERIFY2(clock.elapsed() >= 490, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(QSet<QString>(calls.cbegin(), calls.cend()).size(), 1);
        QTest::qWait(100);
        QCOMPARE(count(), 4);
    }

    void aPanelThatGoesIsNotMeasured()
    {
        zvtest::CallTrace trace;
        showPanel();
        m_panel.reset();
        QTest::qWait(600);
        QCOMPARE(trace.take(), QStringList());
    }

    // Right edges of the figures of one column, over all rows and both sides.
    void figuresLineUp()
    {
        showPanel();
        storeQuote(quoteData());
        cache()->storeProItem(current, ZvUBProItem(dayData()));
        QCoreApplication::processEvents();
        const auto edges = [this](const QStringList &names) {
            QSet<int> all;
            for (const QString &name : names) {
                const QLabel *each = label(name);
                all << each->mapTo(m_panel.get(), each->rect().topRight()).x();
                if (!(each->alignment() & Qt::AlignRight))
                    all << -1;
            }
            return all.size();
        };
        QStringList prices;
        QStringList quantities;
        for (int i = 1; i <= 5; ++i) {
            prices << QStringLiteral("label_buy%1_Price").arg(i)
                   << QStringLiteral("label_sell%1_price").arg(i);
            quantities << QStringLiteral("label_buy%1_qty").arg(i)
                       << QStringLiteral("label_sell%1_qty").arg(i);
        }
        QCOMPARE(edges(prices), 1);
        QCOMPARE(edges(quantities), 1);
        QCOMPARE(edges({"label_latest_value", "label_chgValue", "label_rate_value",
                        "label_qty_value", "label_entrustRate_value", "label_amount_value",
                        "label_uppeLimitPrice_value", "label_outvol_value"}),
                 1);
        QCOMPARE(edges({"label_avg_value", "label_turnover_value", "label_frist_value",
                        "label_max_value", "label_min_value", "label_beforePrice_value",
                        "label_priceLimit_value", "label_invol_value"}),
                 1);
    }

    void extremeFiguresAreNotCut()
    {
        showPanel();
        storeQuote(zvtest::longestQuoteData(current));
        cache()->storeProItem(current, ZvUBProItem(zvtest::longestDayData(current)));
        QCoreApplication::processEvents();
        QCOMPARE(m_panel->width(), 325);
        for (const QLabel *each : m_panel->findChildren<QLabel *>()) {
            QVERIFY2(each->width() >= each->minimumSizeHint().width()
                         || each->objectName() == QLatin1String("label_collectionName"),
                     qPrintable(each->objectName()));
            QVERIFY2(
                m_panel->rect().contains(QRect(each->mapTo(m_panel.get(), QPoint()), each->size())),
                qPrintable(each->objectName()));
            QVERIFY2(each->height() >= each->fontMetrics().height(),
                     qPrintable(each->objectName()));
        }
    }

    // Beside a high trading half: rows come closer, and no text loses its top or bottom.
    void theLowestPanelIsReadable_data()
    {
        QTest::addColumn<int>("windowHeight");
        QTest::addColumn<int>("room");
        QTest::newRow("three levels") << 768 << 393;
        QTest::newRow("five levels") << 900 << 455;
    }
    void theLowestPanelIsReadable()
    {
        const auto inkHeights = [this] {
            QCoreApplication::processEvents();
            const QImage image = m_panel->grab().toImage();
            QStringList heights;
            for (const QLabel *each : m_panel->findChildren<QLabel *>()) {
                if (each->isHidden())
                    continue;
                const QRect place(each->mapTo(m_panel.get(), QPoint()), each->size());
                QRect ink;
                for (int y = place.top(); y <= place.bottom(); ++y) {
                    for (int x = place.left(); x <= place.right(); ++x) {
                        if (image.rect().contains(x, y) && qGray(image.pixel(x, y)) > 90)
                            ink |= QRect(x, y, 1, 1);
                    }
                }
                heights << each->objectName() + QLatin1Char(' ') + QString::number(ink.height());
            }
            return heights;
        };
        QFETCH(int, windowHeight);
        QFETCH(int, room);
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(
            QSize(1366, windowHeight));
        showPanel();
        const QStringList whole = inkHeights();
        m_panel->resize(325, room);
        QCOMPARE(m_panel->height(), room);
        QCOMPARE(inkHeights(), whole);
        const auto *deals
            = m_panel->findChild<QWidget *>(QStringLiteral("widget_dealDetailHistory"));
        QVERIFY(m_panel->rect().contains(deals->geometry()));
        QVERIFY(QMetaObject::invokeMethod(m_panel.get(), "slot_adjustDealLatestLimit"));
        cache()->storeLatestDealList(current, zvtest::deals(5));
        const auto *view = deals->findChild<QTableView *>();
        QCOMPARE(view->model()->rowCount(), 1);
        QVERIFY(view->viewport()->rect().contains(view->visualRect(view->model()->index(0, 0))));
    }

    // Last, since the fonts of the application stay changed.
    void theFontThatTheSystemGaveDecidesTheSpacing()
    {
        const QFont usual = QApplication::font();
        const QString family = QStringLiteral("微软雅黑");
        const auto lines = [] {
            const Collection_DetailWidget panel;
            QSet<int> all;
            for (const char *name :
                 {"gridLayout_vol", "gridLayout_buy", "gridLayout_sell", "gridLayout_pro"})
                all << panel.findChild<QGridLayout *>(name)->verticalSpacing();
            return all.size() == 1 ? *all.begin() : -1;
        };
        QVERIFY(!QFontDatabase().families().contains(family));
        QApplication::setFont(QFont(family, 10));
        QCOMPARE(lines(), 3); // asked for, and not there

        const QByteArray font = zvtest::renamedFont(family);
        QVERIFY2(!font.isEmpty(), "this test needs fonts-dejavu-core");
        const int number = QFontDatabase::addApplicationFontFromData(font);
        QVERIFY(number >= 0);
        QCOMPARE(QFontDatabase::applicationFontFamilies(number), QStringList{family});
        // In another size, since what was found for the first one is remembered.
        QApplication::setFont(QFont(family, 11));
        QCOMPARE(lines(), 0);
        QApplication::setFont(usual);
        QFontDatabase::removeApplicationFont(number);
    }
};

ZV_TEST(CollectionDetailWidgetTest)
#include "test_collection_detailwidget.moc"
