#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QProcess>
#include <QTimer>
#include <QUrl>

// The exchange service that the client runs on by itself when no server is named.
//
// Where a service already runs on the state folder, it is attached to; otherwise one is started as
// a child. Either way this process holds a line to it, and the service ends cleanly when the last
// line closes, so a killed client leaves no orphan. When the service goes away, it is looked for
// and started again, after a pause that grows from 1 to 15 seconds.
class EmbeddedExchange : public QObject
{
    Q_OBJECT

public:
    // program: path of zvexchange. stateFolder: made when it is not there.
    EmbeddedExchange(const QString &program, const QString &stateFolder, QObject *parent = nullptr);
    ~EmbeddedExchange() override;

    // Attaches or starts; returns at once, and one of the signals follows.
    void start();

    // Where the service answers; empty while it is away.
    QUrl address() const { return m_address; }

    // The child's process id, 0 when another client's service is used.
    qint64 processId() const { return m_process->processId(); }

    // Lets go of the service. A child of our own ends cleanly within a few seconds, and this waits
    // for it; where other clients hold it too, it stays and serves them.
    void stop();

    // Further arguments for a child that is started here, for tests.
    void setExtraArguments(const QStringList &arguments) { m_extraArguments = arguments; }

signals:
    void available(const QUrl &address);
    // The service ended or cannot be started; `reason` is one sentence. Another try follows.
    void lost(const QString &reason);

private:
    void attachOrLaunch();
    void attach(quint16 port);
    void launch();
    void readFirstLine();
    void becomeAvailable(quint16 port);
    void goAway(const QString &reason);
    quint16 portOfRunningService() const;

    QString m_program;
    QString m_stateFolder;
    QStringList m_extraArguments;
    // Outlives this object where other clients still use the child: QProcess would kill it.
    QProcess *m_process;
    QLocalSocket m_line;
    QTimer m_retry;
    QTimer m_startDeadline;
    QByteArray m_firstLine;
    QUrl m_address;
    int m_pauseMs;
    bool m_stopping = false;
};
