#include "client/checkwords.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QStringList>

namespace checkwords {

namespace {

// Prepared orders are orders once they have been sent.
QString kindOf(const ZvIntent &intent)
{
    switch (intent.matter) {
    case ZvIntent::Order:
    case ZvIntent::PreparedOrder:
        return QStringLiteral("委托");
    case ZvIntent::Withdrawal:
        return QStringLiteral("撤单");
    case ZvIntent::Delivery:
        return intent.collectionId.isEmpty() ? QStringLiteral("取消提货") : QStringLiteral("提货");
    case ZvIntent::Transfer:
        return QStringLiteral("转账");
    case ZvIntent::Other:
        break;
    }
    return QStringLiteral("操作");
}

// "买入委托（100001 长城）"; without what the server in view does not know.
QString nameOf(const ZvIntent &intent)
{
    QString name = kindOf(intent);
    if (intent.direction != 0)
        name.prepend(intent.direction == 1 ? QStringLiteral("买入") : QStringLiteral("卖出"));
    ZvUBBriefInfo info = ZvServerCache::getZvServerCacheInstance()->getCurrentBriefInfo();
    const QString code = info.getCodeFromCollectionID(intent.collectionId);
    if (!code.isEmpty())
        name += QStringLiteral("（%1 %2）")
                    .arg(code, info.getNameFromCollectionID(intent.collectionId));
    return name;
}

} // namespace

QString sentence(const QList<ZvIntent> &open, int waiting)
{
    if (open.isEmpty())
        return QString();
    QStringList kinds;
    QList<int> counts;
    for (const ZvIntent &intent : open) {
        const QString kind = kindOf(intent);
        if (!kinds.contains(kind)) {
            kinds << kind;
            counts << 0;
        }
        ++counts[kinds.indexOf(kind)];
    }
    QStringList parts;
    for (int i = 0; i < kinds.size(); ++i)
        parts << QStringLiteral("%1笔%2").arg(counts.at(i)).arg(kinds.at(i));
    const QString waits
        = waiting > 0 ? QStringLiteral("，另有%1笔操作等待发送").arg(waiting) : QString();
    return QStringLiteral("有%1正在核对%2…").arg(parts.join(QStringLiteral("、")), waits);
}

QString notice(const ZvIntent &intent, ZvActionChecks::Outcome outcome, const QString &message)
{
    switch (outcome) {
    case ZvActionChecks::Done:
        return QStringLiteral("核对结果：%1已成功").arg(nameOf(intent));
    case ZvActionChecks::Refused:
        // One that was refused may have withdrawn some of its orders; the message says which.
        if (intent.matter == ZvIntent::Withdrawal)
            return QStringLiteral("核对结果：撤单已有答复，%1").arg(message);
        return QStringLiteral("核对结果：%1未成功，%2").arg(nameOf(intent), message);
    case ZvActionChecks::NotArrived:
        return QStringLiteral("核对结果：%1未送达交易所").arg(nameOf(intent));
    case ZvActionChecks::Unknown: // its page has said so
        break;
    }
    return QString();
}

} // namespace checkwords
