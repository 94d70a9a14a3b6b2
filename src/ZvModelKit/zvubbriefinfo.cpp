#include "ZvModelKit/zvubbriefinfo.h"

namespace {

void indexFirst(QHash<QString, int> &hash, const QString &key, int row)
{
    if (!hash.contains(key)) {
        hash.insert(key, row);
    }
}

// The entry of `list` that `hash` names for `key`, or an empty text.
QString lookUp(const QHash<QString, int> &hash, const QString &key, const QStringList &list)
{
    const auto found = hash.constFind(key);
    return found == hash.constEnd() ? QString() : list.at(*found);
}

} // namespace

ZvUBBriefInfo::ZvUBBriefInfo() : ZvUBBriefInfo(zvub::emptyItem<ZvUBBriefInfo>()) { }

ZvUBBriefInfo::ZvUBBriefInfo(const Data &data) : m_index(makeIndex(data)) { }

ZvUBBriefInfo::Index ZvUBBriefInfo::makeIndex(const Data &data)
{
    Index index;
    index.data = data;
    const int size = data.items.size();
    index.ids.reserve(size);
    index.codes.reserve(size);
    index.names.reserve(size);
    index.byId.reserve(size);
    index.byCode.reserve(size);
    index.byName.reserve(size);
    for (int row = 0; row < size; ++row) {
        const ZvUBBriefItem::Data &item = data.items.at(row).data();
        index.ids.append(item.collectionId);
        index.codes.append(item.code);
        index.names.append(item.name);
        indexFirst(index.byId, item.collectionId, row);
        indexFirst(index.byCode, item.code, row);
        indexFirst(index.byName, item.name, row);
    }
    return index;
}

QString ZvUBBriefInfo::getCodeFromCollectionID(const QString &collectionId) const
{
    return lookUp(m_index->byId, collectionId, m_index->codes);
}

QString ZvUBBriefInfo::getNameFromCollectionID(const QString &collectionId) const
{
    return lookUp(m_index->byId, collectionId, m_index->names);
}

QString ZvUBBriefInfo::getCollectionIDFromCode(const QString &code) const
{
    return lookUp(m_index->byCode, code, m_index->ids);
}

QString ZvUBBriefInfo::getCollectionIDFromName(const QString &name) const
{
    return lookUp(m_index->byName, name, m_index->ids);
}

QStringList ZvUBBriefInfo::initialsOf(const QString &collectionId) const
{
    const auto found = m_index->byId.constFind(collectionId);
    return found == m_index->byId.constEnd() ? QStringList()
                                             : data().items.at(*found).data().initials;
}
