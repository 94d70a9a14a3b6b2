#pragma once

#include "ZvNetworkKit/zvdecoder.h"
#include "ZvNetworkKit/zvtransport.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

class ZvDecoderThread;

// What became of a request: how the call ended, and what the decoder made of the answer.
struct ZVNETWORKKIT_EXPORT ZvOutcome {
    ZvAnswer::Ending ending = ZvAnswer::Failed;
    QString error; // why there is no readable answer; empty when there is one
    bool isLogged = false; // the error is in the log already
    ZvReply reply; // with an empty status when there is no readable answer

    // Why it is not ok, for the log; empty where the log has it already.
    QString reason() const;
    bool isReadable() const { return error.isEmpty() && !reply.envelope.status.isEmpty(); }
    bool isOk() const { return isReadable() && reply.envelope.status == QLatin1String("ok"); }
};

// The kit's inner side of ZvServerAccessManager: transport, decoder thread, server prefix, session
// and generation.
//
// ask() is the one place where answers come in, and so the one place where late ones die.
class ZVNETWORKKIT_EXPORT ZvExchangeLink : public QObject
{
    Q_OBJECT

public:
    // What a change of server or session does to an answer that is still under way.
    enum Fate {
        DiesWithServer, // what a market says
        DiesWithSession, // what an account reads at a market
        Survives // what a user did: its end is always told
    };
    using Done = std::function<void(const ZvOutcome &)>;

    explicit ZvExchangeLink(QObject *parent = nullptr);
    ~ZvExchangeLink() override;

    bool hasTransport() const { return m_transport != nullptr; }
    void setTransport(std::unique_ptr<ZvTransport> transport);
    void setExchangeAddress(const QUrl &address) { m_address = address; }
    QUrl exchangeAddress() const { return m_address; }
    void setClock(ZvClock *clock);
    ZvClock *clock() const;

    QString prefix() const { return m_prefix; }
    void setPrefix(const QString &prefix);
    QString platformRoot() const;

    bool isStarted() const { return m_started; }
    void start();
    void stop();

    // The token of the session; empty without one. A change raises the session's generation.
    QByteArray token() const { return m_token; }
    void setToken(const QByteArray &token);

    // Whether the engine runs for a user; one is signed in while there is a token as well.
    void setLogged(bool logged);
    bool isSignedIn() const { return m_isLogged && !m_token.isEmpty(); }

    // Whether the kit asks about the account by itself: for a user, at a server, while it polls.
    bool followsAccount() const { return m_started && isSignedIn() && !m_prefix.isEmpty(); }
    ZvGeneration generation() const { return m_generation; }

    // A request for `path` on the current server, with protocol number, token and generation.
    ZvRequest makeRequest(const QString &path, const ZvRequest::Parameters &parameters) const;

    // Sends a request and calls `done` from the event loop, once, unless the answer's generation
    // has passed or `context` has died by then. Gives an id for cancel(); 0 without a transport or
    // a server, and then `done` is never called.
    ZvCallId ask(const ZvRequest &request, Fate fate, QObject *context, Done done,
                 const ZvDecodeTask &task = ZvDecodeTask());

    // Ends a call that waits for its answer, silently. False when its answer is there already and
    // will be told.
    bool cancel(ZvCallId id);

    // How long an answer may take that nobody holds back, in milliseconds.
    static constexpr int usualDeadline = 10000;

    // Calls `action` from the event loop once all answers that have come so far are decoded.
    void afterDecoding(std::function<void()> action);

    bool isConnected() const { return m_connected; }
    qint64 awayFor() const;
    qint64 dataAge() const;

    // The poller's word on whether the exchange answers; an empty reason adds no line to the log.
    void noteAnswer();
    void noteFailure(const QString &reason);

signals:
    void started(); // and again when another transport is set later
    void stopped();
    void prefixChanged();
    void connectionChanged(bool connected);
    void sessionChanged(); // another token, or another isSignedIn()

    // The exchange has ended the session that was in use; `message` is its word to the user. Told
    // once, from the event loop, when the token has gone; not where another one is there by then.
    void sessionEnded(const QString &message);

private:
    struct Question {
        ZvRequest request;
        Fate fate;
        QPointer<QObject> context;
        Done done;
        ZvDecodeTask task;
        ZvCallId call = 0; // of the transport; 0 once its answer is there
    };

    bool isLate(const Question &question) const;
    void takeAnswer(ZvCallId id, const ZvAnswer &answer);
    void tell(ZvCallId id, const ZvOutcome &outcome);
    void endSession(const ZvRequest &request, const ZvEnvelope &envelope);
    void setConnected(bool connected);

    std::unique_ptr<ZvSystemClock> m_systemClock;
    QPointer<ZvClock> m_clock;
    QUrl m_address;
    QString m_prefix;
    QByteArray m_token;
    bool m_isLogged = false;
    ZvGeneration m_generation;
    bool m_started = false;
    bool m_connected = false;
    bool m_awayIsLogged = false;
    qint64 m_awaySince = 0;
    qint64 m_lastAnswer = -1;
    std::unique_ptr<ZvDecoderThread> m_decoder;
    std::unique_ptr<ZvTransport> m_transport;
    int m_transports = 0; // how many there have been
    QUrl m_transportAddress; // of a transport that start() made; empty for one that was given
    QHash<ZvCallId, Question> m_questions;
    ZvCallId m_lastQuestion = 0;
};
