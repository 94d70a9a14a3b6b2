#include "exchange/store/exchange.h"

#include "exchange/store/sqlitestore.h"
#include "exchange/store/statelock.h"
#include "exchange/store/wholefile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <sys/stat.h>

namespace zvx {
namespace {

namespace fs = std::filesystem;

constexpr const char *kCatalogueFile = "catalogue.json";
constexpr const char *kStoreEnding = ".market";

/// The folder without slashes at its end, which would name its parent's place for itself.
fs::path withoutSlash(fs::path folder)
{
    while (!folder.has_filename() && folder.has_relative_path())
        folder = folder.parent_path();
    return folder;
}

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
    // What is answered later lies in here: the folder itself has to outlive a power cut, too.
    syncFolder(folder / "..");
}

/// A collection stays in the market that listed it first: its pieces are held there, and a second
/// market would issue all of them again. Throws CatalogueError.
void refuseMoved(const CatalogueMarket &market, const std::map<CollectionId, std::string> &owners)
{
    for (const CatalogueCollection &entry : market.collections) {
        const auto owner = owners.find(entry.id);
        if (owner != owners.end() && owner->second != market.prefix)
            throw CatalogueError(market.prefix + ": collection " + std::to_string(entry.id.value())
                                 + " belongs to " + owner->second
                                 + ", whose accounts hold its pieces; it needs an id of its own");
    }
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
    : m_platform(platform.id), m_name(market.name), m_prefix(market.prefix), m_fee(market.fee),
      m_history(market.history)
{
}

MarketServer::~MarketServer() = default;

Exchange::Exchange(ExchangeOptions options) : m_options(std::move(options))
{
    m_options.folder = withoutSlash(m_options.folder);
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
        // One that cannot be read must not stay behind as the folder's own.
        if (m_options.firstCatalogue)
            Catalogue::parse(*m_options.firstCatalogue, "the catalogue for a new state folder",
                             m_options.initials);
        writeWhole(file,
                   m_options.firstCatalogue ? std::string_view(*m_options.firstCatalogue)
                                            : Catalogue::embeddedText());
        notice("wrote the first catalogue to " + file.string());
    }
    const Catalogue catalogue = Catalogue::load(file, m_options.initials);

    // All stores are open before one of them changes, so that a catalogue that cannot be followed
    // leaves everything as it was.
    std::map<std::string, std::unique_ptr<SqliteStore>> stores;
    std::map<CollectionId, std::string> owners;
    for (const CataloguePlatform &platform : catalogue.platforms()) {
        for (const CatalogueMarket &market : platform.markets) {
            const std::string name = market.fileStem() + kStoreEnding;
            auto store = std::make_unique<SqliteStore>(m_options.folder / name, m_options.vfs);
            for (const ListingRow &row : store->listings())
                owners.emplace(row.collection, market.prefix);
            stores[name] = std::move(store);
        }
    }
    for (const fs::directory_entry &entry : fs::directory_iterator(m_options.folder)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != kStoreEnding || stores.count(name) != 0)
            continue;
        notice(name + " stays closed: its market is not in the catalogue");
        for (const ListingRow &row : SqliteStore(entry.path(), m_options.vfs).listings())
            owners.emplace(row.collection, name);
    }
    for (const CataloguePlatform &platform : catalogue.platforms())
        for (const CatalogueMarket &market : platform.markets)
            refuseMoved(market, owners);

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
            events.accountsChanged = [this, self](const std::vector<AccountId> &accounts) {
                if (m_options.accountsChanged)
                    m_options.accountsChanged(*self, accounts);
            };
            events.fatal = [this, self](const std::string &reason) {
                if (m_options.fatal)
                    m_options.fatal(self->prefix() + ": " + reason);
            };
            const std::string name = market.fileStem() + kStoreEnding;
            std::unique_ptr<SqliteStore> store = std::move(stores[name]);
            server->m_readers
                = std::make_unique<MarketReaders>(m_options.folder / name, m_options.vfs);
            store->drainReadersWith([self] { self->readers().drain(); });
            server->m_writer = std::make_unique<MarketWriter>(
                std::move(store), market, m_options.clock, std::move(events), m_options.writer);
            for (const std::string &line : self->writer().notices())
                notice(market.prefix + ": " + line);
            found.markets.push_back(self);
            m_markets.push_back(std::move(server));
        }
        m_platforms.push_back(std::move(found));
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
    for (const auto &server : m_markets) {
        const Result result
            = server->writer().execute({SettleDay{server->snapshot()->check.data->day}}).front();
        if (result.status != Status::Accepted)
            throw StoreError(server->prefix() + ": cannot be settled: " + zvx::name(result.status));
    }
}

void Exchange::stop()
{
    for (const auto &server : m_markets) {
        // The last connection moves the log into the file, which readers could not.
        server->readers().close();
        server->writer().stop();
    }
    m_lock.reset();
}

} // namespace zvx
