#include "exchange/core/book.h"

#include "exchange/core/faults.h"

#include <algorithm>

namespace zvx::core {

std::uint32_t OrderPool::add(std::uint32_t number)
{
    std::uint32_t index = m_free;
    if (index == kNone) {
        index = static_cast<std::uint32_t>(m_orders.size());
        m_orders.emplace_back();
    } else {
        m_free = m_orders[index].next;
        m_orders[index] = Order();
    }
    m_orders[index].number = number;

    const std::size_t position = number / kChunk;
    if (position >= m_directory.size()) {
        // The chunk that was filled so far may have outlived its orders.
        if (!m_directory.empty() && m_directory.back() != kNone
            && m_chunks[m_directory.back()]->live == 0)
            dropChunk(m_directory.size() - 1);
        m_directory.resize(position + 1, kNone);
    }
    std::uint32_t &chunk = m_directory[position];
    if (chunk == kNone) {
        if (m_freeChunks.empty()) {
            chunk = static_cast<std::uint32_t>(m_chunks.size());
            m_chunks.push_back(std::make_unique<Chunk>());
        } else {
            chunk = m_freeChunks.back();
            m_freeChunks.pop_back();
        }
        m_chunks[chunk]->places.fill(kNone);
        m_chunks[chunk]->live = 0;
    }
    m_chunks[chunk]->places[number % kChunk] = index;
    ++m_chunks[chunk]->live;
    ++m_size;
    return index;
}

void OrderPool::remove(std::uint32_t index)
{
    const std::uint32_t number = m_orders[index].number;
    const std::size_t position = number / kChunk;
    Chunk &chunk = *m_chunks[m_directory[position]];
    chunk.places[number % kChunk] = kNone;
    if (--chunk.live == 0 && position + 1 < m_directory.size())
        dropChunk(position);
    m_orders[index].number = 0;
    m_orders[index].next = m_free;
    m_free = index;
    --m_size;
}

std::uint32_t OrderPool::find(std::uint32_t number) const
{
    const std::size_t position = number / kChunk;
    if (position >= m_directory.size() || m_directory[position] == kNone)
        return kNone;
    return m_chunks[m_directory[position]]->places[number % kChunk];
}

void OrderPool::dropChunk(std::size_t position)
{
    m_freeChunks.push_back(m_directory[position]);
    m_directory[position] = kNone;
}

std::vector<PriceLevel>::iterator Book::levelAt(Side which, std::int32_t key)
{
    std::vector<PriceLevel> &levels = side(which);
    // Nearly every order is near the best price; only the others pay for a search.
    constexpr int kNear = 8;
    auto at = levels.end();
    for (int i = 0; i < kNear; ++i) {
        if (at == levels.begin() || (at - 1)->key < key)
            return at;
        --at;
        if (at->key == key)
            return at;
    }
    return std::lower_bound(levels.begin(), at, key,
                            [](const PriceLevel &level, std::int32_t k) { return level.key < k; });
}

void Book::rest(OrderPool &orders, std::uint32_t index)
{
    Order &order = orders[index];
    const std::int32_t key = keyOf(order.side, order.price);
    auto level = levelAt(order.side, key);
    std::vector<PriceLevel> &levels = side(order.side);
    if (level == levels.end() || level->key != key) {
        level = levels.insert(level, PriceLevel());
        level->key = key;
    }
    if (fault("newest-first") && level->head != kNone) {
        order.next = level->head;
        orders[level->head].previous = index;
        level->head = index;
    } else {
        order.previous = level->tail;
        (level->tail == kNone ? level->head : orders[level->tail].next) = index;
        level->tail = index;
    }
    ++level->orders;
    level->quantity += order.remaining;
}

void Book::unlink(OrderPool &orders, std::uint32_t index)
{
    Order &order = orders[index];
    const auto level = levelAt(order.side, keyOf(order.side, order.price));
    (order.previous == kNone ? level->head : orders[order.previous].next) = order.next;
    (order.next == kNone ? level->tail : orders[order.next].previous) = order.previous;
    level->quantity -= order.remaining;
    if (--level->orders == 0)
        side(order.side).erase(level);
}

void Book::reduce(const Order &order, Quantity traded)
{
    levelAt(order.side, keyOf(order.side, order.price))->quantity -= traded;
}

} // namespace zvx::core
