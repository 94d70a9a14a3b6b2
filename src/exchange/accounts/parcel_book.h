#pragma once

#include "exchange/accounts/parcel.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class SqliteConnection;

/// Marks a SQLite file as a service's parcels: "ZVXP".
constexpr int kParcelsApplicationId = 0x5a565850;

/**
 * Who receives which parcel, and how it is followed.
 *
 * Names, telephones and addresses stand here and not in the markets, whose events are kept for
 * ever: a row can be taken out. A market knows a parcel by its id alone.
 *
 * From any thread; each change but drop() is durable on return. Everything throws StoreError.
 */
class ParcelBook
{
public:
    static constexpr const char *kFileName = "parcels.book";

    /// Opens the file in a folder or makes it, readable and writable by its owner alone.
    explicit ParcelBook(const std::filesystem::path &folder, const std::string &vfs = {});
    ~ParcelBook();

    /// Notes a parcel of a market, named by its prefix, that is not there yet.
    void put(ParcelId id, std::string_view market, const Recipient &recipient);
    void putTracking(ParcelId id, const Tracking &tracking);
    /// Also where it is not there. A power cut may bring the parcel back until the next change.
    void drop(ParcelId id);

    std::optional<Parcel> find(ParcelId id);
    /// Those of a market, in no order.
    std::vector<ParcelId> parcelsOf(std::string_view market);

private:
    std::mutex m_mutex;
    std::unique_ptr<SqliteConnection> m_connection;
};

} // namespace zvx
