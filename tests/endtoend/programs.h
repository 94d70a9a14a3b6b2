#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

// The real programs as children, and a look at what they leave in a state folder. Every wait runs
// the event loop and has a bound.
namespace endtoend {

// How long anything may take on a busy machine with sanitizers, in milliseconds.
constexpr int patience = 60000;

// A fresh state folder whose exchange begins with the small catalogue of the tests.
class StateFolder
{
public:
    // An empty one leaves the catalogue to the service's options, and may hold a demo account.
    enum Kind { WithCatalogue, Empty };
    explicit StateFolder(Kind kind = WithCatalogue);
    ~StateFolder(); // once nobody holds the folder: it could not be removed below a service's hands

    QString path() const { return m_path; }
    QString file(const QString &name) const { return m_path + QLatin1Char('/') + name; }

    // True while a service holds the folder.
    bool isHeld() const;

    // Who holds the folder, by the lines of its lock file; 0 where they do not say.
    qint64 servicePid() const;
    int servicePort() const;

    // How often a service began to serve, by its log.
    int servicesStarted() const;
    QString log() const;

private:
    qint64 lockLine(const QByteArray &name) const;

    QTemporaryDir m_folder;
    QString m_path;
};

// A service that nobody but the test starts and ends.
class Exchange
{
public:
    Exchange() = default;
    ~Exchange();

    // Starts it and waits until it serves; port 0 takes a free one. False where it does not come.
    bool start(const StateFolder &state, int port = 0, double robots = 40,
               const QStringList &options = {});

    void kill(); // as kill -9 does, and waits for the end
    bool isRunning() const;
    int port() const { return m_port; }
    QUrl address() const;

private:
    std::unique_ptr<QProcess> m_process;
    int m_port = 0;
};

// The client as a program, in an environment without a display.
class Client
{
public:
    Client() = default;
    ~Client();

    // display: what DISPLAY holds; empty for none. platform: what Qt is told to draw on; empty for
    // nothing.
    void start(const QStringList &arguments, const QString &display = QString(),
               const QString &platform = QString());

    // The exit code, -1 where it crashed or was killed, -2 where it is still running at the bound.
    int wait();
    bool isRunning() const;
    qint64 pid() const { return m_process->processId(); }
    void kill();
    QString output();
    QString errors() { return m_errors; }

private:
    std::unique_ptr<QProcess> m_process;
    QString m_errors;
};

bool isAlive(qint64 pid);
void killNow(qint64 pid);

// The boot id of the service at an address, "" where nothing answers in time.
QString bootOf(const QUrl &address);

// The answer to a form, empty where none comes in time.
QJsonObject post(const QUrl &address, const QString &path, const QByteArray &form);

// Runs the event loop until `condition` holds; false where it does not within the bound.
template <typename Condition>
bool until(Condition condition, int milliseconds = patience);

// How long the event loop has been blocked at most while this lives, in milliseconds.
class LoopWatch : public QObject
{
public:
    LoopWatch();
    qint64 longestGap() const;

private:
    class Private;
    std::shared_ptr<Private> d;
};

} // namespace endtoend

#include <QElapsedTimer>
#include <QTest>

template <typename Condition>
bool endtoend::until(Condition condition, int milliseconds)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.hasExpired(milliseconds))
            return false;
        QTest::qWait(20);
    }
    return true;
}
