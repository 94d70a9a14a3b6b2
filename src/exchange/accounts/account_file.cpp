#include "exchange/accounts/account_file.h"

#include "exchange/store/privatefile.h"
#include "exchange/store/sqliteconnection.h"

#include <unordered_map>

namespace zvx {

const std::vector<std::string> &accountMigrations()
{
    static const std::vector<std::string> migrations = {
        R"sql(
CREATE TABLE meta (
    name TEXT PRIMARY KEY,
    value BLOB NOT NULL
) STRICT, WITHOUT ROWID;
CREATE TABLE accounts (
    id INTEGER PRIMARY KEY,
    phone TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    referee TEXT NOT NULL,
    password TEXT NOT NULL,
    password_version INTEGER NOT NULL,
    created INTEGER NOT NULL
) STRICT;
CREATE TABLE sessions (
    number INTEGER PRIMARY KEY,
    token BLOB NOT NULL UNIQUE,
    account INTEGER NOT NULL,
    client INTEGER NOT NULL,
    created INTEGER NOT NULL,
    kind INTEGER NOT NULL,
    ended INTEGER NOT NULL
) STRICT;
CREATE INDEX live_sessions_of_account ON sessions (account) WHERE kind = 0;
CREATE INDEX live_sessions_by_age ON sessions (created) WHERE kind = 0;
CREATE INDEX ended_sessions ON sessions (ended) WHERE kind <> 0;
CREATE TABLE codes (
    purpose INTEGER NOT NULL,
    phone TEXT NOT NULL,
    hash BLOB NOT NULL,
    issued INTEGER NOT NULL,
    guesses INTEGER NOT NULL,
    used INTEGER NOT NULL,
    PRIMARY KEY (purpose, phone)
) STRICT, WITHOUT ROWID;
CREATE INDEX codes_by_age ON codes (issued);
CREATE TABLE codes_sent (
    day INTEGER NOT NULL,
    phone TEXT NOT NULL,
    count INTEGER NOT NULL,
    PRIMARY KEY (day, phone)
) STRICT, WITHOUT ROWID;
CREATE TABLE guesses (
    day INTEGER NOT NULL,
    phone TEXT NOT NULL,
    peer TEXT NOT NULL,
    count INTEGER NOT NULL,
    PRIMARY KEY (day, phone, peer)
) STRICT, WITHOUT ROWID;
CREATE TABLE answers (
    number INTEGER PRIMARY KEY,
    account INTEGER NOT NULL,
    key BLOB NOT NULL,
    action INTEGER NOT NULL,
    fingerprint BLOB NOT NULL,
    status INTEGER NOT NULL,
    time INTEGER NOT NULL,
    UNIQUE (account, key)
) STRICT;
CREATE INDEX answers_by_age ON answers (time);
CREATE TABLE favourites (
    account INTEGER NOT NULL,
    market TEXT NOT NULL,
    collection INTEGER NOT NULL,
    place INTEGER NOT NULL,
    PRIMARY KEY (account, market, collection)
) STRICT, WITHOUT ROWID;
CREATE UNIQUE INDEX favourites_by_place ON favourites (account, market, place);
)sql",
        R"sql(
CREATE TABLE cards (
    account INTEGER PRIMARY KEY,
    bank TEXT NOT NULL,
    holder TEXT NOT NULL,
    tail TEXT NOT NULL,
    fingerprint TEXT NOT NULL UNIQUE,
    bound INTEGER NOT NULL
) STRICT;
CREATE TABLE links (
    token BLOB PRIMARY KEY,
    purpose INTEGER NOT NULL,
    account INTEGER NOT NULL,
    market TEXT NOT NULL,
    issued INTEGER NOT NULL,
    used INTEGER NOT NULL,
    round INTEGER NOT NULL,
    bank TEXT NOT NULL,
    holder TEXT NOT NULL,
    tail TEXT NOT NULL,
    fingerprint TEXT NOT NULL,
    amount INTEGER NOT NULL,
    code_issued INTEGER NOT NULL
) STRICT, WITHOUT ROWID;
CREATE INDEX unused_links ON links (account, purpose) WHERE used = 0;
CREATE INDEX links_by_age ON links (issued);
)sql",
    };
    return migrations;
}

/// The statements that were used once, ready for the next time.
class AccountFile::Statements
{
public:
    explicit Statements(SQLite::Database &database) : m_database(database) { }

    SQLite::Statement &of(const char *sql)
    {
        auto found = m_known.find(sql);
        if (found == m_known.end())
            found = m_known.try_emplace(sql, m_database, sql).first;
        return found->second;
    }

private:
    SQLite::Database &m_database;
    std::unordered_map<const char *, SQLite::Statement> m_known; ///< by the literal's address
};

/// One use of a statement: values go in from left to right, columns come out likewise.
class AccountFile::Query
{
public:
    Query(AccountFile &file, const char *sql) : m_statement(file.m_statements->of(sql)) { }
    // A statement that is not reset would keep the log from being moved.
    ~Query() { m_statement.tryReset(); }
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;

    struct Bytes {
        std::string_view bytes;
    };

    Query &operator<<(std::int64_t value)
    {
        m_statement.bind(++m_bound, value);
        return *this;
    }
    template <class Tag>
    Query &operator<<(Number<Tag> value)
    {
        return *this << value.value();
    }
    Query &operator<<(std::string_view text)
    {
        m_statement.bind(++m_bound, std::string(text));
        return *this;
    }
    Query &operator<<(Bytes value)
    {
        m_statement.bind(++m_bound, value.bytes.data(), static_cast<int>(value.bytes.size()));
        return *this;
    }

    void run() { m_statement.exec(); }
    bool next()
    {
        m_column = 0;
        return m_statement.executeStep();
    }

    std::int64_t number() { return m_statement.getColumn(m_column++).getInt64(); }
    int count() { return static_cast<int>(number()); }
    std::string text() { return m_statement.getColumn(m_column++).getString(); }

private:
    SQLite::Statement &m_statement;
    int m_bound = 0;
    int m_column = 0;
};

AccountFile::AccountFile(const std::filesystem::path &file, const std::string &vfs, int logFrames)
{
    if (vfs.empty())
        makePrivate(file);
    try {
        m_connection = std::make_unique<SqliteConnection>(file, vfs, kAccountsApplicationId,
                                                          accountMigrations(), logFrames);
    } catch (const SQLite::Exception &error) {
        throw StoreError(file.string() + ": " + error.what());
    }
    m_statements = std::make_unique<Statements>(m_connection->database());
}

AccountFile::~AccountFile() = default;

bool AccountFile::change(const std::function<void()> &work)
{
    const int before = m_connection->database().getTotalChanges();
    m_connection->change(work);
    return m_connection->database().getTotalChanges() != before;
}

std::optional<std::string> AccountFile::meta(std::string_view name)
{
    return m_connection->guarded([&]() -> std::optional<std::string> {
        Query query(*this, "SELECT value FROM meta WHERE name = ?");
        query << name;
        if (!query.next())
            return std::nullopt;
        return query.text();
    });
}

void AccountFile::putMeta(std::string_view name, std::string_view value)
{
    Query query(*this, "INSERT INTO meta VALUES (?, ?)");
    query << name << Query::Bytes{value};
    query.run();
}

AccountId AccountFile::lastAccount()
{
    return m_connection->guarded([&] {
        Query query(*this, "SELECT ifnull(max(id), 0) FROM accounts");
        query.next();
        return AccountId(query.number());
    });
}

namespace {

template <class Query>
std::optional<StoredAccount> readAccount(Query &query)
{
    if (!query.next())
        return std::nullopt;
    StoredAccount account;
    account.id = AccountId(query.number());
    account.phone = query.text();
    account.name = query.text();
    account.referee = query.text();
    account.password = query.text();
    account.passwordVersion = query.number();
    account.created = TimeMs(query.number());
    return account;
}

/// The columns bank, holder, tail and fingerprint, which come next.
template <class Query>
BankCard readCard(Query &query)
{
    BankCard card;
    card.bank = query.text();
    card.holder = query.text();
    card.tail = query.text();
    card.fingerprint = query.text();
    return card;
}

template <class Query>
std::vector<StoredLink> readLinks(Query &query)
{
    std::vector<StoredLink> links;
    while (query.next()) {
        StoredLink link;
        link.token = query.text();
        link.purpose = static_cast<LinkPurpose>(query.number());
        link.account = AccountId(query.number());
        link.market = query.text();
        link.issued = TimeMs(query.number());
        link.used = query.number() != 0;
        link.round = query.number();
        if (const BankCard card = readCard(query); !card.bank.empty())
            link.card = card;
        link.amount = Fen(query.number());
        link.codeIssued = TimeMs(query.number());
        links.push_back(std::move(link));
    }
    return links;
}

template <class Query>
std::vector<StoredSession> readSessions(Query &query)
{
    std::vector<StoredSession> sessions;
    while (query.next()) {
        StoredSession session;
        session.number = query.number();
        session.token = query.text();
        session.account = AccountId(query.number());
        session.client = static_cast<std::uint64_t>(query.number());
        session.created = TimeMs(query.number());
        session.kind = static_cast<SessionState::Kind>(query.number());
        session.ended = TimeMs(query.number());
        sessions.push_back(std::move(session));
    }
    return sessions;
}

} // namespace

std::optional<StoredAccount> AccountFile::account(AccountId id)
{
    Query query(*this, "SELECT * FROM accounts WHERE id = ?");
    query << id;
    return readAccount(query);
}

std::optional<StoredAccount> AccountFile::accountOf(std::string_view phone)
{
    Query query(*this, "SELECT * FROM accounts WHERE phone = ?");
    query << phone;
    return readAccount(query);
}

void AccountFile::putAccount(const StoredAccount &account)
{
    Query query(*this, "INSERT INTO accounts VALUES (?, ?, ?, ?, ?, ?, ?)");
    query << account.id << account.phone << account.name << account.referee << account.password
          << account.passwordVersion << account.created;
    query.run();
}

void AccountFile::setPassword(AccountId id, std::string_view password)
{
    Query query(*this,
                "UPDATE accounts SET password = ?, password_version = password_version + 1 "
                "WHERE id = ?");
    query << password << id;
    query.run();
}

void AccountFile::setName(AccountId id, std::string_view name)
{
    Query query(*this, "UPDATE accounts SET name = ? WHERE id = ?");
    query << name << id;
    query.run();
}

std::vector<StoredCard> AccountFile::cards()
{
    return m_connection->guarded([&] {
        Query query(*this, "SELECT account, bound, bank, holder, tail, fingerprint FROM cards");
        std::vector<StoredCard> cards;
        while (query.next()) {
            const AccountId account(query.number());
            const TimeMs bound(query.number());
            cards.push_back({account, readCard(query), bound});
        }
        return cards;
    });
}

std::optional<BankCard> AccountFile::card(AccountId account)
{
    Query query(*this, "SELECT bank, holder, tail, fingerprint FROM cards WHERE account = ?");
    query << account;
    if (!query.next())
        return std::nullopt;
    return readCard(query);
}

std::optional<AccountId> AccountFile::cardOwner(std::string_view fingerprint)
{
    Query query(*this, "SELECT account FROM cards WHERE fingerprint = ?");
    query << fingerprint;
    if (!query.next())
        return std::nullopt;
    return AccountId(query.number());
}

void AccountFile::putCard(const StoredCard &card)
{
    Query query(*this, "INSERT INTO cards VALUES (?, ?, ?, ?, ?, ?)");
    query << card.account << card.card.bank << card.card.holder << card.card.tail
          << card.card.fingerprint << card.bound;
    query.run();
}

std::vector<StoredLink> AccountFile::links()
{
    return m_connection->guarded([&] {
        Query query(*this, "SELECT * FROM links");
        return readLinks(query);
    });
}

std::optional<StoredLink> AccountFile::link(std::string_view token)
{
    Query query(*this, "SELECT * FROM links WHERE token = ?");
    query << Query::Bytes{token};
    const std::vector<StoredLink> found = readLinks(query);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<StoredLink> AccountFile::unusedLinks(AccountId account, LinkPurpose purpose)
{
    Query query(*this, "SELECT * FROM links WHERE account = ? AND purpose = ? AND used = 0");
    query << account << static_cast<std::int64_t>(purpose);
    return readLinks(query);
}

void AccountFile::putLink(const StoredLink &link)
{
    const BankCard card = link.card.value_or(BankCard());
    Query query(*this,
                "INSERT OR REPLACE INTO links VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    query << Query::Bytes{link.token} << static_cast<std::int64_t>(link.purpose) << link.account
          << link.market << link.issued << static_cast<std::int64_t>(link.used) << link.round
          << card.bank << card.holder << card.tail << card.fingerprint << link.amount
          << link.codeIssued;
    query.run();
}

std::vector<std::string> AccountFile::forgetLinks(TimeMs before)
{
    std::vector<std::string> tokens;
    {
        Query old(*this, "SELECT token FROM links WHERE issued < ?");
        old << before;
        while (old.next())
            tokens.push_back(old.text());
    }
    Query drop(*this, "DELETE FROM links WHERE issued < ?");
    drop << before;
    drop.run();
    return tokens;
}

std::vector<StoredSession> AccountFile::sessions()
{
    return m_connection->guarded([&] {
        Query query(*this, "SELECT * FROM sessions");
        return readSessions(query);
    });
}

std::int64_t AccountFile::lastSession()
{
    return m_connection->guarded([&] {
        Query query(*this, "SELECT ifnull(max(number), 0) FROM sessions");
        query.next();
        return query.number();
    });
}

std::vector<StoredSession> AccountFile::liveSessions(AccountId account)
{
    Query query(*this, "SELECT * FROM sessions WHERE account = ? AND kind = 0 ORDER BY number");
    query << account;
    return readSessions(query);
}

std::vector<StoredSession> AccountFile::liveSessionsUntil(TimeMs created)
{
    Query query(*this, "SELECT * FROM sessions WHERE created <= ? AND kind = 0");
    query << created;
    return readSessions(query);
}

void AccountFile::putSession(const StoredSession &session)
{
    Query query(*this, "INSERT INTO sessions VALUES (?, ?, ?, ?, ?, ?, ?)");
    query << session.number << Query::Bytes{session.token} << session.account
          << static_cast<std::int64_t>(session.client) << session.created << session.kind
          << session.ended;
    query.run();
}

void AccountFile::endSession(std::int64_t number, SessionState::Kind kind, TimeMs now)
{
    Query query(*this, "UPDATE sessions SET kind = ?, ended = ? WHERE number = ?");
    query << kind << now << number;
    query.run();
}

std::vector<std::int64_t> AccountFile::forgetSessions(TimeMs before, std::size_t keep)
{
    std::vector<std::int64_t> numbers;
    {
        Query old(*this, "SELECT number FROM sessions WHERE kind <> 0 AND ended < ?");
        old << before;
        while (old.next())
            numbers.push_back(old.number());
    }
    {
        Query many(*this,
                   "SELECT number FROM sessions WHERE kind <> 0 AND ended >= ? "
                   "ORDER BY ended DESC, number DESC LIMIT -1 OFFSET ?");
        many << before << static_cast<std::int64_t>(keep);
        while (many.next())
            numbers.push_back(many.number());
    }
    for (const std::int64_t number : numbers) {
        Query drop(*this, "DELETE FROM sessions WHERE number = ?");
        drop << number;
        drop.run();
    }
    return numbers;
}

std::optional<StoredCode> AccountFile::code(CodePurpose purpose, std::string_view phone)
{
    Query query(*this,
                "SELECT hash, issued, guesses, used FROM codes "
                "WHERE purpose = ? AND phone = ?");
    query << static_cast<std::int64_t>(purpose) << phone;
    if (!query.next())
        return std::nullopt;
    StoredCode code;
    code.hash = query.text();
    code.issued = TimeMs(query.number());
    code.guesses = query.count();
    code.used = query.number() != 0;
    return code;
}

void AccountFile::putCode(CodePurpose purpose, std::string_view phone, const StoredCode &code)
{
    Query query(*this, "INSERT OR REPLACE INTO codes VALUES (?, ?, ?, ?, ?, ?)");
    query << static_cast<std::int64_t>(purpose) << phone << Query::Bytes{code.hash} << code.issued
          << code.guesses << static_cast<std::int64_t>(code.used);
    query.run();
}

void AccountFile::forgetCodes(TimeMs before)
{
    Query query(*this, "DELETE FROM codes WHERE issued < ?");
    query << before;
    query.run();
}

int AccountFile::codesSent(std::string_view phone, std::int64_t day)
{
    Query query(*this, "SELECT ifnull(sum(count), 0) FROM codes_sent WHERE day = ? AND phone = ?");
    query << day << phone;
    query.next();
    return query.count();
}

void AccountFile::countCodeSent(std::string_view phone, std::int64_t day)
{
    Query query(*this,
                "INSERT INTO codes_sent VALUES (?, ?, 1) "
                "ON CONFLICT DO UPDATE SET count = count + 1");
    query << day << phone;
    query.run();
}

int AccountFile::guesses(std::string_view phone, std::int64_t day, std::string_view peer)
{
    Query query(*this,
                "SELECT ifnull(sum(count), 0) FROM guesses "
                "WHERE day = ? AND phone = ? AND peer = ?");
    query << day << phone << peer;
    query.next();
    return query.count();
}

int AccountFile::guesses(std::string_view phone, std::int64_t day)
{
    Query query(*this, "SELECT ifnull(sum(count), 0) FROM guesses WHERE day = ? AND phone = ?");
    query << day << phone;
    query.next();
    return query.count();
}

void AccountFile::countGuess(std::string_view phone, std::int64_t day, std::string_view peer)
{
    Query query(*this,
                "INSERT INTO guesses VALUES (?, ?, ?, 1) "
                "ON CONFLICT DO UPDATE SET count = count + 1");
    query << day << phone << peer;
    query.run();
}

void AccountFile::forgetCounts(std::int64_t beforeDay)
{
    Query sent(*this, "DELETE FROM codes_sent WHERE day < ?");
    sent << beforeDay;
    sent.run();
    Query guessed(*this, "DELETE FROM guesses WHERE day < ?");
    guessed << beforeDay;
    guessed.run();
}

std::optional<StoredAnswer> AccountFile::answer(const KeyName &name)
{
    Query query(*this,
                "SELECT action, fingerprint, status FROM answers WHERE account = ? AND key = ?");
    query << name.account << Query::Bytes{keyBytes(name.key)};
    if (!query.next())
        return std::nullopt;
    StoredAnswer answer;
    answer.action = static_cast<AccountAction>(query.number());
    answer.fingerprint = query.text();
    answer.status = static_cast<AccountStatus>(query.number());
    return answer;
}

void AccountFile::putAnswer(const KeyName &name, const StoredAnswer &answer, TimeMs now)
{
    Query query(*this, "INSERT INTO answers VALUES (NULL, ?, ?, ?, ?, ?, ?)");
    query << name.account << Query::Bytes{keyBytes(name.key)}
          << static_cast<std::int64_t>(answer.action) << Query::Bytes{answer.fingerprint}
          << static_cast<std::int64_t>(answer.status) << now;
    query.run();
}

void AccountFile::forgetAnswers(TimeMs before, std::size_t keep)
{
    Query old(*this, "DELETE FROM answers WHERE time < ?");
    old << before;
    old.run();
    Query many(*this, "DELETE FROM answers WHERE number <= (SELECT max(number) FROM answers) - ?");
    many << static_cast<std::int64_t>(keep);
    many.run();
}

std::vector<CollectionId> AccountFile::favourites(AccountId account, std::string_view market,
                                                  std::int64_t skip, std::int64_t size)
{
    Query query(*this,
                "SELECT collection FROM favourites WHERE account = ? AND market = ? "
                "ORDER BY place LIMIT ? OFFSET ?");
    query << account << market << size << skip;
    std::vector<CollectionId> found;
    while (query.next())
        found.emplace_back(query.number());
    return found;
}

std::size_t AccountFile::favouriteCount(AccountId account, std::string_view market)
{
    Query query(*this, "SELECT count(*) FROM favourites WHERE account = ? AND market = ?");
    query << account << market;
    query.next();
    return static_cast<std::size_t>(query.number());
}

void AccountFile::dropFavourite(AccountId account, std::string_view market, CollectionId collection)
{
    Query query(*this,
                "DELETE FROM favourites WHERE account = ? AND market = ? AND collection = ?");
    query << account << market << collection;
    query.run();
}

void AccountFile::appendFavourite(AccountId account, std::string_view market,
                                  CollectionId collection)
{
    Query query(*this,
                "INSERT INTO favourites SELECT ?1, ?2, ?3, ifnull(max(place), 0) + 1 "
                "FROM favourites WHERE account = ?1 AND market = ?2");
    query << account << market << collection;
    query.run();
}

} // namespace zvx
