#include "endtoend/album.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QSet>
#include <QWidget>

namespace endtoend {
namespace {

// A screen with nothing on it has its surfaces and lines; writing alone has more shades.
constexpr int leastColours = 40;

// The status bar's clock moves by itself.
constexpr int clockHeight = 40;
constexpr int leastChange = 150; // pixels

// Windows above this one: dialogs first, then menus and notices, which nothing covers.
QList<QWidget *> windowsOver(const QWidget *window)
{
    QList<QWidget *> dialogs;
    QList<QWidget *> others;
    for (QWidget *each : QApplication::topLevelWidgets()) {
        if (each != window && each->isVisible())
            (each->windowType() == Qt::Dialog ? dialogs : others) << each;
    }
    return dialogs + others;
}

QImage pictureOf(QWidget *window)
{
    // What has just been written finds its room once the event loop comes around.
    QCoreApplication::processEvents();
    QImage picture = window->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QPainter painter(&picture);
    for (QWidget *each : windowsOver(window))
        painter.drawPixmap(each->mapToGlobal(QPoint()) - window->mapToGlobal(QPoint()),
                           each->grab());
    painter.end();
    return picture;
}

const QRgb *lineOf(const QImage &picture, int y)
{
    return reinterpret_cast<const QRgb *>(picture.constScanLine(y));
}

bool isEmpty(const QImage &picture)
{
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height() && colours.size() < leastColours; ++y) {
        const QRgb *line = lineOf(picture, y);
        for (int x = 0; x < picture.width() && colours.size() < leastColours; ++x)
            colours.insert(line[x]);
    }
    return colours.size() < leastColours;
}

bool areAlike(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return false;
    int changed = 0;
    for (int y = 0; y < one.height() - clockHeight && changed < leastChange; ++y) {
        const QRgb *here = lineOf(one, y);
        const QRgb *there = lineOf(other, y);
        for (int x = 0; x < one.width(); ++x)
            changed += here[x] != there[x] ? 1 : 0;
    }
    return changed < leastChange;
}

} // namespace

Album::Album(const QString &folder) : m_folder(QDir::cleanPath(folder))
{
    QDir place(m_folder);
    place.mkpath(QStringLiteral("."));
    for (const QString &old : place.entryList({QStringLiteral("*.png")}, QDir::Files))
        place.remove(old);
}

QString Album::take(const QString &name, QWidget *window)
{
    const QImage picture = pictureOf(window);
    const QString file
        = QStringLiteral("%1-%2.png").arg(++m_count, 2, 10, QLatin1Char('0')).arg(name);
    const bool isWritten = picture.save(QDir(m_folder).filePath(file));
    const bool isRepeated = areAlike(picture, m_last);
    m_last = picture;
    if (!isWritten)
        return file + QStringLiteral(" cannot be written");
    if (isEmpty(picture))
        return file + QStringLiteral(" shows next to nothing");
    return isRepeated ? file + QStringLiteral(" shows what the one before shows") : QString();
}

} // namespace endtoend
