#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace zvx::core {

/** "Nothing" among indices into pools. */
constexpr std::uint32_t kNone = 0xffffffff;

/** Spreads the bits of a number; the basis of every hash here. */
constexpr std::uint64_t mix(std::uint64_t x)
{
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9u;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebu;
    return x ^ x >> 31;
}

/** Two small numbers as one key. */
constexpr std::uint64_t pairKey(std::uint32_t first, std::uint32_t second)
{
    return std::uint64_t(first) << 32 | second;
}

/** A map from numbers to pool indices in one flat array. Entries are never taken out; a value may
 * be anything but kNone. */
class FlatMap
{
public:
    std::uint32_t find(std::uint64_t key) const
    {
        if (m_slots.empty())
            return kNone;
        for (std::size_t at = place(key);; at = (at + 1) & m_mask) {
            const Slot &slot = m_slots[at];
            if (slot.value == kNone || slot.key == key)
                return slot.value;
        }
    }

    void set(std::uint64_t key, std::uint32_t value)
    {
        if (m_size * 4 >= m_slots.size() * 3)
            grow();
        put(key, value);
    }

    std::size_t size() const { return m_size; }

    template <class Visit>
    void forEach(Visit &&visit) const
    {
        for (const Slot &slot : m_slots) {
            if (slot.value != kNone)
                visit(slot.key, slot.value);
        }
    }

private:
    struct Slot {
        std::uint64_t key = 0;
        std::uint32_t value = kNone;
    };

    std::size_t place(std::uint64_t key) const { return mix(key) & m_mask; }

    void put(std::uint64_t key, std::uint32_t value)
    {
        std::size_t at = place(key);
        while (m_slots[at].value != kNone && m_slots[at].key != key)
            at = (at + 1) & m_mask;
        m_size += m_slots[at].value == kNone;
        m_slots[at] = {key, value};
    }

    void grow()
    {
        std::vector<Slot> old = std::move(m_slots);
        m_slots.assign(old.empty() ? 16 : old.size() * 2, Slot());
        m_mask = m_slots.size() - 1;
        m_size = 0;
        for (const Slot &slot : old) {
            if (slot.value != kNone)
                put(slot.key, slot.value);
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    std::size_t m_size = 0;
};

} // namespace zvx::core
