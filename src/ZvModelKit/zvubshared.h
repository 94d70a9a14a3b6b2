#pragma once

#include <QExplicitlySharedDataPointer>
#include <QSharedData>
#include <QString>

#include <array>
#include <cstddef>
#include <utility>

// A value that is made once and never changes, so that a copy is a pointer, on any thread.
template <typename Value>
class ZvUBShared
{
public:
    explicit ZvUBShared(Value value) : m_holder(new Holder(std::move(value))) { }

    const Value *operator->() const { return &m_holder->value; }
    const Value &operator*() const { return m_holder->value; }
    bool isSameAs(const ZvUBShared &other) const { return m_holder == other.m_holder; }

private:
    struct Holder : QSharedData {
        explicit Holder(Value &&initial) : value(std::move(initial)) { }
        const Value value;
    };
    QExplicitlySharedDataPointer<const Holder> m_holder;
};

// The raw fields of an item and the texts of its columns, formatted when the item was made.
template <typename Fields, std::size_t Columns>
struct ZvUBRow {
    using Texts = std::array<QString, Columns>;

    Fields data;
    Texts texts;

    // The text of a column; an empty one outside the columns.
    QString text(int column) const
    {
        return column >= 0 && static_cast<std::size_t>(column) < Columns
            ? texts[static_cast<std::size_t>(column)]
            : QString();
    }
};

namespace zvub {

// What an item's default constructor copies: the item of default data, made once.
template <typename Item>
const Item &emptyItem()
{
    static const Item empty{typename Item::Data()};
    return empty;
}

} // namespace zvub
