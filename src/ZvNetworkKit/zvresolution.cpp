#include "ZvNetworkKit/zvresolution.h"

#include "ZvNetworkKit/zvexchangelink.h"

ZvResolution zvResolutionOf(const ZvOutcome &outcome)
{
    const ZvEnvelope &envelope = outcome.reply.envelope;
    if (!outcome.isReadable())
        return ZvResolution::None;
    if (envelope.isOfSession())
        return ZvResolution::SignedOut;
    if (outcome.isOk())
        return ZvResolution::Ended;
    // Every other status speaks of the question: the exchange is busy or stopping, is of another
    // release, or has no such server now.
    if (envelope.status != QLatin1String("refused"))
        return ZvResolution::None;
    return envelope.reason == QLatin1String("unknown-key") ? ZvResolution::NotArrived
                                                           : ZvResolution::Ended;
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
