#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QImage>
#include <QLabel>
#include <QPointer>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

/// A label that loads a picture from a network address.
///
/// Addresses are "http", "https" and "qrc". A picture that cannot be had leaves the label as it
/// was: an error of the net or the server, an answer that takes more than ten seconds, a body of
/// more than 2 MiB, bytes that are no picture, or a picture of more than 16 million pixels.
class BRELTWIDGETTOOLKIT_EXPORT BreltLabelURL : public QLabel
{
    Q_OBJECT

public:
    explicit BreltLabelURL(QWidget *parent = nullptr);
    ~BreltLabelURL() override;

    /// Sets the size in device-independent pixels into which pictures are fitted, their proportions
    /// kept; a width or height of 0 or less shows them in their own size, which is also the start.
    /// A picture that is already there is fitted again.
    void setImageSize(int width, int height);

    /// Asks for the picture at `url`. A request that is still under way is dropped, its late answer
    /// too. Returns at once; one of the two signals follows through the event loop, unless the next
    /// request takes this one's place.
    void setNetworkPic(const QString &url);

    /// Sets how long a picture may take, in milliseconds; ten seconds at the start.
    void setDeadline(int milliseconds);

signals:
    /// The picture of the last request is shown.
    void signal_pictureShown(const QString &url);
    /// The last request brought no picture; the label is as it was. `reason` is for the log.
    void signal_pictureFailed(const QString &url, const QString &reason);

private:
    void dropRequest();
    void collect();
    void finish();
    void fail(const QString &reason);
    void showImage();

    QNetworkAccessManager *m_network = nullptr; // made with the first request
    QTimer *m_deadline;
    QPointer<QNetworkReply> m_reply;
    QString m_url;
    QByteArray m_body;
    QImage m_image;
    QSize m_imageSize;
    quint64 m_request = 0;
};
