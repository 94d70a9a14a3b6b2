#include "client/sparememory.h"

#include <QAbstractItemModel>
#include <QTimer>

#include <malloc.h>

namespace {

constexpr int restMs = 2000; // until what came with the list has been read and painted, too

} // namespace

SpareMemory::SpareMemory(const QAbstractItemModel *market, QObject *parent) : QObject(parent)
{
    auto *rest = new QTimer(this);
    rest->setSingleShot(true);
    rest->setInterval(restMs);
    connect(market, &QAbstractItemModel::modelReset, rest, qOverload<>(&QTimer::start));
    connect(rest, &QTimer::timeout, this, [] { malloc_trim(0); });
}
