#include "exchange/service/message_file.h"

#include "exchange/service/json_text.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace zvx {

namespace {

constexpr std::size_t fileBound = 64 * 1024;
constexpr std::size_t messageBound = 100;
constexpr std::size_t textBound = 1000;

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

MessageFile::MessageFile(const std::filesystem::path &folder) : m_file(folder / fileName, fileBound)
{
}

bool MessageFile::refresh(std::string &fault)
{
    switch (m_file.look()) {
    case WatchedFile::Look::Same:
        return false;
    case WatchedFile::Look::Gone:
        m_platforms.clear();
        return true;
    case WatchedFile::Look::Changed:
        break;
    }
    try {
        std::vector<PlatformMessages> platforms;
        const auto document = nlohmann::json::parse(m_file.read());
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
        fault = m_file.path().string() + " is not used: " + reason.what();
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
