#include "exchange/accounts/card_rules.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace zvx {
namespace {

constexpr std::size_t kDigitsLeast = 16;
constexpr std::size_t kDigitsMost = 19;
constexpr std::size_t kNameLeast = 2;
constexpr std::size_t kNameMost = 30;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Every second digit from the right counts double, its own digits added up.
bool checkDigitFits(std::string_view digits)
{
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const int digit = digits[digits.size() - 1 - i] - '0';
        const int doubled = 2 * digit;
        sum += i % 2 == 0 ? digit : doubled - (doubled > 9 ? 9 : 0);
    }
    return sum % 10 == 0;
}

/// Takes the next character off a text that is UTF-8.
char32_t takeCharacter(std::string_view &text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length && i < text.size(); ++i)
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3fU);
    text.remove_prefix(length < text.size() ? length : text.size());
    return character;
}

bool isLetter(char32_t c)
{
    return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z')
        || (c >= 0xc0 && c <= 0x24f && c != 0xd7 && c != 0xf7) // Latin with marks
        || (c >= 0x3400 && c <= 0x4dbf) || (c >= 0x4e00 && c <= 0x9fff)
        || (c >= 0x20000 && c <= 0x3ffff) || c == 0x3007; // 〇
}

/// Stands between two letters: a blank, a dot, an apostrophe, a hyphen.
bool isJoint(char32_t c)
{
    return c == U' ' || c == U'.' || c == U'\'' || c == U'-' || c == 0xb7 || c == 0x2019;
}

} // namespace

Secret cardDigits(std::string_view text)
{
    // As long as the longest text that is looked at, so that no half of a number stays behind in
    // memory that was left.
    char digits[kDigitsMost];
    std::size_t count = 0;
    bool good = true;
    for (const char c : text) {
        if (isDigit(c) && count < kDigitsMost)
            digits[count++] = c;
        else
            good = good && (c == ' ' || c == '-');
    }
    Secret number;
    if (good && count >= kDigitsLeast && digits[0] != '0' && checkDigitFits({digits, count}))
        number = Secret({digits, count});
    wipe(digits, sizeof digits);
    return number;
}

bool isHolderName(std::string_view text)
{
    std::size_t characters = 0;
    bool afterLetter = false;
    while (!text.empty()) {
        const char32_t c = takeCharacter(text);
        if (!isLetter(c) && !(isJoint(c) && afterLetter))
            return false;
        // "J. R." has a dot and a blank in a row.
        afterLetter = isLetter(c) || c == U'.';
        ++characters;
    }
    return afterLetter && characters >= kNameLeast && characters <= kNameMost;
}

} // namespace zvx
