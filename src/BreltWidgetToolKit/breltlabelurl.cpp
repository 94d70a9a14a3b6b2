#include "BreltWidgetToolKit/breltlabelurl.h"

#include <QBuffer>
#include <QImageReader>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>

namespace {

Q_LOGGING_CATEGORY(pictureLog, "brelt.picture")

const int c_deadline = 10 * 1000;
const qint64 c_largestBody = 2 * 1024 * 1024;
const qint64 c_mostPixels = 16 * 1000 * 1000;

bool isAllowedScheme(const QString &scheme)
{
    return scheme == QLatin1String("http") || scheme == QLatin1String("https")
        || scheme == QLatin1String("qrc");
}

// Drawing languages are left out: a few bytes of them can ask for any amount of work.
bool isAllowedFormat(const QByteArray &format)
{
    static const QList<QByteArray> formats{"png", "jpg", "jpeg", "gif", "bmp", "webp", "ico"};
    return formats.contains(format);
}

// Decodes a picture, its size checked before its pixels are; gives the reason where it cannot.
QImage decode(QByteArray *body, QString *reason)
{
    QBuffer buffer(body);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!isAllowedFormat(reader.format())) {
        *reason = QStringLiteral("no picture");
        return QImage();
    }
    const QSize size = reader.size();
    if (!size.isValid()) {
        *reason = QStringLiteral("a broken picture");
        return QImage();
    }
    if (size.isEmpty() || qint64(size.width()) * size.height() > c_mostPixels) {
        *reason = QStringLiteral("a picture of a size that is not allowed");
        return QImage();
    }
    const QImage image = reader.read();
    if (image.isNull())
        *reason = reader.errorString();
    return image;
}

} // namespace

BreltLabelURL::BreltLabelURL(QWidget *parent) : QLabel(parent), m_deadline(new QTimer(this))
{
    m_deadline->setSingleShot(true);
    m_deadline->setInterval(c_deadline);
    connect(m_deadline, &QTimer::timeout, this,
            [this] { fail(QStringLiteral("no answer in time")); });
}

BreltLabelURL::~BreltLabelURL()
{
    dropRequest();
}

void BreltLabelURL::setImageSize(int width, int height)
{
    m_imageSize = width > 0 && height > 0 ? QSize(width, height) : QSize();
    if (!m_image.isNull())
        showImage();
}

void BreltLabelURL::setDeadline(int milliseconds)
{
    m_deadline->setInterval(qMax(1, milliseconds));
}

void BreltLabelURL::setNetworkPic(const QString &url)
{
    dropRequest();
    m_url = url;
    const QUrl address(url, QUrl::StrictMode);
    if (!address.isValid() || !isAllowedScheme(address.scheme())) {
        const quint64 request = m_request;
        QMetaObject::invokeMethod(
            this,
            [this, request] {
                if (request == m_request)
                    fail(QStringLiteral("an address that is not allowed"));
            },
            Qt::QueuedConnection);
        return;
    }

    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(5);
    // A packed body could grow behind the bound on its size.
    request.setRawHeader("Accept-Encoding", "identity");
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &BreltLabelURL::collect);
    connect(m_reply, &QNetworkReply::finished, this, &BreltLabelURL::finish);
    m_deadline->start();
}

void BreltLabelURL::dropRequest()
{
    ++m_request;
    m_deadline->stop();
    m_body.clear();
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply.clear();
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

void BreltLabelURL::collect()
{
    if (!m_reply)
        return;
    const qint64 announced = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    m_body += m_reply->read(c_largestBody + 1 - m_body.size());
    if (announced > c_largestBody || m_body.size() > c_largestBody)
        fail(QStringLiteral("a body that is too large"));
}

void BreltLabelURL::finish()
{
    const quint64 request = m_request;
    collect();
    if (request != m_request || !m_reply)
        return;
    if (m_reply->error() != QNetworkReply::NoError) {
        fail(m_reply->errorString());
        return;
    }
    QString reason;
    const QImage image = decode(&m_body, &reason);
    if (image.isNull()) {
        fail(reason);
        return;
    }
    dropRequest();
    m_image = image;
    showImage();
    const QString url = m_url; // a listener may ask for the next picture
    emit signal_pictureShown(url);
}

void BreltLabelURL::fail(const QString &reason)
{
    dropRequest();
    const QString url = m_url; // a listener may ask for the next picture
    qCInfo(pictureLog).noquote() << "no picture from" << url << "-" << reason;
    emit signal_pictureFailed(url, reason);
}

void BreltLabelURL::showImage()
{
    const qreal ratio = devicePixelRatioF();
    QImage fitted = m_image;
    if (m_imageSize.isValid()) {
        fitted = m_image.scaled(m_imageSize * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        fitted.setDevicePixelRatio(ratio);
    }
    setPixmap(QPixmap::fromImage(fitted));
}
