#pragma once

#include "exchange/core/types.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace zvx::core {

/**
 * Numbers as bytes: seven bits a byte, lowest first, the high bit set on all but the last; numbers
 * that may be negative are folded (0, -1, 1, -2, ...). Every number has exactly one form.
 */
class Writer
{
public:
    explicit Writer(std::string &out) : m_out(out) { }

    void byte(std::uint8_t value) { m_out.push_back(static_cast<char>(value)); }

    void number(std::uint64_t value)
    {
        while (value >= 0x80) {
            byte(static_cast<std::uint8_t>(value | 0x80));
            value >>= 7;
        }
        byte(static_cast<std::uint8_t>(value));
    }

    void folded(std::int64_t value)
    {
        number(static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63));
    }

    /** Eight bytes, lowest first, for hashes and keys, which are long anyway. */
    void fixed(std::uint64_t value)
    {
        for (int i = 0; i < 8; ++i)
            byte(static_cast<std::uint8_t>(value >> 8 * i));
    }

    template <class Tag>
    void put(Number<Tag> value)
    {
        if (Tag::least < 0)
            folded(value.value());
        else
            number(static_cast<std::uint64_t>(value.value()));
    }

private:
    std::string &m_out;
};

/** The other direction. Every reader answers false, for ever after the first time, for a form that
 *  the writer does not make. */
class Reader
{
public:
    explicit Reader(std::string_view bytes) : m_bytes(bytes) { }

    std::string_view rest() const { return m_bytes; }

    bool byte(std::uint8_t &value)
    {
        if (m_bytes.empty())
            return false;
        value = static_cast<std::uint8_t>(m_bytes.front());
        m_bytes.remove_prefix(1);
        return true;
    }

    bool number(std::uint64_t &value)
    {
        value = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            std::uint8_t next = 0;
            if (!byte(next))
                return false;
            if (shift == 63 && next > 1)
                return false;
            value |= std::uint64_t(next & 0x7f) << shift;
            if (next < 0x80)
                return next != 0 || shift == 0;
        }
        return false;
    }

    bool folded(std::int64_t &value)
    {
        std::uint64_t raw = 0;
        if (!number(raw))
            return false;
        value = static_cast<std::int64_t>(raw >> 1 ^ (~(raw & 1) + 1));
        return true;
    }

    bool fixed(std::uint64_t &value)
    {
        value = 0;
        for (int i = 0; i < 8; ++i) {
            std::uint8_t next = 0;
            if (!byte(next))
                return false;
            value |= std::uint64_t(next) << 8 * i;
        }
        return true;
    }

    template <class Tag>
    bool get(Number<Tag> &value)
    {
        std::int64_t whole = 0;
        if (Tag::least < 0) {
            if (!folded(whole))
                return false;
        } else {
            std::uint64_t raw = 0;
            if (!number(raw) || raw > static_cast<std::uint64_t>(Tag::most))
                return false;
            whole = static_cast<std::int64_t>(raw);
        }
        value = Number<Tag>(whole);
        return value.inRange();
    }

private:
    std::string_view m_bytes;
};

} // namespace zvx::core
