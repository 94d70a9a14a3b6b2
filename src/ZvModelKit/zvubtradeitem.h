#pragma once

#include "ZvModelKit/zvmodelkit_export.h"

#include <QString>
#include <QStringList>

// An order that is written down and not sent yet. A plain record: its owner fills the fields.
class ZVMODELKIT_EXPORT ZvUBTradeItem
{
public:
    enum State { Kept = 1, Failed = 3 };

    // Makes a key of its own; a copy keeps the key of its original.
    ZvUBTradeItem();

    QString md5; // 32 lower-case hexadecimal digits, never made twice by one process
    bool checked = false;
    QString code;
    QString name;
    int direction = 1; // 1 buy, 2 sell
    float price = 0; // yuan
    int count = 0; // pieces
    int state = Kept;
    QString createTime; // "hh:mm:ss"
    QString message; // why the order failed, empty until then

    // The number of columns.
    static int dataCountForModelUse();

    // The header text of each column. Column 0 holds the tick and has no text in its cells.
    static QStringList headerListForModelUse();

    // The text of a cell, made from the fields as they are now; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;
};
