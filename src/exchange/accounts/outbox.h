#pragma once

#include "exchange/accounts/text_gateway.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>

namespace zvx {

class Clock;

/**
 * The gateway of an exchange without a telephone: writes each message into `outbox.txt`, where the
 * operator reads it.
 *
 * A line is the UTC time, a tab, the phone, a tab, the text. The file is its owner's alone and is
 * on the disk when send() returns. One that would grow beyond the bound becomes `outbox.1.txt`,
 * whose former contents go. Several outboxes may write into one folder.
 */
class Outbox : public TextGateway
{
public:
    static constexpr const char *kFileName = "outbox.txt";
    static constexpr const char *kOldFileName = "outbox.1.txt";
    static constexpr std::int64_t kBound = 1 << 20; ///< bytes

    /// `clock` is the machine's where it is null.
    explicit Outbox(std::filesystem::path folder, std::shared_ptr<Clock> clock = {},
                    std::int64_t bound = kBound);

    /// Throws std::system_error, and the message is not in the file then.
    void send(std::string_view phone, std::string_view text) override;

private:
    std::filesystem::path m_folder;
    std::shared_ptr<Clock> m_clock;
    std::int64_t m_bound;
};

} // namespace zvx
