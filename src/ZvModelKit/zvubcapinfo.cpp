#include "ZvModelKit/zvubcapinfo.h"

ZvUBCapInfo::ZvUBCapInfo() : ZvUBCapInfo(zvub::emptyItem<ZvUBCapInfo>()) { }

ZvUBCapInfo::ZvUBCapInfo(const Data &data) : m_index(makeIndex(data)) { }

ZvUBCapInfo::Index ZvUBCapInfo::makeIndex(const Data &data)
{
    Index index;
    index.data = data;
    index.byCode.reserve(data.items.size());
    for (int row = data.items.size() - 1; row >= 0; --row) {
        index.byCode.insert(data.items.at(row).data().code, row);
    }
    return index;
}

ZvUBCapItem ZvUBCapInfo::getCapItem(const QString &code) const
{
    const auto found = m_index->byCode.constFind(code);
    return found == m_index->byCode.constEnd() ? ZvUBCapItem() : data().items.at(*found);
}
