#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QDebug>
#include <QLoggingCategory>
#include <QString>
#include <QStringList>

#include <type_traits>

// Two logging categories of the kit.
//
// `zv.kit`, at debug level and off by default: one line for each call of a request, an action, a
// page notification or a setter, as `ZvServerEngine::sendRequest_Market_Detail("1001", 1, 100)`.
// `zv.network`: what went wrong with an answer, and when the exchange goes away and comes back.
ZVNETWORKKIT_EXPORT const QLoggingCategory &zvKitTrace();
ZVNETWORKKIT_EXPORT const QLoggingCategory &zvNetworkLog();

namespace zvtrace {

// Stands for an argument that nobody may read in a log.
struct Secret {
    const QString &value;
};

inline QString text(const QString &value)
{
    QString out;
    QDebug(&out).nospace() << value;
    return out;
}

inline QString text(const Secret &)
{
    return QStringLiteral("\"***\"");
}

template <typename Number, typename = std::enable_if_t<std::is_arithmetic<Number>::value>>
QString text(Number value)
{
    QString out;
    QDebug(&out).nospace() << value;
    return out;
}

template <typename Element>
QString text(const QList<Element> &values)
{
    QStringList parts;
    for (const Element &value : values)
        parts.append(text(value));
    return QLatin1Char('[') + parts.join(QLatin1String(", ")) + QLatin1Char(']');
}

// Writes the line of one call; costs one test while the category is off.
template <typename... Arguments>
void call(const char *name, const Arguments &...arguments)
{
    if (!zvKitTrace().isDebugEnabled())
        return;
    const QStringList parts{text(arguments)...};
    qCDebug(zvKitTrace).noquote().nospace()
        << name << '(' << parts.join(QLatin1String(", ")) << ')';
}

} // namespace zvtrace
