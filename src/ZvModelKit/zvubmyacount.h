#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"

#include <QHash>
#include <QString>

#include <tuple>

// The account that is signed in: who it is, and what it pays for a deal.
class ZVMODELKIT_EXPORT ZvUBMyAcount
{
public:
    struct Data {
        QString accountNumber;
        QString phone; // the login name
        QString name;
        qint64 poundage = 3000; // parts per million of a deal's amount
        QHash<QString, qint64> poundageOf; // the same for single collections, by collection id

        auto fields() const { return std::tie(accountNumber, phone, name, poundage, poundageOf); }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    // Nobody: empty texts and the usual rate of 0.003.
    ZvUBMyAcount();
    explicit ZvUBMyAcount(const Data &data);

    const Data &data() const { return *m_data; }
    bool operator==(const ZvUBMyAcount &other) const
    {
        return m_data.isSameAs(other.m_data) || data() == other.data();
    }
    bool operator!=(const ZvUBMyAcount &other) const { return !(*this == other); }

    QString accountNumber() const { return data().accountNumber; }
    QString phone() const { return data().phone; }
    QString name() const { return data().name; }

    // The part of a deal's amount that is charged, such as 0.003. A collection without a rate of
    // its own has the account's; a negative rate counts as none set.
    double getPoundageRage(const QString &collectionId) const;

private:
    ZvUBShared<Data> m_data;
};

Q_DECLARE_TYPEINFO(ZvUBMyAcount, Q_MOVABLE_TYPE);
