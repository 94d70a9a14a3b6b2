#pragma once

#include "exchange/core/types.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>

namespace zvx {

// Files that operators write by hand: everything is checked, and a fault is told with its place.

/// A file that is not right. what() names the file, the entry and the reason.
class JsonFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A text of a file as faults may show it: its first `most` bytes, without control characters.
std::string shown(std::string_view text, std::size_t most = 60);

/// A place in a file, for faults: "catalogue.json: platforms[0].markets[2]".
class JsonPlace
{
public:
    /// The top of a file.
    explicit JsonPlace(const std::string &file) : m_text(file + ": ") { }

    JsonPlace key(const std::string &name) const;
    JsonPlace entry(std::size_t index) const;

    [[noreturn]] void fail(const std::string &reason) const;

private:
    std::string m_text;
};

/// One object of a file, with every access checked. The JSON has to outlive it. Everything throws
/// JsonFault.
class JsonObject
{
public:
    /// Keys other than `keys` are refused, since most of them are slips of the pen.
    JsonObject(const nlohmann::json &json, JsonPlace place,
               std::initializer_list<const char *> keys);

    const JsonPlace &place() const { return m_place; }
    bool has(const char *key) const { return m_json.contains(key); }

    std::int64_t integer(const char *key, std::int64_t least, std::int64_t most) const;
    /// Lengths count characters. Control characters are refused.
    std::string text(const char *key, std::size_t least, std::size_t most) const;
    bool flag(const char *key) const;
    /// A day of the calendar: "2020-01-01".
    TradingDay day(const char *key) const;

    /// Calls visit(entry, place) for each entry of a list.
    template <typename Visit>
    void list(const char *key, const Visit &visit) const
    {
        const nlohmann::json &value = at(key);
        if (!value.is_array())
            m_place.key(key).fail("has to be a list");
        for (std::size_t i = 0; i < value.size(); ++i)
            visit(value[i], m_place.key(key).entry(i));
    }
    /// The same for a list of at least one entry.
    template <typename Visit>
    void filledList(const char *key, const Visit &visit) const
    {
        const nlohmann::json &value = at(key);
        if (!value.is_array() || value.empty())
            m_place.key(key).fail("has to be a list with at least one entry");
        list(key, visit);
    }
    /// Calls visit(name, value, place) for each entry of an object whose keys are names.
    template <typename Visit>
    void names(const char *key, const Visit &visit) const
    {
        const nlohmann::json &value = at(key);
        if (!value.is_object())
            m_place.key(key).fail("has to be an object");
        for (const auto &[name, entry] : value.items())
            visit(name, entry, m_place.key(key).key(shown(name)));
    }

private:
    const nlohmann::json &at(const char *key) const;

    const nlohmann::json &m_json;
    JsonPlace m_place;
};

/// Notes where a value was used first, and refuses it the second time.
class JsonUnique
{
public:
    explicit JsonUnique(const char *what) : m_what(what) { }

    void add(const std::string &value, const JsonPlace &place);

private:
    const char *m_what;
    std::unordered_set<std::string> m_seen;
};

/// Parses strictly: a key that stands twice in one object would hide one of its two values. `file`
/// is the name that faults carry.
nlohmann::json parseStrictly(std::string_view text, const std::string &file);

} // namespace zvx
