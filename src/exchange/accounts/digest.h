#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zvx {

/// Makes libsodium ready. Cheap when it is; throws std::runtime_error where it cannot be.
void startSodium();

/// A BLAKE2b hash over a list of parts. Each part goes in with its length, so that no two lists
/// look alike.
class Digest
{
public:
    /// With a `key` of 16 to 64 bytes only its holder can make the same hash.
    explicit Digest(std::size_t size, std::string_view key = {});
    ~Digest();
    Digest(const Digest &) = delete;
    Digest &operator=(const Digest &) = delete;

    Digest &operator<<(std::string_view part);
    Digest &operator<<(std::int64_t part);

    /// The hash, `size` bytes. Once.
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
    std::size_t m_size;
};

/// Two lower-case hexadecimal digits for each byte.
std::string hexText(std::string_view bytes);

/// Compares in a time that does not tell where the two differ.
bool sameBytes(std::string_view a, std::string_view b);

} // namespace zvx
