#include "client/embeddedexchange.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr int firstPauseMs = 500;
constexpr int longestPauseMs = 15000;
constexpr int startDeadlineMs = 30000;
constexpr int stopDeadlineMs = 6000; // the service waits 2 s for another client, then ends
constexpr int firstLineBound = 256;

QUrl loopback(quint16 port)
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(port);
    return url;
}

} // namespace

EmbeddedExchange::EmbeddedExchange(const QString &program, const QString &stateFolder,
                                   QObject *parent)
    : QObject(parent), m_program(program), m_stateFolder(stateFolder), m_process(new QProcess),
      m_pauseMs(firstPauseMs)
{
    m_retry.setSingleShot(true);
    m_startDeadline.setSingleShot(true);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);

    connect(&m_retry, &QTimer::timeout, this, &EmbeddedExchange::attachOrLaunch);
    connect(&m_startDeadline, &QTimer::timeout, this,
            [this] { goAway(QStringLiteral("交易所服务迟迟没有就绪")); });
    connect(&m_line, &QLocalSocket::connected, this, [this] {
        if (const quint16 port = portOfRunningService())
            becomeAvailable(port);
        else
            goAway(QStringLiteral("交易所服务没有说明端口"));
    });
    connect(&m_line, &QLocalSocket::errorOccurred, this, [this] {
        // Nobody listens at the socket: no service, or one that was killed and left it behind.
        if (m_process->state() == QProcess::NotRunning && m_address.isEmpty() && !m_stopping)
            launch();
    });
    connect(&m_line, &QLocalSocket::disconnected, this, [this] {
        if (m_process->state() == QProcess::NotRunning)
            goAway(QStringLiteral("交易所服务已停止"));
    });
    connect(m_process, &QProcess::readyReadStandardOutput, this, &EmbeddedExchange::readFirstLine);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            goAway(QStringLiteral("无法启动交易所服务 %1").arg(m_program));
    });
    connect(m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this] { goAway(QStringLiteral("交易所服务已停止")); });
}

EmbeddedExchange::~EmbeddedExchange()
{
    stop();
    if (m_process->state() == QProcess::NotRunning)
        delete m_process;
}

void EmbeddedExchange::start()
{
    m_stopping = false;
    m_retry.start(0);
}

void EmbeddedExchange::attachOrLaunch()
{
    if (!QDir().mkpath(m_stateFolder)) {
        goAway(QStringLiteral("无法建立数据文件夹 %1").arg(m_stateFolder));
        return;
    }
    m_line.abort();
    m_line.connectToServer(m_stateFolder + QStringLiteral("/attach.sock"));
}

void EmbeddedExchange::launch()
{
    m_firstLine.clear();
    m_startDeadline.start(startDeadlineMs);
    m_process->start(m_program,
                     QStringList{QStringLiteral("serve"), QStringLiteral("--attached"),
                                 QStringLiteral("--state"), m_stateFolder}
                         + m_extraArguments);
}

void EmbeddedExchange::readFirstLine()
{
    const QByteArray output = m_process->readAllStandardOutput();
    if (!m_address.isEmpty())
        return;
    m_firstLine += output.left(firstLineBound);
    const int end = m_firstLine.indexOf('\n');
    if (end < 0)
        return;
    bool isPort = false;
    const quint16 port = m_firstLine.left(end).mid(5).toUShort(&isPort);
    if (!m_firstLine.startsWith("PORT ") || !isPort || port == 0) {
        m_process->kill();
        goAway(QStringLiteral("交易所服务的回答无法理解"));
        return;
    }
    becomeAvailable(port);
}

void EmbeddedExchange::becomeAvailable(quint16 port)
{
    m_startDeadline.stop();
    m_pauseMs = firstPauseMs;
    m_address = loopback(port);
    emit available(m_address);
}

void EmbeddedExchange::goAway(const QString &reason)
{
    m_startDeadline.stop();
    m_address.clear();
    if (m_stopping || m_retry.isActive())
        return;
    if (m_process->state() != QProcess::NotRunning)
        m_process->kill();
    m_retry.start(m_pauseMs);
    m_pauseMs = qMin(m_pauseMs * 2, longestPauseMs);
    emit lost(reason);
}

quint16 EmbeddedExchange::portOfRunningService() const
{
    QFile file(m_stateFolder + QStringLiteral("/zvexchange.lock"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.read(firstLineBound).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("port "))
            return line.mid(5).trimmed().toUShort();
    }
    return 0;
}

void EmbeddedExchange::stop()
{
    m_stopping = true;
    m_retry.stop();
    m_startDeadline.stop();
    m_line.abort();
    if (m_process->state() == QProcess::NotRunning)
        return;
    // Closing our end is the clean way out; the service decides whether it was the last one.
    m_process->disconnect(this);
    m_process->closeWriteChannel();
    m_process->waitForFinished(stopDeadlineMs);
    m_address.clear();
}
