#include "setting.h"

#include "serving/benchcatalogue.h"

using namespace zvx;

namespace {

constexpr std::size_t kCollections = 50;

} // namespace

Setting::Setting(const Options &options)
    : m_folder(options.folder),
      m_state(m_folder.path() / "state", kCollections, clients, kCollections),
      m_untouched(m_folder.path() / "untouched.market"),
      m_market(Catalogue::parse(benchcatalogue::text(kCollections), "bench")
                   .platforms()
                   .front()
                   .markets.front()),
      m_seed(options.seed)
{
    std::filesystem::copy_file(m_state.store(), m_untouched);
}

std::filesystem::path Setting::copy(const std::string &name) const
{
    std::filesystem::copy_file(m_untouched, file(name));
    return file(name);
}

std::vector<Trader> Setting::traders() const
{
    std::vector<Trader::Piece> pieces;
    for (const CatalogueCollection &entry : m_market.collections)
        pieces.push_back({entry.id, entry.previousClose});
    std::vector<Trader> all;
    for (const SeededState::Trader &trader : m_state.traders())
        all.emplace_back(pieces, AccountId(trader.account), m_seed);
    return all;
}
