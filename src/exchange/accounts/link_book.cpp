#include "exchange/accounts/link_book.h"

#include "exchange/accounts/digest.h"

#include <cstring>
#include <mutex>

namespace zvx {
namespace {

constexpr std::size_t kHashBytes = 32;
/// Longer texts are no tokens; hashing them would be work for nothing.
constexpr std::size_t kTokenMost = 64;

} // namespace

void LinkBook::put(const StoredLink &link)
{
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    m_links[link.token] = link;
}

void LinkBook::forget(const std::string &token)
{
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    m_links.erase(token);
}

LinkState LinkBook::find(std::string_view token, TimeMs now) const
{
    if (token.empty() || token.size() > kTokenMost)
        return {};
    const std::string hash = hashOf(token);
    std::shared_lock<std::shared_mutex> guard(m_mutex);
    const auto found = m_links.find(hash);
    if (found == m_links.end())
        return {};
    const StoredLink &link = found->second;
    return {kindOf(link, m_life, now),
            link.purpose,
            link.account,
            link.market,
            link.card,
            link.amount,
            keyOf(link)};
}

std::string LinkBook::hashOf(std::string_view token)
{
    Digest digest(kHashBytes);
    digest << "link" << token;
    return digest.finish();
}

LinkState::Kind LinkBook::kindOf(const StoredLink &link, std::int64_t life, TimeMs now)
{
    if (link.used)
        return LinkState::Used;
    const std::int64_t age = now.value() - link.issued.value();
    // An age below zero means that the clock was set back, and nobody knows how far.
    return age < 0 || age >= life ? LinkState::Expired : LinkState::Live;
}

ActionKey LinkBook::keyOf(const StoredLink &link)
{
    Digest digest(sizeof(ActionKey::high) + sizeof(ActionKey::low));
    digest << "key" << link.token << link.round;
    const std::string bytes = digest.finish();
    ActionKey key;
    std::memcpy(&key.high, bytes.data(), sizeof key.high);
    std::memcpy(&key.low, bytes.data() + sizeof key.high, sizeof key.low);
    return key;
}

} // namespace zvx
