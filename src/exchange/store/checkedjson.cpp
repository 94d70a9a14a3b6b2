#include "exchange/store/checkedjson.h"

#include "exchange/store/calendar.h"

#include <algorithm>
#include <limits>
#include <set>
#include <vector>

namespace zvx {
namespace {

using Json = nlohmann::json;

/// Code points of a text that is known to be UTF-8.
std::size_t length(const std::string &text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
    }));
}

} // namespace

std::string shown(std::string_view text, std::size_t most)
{
    const bool whole = text.size() <= most;
    const auto isInside = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; };
    if (!whole) {
        while (most > 0 && isInside(text[most]))
            --most;
        text = text.substr(0, most);
    }
    std::string found(text);
    for (char &c : found) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = '?';
    }
    return whole ? found : found + "...";
}

JsonPlace JsonPlace::key(const std::string &name) const
{
    JsonPlace place = *this;
    place.m_text += (m_text.back() == ' ' ? "" : ".") + name;
    return place;
}

JsonPlace JsonPlace::entry(std::size_t index) const
{
    JsonPlace place = *this;
    place.m_text += "[" + std::to_string(index) + "]";
    return place;
}

void JsonPlace::fail(const std::string &reason) const
{
    throw JsonFault(m_text + (m_text.back() == ' ' ? "" : ": ") + reason);
}

JsonObject::JsonObject(const Json &json, JsonPlace place, std::initializer_list<const char *> keys)
    : m_json(json), m_place(std::move(place))
{
    if (!json.is_object())
        m_place.fail("has to be an object");
    for (const auto &item : json.items()) {
        const auto same = [&](const char *key) { return item.key() == key; };
        if (std::none_of(keys.begin(), keys.end(), same))
            m_place.fail("unknown key \"" + shown(item.key()) + "\"");
    }
}

std::int64_t JsonObject::integer(const char *key, std::int64_t least, std::int64_t most) const
{
    const Json &value = at(key);
    const bool fits = value.is_number_unsigned() ? value.get<std::uint64_t>()
            <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                                                 : value.is_number_integer();
    const std::int64_t number = fits ? value.get<std::int64_t>() : 0;
    if (!fits || number < least || number > most)
        m_place.key(key).fail("has to be a whole number from " + std::to_string(least) + " to "
                              + std::to_string(most) + ", not "
                              + (value.is_number() ? value.dump() : value.type_name()));
    return number;
}

std::string JsonObject::text(const char *key, std::size_t least, std::size_t most) const
{
    const Json &value = at(key);
    if (!value.is_string())
        m_place.key(key).fail("has to be a text");
    std::string found = value.get<std::string>();
    const std::size_t size = length(found);
    if (size < least || size > most)
        m_place.key(key).fail("has to be of " + std::to_string(least) + " to "
                              + std::to_string(most) + " characters");
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    if (std::any_of(found.begin(), found.end(), control))
        m_place.key(key).fail("holds a control character");
    return found;
}

bool JsonObject::flag(const char *key) const
{
    const Json &value = at(key);
    if (!value.is_boolean())
        m_place.key(key).fail("has to be true or false");
    return value.get<bool>();
}

TradingDay JsonObject::day(const char *key) const
{
    const auto found = readDay(text(key, 0, 32));
    if (!found)
        m_place.key(key).fail("has to be a day such as \"2020-01-01\"");
    return *found;
}

const Json &JsonObject::at(const char *key) const
{
    const auto found = m_json.find(key);
    if (found == m_json.end())
        m_place.fail(std::string("lacks \"") + key + "\"");
    return *found;
}

void JsonUnique::add(const std::string &value, const JsonPlace &place)
{
    if (!m_seen.insert(value).second)
        place.fail(std::string(m_what) + " " + value + " is used twice");
}

Json parseStrictly(std::string_view text, const std::string &file)
{
    std::vector<std::set<std::string>> keys;
    const auto watch = [&](int, Json::parse_event_t event, Json &parsed) {
        if (event == Json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == Json::parse_event_t::key
                 && !keys.back().insert(parsed.get<std::string>()).second)
            throw JsonFault(file + ": key \"" + shown(parsed.get<std::string>())
                            + "\" stands twice in one object");
        return true;
    };
    try {
        return Json::parse(text, watch);
    } catch (const Json::parse_error &error) {
        // The library's text starts with its own number in brackets, which helps nobody here.
        std::string reason = error.what();
        if (const std::size_t end = reason.find("] "); end != std::string::npos)
            reason.erase(0, end + 2);
        throw JsonFault(file + ": " + shown(reason, 200));
    }
}

} // namespace zvx
