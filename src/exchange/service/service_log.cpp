#include "exchange/service/service_log.h"

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <stdexcept>
#include <vector>

namespace zvx {

namespace {

constexpr std::size_t fileBound = 4 * 1024 * 1024;
constexpr std::size_t olderFiles = 3;

std::shared_ptr<spdlog::logger> makeLogger(std::vector<spdlog::sink_ptr> sinks)
{
    auto logger = std::make_shared<spdlog::logger>("zvexchange", sinks.begin(), sinks.end());
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%dT%H:%M:%S.%eZ %l %v", spdlog::pattern_time_type::utc));
    logger->flush_on(spdlog::level::info);
    // A full disk or a closed output must not end a market; there is nowhere else to say it.
    logger->set_error_handler([](const std::string &) {});
    return logger;
}

} // namespace

ServiceLog::ServiceLog(bool quiet)
{
    std::vector<spdlog::sink_ptr> sinks;
    if (!quiet)
        sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
    m_logger = makeLogger(std::move(sinks));
}

ServiceLog::ServiceLog(const std::filesystem::path &folder)
{
    try {
        m_logger = makeLogger({std::make_shared<spdlog::sinks::stderr_sink_mt>(),
                               std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                                   (folder / "zvexchange.log").string(), fileBound, olderFiles)});
    } catch (const spdlog::spdlog_ex &error) {
        throw std::runtime_error(std::string("cannot write the log: ") + error.what());
    }
}

ServiceLog::~ServiceLog() = default;

void ServiceLog::info(std::string_view line)
{
    m_logger->info("{}", line);
}
void ServiceLog::warn(std::string_view line)
{
    m_logger->warn("{}", line);
}
void ServiceLog::error(std::string_view line)
{
    m_logger->error("{}", line);
}
void ServiceLog::flush()
{
    m_logger->flush();
}

} // namespace zvx
