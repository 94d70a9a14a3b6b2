#include "client/embeddedexchange.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

constexpr int firstPauseMs = 500;
constexpr int longestPauseMs = 15000;
constexpr int soonMs = 200;
constexpr int patienceMs = 30000;
constexpr int lastingMs = 30000; // a service that stood as long was sound
constexpr int leavingMs = 5000; // the service waits 2 s for another client, then ends
constexpr int exitUnusable = 2; // of the service: options or state folder not usable
constexpr int firstLineBound = 256;

QUrl loopback(quint16 port)
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(port);
    return url;
}

// A child in a session of its own: what a terminal sends to the client that happened to start the
// service, such as Ctrl+C, must not end it for the other clients.
class ServiceProcess : public QProcess
{
protected:
    void setupChildProcess() override { ::setsid(); }
};

// A descriptor of a folder or file, for the length of a scope.
class Descriptor
{
public:
    Descriptor(const QString &path, int flags)
        : m_file(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC))
    {
    }
    ~Descriptor()
    {
        if (m_file >= 0)
            ::close(m_file);
    }
    Q_DISABLE_COPY(Descriptor)

    int number() const { return m_file; }

private:
    int m_file;
};

bool isLocked(const QString &path)
{
    const Descriptor file(path, O_RDONLY);
    return file.number() >= 0 && ::flock(file.number(), LOCK_SH | LOCK_NB) != 0
        && errno == EWOULDBLOCK;
}

// The port in a lock file of the lines "pid 4711" and "port 40123"; 0 where it holds none.
quint16 portIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.read(firstLineBound).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("port "))
            return line.mid(5).trimmed().toUShort();
    }
    return 0;
}

// Other clients may still use a service that this one has started, and QProcess kills its child
// when it dies: such a child's handle stays to the end of the process.
void leaveToOthers(std::unique_ptr<QProcess> process)
{
    static QProcess *left = nullptr;
    process->setParent(left);
    left = process.release();
}

} // namespace

EmbeddedExchange::EmbeddedExchange(const QString &program, const QString &stateFolder,
                                   QObject *parent)
    : QObject(parent), m_program(program), m_stateFolder(stateFolder), m_pauseMs(firstPauseMs)
{
    m_retry.setSingleShot(true);
    m_patience.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &EmbeddedExchange::look);
    connect(&m_patience, &QTimer::timeout, this,
            [this] { emit lost(QStringLiteral("交易所服务迟迟没有就绪，仍在等待")); });
    connect(&m_line, &QLocalSocket::connected, this, &EmbeddedExchange::takeAttached);
    connect(&m_line, &QLocalSocket::errorOccurred, this, &EmbeddedExchange::takeLineError);
}

EmbeddedExchange::~EmbeddedExchange()
{
    stop();
}

void EmbeddedExchange::start()
{
    if (m_state != State::Idle)
        return;
    m_pauseMs = firstPauseMs;
    m_state = State::Pausing;
    m_retry.start(0);
}

qint64 EmbeddedExchange::processId() const
{
    return m_process ? m_process->processId() : 0;
}

bool EmbeddedExchange::isChildRunning() const
{
    return m_process && m_process->state() != QProcess::NotRunning;
}

QString EmbeddedExchange::fileInFolder(const char *name) const
{
    return m_stateFolder + QLatin1Char('/') + QLatin1String(name);
}

void EmbeddedExchange::look()
{
    if (!m_patience.isActive())
        m_patience.start(patienceMs);
    if (!QDir().mkpath(m_stateFolder)) {
        pause(QStringLiteral("无法建立数据文件夹 %1").arg(m_stateFolder));
        return;
    }
    attach();
}

void EmbeddedExchange::lookSoon()
{
    m_state = State::Pausing;
    m_retry.start(soonMs);
}

void EmbeddedExchange::attach()
{
    m_state = State::Attaching;
    m_line.abort();
    // A socket's address holds 107 bytes, and a state folder may have a longer name: the address
    // goes through an open descriptor of the folder.
    const Descriptor folder(m_stateFolder, O_PATH | O_DIRECTORY);
    m_line.connectToServer(QStringLiteral("/proc/self/fd/%1/attach.sock").arg(folder.number()));
}

void EmbeddedExchange::takeAttached()
{
    if (const quint16 port = portIn(fileInFolder("zvexchange.lock"))) {
        serve(port);
        return;
    }
    // A service that is about to end still takes lines, but has withdrawn its port.
    m_line.abort();
    lookSoon();
}

void EmbeddedExchange::takeLineError()
{
    if (m_state == State::Serving && !isChildRunning()) {
        pause(QStringLiteral("交易所服务已停止"));
    } else if (m_state == State::Attaching) {
        // Nobody listens. Either a service holds the folder and is still starting or already
        // ending, or there is none, or one was killed and left its socket behind.
        if (isLocked(fileInFolder("zvexchange.lock")))
            lookSoon();
        else
            launch();
    }
}

void EmbeddedExchange::launch()
{
    m_state = State::Starting;
    m_firstLine.clear();
    m_process = std::make_unique<ServiceProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(m_process.get(), &QProcess::readyReadStandardOutput, this,
            &EmbeddedExchange::readFirstLine);
    connect(
        m_process.get(), &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                pause(QStringLiteral("无法启动交易所服务 %1").arg(m_program));
        },
        Qt::QueuedConnection);
    connect(m_process.get(), qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int exitCode) { takeChildEnd(exitCode); });
    // Whoever starts a client alone can trade at once: a new folder gets a demo account.
    m_process->start(m_program,
                     QStringList{QStringLiteral("serve"), QStringLiteral("--attached"),
                                 QStringLiteral("--demo"), QStringLiteral("--state"), m_stateFolder}
                         + m_extraArguments);
}

void EmbeddedExchange::readFirstLine()
{
    const QByteArray output = m_process->readAllStandardOutput();
    if (m_state != State::Starting)
        return;
    m_firstLine += output.left(firstLineBound);
    const int end = m_firstLine.indexOf('\n');
    if (end < 0 && m_firstLine.size() < firstLineBound)
        return;
    bool isPort = false;
    const quint16 port = m_firstLine.left(end).mid(5).toUShort(&isPort);
    if (m_firstLine.startsWith("PORT ") && isPort && port != 0)
        serve(port);
    else
        m_process->kill(); // not the program that it should be
}

void EmbeddedExchange::takeChildEnd(int exitCode)
{
    const bool wasRefused = m_state == State::Starting && exitCode == exitUnusable;
    if (wasRefused && isLocked(fileInFolder("zvexchange.lock")))
        lookSoon(); // another client was faster, and its service is ours as well
    else if (wasRefused)
        pause(reasonOfRefusal());
    else if (m_state == State::Starting)
        pause(QStringLiteral("交易所服务没有启动成功"));
    else
        pause(QStringLiteral("交易所服务已停止"));
}

QString EmbeddedExchange::reasonOfRefusal() const
{
    if (!QFileInfo(m_stateFolder).isWritable())
        return QStringLiteral("数据文件夹不可写 %1").arg(m_stateFolder);
    return QStringLiteral("交易所服务无法使用数据文件夹 %1").arg(m_stateFolder);
}

void EmbeddedExchange::serve(quint16 port)
{
    m_state = State::Serving;
    m_retry.stop();
    m_patience.stop();
    m_served.start();
    m_address = loopback(port);
    emit available(m_address);
}

void EmbeddedExchange::pause(const QString &reason)
{
    if (m_state == State::Idle)
        return;
    if (m_state == State::Serving && m_served.hasExpired(lastingMs))
        m_pauseMs = firstPauseMs;
    m_state = State::Pausing;
    m_address.clear();
    m_patience.stop();
    m_retry.start(m_pauseMs);
    m_pauseMs = qMin(m_pauseMs * 2, longestPauseMs);
    emit lost(reason);
}

void EmbeddedExchange::stop()
{
    m_state = State::Idle;
    m_retry.stop();
    m_patience.stop();
    m_address.clear();
    m_line.abort();
    if (!isChildRunning())
        return;
    // Closing our end is the clean way out; the service decides whether it was the last one.
    m_process->disconnect(this);
    m_process->closeWriteChannel();
    if (!m_process->waitForFinished(leavingMs))
        leaveToOthers(std::move(m_process));
    m_process.reset();
}
