#pragma once

#include "ZvNetworkKit/zvtransport.h"

#include <QList>
#include <QMap>
#include <QStringList>

// A transport for tests, in which the exchange says what the test says.
//
// Every request is kept, and silence is the default. answer() and fail() speak to the oldest open
// call of a path, or to the next one that will come; always() speaks to all of them. Endings come
// through the event loop, as with every transport.
class ZVNETWORKKIT_EXPORT ZvScriptedTransport : public ZvTransport
{
    Q_OBJECT

public:
    using Reply = std::function<QByteArray(const ZvRequest &)>;

    explicit ZvScriptedTransport(QObject *parent = nullptr);
    ~ZvScriptedTransport() override;

    // All requests since the start or the last takeRequests(), the oldest first.
    QList<ZvRequest> requests() const { return m_requests; }
    QList<ZvRequest> takeRequests();
    QStringList requestedPaths() const;

    // The newest request of a path; one with an empty path when there was none.
    ZvRequest lastRequest(const QString &path) const;

    // How many calls of a path wait for an answer; of all paths when it is empty.
    int openCount(const QString &path = QString()) const;

    void answer(const QString &path, const QByteArray &body, int httpStatus = 200);
    void fail(const QString &path, ZvAnswer::Ending ending);

    // Answers every later request of the path that no answer() or fail() waits for. An empty
    // function brings back the silence.
    void always(const QString &path, Reply reply);

    // Bodies as the exchange writes them. `data` is JSON text.
    static QByteArray ok(const QByteArray &data, qint64 version = 1,
                         const QByteArray &boot = QByteArrayLiteral("b001"),
                         qint64 time = 1577840400000);
    static QByteArray refusal(const QByteArray &status, const QString &message,
                              const QByteArray &reason = QByteArray());

signals:
    void requested(const QString &path);
    void cancelled(const QString &path);

protected:
    void start(ZvCallId id, const ZvRequest &request) override;
    void abandon(ZvCallId id) override;

private:
    struct Open {
        ZvCallId id;
        QString path;
    };

    void say(const QString &path, const ZvAnswer &answer);

    QList<ZvRequest> m_requests;
    QList<Open> m_waiting;
    QMap<QString, QList<ZvAnswer>> m_prepared;
    QMap<QString, Reply> m_always;
};
