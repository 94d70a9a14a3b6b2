#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace spdlog {
class logger;
}

namespace zvx {

/// The service's log: one line an event, to the standard error output and to `zvexchange.log` in
/// the state folder, which is turned over at 4 MiB with three older files kept. Lines hold times in
/// UTC and `name=value` pairs; never a body, a header or an address's parameters.
class ServiceLog
{
public:
    /// Writes to the standard error output alone, or nowhere when `quiet`.
    explicit ServiceLog(bool quiet = false);
    /// Throws std::runtime_error when the file cannot be opened.
    explicit ServiceLog(const std::filesystem::path &folder);
    ~ServiceLog();

    void info(std::string_view line);
    void warn(std::string_view line);
    void error(std::string_view line);
    void flush();

private:
    std::shared_ptr<spdlog::logger> m_logger;
};

} // namespace zvx
