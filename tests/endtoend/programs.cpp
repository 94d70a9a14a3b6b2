#include "endtoend/programs.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

#include <cerrno>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

namespace endtoend {

namespace {

constexpr int longestEndMs = 10000; // of a service that nobody uses

} // namespace

StateFolder::StateFolder(Kind kind) : m_path(m_folder.path() + QStringLiteral("/state"))
{
    QDir().mkpath(m_path);
    if (kind == WithCatalogue)
        QFile::copy(QStringLiteral(ZV_SMALL_CATALOGUE), file(QStringLiteral("catalogue.json")));
}

StateFolder::~StateFolder()
{
    until([this] { return !isHeld(); }, longestEndMs);
}

bool StateFolder::isHeld() const
{
    const int lock = ::open(QFile::encodeName(file(QStringLiteral("zvexchange.lock"))).constData(),
                            O_RDONLY | O_CLOEXEC);
    if (lock < 0)
        return false;
    const bool held = ::flock(lock, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(lock);
    return held;
}

qint64 StateFolder::lockLine(const QByteArray &name) const
{
    QFile lock(file(QStringLiteral("zvexchange.lock")));
    if (!lock.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : lock.readAll().split('\n')) {
        if (line.startsWith(name + ' '))
            return line.mid(name.size() + 1).toLongLong();
    }
    return 0;
}

qint64 StateFolder::servicePid() const
{
    return lockLine("pid");
}

int StateFolder::servicePort() const
{
    return int(lockLine("port"));
}

QString StateFolder::log() const
{
    QFile log(file(QStringLiteral("zvexchange.log")));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

int StateFolder::servicesStarted() const
{
    return log().count(QLatin1String("serving address="));
}

Exchange::~Exchange()
{
    if (isRunning())
        kill();
}

bool Exchange::start(const StateFolder &state, int port, double robots, const QStringList &options)
{
    m_process = std::make_unique<QProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QStringList usual{QStringLiteral("serve"),
                            QStringLiteral("--state"),
                            state.path(),
                            QStringLiteral("--listen"),
                            QStringLiteral("127.0.0.1:%1").arg(port),
                            QStringLiteral("--robots"),
                            QString::number(robots)};
    m_process->start(QStringLiteral(ZV_EXCHANGE_PROGRAM), usual + options);
    QByteArray output;
    until([&] {
        output += m_process->readAllStandardOutput();
        return output.contains('\n') || m_process->state() == QProcess::NotRunning;
    });
    m_port = output.startsWith("PORT ") ? output.mid(5).trimmed().toInt() : 0;
    return m_port != 0;
}

void Exchange::kill()
{
    m_process->kill();
    until([this] { return !isRunning(); });
}

bool Exchange::isRunning() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

QUrl Exchange::address() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_port));
}

Client::~Client()
{
    if (m_process && isRunning())
        kill();
}

void Client::start(const QStringList &arguments, const QString &display, const QString &platform)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1String(name));
    if (!display.isEmpty())
        environment.insert(QStringLiteral("DISPLAY"), display);
    if (!platform.isEmpty())
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    m_process = std::make_unique<QProcess>();
    m_process->setProcessEnvironment(environment);
    m_process->start(QStringLiteral(ZV_CLIENT_PROGRAM), arguments);
    m_process->waitForStarted();
}

int Client::wait()
{
    if (!until([this] { return !isRunning(); }))
        return -2;
    m_errors = QString::fromUtf8(m_process->readAllStandardError());
    return m_process->exitStatus() == QProcess::NormalExit ? m_process->exitCode() : -1;
}

bool Client::isRunning() const
{
    return m_process->state() != QProcess::NotRunning;
}

void Client::kill()
{
    m_process->kill();
    until([this] { return !isRunning(); });
}

QString Client::output()
{
    return QString::fromUtf8(m_process->readAllStandardOutput());
}

bool isAlive(qint64 pid)
{
    if (pid <= 0 || ::kill(pid_t(pid), 0) != 0)
        return false;
    // What has ended and waits for somebody to read its end is no process any more.
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = stat.readAll();
    return !line.mid(line.lastIndexOf(')') + 2).startsWith('Z');
}

void killNow(qint64 pid)
{
    if (pid > 0)
        ::kill(pid_t(pid), SIGKILL);
}

QString bootOf(const QUrl &address)
{
    QNetworkAccessManager manager;
    QUrl url = address;
    url.setPath(QStringLiteral("/ch/market.html"));
    url.setQuery(QStringLiteral("protocol=1"));
    const std::unique_ptr<QNetworkReply> reply(manager.get(QNetworkRequest(url)));
    until([&] { return reply->isFinished(); });
    return QJsonDocument::fromJson(reply->readAll())
        .object()
        .value(QStringLiteral("boot"))
        .toString();
}

QJsonObject post(const QUrl &address, const QString &path, const QByteArray &form)
{
    QNetworkAccessManager manager;
    QUrl url = address;
    url.setPath(path);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    const std::unique_ptr<QNetworkReply> reply(manager.post(request, form));
    until([&] { return reply->isFinished(); });
    return QJsonDocument::fromJson(reply->readAll()).object();
}

class LoopWatch::Private
{
public:
    QTimer timer;
    QElapsedTimer sinceTurn;
    qint64 longest = 0;
};

LoopWatch::LoopWatch() : d(std::make_shared<Private>())
{
    Private *p = d.get();
    p->timer.setTimerType(Qt::PreciseTimer);
    p->timer.setInterval(5);
    connect(&p->timer, &QTimer::timeout, this,
            [p] { p->longest = qMax(p->longest, p->sinceTurn.restart()); });
    p->sinceTurn.start();
    p->timer.start();
}

qint64 LoopWatch::longestGap() const
{
    return d->longest;
}

} // namespace endtoend
