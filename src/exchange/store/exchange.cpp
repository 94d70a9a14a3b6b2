#include "exchange/store/exchange.h"

#include "exchange/store/sqlitestore.h"
#include "exchange/store/statelock.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace zvx {
namespace {

namespace fs = std::filesystem;

constexpr const char *kCatalogueFile = "catalogue.json";
constexpr const char *kStoreEnding = ".market";

void makeFolder(const fs::path &folder)
{
    std::error_code error;
    if (fs::is_directory(folder, error))
        return;
    if (!folder.parent_path().empty())
        fs::create_directories(folder.parent_path(), error);
    // Money and names of people live in there: the folder is the owner's alone.
    if (error || (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST))
        throw FolderError(folder.string() + ": cannot be made: "
                          + (error ? error.message() : std::strerror(errno)));
}

/// A file descriptor that closes itself.
class File
{
public:
    File(const fs::path &path, int flags)
        : m_path(path), m_file(::open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
        if (m_file < 0)
            fail();
    }
    ~File() { ::close(m_file); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    void write(std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t written = ::write(m_file, text.data(), text.size());
            if (written < 0)
                fail();
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void sync()
    {
        if (::fsync(m_file) != 0)
            fail();
    }

private:
    [[noreturn]] void fail() const
    {
        throw FolderError(m_path.string() + ": " + std::strerror(errno));
    }

    fs::path m_path;
    int m_file;
};

/// Writes a file that is there whole or not at all, whenever the power fails.
void writeWhole(const fs::path &path, std::string_view text)
{
    fs::path draft = path;
    draft += ".new";
    {
        File file(draft, O_WRONLY | O_CREAT | O_TRUNC);
        file.write(text);
        file.sync();
    }
    if (::rename(draft.c_str(), path.c_str()) != 0)
        throw FolderError(path.string() + ": " + std::strerror(errno));
    File(path.parent_path(), O_RDONLY | O_DIRECTORY).sync();
}

std::uint64_t randomBits()
{
    std::random_device random;
    return std::uint64_t(random()) << 32 | random();
}

std::string hexText(std::uint64_t bits)
{
    char text[20];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(bits));
    return text;
}

} // namespace

MarketServer::MarketServer(const CataloguePlatform &platform, const CatalogueMarket &market)
    : m_platform(platform.id), m_name(market.name), m_prefix(market.prefix), m_fee(market.fee)
{
}

MarketServer::~MarketServer() = default;

Exchange::Exchange(ExchangeOptions options) : m_options(std::move(options))
{
    makeFolder(m_options.folder);
    m_lock = std::make_unique<StateLock>(m_options.folder);
    m_boot = hexText(randomBits());
    if (!m_options.clock)
        m_options.clock = std::make_shared<SystemClock>();
    m_options.writer.initials = m_options.initials;
    m_options.writer.limits.keySalt = randomBits();

    const auto notice = [this](const std::string &line) {
        if (m_options.notice)
            m_options.notice(line);
    };
    const fs::path file = m_options.folder / kCatalogueFile;
    if (!fs::exists(file)) {
        writeWhole(file,
                   m_options.firstCatalogue ? std::string_view(*m_options.firstCatalogue)
                                            : Catalogue::embeddedText());
        notice("wrote the first catalogue to " + file.string());
    }
    const Catalogue catalogue = Catalogue::load(file, m_options.initials);

    std::set<std::string> stores;
    for (const CataloguePlatform &platform : catalogue.platforms()) {
        Platform found{platform.id, platform.name, {}};
        for (const CatalogueMarket &market : platform.markets) {
            auto server = std::make_unique<MarketServer>(platform, market);
            MarketServer *self = server.get();
            MarketWriter::Events events;
            events.published = [this, self](const std::shared_ptr<const MarketSnapshot> &snapshot,
                                            const TopicSet &topics) {
                if (m_options.published)
                    m_options.published(*self, snapshot, topics);
            };
            events.fatal = [this, self](const std::string &reason) {
                if (m_options.fatal)
                    m_options.fatal(self->prefix() + ": " + reason);
            };
            const std::string name = market.fileStem() + kStoreEnding;
            stores.insert(name);
            server->m_writer = std::make_unique<MarketWriter>(
                std::make_unique<SqliteStore>(m_options.folder / name, m_options.vfs), market,
                m_options.clock, std::move(events), m_options.writer);
            for (const std::string &line : self->writer().notices())
                notice(market.prefix + ": " + line);
            found.markets.push_back(self);
            m_markets.push_back(std::move(server));
        }
        m_platforms.push_back(std::move(found));
    }
    for (const fs::directory_entry &entry : fs::directory_iterator(m_options.folder)) {
        const fs::path name = entry.path().filename();
        if (name.extension() == kStoreEnding && stores.count(name.string()) == 0)
            notice(name.string() + " stays closed: its market is not in the catalogue");
    }
    for (const auto &server : m_markets)
        server->m_writer->start();
}

Exchange::~Exchange()
{
    stop();
}

MarketServer *Exchange::market(std::string_view prefix) const
{
    const auto found
        = std::find_if(m_markets.begin(), m_markets.end(),
                       [prefix](const auto &server) { return server->prefix() == prefix; });
    return found == m_markets.end() ? nullptr : found->get();
}

void Exchange::announcePort(int port)
{
    m_lock->announcePort(port);
}

void Exchange::settle()
{
    for (const auto &server : m_markets)
        server->writer().execute({SettleDay{server->snapshot()->check.data->day}});
}

void Exchange::stop()
{
    for (const auto &server : m_markets)
        server->writer().stop();
    m_lock.reset();
}

} // namespace zvx
