#include "subject.h"

#include "serving/childprocess.h"
#include "support/report.h"
#include "support/scratchfolder.h"
#include "support/stopwatch.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QProcess>

#include <cstdio>
#include <map>
#include <stdexcept>

// What the client costs the machine of a trader, beside the barest window of the same toolkit.

namespace {

const QString crowdName = QStringLiteral("crowd");
const QString styledCrowdName = QStringLiteral("styled-crowd");
const QString asOption = QStringLiteral("as");
const QString exchangeOption = QStringLiteral("exchange");
const QString secondsOption = QStringLiteral("seconds");
const QString roundsOption = QStringLiteral("rounds");

const std::map<QString, subject::Task> &tasks()
{
    static const std::map<QString, subject::Task> all{
        {QStringLiteral("first-rows"), subject::Task::FirstRows},
        {QStringLiteral("resident"), subject::Task::Resident},
        {QStringLiteral("idle"), subject::Task::Idle},
        {QStringLiteral("load"), subject::Task::Load},
    };
    return all;
}

struct Figures {
    double started = 0; // milliseconds from the start of the process to its picture
    std::map<QString, double> said;
    QStringList painting; // classes that painted
};

// Runs this program again, as what is to be measured.
Figures run(const QString &as, const QStringList &options)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const std::int64_t start = Stopwatch::nanoseconds(CLOCK_MONOTONIC);
    process.start(QCoreApplication::applicationFilePath(),
                  QStringList{QStringLiteral("--as"), as} + options);
    process.waitForFinished(-1);
    if (process.exitCode() != 0)
        throw std::runtime_error("the process as " + as.toStdString() + " failed");
    Figures figures;
    for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() != 2)
            continue;
        if (words[0] == "painting")
            figures.painting << QString::fromUtf8(words[1]);
        else
            figures.said[QString::fromUtf8(words[0])] = words[1].toDouble();
    }
    figures.started = (figures.said[QStringLiteral("painted")] - static_cast<double>(start)) / 1e6;
    return figures;
}

QStringList optionsFor(const ServiceProcess &service, int seconds)
{
    return {QStringLiteral("--exchange"), QStringLiteral("http://127.0.0.1:%1").arg(service.port()),
            QStringLiteral("--seconds"), QString::number(seconds)};
}

void measureAtRest(Report &report, int rounds, int seconds)
{
    const ScratchFolder state;
    const ServiceProcess service(state.path() / "state", {"--demo", "--robots", "0"});
    const QStringList options = optionsFor(service, seconds);
    const QString bare = QStringLiteral("bare");
    run(QStringLiteral("first-rows"), options); // libraries and fonts from the disk
    Pairs start;
    Pairs crowd;
    Pairs styledCrowd;
    Pairs resident;
    for (int round = 0; round < rounds; ++round) {
        const Figures ours = run(QStringLiteral("first-rows"), options);
        const Figures theirs = run(bare, {});
        start.add(ours.started, theirs.started);
        crowd.add(run(crowdName, {}).started, theirs.started);
        styledCrowd.add(run(styledCrowdName, {}).started, theirs.started);
        const Figures open = run(QStringLiteral("resident"), options);
        resident.add(open.said.at(QStringLiteral("resident")) / 1024,
                     theirs.said.at(QStringLiteral("resident")) / 1024);
    }
    report.line("process start to the first painted rows", start, "ms", Goal::most(4, "4"));
    report.line("… to a bare window of as many widgets", crowd, "ms");
    report.line("… with a style sheet on each", styledCrowd, "ms");
    report.line("resident with market, chart and ticket open", resident, "MiB",
                Goal::most(2.5, "2.5"));
    const Figures idle = run(QStringLiteral("idle"), options);
    const double paints = idle.said.at(QStringLiteral("paints"));
    report.words("paints outside ticker and clock in " + std::to_string(seconds)
                     + " s in which nothing changes",
                 fixedText(paints, 0), "", "", "0", paints == 0);
    for (const QString &painting : idle.painting.mid(0, 10))
        report.note("painted: " + painting.toStdString());
}

void measureLiveMarket(Report &report, int seconds)
{
    const ScratchFolder state;
    const ServiceProcess service(state.path() / "state", {"--demo"});
    const Figures live = run(QStringLiteral("load"), optionsFor(service, seconds));
    const double share = live.said.at(QStringLiteral("busy")) / (seconds * 10.0);
    report.words("the living market at its own cadence, of one core", fixedText(share, 2) + " %",
                 "", "", "4 %", share <= 4);
}

int measure(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOption(
        {roundsOption, QStringLiteral("Rounds."), QStringLiteral("n"), QStringLiteral("7")});
    parser.addOption({secondsOption, QStringLiteral("How long to watch."), QStringLiteral("s"),
                      QStringLiteral("60")});
    parser.addHelpOption();
    parser.process(application);
    const int rounds = parser.value(roundsOption).toInt();
    const int seconds = parser.value(secondsOption).toInt();
    if (rounds < 1 || seconds < 1) {
        std::fprintf(stderr, "rounds and seconds are whole numbers from 1 on\n");
        return 2;
    }
    Report report;
    measureAtRest(report, rounds, seconds);
    measureLiveMarket(report, seconds);
    return 0;
}

// The words behind the options of a subject, before there is an application to read them.
QString wordAfter(const QString &option, int argc, char **argv)
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (QString::fromLocal8Bit(argv[i]) == QStringLiteral("--") + option)
            return QString::fromLocal8Bit(argv[i + 1]);
    }
    return QString();
}

} // namespace

int main(int argc, char **argv)
try {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QString as = wordAfter(asOption, argc, argv);
    if (as == QLatin1String("bare"))
        return subject::runBare(argc, argv);
    if (as == crowdName || as == styledCrowdName)
        return subject::runCrowd(argc, argv, as == styledCrowdName);
    const auto task = tasks().find(as);
    if (task != tasks().end())
        return subject::runClient(argc, argv, task->second,
                                  QUrl(wordAfter(exchangeOption, argc, argv)),
                                  wordAfter(secondsOption, argc, argv).toInt());
    return measure(argc, argv);
} catch (const std::exception &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
