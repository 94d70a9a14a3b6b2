#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"

#include <QString>
#include <QStringList>

#include <tuple>

// What names a collection: an entry of ZvUBBriefInfo.
class ZVMODELKIT_EXPORT ZvUBBriefItem
{
public:
    struct Data {
        QString collectionId;
        QString code;
        QString name;
        QStringList initials; // lower-case pinyin initials of the name, one entry a reading

        auto fields() const { return std::tie(collectionId, code, name, initials); }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBBriefItem();
    explicit ZvUBBriefItem(const Data &data);

    const Data &data() const { return *m_data; }
    bool operator==(const ZvUBBriefItem &other) const
    {
        return m_data.isSameAs(other.m_data) || data() == other.data();
    }
    bool operator!=(const ZvUBBriefItem &other) const { return !(*this == other); }

    QString collectionId() const { return data().collectionId; }
    QString code() const { return data().code; }
    QString name() const { return data().name; }
    QStringList initials() const { return data().initials; }

private:
    ZvUBShared<Data> m_data;
};

Q_DECLARE_TYPEINFO(ZvUBBriefItem, Q_MOVABLE_TYPE);
