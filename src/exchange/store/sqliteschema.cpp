#include "exchange/store/sqliteschema.h"

#include "exchange/store/store.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace zvx {

const std::vector<std::string> &marketMigrations()
{
    static const std::vector<std::string> migrations = {
        R"sql(
CREATE TABLE commands (
    number INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,
    key BLOB,
    events BLOB NOT NULL
) STRICT;
CREATE TABLE checkpoints (
    number INTEGER PRIMARY KEY,
    hash INTEGER NOT NULL,
    state BLOB NOT NULL
) STRICT;
CREATE TABLE orders (
    number INTEGER PRIMARY KEY,
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    side INTEGER NOT NULL,
    price INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    filled INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    fees INTEGER NOT NULL,
    fee INTEGER NOT NULL,
    state INTEGER NOT NULL,
    session INTEGER NOT NULL,
    placed INTEGER NOT NULL,
    changed INTEGER NOT NULL
) STRICT;
CREATE TABLE deals (
    sequence INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,
    session INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    maker INTEGER NOT NULL,
    taker INTEGER NOT NULL,
    side INTEGER NOT NULL,
    buyer INTEGER NOT NULL,
    seller INTEGER NOT NULL,
    price INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    buyer_fee INTEGER NOT NULL,
    seller_fee INTEGER NOT NULL,
    released INTEGER NOT NULL
) STRICT;
CREATE INDEX deals_of_collection ON deals (collection, sequence);
CREATE TABLE cash (
    account INTEGER PRIMARY KEY,
    fee INTEGER NOT NULL,
    suspended INTEGER NOT NULL,
    available INTEGER NOT NULL,
    frozen INTEGER NOT NULL
) STRICT;
CREATE TABLE holdings (
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    frozen INTEGER NOT NULL,
    cost INTEGER NOT NULL,
    PRIMARY KEY (account, collection)
) STRICT, WITHOUT ROWID;
CREATE TABLE days (
    collection INTEGER NOT NULL,
    session INTEGER NOT NULL,
    day INTEGER NOT NULL,
    time INTEGER NOT NULL,
    open INTEGER NOT NULL,
    high INTEGER NOT NULL,
    low INTEGER NOT NULL,
    last INTEGER NOT NULL,
    volume INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    next_close INTEGER NOT NULL,
    next_lower INTEGER NOT NULL,
    next_upper INTEGER NOT NULL,
    PRIMARY KEY (collection, session)
) STRICT, WITHOUT ROWID;
CREATE TABLE composites (
    session INTEGER PRIMARY KEY,
    day INTEGER NOT NULL,
    previous_close INTEGER NOT NULL,
    open INTEGER NOT NULL,
    high INTEGER NOT NULL,
    low INTEGER NOT NULL,
    last INTEGER NOT NULL
) STRICT;
CREATE TABLE listings (
    collection INTEGER PRIMARY KEY,
    code TEXT NOT NULL,
    name TEXT NOT NULL,
    type INTEGER NOT NULL,
    introduction TEXT NOT NULL
) STRICT;
)sql",
        // What the new columns hold stands in the events alone: empty tables are made anew from
        // them when the market is opened.
        R"sql(
ALTER TABLE orders ADD COLUMN key BLOB;
ALTER TABLE orders ADD COLUMN revoke_key BLOB;
CREATE TABLE rates (
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    fee INTEGER NOT NULL,
    PRIMARY KEY (account, collection)
) STRICT, WITHOUT ROWID;
DELETE FROM orders;
DELETE FROM deals;
DELETE FROM cash;
DELETE FROM holdings;
DELETE FROM days;
DELETE FROM composites;
)sql",
        // Minutes, running sessions and places of deals stand in the events alone as well.
        R"sql(
DROP TABLE deals;
CREATE TABLE deals (
    sequence INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,
    session INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    maker INTEGER NOT NULL,
    taker INTEGER NOT NULL,
    side INTEGER NOT NULL,
    buyer INTEGER NOT NULL,
    seller INTEGER NOT NULL,
    price INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    buyer_fee INTEGER NOT NULL,
    seller_fee INTEGER NOT NULL,
    released INTEGER NOT NULL,
    ordinal INTEGER NOT NULL
) STRICT;
CREATE INDEX deals_of_session ON deals (collection, session, ordinal);
CREATE TABLE issues (
    collection INTEGER PRIMARY KEY,
    previous_close INTEGER NOT NULL,
    issued INTEGER NOT NULL,
    price_limit INTEGER NOT NULL
) STRICT;
CREATE TABLE running (
    collection INTEGER PRIMARY KEY,
    session INTEGER NOT NULL,
    day INTEGER NOT NULL,
    previous_close INTEGER NOT NULL,
    open INTEGER NOT NULL,
    high INTEGER NOT NULL,
    low INTEGER NOT NULL,
    last INTEGER NOT NULL,
    volume INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    deals INTEGER NOT NULL
) STRICT;
CREATE TABLE minutes (
    collection INTEGER NOT NULL,
    session INTEGER NOT NULL,
    time INTEGER NOT NULL,
    last INTEGER NOT NULL,
    volume INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    PRIMARY KEY (collection, session, time)
) STRICT, WITHOUT ROWID;
CREATE TABLE phases (
    number INTEGER PRIMARY KEY,
    session INTEGER NOT NULL,
    time INTEGER NOT NULL,
    open INTEGER NOT NULL
) STRICT;
CREATE INDEX phases_of_session ON phases (session);
CREATE TABLE flows (
    number INTEGER PRIMARY KEY,
    account INTEGER NOT NULL,
    incoming INTEGER NOT NULL,
    place INTEGER NOT NULL,
    way_place INTEGER NOT NULL,
    day INTEGER NOT NULL,
    begun INTEGER NOT NULL,
    ended INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    state INTEGER NOT NULL,
    balance INTEGER NOT NULL,
    transfer INTEGER NOT NULL,
    bank BLOB,
    card INTEGER NOT NULL,
    key BLOB
) STRICT;
CREATE UNIQUE INDEX flows_by_place ON flows (account, place);
CREATE UNIQUE INDEX flows_by_place_of_way ON flows (account, incoming, way_place);
CREATE INDEX flows_by_day ON flows (account, day, place);
CREATE INDEX flows_by_day_of_way ON flows (account, incoming, day, way_place);
CREATE INDEX flows_by_key ON flows (account, key) WHERE key IS NOT NULL;
CREATE UNIQUE INDEX flows_by_transfer ON flows (transfer) WHERE transfer > 0;
CREATE INDEX flows_waiting ON flows (number) WHERE state = 0;
DELETE FROM orders;
DELETE FROM cash;
DELETE FROM rates;
DELETE FROM holdings;
DELETE FROM days;
DELETE FROM composites;
)sql",
        // What leads through an account's orders and deals follows from the events, too.
        R"sql(
DROP TABLE orders;
CREATE TABLE orders (
    number INTEGER PRIMARY KEY,
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    side INTEGER NOT NULL,
    price INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    filled INTEGER NOT NULL,
    amount INTEGER NOT NULL,
    fees INTEGER NOT NULL,
    fee INTEGER NOT NULL,
    state INTEGER NOT NULL,
    session INTEGER NOT NULL,
    placed INTEGER NOT NULL,
    changed INTEGER NOT NULL,
    key BLOB,
    revoke_key BLOB,
    frozen INTEGER NOT NULL,
    previous_buy INTEGER NOT NULL,
    previous_sell INTEGER NOT NULL
) STRICT;
CREATE INDEX open_orders ON orders (account) WHERE state = 0;
DROP TABLE deals;
CREATE TABLE deals (
    sequence INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,
    session INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    maker INTEGER NOT NULL,
    taker INTEGER NOT NULL,
    side INTEGER NOT NULL,
    buyer INTEGER NOT NULL,
    seller INTEGER NOT NULL,
    price INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    buyer_fee INTEGER NOT NULL,
    seller_fee INTEGER NOT NULL,
    released INTEGER NOT NULL,
    ordinal INTEGER NOT NULL,
    buyer_bought INTEGER NOT NULL,
    buyer_sold INTEGER NOT NULL,
    seller_bought INTEGER NOT NULL,
    seller_sold INTEGER NOT NULL
) STRICT;
CREATE INDEX deals_of_session ON deals (collection, session, ordinal);
CREATE TABLE records (
    account INTEGER PRIMARY KEY,
    day INTEGER NOT NULL,
    session INTEGER NOT NULL,
    buys INTEGER NOT NULL,
    sells INTEGER NOT NULL,
    last_buy INTEGER NOT NULL,
    last_sell INTEGER NOT NULL,
    bought INTEGER NOT NULL,
    sold INTEGER NOT NULL,
    last_bought INTEGER NOT NULL,
    last_sold INTEGER NOT NULL,
    earlier_buys INTEGER NOT NULL,
    earlier_sells INTEGER NOT NULL
) STRICT;
CREATE TABLE record_days (
    account INTEGER NOT NULL,
    day INTEGER NOT NULL,
    session INTEGER NOT NULL,
    buys INTEGER NOT NULL,
    sells INTEGER NOT NULL,
    last_buy INTEGER NOT NULL,
    last_sell INTEGER NOT NULL,
    bought INTEGER NOT NULL,
    sold INTEGER NOT NULL,
    last_bought INTEGER NOT NULL,
    last_sold INTEGER NOT NULL,
    earlier_buys INTEGER NOT NULL,
    earlier_sells INTEGER NOT NULL,
    PRIMARY KEY (account, day)
) STRICT, WITHOUT ROWID;
CREATE TABLE milestones (
    account INTEGER NOT NULL,
    list INTEGER NOT NULL,
    place INTEGER NOT NULL,
    number INTEGER NOT NULL,
    PRIMARY KEY (account, list, place)
) STRICT, WITHOUT ROWID;
CREATE TABLE gathers (
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    session INTEGER NOT NULL,
    buy_quantity INTEGER NOT NULL,
    buy_amount INTEGER NOT NULL,
    buy_fee INTEGER NOT NULL,
    sell_quantity INTEGER NOT NULL,
    sell_amount INTEGER NOT NULL,
    sell_fee INTEGER NOT NULL,
    sell_profit INTEGER NOT NULL,
    PRIMARY KEY (account, collection)
) STRICT, WITHOUT ROWID;
DELETE FROM cash;
DELETE FROM rates;
DELETE FROM holdings;
DELETE FROM days;
DELETE FROM composites;
DELETE FROM issues;
DELETE FROM running;
DELETE FROM minutes;
DELETE FROM phases;
DELETE FROM flows;
)sql",
        // No earlier market gave goods out, so nothing has to be made anew.
        R"sql(
CREATE TABLE deliveries (
    number INTEGER PRIMARY KEY,
    account INTEGER NOT NULL,
    collection INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    stage INTEGER NOT NULL,
    place INTEGER NOT NULL,
    day INTEGER NOT NULL,
    asked INTEGER NOT NULL,
    moved INTEGER NOT NULL,
    parcel BLOB NOT NULL UNIQUE,
    key BLOB
) STRICT;
CREATE UNIQUE INDEX deliveries_by_place ON deliveries (account, place);
CREATE INDEX deliveries_by_day ON deliveries (account, day, place);
CREATE INDEX deliveries_by_key ON deliveries (account, key) WHERE key IS NOT NULL;
CREATE INDEX deliveries_under_way ON deliveries (number) WHERE stage < 2;
)sql",
    };
    return migrations;
}

int checkVersion(SQLite::Database &database, int applicationId,
                 const std::vector<std::string> &migrations)
{
    const std::string file = database.getFilename();
    const int newest = static_cast<int>(migrations.size());
    const int version = database.execAndGet("PRAGMA user_version").getInt();
    const int kind = database.execAndGet("PRAGMA application_id").getInt();
    const bool empty = database.execAndGet("SELECT count(*) FROM sqlite_schema").getInt() == 0;
    if (kind != applicationId && !(empty && kind == 0 && version == 0))
        throw StoreError(file + ": this file is not a store of this kind");
    if (version > newest)
        throw StoreError(file + ": version " + std::to_string(version)
                         + " was written by a newer program; this one knows versions up to "
                         + std::to_string(newest));
    return version;
}

void migrate(SQLite::Database &database, int applicationId,
             const std::vector<std::string> &migrations)
{
    const int newest = static_cast<int>(migrations.size());
    for (int step = checkVersion(database, applicationId, migrations); step < newest; ++step) {
        SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
        database.exec(migrations[static_cast<std::size_t>(step)]);
        database.exec("PRAGMA application_id = " + std::to_string(applicationId));
        database.exec("PRAGMA user_version = " + std::to_string(step + 1));
        transaction.commit();
    }
}

} // namespace zvx
