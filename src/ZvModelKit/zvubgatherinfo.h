#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubgatheritem.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QList>

#include <tuple>

// The account's deals summed by collection, and the sums over all of them.
class ZVMODELKIT_EXPORT ZvUBGatherInfo
{
public:
    struct Data {
        QList<ZvUBGatherItem> items;
        qint64 kindCount = 0; // collections dealt in
        qint64 buyQuantity = 0; // pieces
        qint64 buyFee = 0; // fen
        qint64 sellQuantity = 0;
        qint64 sellFee = 0;
        qint64 totalQuantity = 0;
        qint64 totalFee = 0;
        qint64 positionChange = 0; // pieces bought less pieces sold
        qint64 sellProfit = 0; // fen, negative for a loss

        auto fields() const
        {
            return std::tie(items, kindCount, buyQuantity, buyFee, sellQuantity, sellFee,
                            totalQuantity, totalFee, positionChange, sellProfit);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    // The items with all sums worked out, held at the ends of qint64.
    static Data sumOf(const QList<ZvUBGatherItem> &items);

    ZvUBGatherInfo();
    explicit ZvUBGatherInfo(const Data &data);

    const Data &data() const { return *m_data; }
    bool operator==(const ZvUBGatherInfo &other) const
    {
        return m_data.isSameAs(other.m_data) || data() == other.data();
    }
    bool operator!=(const ZvUBGatherInfo &other) const { return !(*this == other); }

    // In the order in which they are shown. Counts are held at the ends of int, fees and the profit
    // are yuan.
    QList<ZvUBGatherItem> items() const { return data().items; }
    int kindCount() const { return zvub::cappedInt(data().kindCount); }
    int buyCount() const { return zvub::cappedInt(data().buyQuantity); }
    double buyFee() const { return zvub::yuan(data().buyFee); }
    int sellCount() const { return zvub::cappedInt(data().sellQuantity); }
    double sellFee() const { return zvub::yuan(data().sellFee); }
    int totalCount() const { return zvub::cappedInt(data().totalQuantity); }
    double totalFee() const { return zvub::yuan(data().totalFee); }
    int positionChange() const { return zvub::cappedInt(data().positionChange); }
    double sellProfit() const { return zvub::yuan(data().sellProfit); }

private:
    ZvUBShared<Data> m_data;
};

Q_DECLARE_TYPEINFO(ZvUBGatherInfo, Q_MOVABLE_TYPE);
