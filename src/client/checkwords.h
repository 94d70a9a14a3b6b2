#pragma once

#include "ZvNetworkKit/zvactionchecks.h"

#include <QList>
#include <QString>

// What the window says of actions whose answer has not come.
namespace checkwords {

// What is being checked at the moment, such as "有1笔委托正在核对…"; "" where nothing is.
QString sentence(const QList<ZvIntent> &open, int waiting);

// What became of one, for a passing notice; "" where nothing can be said.
QString notice(const ZvIntent &intent, ZvActionChecks::Outcome outcome, const QString &message);

} // namespace checkwords
