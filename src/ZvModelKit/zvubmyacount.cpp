#include "ZvModelKit/zvubmyacount.h"

namespace {

constexpr qint64 usualPoundage = 3000; // parts per million

} // namespace

ZvUBMyAcount::ZvUBMyAcount() : ZvUBMyAcount(zvub::emptyItem<ZvUBMyAcount>()) { }

ZvUBMyAcount::ZvUBMyAcount(const Data &data) : m_data(data) { }

double ZvUBMyAcount::getPoundageRage(const QString &collectionId) const
{
    qint64 rate = data().poundageOf.value(collectionId, -1);
    if (rate < 0) {
        rate = data().poundage;
    }
    if (rate < 0) {
        rate = usualPoundage;
    }
    return static_cast<double>(rate) / 1e6;
}
