#include "listeners.h"

#include <QMetaMethod>
#include <QMutex>
#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

QMutex mutex;
QStringList written;
QtMessageHandler next = nullptr;
LogLines::Onward toNext = LogLines::PassOn;

void take(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (qstrcmp(context.category, "zv.network") == 0) {
        QMutexLocker lock(&mutex);
        written.append(text);
    }
    if (toNext == LogLines::PassOn)
        next(type, context, text);
}

} // namespace

Ear::Ear(QObject *object)
{
    const QMetaObject *meta = object->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        if (meta->method(i).methodType() == QMetaMethod::Signal)
            m_spies.push_back(std::make_unique<QSignalSpy>(object, meta->method(i)));
    }
}

Ear::~Ear() = default;

int Ear::count() const
{
    int sum = 0;
    for (const auto &spy : m_spies)
        sum += spy->count();
    return sum;
}

QStringList Ear::heard() const
{
    QStringList names;
    for (const auto &spy : m_spies) {
        if (!spy->isEmpty())
            names.append(QString::fromLatin1(spy->signal()).section(QLatin1Char('('), 0, 0));
    }
    return names;
}

LogLines::LogLines(Onward onward)
{
    written.clear();
    toNext = onward;
    next = qInstallMessageHandler(take);
}

LogLines::~LogLines()
{
    qInstallMessageHandler(next);
}

QStringList LogLines::lines()
{
    QMutexLocker lock(&mutex);
    return written;
}
