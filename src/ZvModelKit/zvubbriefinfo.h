#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubbriefitem.h"
#include "ZvModelKit/zvubshared.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// The names of all collections of a server, in the server's order; the composite is not among them.
//
// A look-up takes one hash access and gives an empty text for what is unknown. Where two entries
// share a key, the first one answers.
class ZVMODELKIT_EXPORT ZvUBBriefInfo
{
public:
    struct Data {
        QList<ZvUBBriefItem> items;

        bool operator==(const Data &other) const { return items == other.items; }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBBriefInfo();
    explicit ZvUBBriefInfo(const Data &data);

    const Data &data() const { return m_index->data; }
    bool operator==(const ZvUBBriefInfo &other) const
    {
        return m_index.isSameAs(other.m_index) || data() == other.data();
    }
    bool operator!=(const ZvUBBriefInfo &other) const { return !(*this == other); }

    QString getCodeFromCollectionID(const QString &collectionId) const;
    QString getNameFromCollectionID(const QString &collectionId) const;
    QString getCollectionIDFromCode(const QString &code) const;
    QString getCollectionIDFromName(const QString &name) const;

    // Parallel lists, one entry a collection.
    QStringList getCodeList() const { return m_index->codes; }
    QStringList getNameList() const { return m_index->names; }
    QStringList getIDList() const { return m_index->ids; }

    // The pinyin initials of a collection's name, one entry a reading; empty for an unknown id.
    QStringList initialsOf(const QString &collectionId) const;

private:
    struct Index {
        Data data;
        QStringList codes, names, ids;
        QHash<QString, int> byId, byCode, byName;
    };
    static Index makeIndex(const Data &data);

    ZvUBShared<Index> m_index;
};

Q_DECLARE_TYPEINFO(ZvUBBriefInfo, Q_MOVABLE_TYPE);
