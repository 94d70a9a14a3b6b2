#pragma once

#include <QString>
#include <QStringList>

namespace zvtest {

// Stores the names of the server in view: a collection for each id, with the code "C" and the id.
void storeCollections(const QStringList &ids);

// Makes a collection the current one, as a click into the market table does.
void choose(const QString &id);
QString current();

// The line of the call trace for a change of the current collection.
QString chooses(const QString &id);

} // namespace zvtest
