#include "ZvWidgetKit/collectioncolumns.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/serverpaths.h"

const CollectionColumns &CollectionColumns::all()
{
    static const CollectionColumns columns;
    return columns;
}

CollectionColumns::CollectionColumns() : m_count(ZvUBObject::dataCountForModelUse())
{
    Q_ASSERT(m_count <= Capacity);
    const auto each = [this](const QList<int> &list, auto &&change) {
        for (const int column : list)
            change(m_columns.at(static_cast<std::size_t>(column)));
    };
    each(ZvUBObject::ColumnIdsForFloatSort(), [](Column &c) { c.isNumber = true; });
    each(ZvUBObject::columnIdsForTriangleDecorate(), [](Column &c) { c.hasTriangle = true; });

    // The lists are asked in the order white, yellow, sign, last, and the first that holds a column
    // decides: written in the opposite order, the first one stands at the end.
    const auto paint = [&each](const QList<int> &list, Colour colour) {
        each(list, [colour](Column &c) { c.colour = colour; });
    };
    paint(ZvUBObject::columnIdsForAdjustColor(), Colour::AgainstLast);
    paint(ZvUBObject::columnIdsForZhengFuColor(), Colour::SignOfValue);
    paint(ZvUBObject::columnIdsForYellowColor(), Colour::YellowByInt);
    paint(ZvUBObject::columnIdsForWhiteColor(), Colour::White);
}
