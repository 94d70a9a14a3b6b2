#pragma once

#include <QtGlobal>

#include <initializer_list>
#include <random>

namespace randomevents {

// Everything that a life leaves to chance, from its seed; the same numbers on every machine.
class Chance
{
public:
    explicit Chance(quint64 seed) : m_engine(seed) { }

    // From 0 up to and without `bound`, which is above 0.
    int below(int bound) { return static_cast<int>(m_engine() % static_cast<quint64>(bound)); }

    int between(int least, int most) { return least + below(most - least + 1); }

    bool happens(int percent) { return below(100) < percent; }

    template <typename Value>
    Value oneOf(std::initializer_list<Value> values)
    {
        return *(values.begin() + below(static_cast<int>(values.size())));
    }

    template <typename List>
    auto oneOf(const List &list) -> typename List::value_type
    {
        return list.at(below(static_cast<int>(list.size())));
    }

private:
    std::mt19937_64 m_engine;
};

} // namespace randomevents
