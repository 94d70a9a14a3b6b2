#pragma once

#include <array>
#include <cstddef>

// What the market table knows of its columns, read once from the column lists of ZvUBObject: every
// painted cell and every comparison of a sort asks for it.
class CollectionColumns
{
public:
    // Which operation of the row decides a cell's colour.
    enum class Colour { White, YellowByInt, SignOfValue, AgainstLast, Yellow };

    static const CollectionColumns &all();

    int count() const { return m_count; }
    bool isNumber(int column) const { return at(column).isNumber; }
    bool hasTriangle(int column) const { return at(column).hasTriangle; }
    Colour colour(int column) const { return at(column).colour; }

private:
    struct Column {
        Colour colour = Colour::Yellow;
        bool isNumber = false;
        bool hasTriangle = false;
    };
    static constexpr int Capacity = 64;

    CollectionColumns();
    const Column &at(int column) const
    {
        return m_columns[column >= 0 && column < m_count ? static_cast<std::size_t>(column)
                                                         : static_cast<std::size_t>(Capacity)];
    }

    int m_count;
    std::array<Column, Capacity + 1> m_columns; // the last stands for every column that is none
};
