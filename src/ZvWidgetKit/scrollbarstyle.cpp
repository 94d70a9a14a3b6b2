#include "ZvWidgetKit/scrollbarstyle.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QAbstractScrollArea>
#include <QDebug>
#include <QFile>
#include <QScrollBar>

void applyScrollBarStyle(QAbstractScrollArea *area)
{
    QFile sheet(QStringLiteral(":/qsss/scrollbar.qss"));
    if (!sheet.open(QIODevice::ReadOnly)) {
        qWarning() << sheet.fileName() << sheet.errorString();
        return;
    }
    const QString style = QString::fromUtf8(sheet.readAll());
    area->verticalScrollBar()->setStyleSheet(style);
    area->horizontalScrollBar()->setStyleSheet(style);
}
