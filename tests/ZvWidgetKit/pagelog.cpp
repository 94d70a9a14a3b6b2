#include "pagelog.h"

#include <QLoggingCategory>

#include <cstring>

namespace zvtest {
namespace {

QStringList *lines = nullptr;
QtMessageHandler next = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const char *category = context.category ? context.category : "";
    if (type == QtDebugMsg
        && (std::strcmp(category, "default") == 0 || std::strcmp(category, "zv.kit") == 0))
        lines->append(text);
    else
        next(type, context, text);
}

} // namespace

PageLog::PageLog()
{
    Q_ASSERT(!lines);
    lines = new QStringList;
    next = qInstallMessageHandler(collect);
    QLoggingCategory::setFilterRules(QStringLiteral("zv.kit.debug=true"));
}

PageLog::~PageLog()
{
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(next);
    delete lines;
    lines = nullptr;
}

QStringList PageLog::take()
{
    QStringList taken;
    taken.swap(*lines);
    return taken;
}

} // namespace zvtest
