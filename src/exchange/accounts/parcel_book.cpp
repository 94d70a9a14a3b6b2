#include "exchange/accounts/parcel_book.h"

#include "exchange/store/privatefile.h"
#include "exchange/store/sqliteconnection.h"

namespace zvx {

namespace {

constexpr int kLogFrames = 1'000;

const std::vector<std::string> &migrations()
{
    static const std::vector<std::string> steps = {R"sql(
CREATE TABLE parcels (
    id BLOB PRIMARY KEY,
    market TEXT NOT NULL,
    person TEXT NOT NULL,
    phone TEXT NOT NULL,
    address TEXT NOT NULL,
    carrier TEXT NOT NULL,
    tracking TEXT NOT NULL
) STRICT, WITHOUT ROWID;
CREATE INDEX parcels_of_market ON parcels (market);
)sql"};
    return steps;
}

void bindKey(SQLite::Statement &statement, int place, ParcelId id)
{
    const std::string bytes = keyBytes(id);
    statement.bind(place, bytes.data(), static_cast<int>(bytes.size()));
}

} // namespace

ParcelBook::ParcelBook(const std::filesystem::path &folder, const std::string &vfs)
{
    const std::filesystem::path file = folder / kFileName;
    if (vfs.empty())
        makePrivate(file);
    try {
        m_connection = std::make_unique<SqliteConnection>(file, vfs, kParcelsApplicationId,
                                                          migrations(), kLogFrames);
        // What is taken out is gone from the file as well.
        m_connection->database().exec("PRAGMA secure_delete = ON");
    } catch (const SQLite::Exception &error) {
        throw StoreError(file.string() + ": " + error.what());
    }
}

ParcelBook::~ParcelBook() = default;

void ParcelBook::put(ParcelId id, std::string_view market, const Recipient &recipient)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connection->change([&] {
        auto insert = m_connection->statement("INSERT INTO parcels VALUES (?, ?, ?, ?, ?, '', '')");
        bindKey(insert, 1, id);
        insert.bind(2, std::string(market));
        insert.bind(3, recipient.person);
        insert.bind(4, recipient.phone);
        insert.bind(5, recipient.address);
        insert.exec();
    });
}

void ParcelBook::putTracking(ParcelId id, const Tracking &tracking)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connection->change([&] {
        auto update
            = m_connection->statement("UPDATE parcels SET carrier = ?, tracking = ? WHERE id = ?");
        update.bind(1, tracking.carrier);
        update.bind(2, tracking.number);
        bindKey(update, 3, id);
        update.exec();
    });
}

void ParcelBook::drop(ParcelId id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connection->changeSyncedLater([&] {
        auto erase = m_connection->statement("DELETE FROM parcels WHERE id = ?");
        bindKey(erase, 1, id);
        erase.exec();
    });
}

std::optional<Parcel> ParcelBook::find(ParcelId id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connection->guarded([&]() -> std::optional<Parcel> {
        auto select = m_connection->statement(
            "SELECT person, phone, address, carrier, tracking FROM parcels WHERE id = ?");
        bindKey(select, 1, id);
        if (!select.executeStep())
            return std::nullopt;
        const auto text = [&select](int column) { return select.getColumn(column).getString(); };
        return Parcel{id, {text(0), text(1), text(2)}, {text(3), text(4)}};
    });
}

std::vector<ParcelId> ParcelBook::parcelsOf(std::string_view market)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connection->guarded([&] {
        auto select = m_connection->statement("SELECT id FROM parcels WHERE market = ?");
        select.bind(1, std::string(market));
        std::vector<ParcelId> ids;
        while (select.executeStep())
            ids.push_back(keyOf(select.getColumn(0).getString()));
        return ids;
    });
}

} // namespace zvx
