#include "exchange/service/message_file.h"

#include "exchange/service/json_text.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <stdexcept>

namespace zvx {

namespace {

constexpr std::size_t fileBound = 64 * 1024;
constexpr std::size_t messageBound = 100;
constexpr std::size_t textBound = 1000;

std::string readBounded(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("it cannot be read");
    std::string text(fileBound + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (text.size() > fileBound)
        throw std::runtime_error("it is longer than 64 KiB");
    return text;
}

std::string boundedText(const nlohmann::json &entry, const char *name)
{
    std::string text = entry.value(name, std::string());
    if (text.size() > textBound)
        throw std::runtime_error(std::string("a ") + name + " is longer than 1000 bytes");
    return text;
}

Announcement readAnnouncement(const nlohmann::json &entry)
{
    Announcement announcement{boundedText(entry, "text"), boundedText(entry, "link")};
    if (announcement.text.empty())
        throw std::runtime_error("a message has no text");
    const std::string &link = announcement.link;
    if (!link.empty() && link.rfind("http://", 0) != 0 && link.rfind("https://", 0) != 0)
        throw std::runtime_error("a link is no http address: " + link);
    return announcement;
}

} // namespace

MessageFile::MessageFile(std::filesystem::path folder) : m_file(std::move(folder) / fileName) { }

bool MessageFile::refresh(std::string &fault)
{
    std::error_code error;
    const auto changed = std::filesystem::last_write_time(m_file, error);
    if (error) {
        const bool vanished = m_changed.has_value();
        m_changed.reset();
        m_platforms.clear();
        return vanished;
    }
    if (m_changed == changed)
        return false;
    m_changed = changed;
    try {
        std::vector<PlatformMessages> platforms;
        const auto document = nlohmann::json::parse(readBounded(m_file));
        for (const auto &[platform, entries] : document.get<nlohmann::json::object_t>()) {
            PlatformMessages read{platform, {}};
            for (const auto &entry : entries.get<nlohmann::json::array_t>())
                read.messages.push_back(readAnnouncement(entry));
            if (read.messages.size() > messageBound)
                throw std::runtime_error("more than 100 messages for " + platform);
            platforms.push_back(std::move(read));
        }
        m_platforms = std::move(platforms);
        return true;
    } catch (const std::exception &reason) {
        fault = m_file.string() + " is not used: " + reason.what();
        return false;
    }
}

std::string MessageFile::dataOf(const std::string &platform, const std::string &platformName) const
{
    std::vector<Announcement> messages{{"欢迎来到" + platformName + "！", ""}};
    for (const PlatformMessages &each : m_platforms) {
        if (each.platform == platform)
            messages = each.messages;
    }
    JsonText json;
    json.open('{').key("messages").open('[');
    for (const Announcement &message : messages) {
        json.open('{').key("text").text(message.text);
        json.key("link").text(message.link).close('}');
    }
    return json.close(']').close('}').take();
}

} // namespace zvx
