#include "campaign/campaign.h"
#include "randomevents/apart.h"
#include "randomevents/heldclock.h"
#include "randomevents/names.h"
#include "randomevents/windowlife.h"

#include <QApplication>
#include <QTemporaryDir>

#include <cstring>

// The whole window under random events and whatever an exchange can say: it does not crash, hang,
// leak, warn, or leave anything behind.

#ifdef ZV_FAULTS

static std::string planted;

bool zvFault(const char *name)
{
    return planted == name;
}

#endif

// The offscreen platform plugin keeps a few hundred bytes for the life of the process.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen\n";
}

// Long stacks of each allocation would cost a third of the time.
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options()
{
    return "malloc_context_size=6";
}

extern "C" __attribute__((visibility("default"))) const char *__lsan_default_options()
{
    return "print_suppressions=0";
}

namespace {

using namespace randomevents;

constexpr int eventsOfALife = 2'000;

Journal *journal = nullptr;

// What Qt says of itself and nobody can prevent: the offscreen platform of what it lacks, and the
// network of a connection that two of its parts find broken at the same moment.
bool isOfQt(const QString &text)
{
    return text.startsWith(QLatin1String("This plugin does not support "))
        || text.startsWith(QLatin1String("QNetworkReplyImplPrivate::error: Internal problem"));
}

// The kit's own lines are for operators: what the exchange says here is worth many.
bool isOfKit(const QMessageLogContext &context)
{
    return context.category
        && (std::strncmp(context.category, "zv.", 3) == 0
            || std::strncmp(context.category, "brelt.", 6) == 0);
}

void hearMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg || isOfKit(context) || isOfQt(text))
        return;
    journal->fail("a warning: " + text.toStdString());
}

// What a user has set up must not matter, and is not touched.
void leaveHome(const QString &folder)
{
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, folder.toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_NO_GLIB", "1"); // its event loop has a clock of its own
    qputenv("TZ", "Asia/Shanghai");
}

void live(quint64 seed, Journal &ownJournal, campaign::Counts &counts)
{
    journal = &ownJournal;
    const QTemporaryDir home;
    leaveHome(home.path());
    qInstallMessageHandler(hearMessage);
    HeldClock clock;
    char name[] = "zv_randomevents";
    char *arguments[] = {name, nullptr};
    int count = 1;
    QApplication application(count, arguments);
    QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC"), 10));
    QApplication::setQuitOnLastWindowClosed(false);
    WindowLife(seed, eventsOfALife, clock, ownJournal, counts).live();
}

campaign::Counts emptyCounts()
{
    campaign::Counts counts;
    for (const char *what :
         {kPress,      kRelease,  kDoubleClick, kMove,        kDrag,       kWheel,   kKey,
          kTyped,      kComposed, kContextMenu, kFocus,       kActivation, kResized, kHidden,
          kCloseEvent, kLook,     kHostCall,    kCacheSignal, kPoolSignal, kTime,    kPage,
          kAnswered,   kPolled,   kEmptyList,   kExtreme,     kRefused,    kBroken,  kLost,
          kSilent,     kSignedIn, kElsewhere,   kReboot,      kServer,     kOutage})
        counts[what] = 0;
    for (const QString &room : expectedRooms())
        counts[room.toStdString()] = 0;
    return counts;
}

} // namespace

int main(int argc, char **argv)
{
    campaign::Campaign campaign;
    campaign.subject = "random events and signals into the whole window";
    campaign.seeds = 20'000 / eventsOfALife;
    campaign.enough = campaign.seeds;
    campaign.counts = emptyCounts();
    campaign.live = [](std::uint64_t seed, campaign::Counts &counts) {
        return liveApart(
            [seed](Journal &ownJournal, campaign::Counts &own) { live(seed, ownJournal, own); },
            counts);
    };
#ifdef ZV_FAULTS
    campaign::Proof proof;
    proof.bugs = [] {
        return std::vector<std::string>{"hand-is-kept", "form-is-kept", "row-is-read-when-gone"};
    };
    proof.plant = [](const std::string &name) { planted = name; };
    proof.cleanSeeds = 1;
    campaign.proof = proof;
#endif
    return campaign::run(campaign, argc, argv);
}
