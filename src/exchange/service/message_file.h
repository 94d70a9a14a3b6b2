#pragma once

#include "exchange/service/watched_file.h"

#include <filesystem>
#include <string>
#include <vector>

namespace zvx {

/// One line of the ticker.
struct Announcement {
    std::string text;
    /// An http or https address, or "".
    std::string link;
};

/**
 * The announcements that an operator keeps in `messages.json` of the state folder:
 *
 *     {"lc": [{"text": "…", "link": "https://…"}], "ch": []}
 *
 * The file is read again when it changes. A platform that it does not name has one line of
 * welcome.
 */
class MessageFile
{
public:
    static constexpr const char *fileName = "messages.json";

    explicit MessageFile(const std::filesystem::path &folder);

    /// Looks at the file. True when the announcements may have changed. A file that is not right
    /// leaves everything as it was and sets `fault` to one sentence for the log.
    bool refresh(std::string &fault);

    /// `{"messages": […]}` of one platform.
    std::string dataOf(const std::string &platform, const std::string &platformName) const;

private:
    struct PlatformMessages {
        std::string platform;
        std::vector<Announcement> messages;
    };

    WatchedFile m_file;
    std::vector<PlatformMessages> m_platforms;
};

} // namespace zvx
