#pragma once

#include "ZvNetworkKit/zvclock.h"
#include "ZvNetworkKit/zvdecoder.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QRandomGenerator>
#include <QString>

#include <array>
#include <initializer_list>

class ZvAccountWatch;
class ZvExchangeTime;

// Keeps the cache as the market is: one long poll that holds the versions of all topics in view,
// and a question to a topic's own path where the poll says that it cannot tell the difference.
//
// The cache is written, and so its signals go out, only where the content differs or a page has
// asked. When the exchange does not answer, polls go on under a back-off with jitter that never
// exceeds `longestPause`; the first answer of another run of the service resets all versions. A
// poll carries the token, and so is the first to hear that the session is over; it goes on without.
class ZVNETWORKKIT_EXPORT ZvMarketPoller : public QObject
{
    Q_OBJECT

public:
    enum Topic { Market, Message, Check, Composite, Brief, Type, List, Item, Trade, Latest };

    // Milliseconds.
    // How long the exchange may hold a poll back, and how much later its answer may still come. An
    // exchange that hangs is told from a quiet one after the two, and quotes on screen look live
    // until then, so they are short; a poll without news costs next to nothing.
    static constexpr int longWait = 5000;
    static constexpr int waitMargin = 3000;
    static constexpr int recoveryDeadline = 3000; // for a poll that is not held back
    static constexpr int shortestPause = 250; // after the first failure
    static constexpr int longestPause = 3000; // after many
    static constexpr int mostDeals = 200;

    // `account` says what a poll asks about the account, and hears what comes of it.
    ZvMarketPoller(ZvExchangeLink *link, ZvAccountWatch *account);
    ~ZvMarketPoller() override;

    void setCollection(const QString &collectionId);
    QString collection() const { return m_collection; }
    void setDealLimit(int limit);
    int dealLimit() const { return m_dealLimit; }

    // While the market table is off view, its rows are not polled.
    void setTableShown(bool shown);

    // Asks for a topic; its signal follows whether or not the content differs.
    void ask(Topic topic);

    // Asks for the names and the rows of the market, and for its types where they may differ.
    void askMarket();
    void flushTopFive();

    // Where the random part of the pauses goes on from, for a course of events that is to be the
    // same again. Otherwise it differs from one poller to the next.
    void setJitterSeed(quint32 seed) { m_jitter.seed(seed); }

signals:
    // At once, whoever set it.
    void collectionChanged();

    // The market has opened or closed, or is in another session.
    void marketChecked();

private:
    static constexpr std::size_t topicCount = 10;

    struct State {
        qint64 version = 0; // 0 while nothing of this server and boot is held
        ZvCallId fetch = 0; // the open question to the topic's path
        bool announce = false; // a page waits for the answer of `fetch`, or for the first server
        bool isLogged = false; // that the last question failed
        ZvTimer retry;

        bool isAsked() const { return fetch != 0 || retry; }
    };

    State &state(Topic topic) { return m_topics[topic]; }
    bool watchesCollection() const;
    bool isWatched(Topic topic) const;

    void begin();
    void end();
    void changeServer();
    void changeSession();
    void askServers();
    void forget();

    void schedule();
    void sendPoll();
    void takeEndOfSession();
    void takePoll(const ZvOutcome &outcome, bool isOfThisCollection);
    void retryPoll(const QString &reason);
    qint64 pause();
    void forgetCollection(std::initializer_list<Topic> topics);

    void fetch(Topic topic, bool announce);
    void takeFetch(Topic topic, const ZvOutcome &outcome, bool isOfThisCollection);
    void take(const ZvReply &reply);
    void takeRows(const ZvReply &reply);
    void takeCollection(const ZvReply &reply);
    template <typename Value>
    bool takeVersion(Topic topic, const ZvTopic<Value> &part);
    bool announces(Topic topic) const { return m_topics[topic].announce; }

    ZvExchangeLink *m_link;
    ZvAccountWatch *m_account;
    std::unique_ptr<ZvExchangeTime> m_time;
    std::array<State, topicCount> m_topics;
    QString m_boot;
    QString m_collection;
    bool m_isUnknownCollection = false;
    int m_dealLimit = 10;
    bool m_tableShown = true;
    std::optional<ZvMarketCheck> m_check;

    ZvCallId m_poll = 0;
    quint32 m_session = 0; // that the last poll spoke for
    bool m_isScheduled = false;
    bool m_isOutdated = false; // the view changed while the poll's answer was being decoded
    bool m_hasProgress = false; // the answer in hand brought a version that was not held
    bool m_isRecovering = true;
    int m_failures = 0;
    QRandomGenerator m_jitter = QRandomGenerator::securelySeeded();
    qint64 m_sent = 0; // when the last poll left
    ZvTimer m_pause;
    ZvCallId m_flush = 0;
};
