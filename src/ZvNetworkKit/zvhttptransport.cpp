#include "ZvNetworkKit/zvhttptransport.h"

#include "ZvNetworkKit/zvfaults.h"

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <cstring>

namespace {

// A body that is gone once it has been read. A byte array or a file would be sent again by the
// network code when the exchange closes before it answers, and the exchange would have two orders.
class OneWayBody : public QIODevice
{
public:
    OneWayBody(const QByteArray &body, QObject *parent) : QIODevice(parent), m_body(body)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    bool reset() override { return false; }
    bool atEnd() const override { return m_read == m_body.size(); }
    qint64 bytesAvailable() const override
    {
        return m_body.size() - m_read + QIODevice::bytesAvailable();
    }

    // Nothing of it has left: the request cannot have had an effect.
    bool isUntouched() const { return m_read == 0; }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const qint64 count = std::min<qint64>(size, m_body.size() - m_read);
        if (count == 0)
            return -1;
        std::memcpy(data, m_body.constData() + m_read, static_cast<std::size_t>(count));
        m_read += static_cast<int>(count);
        return count;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_body;
    int m_read = 0;
};

QByteArray encoded(const ZvRequest::Parameters &parameters)
{
    QByteArray text;
    for (const auto &entry : parameters) {
        if (!text.isEmpty())
            text += '&';
        text += QUrl::toPercentEncoding(entry.first) + '=' + QUrl::toPercentEncoding(entry.second);
    }
    return text;
}

std::unique_ptr<QNetworkAccessManager> makeManager()
{
    auto manager = std::make_unique<QNetworkAccessManager>();
    manager->setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    manager->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    return manager;
}

QNetworkRequest makeRequest(const QUrl &url, const ZvRequest &request)
{
    QNetworkRequest out(url);
    // Asked for in so many words, or the network code would ask for gzip and inflate it unbounded.
    out.setRawHeader("Accept-Encoding", "identity");
    out.setRawHeader("Accept", "application/json");
    out.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("ZvNetworkKit/1"));
    if (!request.token.isEmpty())
        out.setRawHeader("Authorization", "Bearer " + request.token);
    out.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    out.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    out.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    out.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    out.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    out.setAttribute(QNetworkRequest::HttpPipeliningAllowedAttribute, false);
    out.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return out;
}

const OneWayBody *transferBody(const QNetworkReply *reply)
{
    for (const QObject *child : reply->children()) {
        if (const auto *body = dynamic_cast<const OneWayBody *>(child))
            return body;
    }
    return nullptr;
}

bool isUnreachable(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::ConnectionRefusedError
        || error == QNetworkReply::HostNotFoundError;
}

} // namespace

ZvHttpTransport::ZvHttpTransport(const QUrl &address, QObject *parent)
    : ZvTransport(parent), m_address(address), m_queries(makeManager()), m_actions(makeManager())
{
}

ZvHttpTransport::~ZvHttpTransport()
{
    finishAll();
    // The managers take their replies along; what those still say on the way finds nobody.
    for (const Transfer &transfer : qAsConst(m_transfers))
        transfer.reply->disconnect(this);
    m_transfers.clear();
}

void ZvHttpTransport::start(ZvCallId id, const ZvRequest &request)
{
    QUrl url = m_address;
    url.setPath(request.prefix + request.path);
    const QByteArray parameters = encoded(request.parameters);
    Transfer transfer;
    transfer.bodyBound = request.bodyBound;
    if (request.isAction) {
        QNetworkRequest out = makeRequest(url, request);
        out.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
        out.setHeader(QNetworkRequest::ContentLengthHeader, parameters.size());
        out.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        auto body = std::make_unique<OneWayBody>(parameters, nullptr);
        transfer.reply = zvFault("body-can-be-sent-again") ? m_actions->post(out, parameters)
                                                           : m_actions->post(out, body.get());
        body.release()->setParent(transfer.reply);
    } else {
        url.setQuery(QString::fromLatin1(parameters), QUrl::StrictMode);
        transfer.reply = m_queries->get(makeRequest(url, request));
    }
    m_transfers.insert(id, transfer);

    QNetworkReply *reply = transfer.reply;
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, id] { readHeaders(id); });
    connect(reply, &QNetworkReply::readyRead, this, [this, id] { readBody(id); });
    connect(reply, &QNetworkReply::finished, this, [this, id] { readEnd(id); });
}

void ZvHttpTransport::abandon(ZvCallId id)
{
    const auto found = m_transfers.find(id);
    if (found == m_transfers.end())
        return;
    QNetworkReply *reply = found->reply;
    m_transfers.erase(found);
    reply->disconnect(this);
    // Not from inside the reply's own signals, where an abort makes it fail twice.
    QMetaObject::invokeMethod(
        reply,
        [reply] {
            reply->abort();
            reply->deleteLater();
        },
        Qt::QueuedConnection);
}

void ZvHttpTransport::refuse(ZvCallId id, ZvAnswer::Ending ending, const QString &reason)
{
    ZvAnswer answer;
    answer.ending = ending;
    answer.error = reason;
    abandon(id);
    finish(id, answer);
}

void ZvHttpTransport::readHeaders(ZvCallId id)
{
    const auto found = m_transfers.constFind(id);
    if (found == m_transfers.constEnd())
        return;
    const QByteArray encoding = found->reply->rawHeader("Content-Encoding").trimmed().toLower();
    if (!encoding.isEmpty() && encoding != "identity") {
        refuse(id, ZvAnswer::Failed,
               QStringLiteral("the answer is compressed (%1)").arg(QString::fromLatin1(encoding)));
        return;
    }
    bool isNumber = false;
    const qint64 length = found->reply->rawHeader("Content-Length").toLongLong(&isNumber);
    if (isNumber && length > found->bodyBound) {
        refuse(id, ZvAnswer::TooLarge, QStringLiteral("the answer announces %1 bytes").arg(length));
    }
}

void ZvHttpTransport::readBody(ZvCallId id)
{
    const auto found = m_transfers.find(id);
    if (found == m_transfers.end())
        return;
    found->body += found->reply->readAll();
    if (found->body.size() > found->bodyBound) {
        refuse(id, ZvAnswer::TooLarge,
               QStringLiteral("the answer is longer than %1 bytes").arg(found->bodyBound));
    }
}

void ZvHttpTransport::readEnd(ZvCallId id)
{
    readBody(id);
    const auto found = m_transfers.find(id);
    if (found == m_transfers.end())
        return;
    QNetworkReply *reply = found->reply;
    ZvAnswer answer;
    answer.body = found->body;
    answer.httpStatus = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QNetworkReply::NetworkError error = reply->error();

    // Errors from ContentAccessDenied on are what the exchange answered; those below are the
    // connection's, and then even a status that came is not the whole answer.
    const bool isBroken = error != QNetworkReply::NoError
        && (error < QNetworkReply::ContentAccessDenied || answer.httpStatus == 0
            || error == QNetworkReply::ContentReSendError);
    const bool isShort = reply->hasRawHeader("Content-Length")
        && reply->rawHeader("Content-Length").toLongLong() != answer.body.size();
    if (isBroken || isShort) {
        const auto *body = transferBody(reply);
        const bool wasSent = body && !body->isUntouched();
        const bool cannotHaveArrived = isUnreachable(error) && !wasSent;
        answer.ending = cannotHaveArrived || zvFault("broken-is-taken-for-unsent")
            ? ZvAnswer::NotSent
            : ZvAnswer::Failed;
        answer.error = isBroken ? reply->errorString() : QStringLiteral("the answer is cut off");
    } else {
        answer.ending = ZvAnswer::Answered;
    }
    m_transfers.erase(found);
    reply->disconnect(this);
    reply->deleteLater();
    finish(id, answer);
}
