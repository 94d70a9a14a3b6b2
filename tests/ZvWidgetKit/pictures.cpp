#include "pictures.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QMap>
#include <QSaveFile>
#include <QWidget>
#include <QtTest/QtTest>

#include <cmath>

namespace zvtest {
namespace {

QString pathOf(const QString &file)
{
    return QStringLiteral(ZV_PICTURES "/") + file;
}

bool isRenewed()
{
    return qEnvironmentVariableIsSet("ZV_RENEW_PICTURES");
}

QString leave(const QImage &image, const QString &name)
{
    const QString file = QDir::temp().filePath(name + QStringLiteral(".png"));
    return image.save(file) ? file : QStringLiteral("nowhere");
}

void showTo(const QImage &image, const QString &name)
{
    const QString folder = qEnvironmentVariable("ZV_SHOW_PICTURES");
    if (!folder.isEmpty())
        image.save(QDir(folder).filePath(name + QStringLiteral(".png")));
}

QString hashOf(const QImage &image)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (int y = 0; y < image.height(); ++y)
        hash.addData(reinterpret_cast<const char *>(image.constScanLine(y)), image.width() * 4);
    return QString::fromLatin1(hash.result().toHex());
}

QString nameAtScale(const QString &name, double scale)
{
    return QStringLiteral("%1@%2").arg(name).arg(scale);
}

// Name and hash of each picture, a line each.
QMap<QString, QString> readHashes()
{
    QMap<QString, QString> hashes;
    QFile file(pathOf(QStringLiteral("hashes.txt")));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (words.size() == 2)
                hashes.insert(QString::fromUtf8(words.at(0)), QString::fromUtf8(words.at(1)));
        }
    }
    return hashes;
}

bool writeHashes(const QMap<QString, QString> &hashes)
{
    QSaveFile file(pathOf(QStringLiteral("hashes.txt")));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (auto hash = hashes.cbegin(); hash != hashes.cend(); ++hash)
        file.write(hash.key().toUtf8() + ' ' + hash.value().toUtf8() + '\n');
    return file.commit();
}

// Test classes run side by side, and each renews its own pictures.
bool renewHash(const QString &name, const QString &hash)
{
    QLockFile lock(QDir::temp().filePath(QStringLiteral("zv_pictures.lock")));
    if (!lock.lock())
        return false;
    QMap<QString, QString> hashes = readHashes();
    hashes.insert(name, hash);
    return writeHashes(hashes);
}

} // namespace

void wearTheClientsLook()
{
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(14);
    QApplication::setFont(font);
    BreltDarkStyle::setPictures(QStringLiteral(":/icons/controls/"));
    BreltDarkStyle::install(*qApp, QColor());
    QApplication::setCursorFlashTime(0);
}

QImage picture(QWidget *widget, double scale)
{
    QImage image(int(std::ceil(widget->width() * scale)), int(std::ceil(widget->height() * scale)),
                 QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setDevicePixelRatio(scale);
    widget->render(&image);
    image.setDevicePixelRatio(1);
    return image;
}

QString differenceFromPicture(const QImage &image, const QString &name)
{
    showTo(image, name);
    const QString file = pathOf(name + QStringLiteral(".png"));
    if (isRenewed())
        return image.save(file) ? QString() : QStringLiteral("cannot write ") + file;
    QImage expected;
    if (!expected.load(file))
        return QStringLiteral("no picture ") + file;
    if (expected.convertToFormat(image.format()) == image)
        return {};
    return QStringLiteral("not as %1, see %2").arg(file, leave(image, name));
}

QString differenceFromHash(const QImage &image, const QString &name)
{
    showTo(image, name);
    const QString hash = hashOf(image);
    if (isRenewed())
        return renewHash(name, hash) ? QString() : QStringLiteral("cannot write the hashes");
    if (readHashes().value(name) == hash)
        return {};
    return QStringLiteral("%1 is not as it was, see %2").arg(name, leave(image, name));
}

QString differenceFromPictures(QWidget *widget, const QString &name, bool isKept)
{
    QString first = differenceAtScaleOne(widget, name, isKept);
    for (const double scale : {1.25, 1.5, 2.0}) {
        const QString difference
            = differenceFromHash(picture(widget, scale), nameAtScale(name, scale));
        if (first.isEmpty())
            first = difference;
    }
    return first;
}

QString differenceAtScaleOne(QWidget *widget, const QString &name, bool isKept)
{
    const QImage image = picture(widget, 1);
    return isKept ? differenceFromPicture(image, name)
                  : differenceFromHash(image, nameAtScale(name, 1));
}

} // namespace zvtest
