#include "support/calltrace.h"

#include <QLoggingCategory>
#include <QMutex>

#include <cstring>

namespace zvtest {
namespace {

QMutex mutex;
QStringList *lines = nullptr;
QtMessageHandler next = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtDebugMsg && context.category && std::strcmp(context.category, "zv.kit") == 0) {
        QMutexLocker lock(&mutex);
        if (lines)
            lines->append(text);
        return;
    }
    if (next)
        next(type, context, text);
}

} // namespace

CallTrace::CallTrace()
{
    lines = new QStringList;
    next = qInstallMessageHandler(collect);
    QLoggingCategory::setFilterRules(QStringLiteral("zv.kit.debug=true"));
}

CallTrace::~CallTrace()
{
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(next);
    QMutexLocker lock(&mutex);
    delete lines;
    lines = nullptr;
}

QStringList CallTrace::take()
{
    QMutexLocker lock(&mutex);
    QStringList taken;
    taken.swap(*lines);
    return taken;
}

} // namespace zvtest
