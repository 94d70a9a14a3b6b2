#include "ZvModelKit/zvubtradeitem.h"

#include "ZvModelKit/zvubvalues.h"

#include <QRandomGenerator>

#include <atomic>
#include <cmath>

namespace {

enum Column { Tick, Code, Name, Direction, Price, Count, Time, Message };

// Spreads a counter over all 64 bits; one to one, so that two counts never meet.
quint64 scattered(quint64 count)
{
    count += 0x9e3779b97f4a7c15U;
    count = (count ^ (count >> 30U)) * 0xbf58476d1ce4e5b9U;
    count = (count ^ (count >> 27U)) * 0x94d049bb133111ebU;
    return count ^ (count >> 31U);
}

void writeHexadecimal(QChar *place, quint64 value)
{
    static const char digits[] = "0123456789abcdef";
    for (int at = 15; at >= 0; --at) {
        place[at] = QLatin1Char(digits[value & 0xfU]);
        value >>= 4U;
    }
}

// 64 random bits of this process in front of 64 bits that no other row of it has.
QString makeKey()
{
    static const quint64 process = QRandomGenerator::system()->generate64();
    static std::atomic<quint64> made{0};
    QString key(32, Qt::Uninitialized);
    writeHexadecimal(key.data(), process);
    writeHexadecimal(key.data() + 16, scattered(process + made++));
    return key;
}

QString textOfPrice(float yuan)
{
    constexpr double bound = 9e15; // beyond it a double has no hundredths
    const double fen = static_cast<double>(yuan) * 100.0;
    return fen >= 0 && fen < bound ? zvub::priceText(std::llround(fen)) : zvub::missingText();
}

QString textOfState(const ZvUBTradeItem &item)
{
    switch (item.state) {
    case ZvUBTradeItem::Kept:
        return QStringLiteral("未发送");
    case ZvUBTradeItem::Failed:
        return item.message.isEmpty() ? QStringLiteral("发送失败")
                                      : QStringLiteral("发送失败：") + item.message;
    default:
        return zvub::missingText();
    }
}

} // namespace

ZvUBTradeItem::ZvUBTradeItem() : md5(makeKey()) { }

int ZvUBTradeItem::dataCountForModelUse()
{
    return headerListForModelUse().size();
}

QStringList ZvUBTradeItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("选择"), QStringLiteral("代码"), QStringLiteral("名称"),
        QStringLiteral("方向"), QStringLiteral("价格"), QStringLiteral("数量"),
        QStringLiteral("时间"), QStringLiteral("状态"),
    };
    return headers;
}

QString ZvUBTradeItem::displayDataForModelUse(int column) const
{
    switch (column) {
    case Code:
        return code;
    case Name:
        return name;
    case Direction:
        return zvub::directionText(direction);
    case Price:
        return textOfPrice(price);
    case Count:
        return zvub::quantityText(count);
    case Time:
        return createTime;
    case Message:
        return textOfState(*this);
    default:
        return {};
    }
}
