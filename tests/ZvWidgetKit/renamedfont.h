#pragma once

#include <QByteArray>
#include <QString>

namespace zvtest {

// A TrueType font of this machine under another family name, ready for
// QFontDatabase::addApplicationFontFromData(); empty where there is none to rename.
QByteArray renamedFont(const QString &family);

} // namespace zvtest
