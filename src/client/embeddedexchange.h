#pragma once

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <memory>

class QProcess;

// The exchange service that the client runs on by itself when no server is named.
//
// Where a service already runs on the state folder, it is attached to; otherwise one is started as
// a child, with a demo account where the folder is new. Either way this process holds a line to it,
// and the service ends cleanly when the last line closes, so a killed client leaves no orphan. When
// the service goes away, it is looked for and started again, after a pause that grows while it does
// not last.
class EmbeddedExchange : public QObject
{
    Q_OBJECT

public:
    // program: path of zvexchange. stateFolder: an absolute path, made when it is not there.
    EmbeddedExchange(const QString &program, const QString &stateFolder, QObject *parent = nullptr);
    ~EmbeddedExchange() override;

    // Attaches or starts; returns at once, and signals follow.
    void start();

    // Where the service answers; empty while it is away.
    QUrl address() const { return m_address; }

    // The child's process id, 0 when another client's service is used.
    qint64 processId() const;

    // Lets go of the service. A child of our own ends within a few seconds, and this waits for it;
    // where other clients hold it too, it stays and serves them.
    void stop();

    // Further arguments for a service that is started here.
    void setExtraArguments(const QStringList &arguments) { m_extraArguments = arguments; }

signals:
    void available(const QUrl &address);
    // The service ended, takes long or cannot be started; `reason` is one sentence for the trader.
    // Another try follows by itself.
    void lost(const QString &reason);

private:
    enum class State { Idle, Attaching, Starting, Serving, Pausing };

    void look();
    void lookSoon();
    void attach();
    void takeAttached();
    void takeLineError();
    void launch();
    void readFirstLine();
    void takeChildEnd(int exitCode);
    void serve(quint16 port);
    void pause(const QString &reason);
    bool isChildRunning() const;
    QString reasonOfRefusal() const;
    QString fileInFolder(const char *name) const;

    QString m_program;
    QString m_stateFolder;
    QStringList m_extraArguments;
    State m_state = State::Idle;
    std::unique_ptr<QProcess> m_process;
    QLocalSocket m_line;
    QTimer m_retry;
    QTimer m_patience; // runs out once when nothing has become available
    QElapsedTimer m_served;
    QByteArray m_firstLine;
    QUrl m_address;
    int m_pauseMs;
};
