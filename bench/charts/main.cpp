// What the charts cost the GUI thread, beside charts of other libraries. See ../README.md for the
// figures and what they mean.

#include "allocations.h"
#include "candles.h"
#include "click.h"
#include "ourchart.h"
#include "twin.h"

#include "support/report.h"
#include "support/stopwatch.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

const std::string ms = "ms";
constexpr int sizes[] = {240, 2000, 20000, 100000};
constexpr int usualSize = 2000;
constexpr int mostForQtCharts = 2000; // beyond, a frame of its takes minutes
constexpr int dragDistance = 40;

struct Options {
    int rounds = 0;
    quint32 seed = 0;
    QStringList parts; // all of them when it is empty
};

// CPU milliseconds of one of so many turns.
double costOf(int times, const std::function<void(int)> &action)
{
    const Stopwatch watch;
    for (int i = 0; i < times; ++i)
        action(i);
    return watch.cpu() / times;
}

class Bench
{
public:
    explicit Bench(const Options &options) : m_options(options) { }

    bool run();

private:
    void reportFrames(int size);
    void reportFolding();
    void reportSmall();
    void reportClick();
    void checkTwin(Twin &twin, const ZvUBKLine &line);
    void checkPicture(OurChart &ours, const ZvUBKLine &line, const QString &after);
    void fail(const QString &sentence) { m_failures.append(sentence); }
    QString sizeText(int size) const { return QStringLiteral("%L1 candles").arg(size); }

    Options m_options;
    Report m_report;
    QStringList m_failures;
    int m_tick = 0;
};

// What the twin shows is what we show.
void Bench::checkTwin(Twin &twin, const ZvUBKLine &line)
{
    double highest = 0;
    for (const ZvUBBar &bar : line.bars)
        highest = std::max(highest, bar.high);
    if (twin.barCount() != line.bars.size() || twin.lastClose() != line.bars.last().close
        || twin.highest() < highest - 1)
        fail(QStringLiteral("%1 holds other candles").arg(QLatin1String(twin.name())));
}

// Whatever was drawn in pieces is to the pixel what is drawn at once.
void Bench::checkPicture(OurChart &ours, const ZvUBKLine &line, const QString &after)
{
    const QImage pieces = ours.picture();
    ours.load(line);
    if (pieces != ours.picture())
        fail(QStringLiteral("%1: the picture is not the one of a fresh chart").arg(after));
}

void Bench::reportFrames(int size)
{
    ZvUBKLine line = candles(size, m_options.seed);
    OurChart ours;
    ours.load(line);
    std::vector<std::unique_ptr<Twin>> twins;
    twins.push_back(makeCustomPlot());
    if (size <= mostForQtCharts)
        twins.push_back(makeQtCharts());

    for (const std::unique_ptr<Twin> &twin : twins) {
        if (!twin) {
            m_report.note("| a library to compare with was not there when this was built"
                          " | | | | | |");
            continue;
        }
        twin->load(line);
        Pairs frames;
        Pairs strips;
        Pairs pans;
        const int times = size <= usualSize ? 5 : 2;
        for (int round = -1; round < m_options.rounds; ++round) {
            const auto frame = [&](int) {
                movePrice(&line, ++m_tick);
                ours.paintAll(line);
            };
            const auto strip = [&](int) {
                movePrice(&line, ++m_tick);
                ours.changeLast(line);
            };
            const auto twinFrame = [&](int) {
                movePrice(&line, ++m_tick);
                twin->changeLast(line);
            };
            double full = 0;
            double theirs = 0;
            if (round % 2 == 0) {
                full = costOf(4 * times, frame);
                theirs = costOf(times, twinFrame);
            } else {
                theirs = costOf(times, twinFrame);
                full = costOf(4 * times, frame);
            }
            const double small = costOf(20 * times, strip);
            twin->changeLast(line);
            checkTwin(*twin, line);
            checkPicture(ours, line, QStringLiteral("a new price"));

            ours.beginDrag(400);
            const double pan = costOf(dragDistance, [&](int i) { ours.drag(401 + i); });
            ours.drag(400);
            ours.endDrag(400);
            checkPicture(ours, line, QStringLiteral("a drag there and back"));
            const double theirPan
                = costOf(times, [&](int i) { twin->show(-i * size / 1000 - 1, size); });
            twin->show(0, size);
            if (round < 0)
                continue;
            frames.add(full, theirs);
            strips.add(small, theirs);
            pans.add(pan, theirPan);
        }
        const bool isCustomPlot = twin == twins.front();
        const bool isUsual = size == usualSize;
        const Goal goal = !isUsual ? Goal()
            : isCustomPlot         ? Goal::most(1.0 / 3, "1/3")
                                   : Goal::most(1.0 / 40, "1/40");
        const std::string head = sizeText(size).toStdString() + ", beside " + twin->name();
        m_report.line(head + ": a changed candle, all drawn anew", frames, ms, goal);
        m_report.line("… its strip alone", strips, ms, goal);
        m_report.line("… panned by a pixel", pans, ms);
    }
}

void Bench::reportFolding()
{
    ZvUBKLine few = candles(usualSize, m_options.seed);
    ZvUBKLine many = candles(10 * usualSize, m_options.seed);
    OurChart small;
    OurChart large;
    small.load(few);
    large.load(many);
    Pairs frames;
    for (int round = 0; round < m_options.rounds; ++round) {
        const double ours = costOf(20, [&](int) {
            movePrice(&many, ++m_tick);
            large.paintAll(many);
        });
        frames.add(ours, costOf(20, [&](int) {
                       movePrice(&few, ++m_tick);
                       small.paintAll(few);
                   }));
    }
    m_report.line("20,000 candles beside 2,000", frames, ms, Goal::most(1.5, "1.5"));
}

void Bench::reportSmall()
{
    ZvUBKLine line = candles(usualSize, m_options.seed);
    OurChart ours;
    ours.load(line);
    Pairs prices;
    Pairs moves;
    Pairs movesOnOneBar;
    long allocationsOfPrices = 0;
    long allocationsOfMoves = 0;
    int x = 100;
    const auto move = [&](int i) {
        x = 100 + (x - 98) % 900;
        ours.moveCrosshair(QPoint(x, 120 + i % 60));
    };
    const auto price = [&](int) {
        movePrice(&line, ++m_tick);
        ours.changeLast(line);
    };
    costOf(100, move); // the tables of glyphs are as large as they get
    ours.endDrag(0);
    costOf(20, price);
    for (int round = 0; round < m_options.rounds; ++round) {
        const double full = costOf(20, [&](int) {
            movePrice(&line, ++m_tick);
            ours.paintAll(line);
        });
        {
            // Preparing the figures copies them, which is not the chart's business.
            movePrice(&line, ++m_tick);
            const Allocations allocations;
            ours.changeLast(line);
            allocationsOfPrices += allocations.count();
        }
        prices.add(costOf(100, price), full);
        checkPicture(ours, line, QStringLiteral("a new price"));
        move(0);
        {
            const Allocations allocations;
            costOf(50, move);
            allocationsOfMoves += allocations.count();
        }
        moves.add(costOf(100, move), full);
        movesOnOneBar.add(costOf(100, [&](int i) { ours.moveCrosshair(QPoint(x, 120 + i % 60)); }),
                          full);
        ours.endDrag(0);
        checkPicture(ours, line, QStringLiteral("a walk of the crosshair"));
    }
    const Goal goal = Goal::most(1.0 / 20, "1/20");
    m_report.line("2,000 candles: a new price beside our own full frame", prices, ms, goal);
    m_report.line("… a move of the crosshair from bar to bar", moves, ms, goal);
    m_report.line("… a move of the crosshair on one bar", movesOnOneBar, ms, goal);
    m_report.words("… memory that our code asks for, new prices and moves",
                   std::to_string(allocationsOfPrices) + " and "
                       + std::to_string(allocationsOfMoves) + " times",
                   "", "", "0", allocationsOfPrices + allocationsOfMoves == 0);
}

void Bench::reportClick()
{
    std::vector<double> times
        = clicksToChart(candles(1000, m_options.seed), std::max(5, m_options.rounds));
    if (times.empty()) {
        fail(QStringLiteral("a click never came to a painted chart"));
        return;
    }
    const double middle = median(times);
    m_report.words("a click to the first painted chart of 1,000 bars, on the clock",
                   fixedText(middle, 1) + " ms", "", "", "50 ms", middle <= 50);
}

bool Bench::run()
{
    const auto wants = [this](const char *part) {
        return m_options.parts.isEmpty() || m_options.parts.contains(QLatin1String(part));
    };
    if (wants("frames")) {
        for (const int size : sizes)
            reportFrames(size);
    }
    if (wants("folding"))
        reportFolding();
    if (wants("small"))
        reportSmall();
    if (wants("click"))
        reportClick();
    for (const QString &failure : qAsConst(m_failures))
        std::fprintf(stderr, "bench_charts: %s\n", qPrintable(failure));
    m_report.note(m_failures.isEmpty() ? "\nEqual throughout: candles, pixels."
                                       : "\nNOT EQUAL: the figures above count nothing.");
    return m_failures.isEmpty();
}

} // namespace

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC")));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures the charts beside those of other libraries. Ends with 1 when they "
                       "do not show the same."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("rounds"), QStringLiteral("Rounds a line."), QStringLiteral("n"),
          QStringLiteral("9")},
         {QStringLiteral("seed"), QStringLiteral("Seed of the candles."), QStringLiteral("s"),
          QStringLiteral("1")},
         {QStringLiteral("only"),
          QStringLiteral("Parts to run, with commas between: frames, folding, small, click."),
          QStringLiteral("parts")},
         {QStringLiteral("quick"), QStringLiteral("Two rounds, to see that all of it runs.")}});
    parser.process(application);

    Options options;
    options.rounds = parser.isSet(QStringLiteral("quick"))
        ? 2
        : std::max(5, parser.value(QStringLiteral("rounds")).toInt());
    options.parts
        = parser.value(QStringLiteral("only")).split(QLatin1Char(','), Qt::SkipEmptyParts);
    options.seed = parser.value(QStringLiteral("seed")).toUInt();
    std::printf("seed %u, %d rounds; times of the GUI thread in CPU milliseconds, medians\n\n",
                options.seed, options.rounds);
    Bench bench(options);
    return bench.run() ? 0 : 1;
}
