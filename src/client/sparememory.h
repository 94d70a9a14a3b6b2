#pragma once

#include <QObject>

class QAbstractItemModel;

// Gives back to the system what reading a whole market has used and left free. The allocator would
// keep it for the next list, which may never come: afterwards the exchange tells of changes alone.
class SpareMemory : public QObject
{
    Q_OBJECT

public:
    // `market` is reset by every list that is taken whole.
    SpareMemory(const QAbstractItemModel *market, QObject *parent);
};
