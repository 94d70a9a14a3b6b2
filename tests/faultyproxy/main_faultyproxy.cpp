#include "campaign/campaign.h"
#include "exchange/kills/funded_folder.h"
#include "exchange/service/program.h"
#include "exchange/service/temporary_folder.h"
#include "faultyproxy/faultyproxy.h"
#include "faultyproxy/kittrader.h"
#include "faultyproxy/names.h"
#include "faultyproxy/truth.h"

#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvclock.h"
#include "ZvNetworkKit/zvhttptransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

// The kit, the real service, and a network that breaks between them: one intent, one effect, and
// its end is known.

#ifdef ZV_FAULTS

static std::string plantedInTheKit;

bool zvFault(const char *name)
{
    return plantedInTheKit == name;
}

#endif

namespace {

using namespace faultyproxy;

constexpr int actionsOfALife = 200;
constexpr int patience = 120'000; // milliseconds without an end of any call

// Made once, and copied for each life.
struct FirstFolder {
    zvxtest::TemporaryFolder folder;
    std::vector<zvxtest::Trader> traders = zvxtest::FundedFolder::make(folder.path() / "state", 1);
};

const FirstFolder &firstFolder()
{
    static const FirstFolder folder;
    return folder;
}

// The time of the kit: it passes only where somebody waits for nothing but time.
ZvManualClock &kitClock()
{
    static ZvManualClock clock;
    return clock;
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

class Life
{
public:
    Life(quint32 seed, campaign::Counts &counts) : m_counts(counts), m_trader(seed, actionsOfALife)
    {
        std::filesystem::copy(firstFolder().folder.path(), m_folder.path(),
                              std::filesystem::copy_options::recursive);
        m_service = std::make_unique<zvxtest::Program>(
            std::vector<std::string>{"serve", "--state", state().string(), "--robots", "0"},
            zvxtest::Program::Nothing);
        m_proxy = std::make_unique<FaultyProxy>(
            m_service->port(), seed, counts,
            [this](const QUrlQuery &form, const QByteArray &body) { hear(form, body); });
        access()->setTransport(std::make_unique<ZvHttpTransport>(m_proxy->address()));
    }

    campaign::Failure live()
    {
        m_trader.signIn(firstFolder().traders.front());
        if (!wait([this] { return m_trader.isSignedIn(); }))
            return std::string("the kit cannot sign in");
        m_proxy->beginFaults();
        m_trader.begin();
        bool ended = wait([this] { return m_trader.isDone(); });
        m_proxy->deliverAllOverdue();
        ended = wait([this] { return m_proxy->isQuiet(); }) && ended;
        m_service->signal(SIGKILL);
        m_service->wait();
        if (m_trader.failure())
            return m_trader.failure();
        if (!ended)
            return std::string("a call has no end");
        if (!m_proxy->sentTwice().isEmpty())
            return "the kit sent an action twice, key " + m_proxy->sentTwice().toStdString();
        return compareWithStore(state() / zvxtest::FundedFolder::kStore, m_trader, m_counts);
    }

private:
    std::filesystem::path state() const { return m_folder.path() / "state"; }

    void hear(const QUrlQuery &form, const QByteArray &body)
    {
        const int order = QJsonDocument::fromJson(body)
                              .object()
                              .value(QStringLiteral("data"))
                              .toObject()
                              .value(QStringLiteral("order"))
                              .toInt();
        const int fen = form.queryItemValue(QStringLiteral("price")).toInt();
        if (order > 0 && fen > 0)
            m_trader.noteOrder(fen, order);
    }

    // Runs the event loop until `condition` holds; false where no call ends any more.
    template <typename Condition>
    bool wait(const Condition &condition)
    {
        QEventLoop loop;
        QTimer heartbeat;
        heartbeat.start(500);
        QElapsedTimer sinceProgress;
        sinceProgress.start();
        int ended = m_trader.ended();
        bool isStepping = false;
        const auto step = [&] {
            isStepping = false;
            if (condition())
                loop.exit(0);
            else if (sinceProgress.hasExpired(patience))
                loop.exit(1);
            else
                moveOn();
        };
        QObject::connect(
            QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &loop,
            [&] {
                if (std::exchange(ended, m_trader.ended()) != ended)
                    sinceProgress.restart();
                if (isStepping
                    || !(condition() || canMoveOn() || sinceProgress.hasExpired(patience)))
                    return;
                isStepping = true;
                QMetaObject::invokeMethod(&loop, step, Qt::QueuedConnection);
            });
        return loop.exec() == 0;
    }

    bool canMoveOn() const { return m_trader.isIdle() || isPausing() || m_proxy->wantsDeadline(); }

    static bool isPausing()
    {
        const qint64 next = kitClock().untilNext();
        return next >= 0 && next <= ZvActionQueue::longestPause;
    }

    void moveOn()
    {
        if (m_trader.isIdle())
            m_trader.goOn();
        else if (isPausing() || m_proxy->takeDeadline())
            kitClock().advance(std::max<qint64>(kitClock().untilNext(), 0));
    }

    campaign::Counts &m_counts;
    KitTrader m_trader;
    zvxtest::TemporaryFolder m_folder;
    std::unique_ptr<zvxtest::Program> m_service;
    std::unique_ptr<FaultyProxy> m_proxy;
};

campaign::Counts emptyCounts()
{
    campaign::Counts counts;
    for (const char *what :
         {kHandedOn, kClosedUnread, kClosedDone, kHalfHead, kHalfBody, kLateAnswer, kOvertaken,
          kReplayed, kReplayedLate, kQuestionBroken, kAsked, kDone, kRefused, kNotArrived})
        counts[what] = 0;
    return counts;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    // Each lost answer is a line that an operator wants, and here there are thousands.
    QLoggingCategory::setFilterRules(QStringLiteral("zv.*=false"));
    access()->setClock(&kitClock());
    access()->setUrlPrefix(QString::fromLatin1(zvxtest::FundedFolder::kMarket));

    campaign::Campaign campaign;
    campaign.subject = "actions of the kit through a faulty proxy";
    campaign.seeds = 2'000 / actionsOfALife;
    campaign.enough = campaign.seeds;
    campaign.counts = emptyCounts();
    campaign.live = [](std::uint64_t seed, campaign::Counts &counts) {
        return Life(static_cast<quint32>(seed), counts).live();
    };
#ifdef ZV_FAULTS
    campaign::Proof proof;
    proof.bugs = [] {
        return std::vector<std::string>{// of the kit
                                        "another-key-asked-for", "body-can-be-sent-again",
                                        "broken-is-taken-for-unsent", "lost-answer-is-a-failure",
                                        "sent-again-after-a-lost-answer",
                                        // of the service
                                        "keys-forgotten", "burnt-key-forgotten"};
    };
    proof.plant = [](const std::string &name) {
        plantedInTheKit = name;
        ::setenv("ZVX_FAULT", name.c_str(), 1);
    };
    proof.cleanSeeds = 1;
    campaign.proof = proof;
#endif
    const int code = campaign::run(campaign, argc, argv);
    access()->setTransport(nullptr);
    access()->setClock(nullptr);
    return code;
}
