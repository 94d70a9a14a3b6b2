#include "exchange/service/demo_gifts.h"

#include "exchange/core/market.h"
#include "exchange/store/exchange.h"
#include "exchange/store/wholefile.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace zvx {

namespace {

namespace fs = std::filesystem;

constexpr Fen money{100'000'000};
constexpr std::size_t collectionsOfMarket = 50;
constexpr std::int64_t piecesOfCollection = 100;
/// The rest of an issue is for the others.
constexpr std::int64_t shareOfIssue = 10;
/// Keys of gifts: this half and a collection's id, or 0 for the money.
constexpr std::uint64_t keyHigh = 0x7A76'6465'6D6F'0001;

ActionKey keyOf(std::int64_t low)
{
    return {keyHigh, static_cast<std::uint64_t>(low)};
}

std::vector<Command> giftsOf(const MarketServer &market, AccountId account)
{
    const auto snapshot = market.snapshot();
    const auto &infos = *snapshot->infos.data;
    std::vector<Command> gifts;
    OpenAccount open;
    open.account = account;
    open.fee = market.fee();
    gifts.emplace_back(std::move(open));
    gifts.emplace_back(Deposit{account, money, keyOf(0)});
    // Spread over the list, so that all kinds of goods are among them.
    const std::size_t count = std::min(infos.size(), collectionsOfMarket);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = i * infos.size() / count;
        const std::int64_t pieces
            = std::min(piecesOfCollection, infos[row]->listed.value() / shareOfIssue);
        if (pieces > 0)
            gifts.emplace_back(GrantHolding{account, infos[row]->id, Quantity(pieces),
                                            snapshot->list->rows[row]->previousClose,
                                            keyOf(infos[row]->id.value())});
    }
    return gifts;
}

} // namespace

DemoGifts::DemoGifts(fs::path folder) : m_folder(std::move(folder))
{
    read();
}

void DemoGifts::markNewFolder()
{
    if (m_isMarked || fs::exists(m_folder / "catalogue.json"))
        return;
    write();
    m_isMarked = true;
}

void DemoGifts::give(const Exchange &exchange, const Account &account, const Notice &notice)
{
    std::vector<std::pair<const MarketServer *, AccountId>> open;
    bool isNew = false;
    for (const auto &market : exchange.markets()) {
        const auto owner = account(*market);
        const auto known = m_gifts.find(market->prefix());
        if (!owner || (known != m_gifts.end() && known->second.isDone))
            continue;
        open.emplace_back(market.get(), *owner);
        if (known == m_gifts.end()) {
            m_gifts[market->prefix()].session = market->snapshot()->check.data->session.value();
            isNew = true;
        }
    }
    if (open.empty())
        return;
    // The session is on the disk before the first key is used, so that it is known for how long the
    // keys are remembered.
    if (isNew)
        write();
    for (const auto &[market, owner] : open) {
        giveIn(*market, owner, notice);
        m_gifts[market->prefix()].isDone = true;
    }
    write();
}

void DemoGifts::giveIn(const MarketServer &market, AccountId account, const Notice &notice) const
{
    const std::int64_t begun = m_gifts.at(market.prefix()).session;
    const std::int64_t session = market.snapshot()->check.data->session.value();
    if (session >= begun + kKeySessions) {
        notice(market.prefix()
               + ": the demo account keeps what it was given before the interruption");
        return;
    }
    const std::vector<Result> results = market.writer().execute(giftsOf(market, account));
    const auto refused = std::count_if(results.begin(), results.end(), [](const Result &result) {
        return result.meaning() != Status::Accepted && result.status != Status::AlreadyThere;
    });
    notice(market.prefix() + ": the demo account has its money and pieces"
           + (refused > 0 ? ", " + std::to_string(refused) + " gifts were refused" : ""));
}

void DemoGifts::read()
{
    const fs::path file = m_folder / fileName;
    std::error_code error;
    m_isMarked = fs::exists(file, error);
    if (!m_isMarked)
        return;
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string prefix;
        Gift gift;
        std::string state;
        if (!(words >> prefix >> gift.session >> state) || gift.session < 1
            || (state != "begun" && state != "done"))
            throw std::runtime_error(file.string() + " holds a line that is no mark of a gift");
        gift.isDone = state == "done";
        m_gifts[prefix] = gift;
    }
    if (in.bad() || !in.eof())
        throw std::runtime_error(file.string() + " cannot be read");
}

void DemoGifts::write() const
{
    std::string text;
    for (const auto &[prefix, gift] : m_gifts)
        text
            += prefix + ' ' + std::to_string(gift.session) + (gift.isDone ? " done\n" : " begun\n");
    writeWhole(m_folder / fileName, text);
}

} // namespace zvx
