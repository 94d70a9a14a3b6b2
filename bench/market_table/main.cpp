// What a tick of the market costs the GUI thread, beside a table of Qt's own classes that is fed
// the usual way. See ../README.md for the figures and what they mean.

#include "clienttable.h"
#include "equality.h"
#include "market.h"
#include "referenceview.h"
#include "stocktable.h"

#include "support/report.h"

#include "ZvNetworkKit/zvdecoder.h"
#include "ZvNetworkKit/zvscriptedtransport.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QTimer>

#include <malloc.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int SortColumn = 6; // bid
constexpr int usualRows = 5000;
constexpr int manyRows = 20000;
constexpr int changedRows = 200;
constexpr int flashMilliseconds = 1100; // until the blue cells of a tick are dark again
constexpr int tickMilliseconds = 1200;
const QSize windowSize(1920, 1000);
const std::string ms = "ms";

struct Options {
    int rounds = 0;
    double minutes = 0;
    quint32 seed = 0;
    bool quick = false;
    QStringList parts; // all of them when it is empty
};

// All that was measured of one kind of tick.
struct Ticks {
    Pairs settled;
    Pairs settledAlone; // against the twin without its parse
    Pairs painted;
    Pairs wall;
    Pairs parsing;
    Pairs flashEnd; // of our table, beside its tick
    int rounds = 0;
    int unsortedTwins = 0;
    int paints = 0;
    int layouts = 0;
};

class Bench
{
public:
    explicit Bench(const Options &options) : m_options(options) { }

    bool run();

private:
    Ticks measure(int rows, int changed, Market::Move move);
    void noteTicks(const Ticks &ticks);
    void reportBrokenOrder();
    void reportKeptOrder();
    void reportAllChanged(int rows);
    void reportManyRows();
    void reportNothingNew();
    void reportFrame();
    void reportMemory();
    void reportGaps();
    void keep(const Equality &equality) { m_failures += equality.failures(); }

    Options m_options;
    Report m_report;
    QStringList m_failures;
};

QByteArray wholeAnswer(const Market &market)
{
    return ZvScriptedTransport::ok(market.listData(), market.version());
}

Ticks Bench::measure(int rows, int changed, Market::Move move)
{
    Market market(rows, m_options.seed);
    Equality equality(market, SortColumn);
    ClientTable client(market, windowSize, SortColumn);
    StockTable stock(windowSize, SortColumn);
    double parsing = 0;
    stock.take(wholeAnswer(market), &parsing);
    const auto *proxy = static_cast<const QSortFilterProxyModel *>(stock.view().model());
    equality.select(client.view());
    stock.view().selectRow(7);
    turnUntilQuiet();
    equality.check(client.view(), *proxy->sourceModel());

    Ticks ticks;
    const int warmUps = m_options.quick ? 0 : 1;
    for (int round = -warmUps; round < m_options.rounds; ++round) {
        market.tick(changed, move);
        const QByteArray answer = wholeAnswer(market);
        Cost ours;
        Cost twin;
        if (round % 2 == 0) {
            ours = client.takeTick();
            twin = stock.take(answer, &parsing);
        } else {
            twin = stock.take(answer, &parsing);
            ours = client.takeTick();
        }
        equality.check(client.view(), *proxy->sourceModel());
        const Stopwatch end;
        turnFor(flashMilliseconds);
        const double endOfFlash = end.cpu();
        if (round < 0)
            continue;
        ++ticks.rounds;
        ticks.settled.add(ours.settled, twin.settled);
        ticks.settledAlone.add(ours.settled, twin.settled - parsing);
        ticks.painted.add(ours.painted, twin.painted);
        ticks.wall.add(ours.wall, twin.wall);
        ticks.parsing.add(parsing, twin.settled);
        ticks.flashEnd.add(endOfFlash, ours.painted);
        ticks.paints += ours.paints;
        ticks.layouts += ours.signalsSeen;
        ticks.unsortedTwins += equality.isSorted(*proxy) ? 0 : 1;
    }
    if (move == Market::Move::KeepsOrder && ticks.layouts > 0)
        m_failures.append(QStringLiteral("a tick that keeps the order has sorted"));
    keep(equality);
    return ticks;
}

void Bench::noteTicks(const Ticks &ticks)
{
    m_report.note("| … its twin was out of order after " + std::to_string(ticks.unsortedTwins)
                  + " of " + std::to_string(ticks.rounds) + " ticks; the end of our flash costs "
                  + fixedText(ticks.flashEnd.ours(), 2) + " ms; " + std::to_string(ticks.paints)
                  + " paints | | | | | |");
}

void Bench::reportBrokenOrder()
{
    const Ticks ticks = measure(usualRows, changedRows, Market::Move::BreaksOrder);
    m_report.line("5,000 rows, 200 changed, order broken: settled", ticks.settled, ms,
                  Goal::most(1.0 / 4, "1/4"));
    m_report.line("… beside the twin without its parse", ticks.settledAlone, ms);
    m_report.line("… to the frame", ticks.painted, ms, Goal::most(1.0 / 2, "1/2, moonshot 1/5"));
    m_report.line("… on the clock, with the worker thread", ticks.wall, ms);
    noteTicks(ticks);
}

void Bench::reportKeptOrder()
{
    const Ticks ticks = measure(usualRows, changedRows, Market::Move::KeepsOrder);
    m_report.line("order intact: settled", ticks.settled, ms);
    m_report.line("… to the frame", ticks.painted, ms, Goal::most(1.0 / 20, "1/20"));
    noteTicks(ticks);
}

void Bench::reportAllChanged(int rows)
{
    const Ticks ticks = measure(rows, rows, Market::Move::BreaksOrder);
    m_report.line(QStringLiteral("all %L1 rows changed: settled").arg(rows).toStdString(),
                  ticks.settled, ms, Goal::most(1.0 / 10, "1/10"));
    m_report.line("… to the frame", ticks.painted, ms, Goal::most(1.0 / 10, "1/10"));
    noteTicks(ticks);
}

void Bench::reportManyRows()
{
    const Ticks ticks = measure(manyRows, changedRows, Market::Move::BreaksOrder);
    const Goal goal = Goal::most(1, "1");
    m_report.line("20,000 rows, 200 changed: settled", ticks.settled, ms, goal);
    m_report.line("… beside the twin without its parse", ticks.settledAlone, ms, goal);
    m_report.line("… to the frame", ticks.painted, ms, goal);
    noteTicks(ticks);
}

void Bench::reportNothingNew()
{
    Market market(usualRows, m_options.seed);
    ClientTable client(market, windowSize, SortColumn);
    Pairs poll;
    Pairs list;
    for (int round = 0; round < m_options.rounds; ++round) {
        market.tick(changedRows, Market::Move::BreaksOrder);
        const double tick = client.takeTick().painted;
        turnFor(flashMilliseconds);
        const Cost cost = client.takeNothingNew();
        poll.add(cost.painted, tick);
        if (cost.paints > 0 || cost.signalsSeen > 0)
            m_failures.append(QStringLiteral("a poll without news has painted or told something"));

        // A page that asks anew is told once more, and the table is fed the rows it has.
        const QList<ZvUBObject> same = client.rows();
        const PaintCounter paints(client.view().viewport());
        const Stopwatch watch;
        client.view().setMarketList(same);
        list.add(watch.cpu(), tick);
        turnUntilQuiet();
        if (paints.count() > 0)
            m_failures.append(QStringLiteral("the same rows have painted"));
    }
    m_report.line("a poll without news, beside our own tick to the frame", poll, ms,
                  Goal::most(1.0 / 50, "1/50"));
    m_report.line("… the same rows handed to the table once more", list, ms,
                  Goal::most(1.0 / 50, "1/50"));
}

void Bench::reportFrame()
{
    Market market(usualRows, m_options.seed);
    Equality equality(market, SortColumn);
    ClientTable client(market, windowSize, SortColumn);
    Collection_TableView &view = client.view();
    equality.checkFrame(view, QStringLiteral("frame with the first row selected"));
    equality.select(view);
    equality.checkFrame(view, QStringLiteral("frame with another row selected"));
    market.tick(usualRows, Market::Move::BreaksOrder);
    client.takeTick();
    equality.checkFrame(view, QStringLiteral("frame in which cells flash"));
    turnFor(flashMilliseconds);
    equality.checkFrame(view, QStringLiteral("frame after the flash"));

    Pairs frames;
    {
        ReferenceView reference(view, ReferenceView::Plain);
        turnUntilQuiet();
        const auto frame = [](QWidget *viewport) {
            const Stopwatch watch;
            viewport->repaint();
            return watch.cpu();
        };
        for (int round = 0; round < m_options.rounds * 2; ++round) {
            const double ours = frame(view.viewport());
            frames.add(ours, frame(reference.viewport()));
        }
    }
    m_report.line("full frame of 1920x1000", frames, ms, Goal::most(1.1, "1.1, moonshot 1/2"));
    keep(equality);
}

std::size_t bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void Bench::reportMemory()
{
    constexpr double bound = 1536;
    Market market(manyRows, m_options.seed);
    {
        const QByteArray body = wholeAnswer(market);
        const std::size_t before = bytesInUse();
        QList<ZvUBObject> rows;
        {
            ZvDecoder decoder;
            ZvReply reply;
            QString error;
            ZvDecodeTask task;
            task.shape = ZvDecodeTask::List;
            if (!decoder.decode(body, task, reply, error))
                m_failures.append(error);
            else
                rows = reply.list->data->rows;
        }
        const double bytes = double(bytesInUse() - before) / rows.size();
        m_report.words("memory of a row with all its texts", fixedText(bytes, 0) + " bytes",
                       "1.5 KB", fixedText(bytes / bound, 2), "1", bytes <= bound);
    }
    const std::size_t before = bytesInUse();
    ClientTable client(market, windowSize, SortColumn);
    turnUntilQuiet();
    const double all = double(bytesInUse() - before) / manyRows;
    m_report.note("| … with cache, decoder, model, proxy and view " + fixedText(all, 0)
                  + " bytes | | | | | |");
}

// Times between two beats of a heart that beats once a millisecond: what a click has to wait.
class Heart
{
public:
    Heart()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            m_gaps.push_back(double(m_clock.nsecsElapsed()) / 1e6);
            m_clock.start();
        });
        m_clock.start();
        m_timer.start(1);
    }

    double quantile(double part)
    {
        if (m_gaps.empty())
            return 0;
        std::sort(m_gaps.begin(), m_gaps.end());
        const auto place = static_cast<std::size_t>(part * double(m_gaps.size()));
        return m_gaps[std::min(place, m_gaps.size() - 1)];
    }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    std::vector<double> m_gaps;
};

void Bench::reportGaps()
{
    Market market(usualRows, m_options.seed);
    Equality equality(market, SortColumn);
    ClientTable client(market, windowSize, SortColumn);
    equality.select(client.view());

    std::vector<double> frames;
    for (int i = 0; i < 20; ++i) {
        const Stopwatch watch;
        client.view().viewport()->repaint();
        frames.push_back(watch.wall());
    }
    const double frame = median(frames);

    const int idle = m_options.quick ? 500 : 10000;
    double idleGap = 0;
    {
        Heart heart;
        turnFor(idle);
        idleGap = heart.quantile(0.999);
    }
    // Our own market is not to be measured: its answers are made before.
    const int ticks = std::max(1, int(m_options.minutes * 60000 / tickMilliseconds));
    QList<QByteArray> preparedTicks;
    for (int tick = 0; tick < ticks; ++tick) {
        market.tick(changedRows, Market::Move::BreaksOrder);
        preparedTicks.append(market.changesData());
    }
    Heart heart;
    for (int tick = 0; tick < ticks; ++tick) {
        client.sayTick(preparedTicks.at(tick));
        turnFor(tickMilliseconds);
    }
    const double gap = heart.quantile(0.999);
    const double worst = heart.quantile(1);
    if (!equality.isSorted(*client.view().model()))
        m_failures.append(QStringLiteral("not sorted after %1 ticks").arg(ticks));
    keep(equality);
    m_report.words("gaps of the event loop, p99.9 of " + std::to_string(ticks)
                       + " ticks, beside two frames",
                   fixedText(gap, 2) + " ms", fixedText(2 * frame, 2) + " ms",
                   fixedText(gap / (2 * frame), 2), "1", gap <= 2 * frame);
    m_report.note("| … the longest gap " + fixedText(worst, 2)
                  + " ms; p99.9 of the same loop when idle " + fixedText(idleGap, 2)
                  + " ms | | | | | |");
}

bool Bench::run()
{
    const auto wants = [this](const char *part) {
        return m_options.parts.isEmpty() || m_options.parts.contains(QLatin1String(part));
    };
    if (wants("broken"))
        reportBrokenOrder();
    if (wants("intact"))
        reportKeptOrder();
    if (wants("all"))
        reportAllChanged(usualRows);
    if (wants("all") && !m_options.quick)
        reportAllChanged(manyRows);
    if (wants("many"))
        reportManyRows();
    if (wants("nothing"))
        reportNothingNew();
    if (wants("frame"))
        reportFrame();
    if (wants("memory"))
        reportMemory();
    if (wants("gaps"))
        reportGaps();
    for (const QString &failure : qAsConst(m_failures))
        std::fprintf(stderr, "bench_market_table: %s\n", qPrintable(failure));
    m_report.note(m_failures.isEmpty()
                      ? "\nEqual throughout: order, ties, texts, selection, pixels."
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
        QStringLiteral("Measures the market table beside its stock twin. Ends with 1 when the two "
                       "do not show the same."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("rounds"), QStringLiteral("Pairs of ticks a line."), QStringLiteral("n"),
          QStringLiteral("15")},
         {QStringLiteral("minutes"), QStringLiteral("How long event-loop gaps are watched."),
          QStringLiteral("m"), QStringLiteral("1")},
         {QStringLiteral("seed"), QStringLiteral("Seed of the market."), QStringLiteral("s"),
          QStringLiteral("1")},
         {QStringLiteral("only"),
          QStringLiteral("Parts to run, with commas between: broken, intact, all, many, nothing, "
                         "frame, memory, gaps."),
          QStringLiteral("parts")},
         {QStringLiteral("quick"), QStringLiteral("Two rounds, to see that all of it runs.")}});
    parser.process(application);

    Options options;
    options.quick = parser.isSet(QStringLiteral("quick"));
    options.rounds
        = options.quick ? 2 : std::max(5, parser.value(QStringLiteral("rounds")).toInt());
    options.minutes = options.quick ? 0.05 : parser.value(QStringLiteral("minutes")).toDouble();
    options.parts
        = parser.value(QStringLiteral("only")).split(QLatin1Char(','), Qt::SkipEmptyParts);
    options.seed = parser.value(QStringLiteral("seed")).toUInt();
    std::printf("seed %u, %d rounds; times of the GUI thread in CPU milliseconds, medians\n\n",
                options.seed, options.rounds);
    Bench bench(options);
    return bench.run() ? 0 : 1;
}
