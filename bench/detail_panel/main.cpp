#include "plainpanel.h"

#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "support/report.h"
#include "support/stopwatch.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QLabel>
#include <QRandomGenerator>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

const QString collection = QStringLiteral("1001");
const std::string ms = "ms";
constexpr int dealsWatched = 30;
constexpr int dealsShown = 20;

// What one poll may bring of the current collection.
struct News {
    ZvUBProItem::Data day;
    ZvUBTopFive::Data quote;
    QList<ZvUBDealItem> deals;
};

// The news of one collection, from a seed.
class Source
{
public:
    explicit Source(quint32 seed) : m_random(seed) { everything(); }

    const News &news() const { return m_news; }

    // A deal at the best price, as it comes several times a second in a lively market.
    void deal()
    {
        ZvUBTopFive::Data &quote = m_news.quote;
        ZvUBTopFive::Level &best = quote.sells[0];
        const qint64 pieces = figure(1, 9);
        best.quantity += figure(-9, 20);
        best.quantity = std::max<qint64>(1, best.quantity);
        quote.latest = best.price;
        m_news.day.volume += pieces;
        m_news.day.outer += pieces;
        m_news.day.amount += pieces * best.price;
        append(best.price, pieces);
    }

    // Every figure changes, and about half of the prices their side of the previous close.
    void everything()
    {
        ZvUBTopFive::Data &quote = m_news.quote;
        quote.collectionId = collection;
        quote.code = QStringLiteral("600137");
        quote.name = QStringLiteral("庚申猴票整版");
        quote.previousClose = 10000;
        quote.lowerLimit = figure(8000, 9500);
        quote.upperLimit = figure(10500, 12000);
        quote.latest = figure(9500, 10500);
        for (std::size_t level = 0; level < quote.sells.size(); ++level) {
            quote.sells[level] = {figure(9500, 10500), figure(1, 900)};
            quote.buys[level] = {figure(9500, 10500), figure(1, 900)};
        }
        ZvUBProItem::Data &day = m_news.day;
        day.collectionId = collection;
        day.open = figure(9500, 10500);
        day.high = figure(10000, 11000);
        day.low = figure(9000, 10000);
        day.volume = figure(1000, 90000);
        day.amount = day.volume * figure(9500, 10500);
        day.listed = 1000000;
        day.outer = figure(1, 900);
        day.inner = figure(1, 900);
        day.buyQuantity = figure(1, 900);
        day.sellQuantity = figure(1, 900);
        m_news.deals.clear();
        for (int i = 0; i < dealsWatched; ++i)
            append(figure(9500, 10500), figure(1, 90));
    }

private:
    qint64 figure(int from, int to) { return m_random.bounded(from, to); }

    void append(qint64 price, qint64 pieces)
    {
        ZvUBDealItem::Data data;
        data.sequence = ++m_sequence;
        data.time = 1577842200000 + m_sequence * 1000;
        data.price = price;
        data.quantity = pieces;
        data.direction = pieces % 2 == 0 ? zvub::Buy : zvub::Sell;
        data.previousClose = 10000;
        m_news.deals.append(ZvUBDealItem(data));
        while (m_news.deals.size() > dealsWatched)
            m_news.deals.removeFirst();
    }

    QRandomGenerator m_random;
    qint64 m_sequence = 0;
    News m_news;
};

void turnUntilQuiet()
{
    for (int turn = 0; turn < 4; ++turn)
        QCoreApplication::processEvents();
}

class Bench
{
public:
    Bench(int rounds, quint32 seed) : m_rounds(rounds), m_source(seed)
    {
        prepare(m_ours);
        prepare(m_twin.widget());
        // The limit is ours to set: no measuring of the layout may change it between two rounds.
        QEventLoop loop;
        QTimer::singleShot(700, &loop, &QEventLoop::quit);
        loop.exec();
        m_ours.findChild<Collection_DealHistory_View *>()->setDealLimit(dealsShown);
    }

    void measure(const std::string &what, void (Source::*next)())
    {
        Pairs written;
        Pairs painted;
        for (int round = -3; round < m_rounds; ++round) {
            if (next)
                (m_source.*next)();
            const ZvUBProItem day(m_source.news().day);
            const ZvUBTopFive quote(m_source.news().quote);
            const QList<ZvUBDealItem> deals = m_source.news().deals;
            const auto ours = [&] {
                return cost([&] {
                    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
                    cache->storeProItem(collection, day);
                    cache->storeTopFive(collection, quote);
                    cache->storeLatestDealList(collection, deals);
                });
            };
            const auto twin = [&] {
                return cost([&] {
                    m_twin.showDay(day);
                    m_twin.showQuote(quote);
                    m_twin.showDeals(deals, dealsShown);
                });
            };
            const bool oursFirst = round % 2 == 0;
            const Cost first = oursFirst ? ours() : twin();
            const Cost second = oursFirst ? twin() : ours();
            check();
            if (round < 0)
                continue;
            const Cost &a = oursFirst ? first : second;
            const Cost &b = oursFirst ? second : first;
            written.add(a.written, b.written);
            painted.add(a.painted, b.painted);
        }
        m_report.line(what + ": written", written, ms);
        m_report.line("… to the frame", painted, ms);
    }

    bool isEqual() const { return m_differences == 0; }
    void conclude()
    {
        m_report.note(isEqual() ? "\nEqual throughout: pixels."
                                : "\nNOT EQUAL: the figures above count nothing.");
    }

private:
    struct Cost {
        double written = 0; // CPU milliseconds until all labels and rows are told
        double painted = 0; // until the frame
    };

    template <typename Update>
    static Cost cost(Update update)
    {
        Cost found;
        const Stopwatch watch;
        update();
        found.written = watch.cpu();
        turnUntilQuiet();
        found.painted = watch.cpu();
        return found;
    }

    static void prepare(QWidget &panel)
    {
        panel.resize(325, 900);
        panel.show();
        turnUntilQuiet();
    }

    void check()
    {
        if (m_ours.grab().toImage() != m_twin.widget().grab().toImage())
            ++m_differences;
        turnUntilQuiet();
    }

    int m_rounds;
    Source m_source;
    Collection_DetailWidget m_ours;
    PlainPanel m_twin;
    Report m_report;
    int m_differences = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(14);
    QApplication::setFont(font);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures an update of the detail panel beside its plain twin. Ends with 1 "
                       "when the two do not show the same."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("rounds"), QStringLiteral("Pairs of updates a line."), QStringLiteral("n"),
          QStringLiteral("100")},
         {QStringLiteral("seed"), QStringLiteral("Seed of the news."), QStringLiteral("s"),
          QStringLiteral("1")},
         {QStringLiteral("quick"), QStringLiteral("Two rounds, to see that all of it runs.")}});
    parser.process(application);
    const int rounds = parser.isSet(QStringLiteral("quick"))
        ? 2
        : std::max(5, parser.value(QStringLiteral("rounds")).toInt());
    const quint32 seed = parser.value(QStringLiteral("seed")).toUInt();

    ZvServerAccessManager::getZvServerAccessManagerInstance()->setTransport(
        std::make_unique<ZvScriptedTransport>());
    ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(collection);

    std::printf("seed %u, %d rounds; times of the GUI thread in CPU milliseconds, medians\n\n",
                seed, rounds);
    Bench bench(rounds, seed);
    bench.measure("a deal", &Source::deal);
    bench.measure("all figures changed", &Source::everything);
    bench.measure("the same figures once more", nullptr);
    bench.conclude();
    return bench.isEqual() ? 0 : 1;
}
