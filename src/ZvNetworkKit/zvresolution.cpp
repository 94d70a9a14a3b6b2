#include "ZvNetworkKit/zvresolution.h"

#include "ZvNetworkKit/zvexchangelink.h"

ZvResolution zvResolutionOf(const ZvOutcome &outcome)
{
    const ZvEnvelope &envelope = outcome.reply.envelope;
    const bool isPassing
        = envelope.status == QLatin1String("failed") || envelope.status == QLatin1String("busy");
    if (!outcome.isReadable() || isPassing)
        return ZvResolution::None;
    if (envelope.isOfSession())
        return ZvResolution::SignedOut;
    if (envelope.reason == QLatin1String("unknown-key"))
        return ZvResolution::NotArrived;
    return ZvResolution::Ended;
}

QString zvRefusalOf(const ZvEnvelope &envelope)
{
    if (!envelope.message.isEmpty())
        return envelope.message;
    if (envelope.status == QLatin1String("unserved"))
        return QStringLiteral("该功能尚未开放");
    if (envelope.status == QLatin1String("session"))
        return QStringLiteral("请先登录");
    if (envelope.status == QLatin1String("busy"))
        return QStringLiteral("交易所繁忙，请稍后再试");
    return QStringLiteral("交易所拒绝了该请求");
}
