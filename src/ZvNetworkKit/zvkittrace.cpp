#include "ZvNetworkKit/zvkittrace.h"

Q_LOGGING_CATEGORY(zvKitTrace, "zv.kit", QtWarningMsg)
Q_LOGGING_CATEGORY(zvNetworkLog, "zv.network", QtInfoMsg)
