#include "exchange/service/initials.h"

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <stdexcept>

namespace zvx {

namespace {

struct Readings {
    char16_t character;
    const char *initials;
};

/// Characters with several usual readings whose initials differ; what stands first is the reading
/// that names of collectibles use most. The transliterator knows one reading a character.
constexpr Readings severalReadings[] = {
    {u'长', "cz"}, {u'行', "xh"}, {u'重', "zc"}, {u'乐', "ly"}, {u'曾', "zc"}, {u'单', "ds"},
    {u'朝', "cz"}, {u'调', "dt"}, {u'传', "cz"}, {u'藏', "cz"}, {u'弹', "dt"}, {u'会', "hk"},
    {u'校', "xj"}, {u'降', "jx"}, {u'解', "jx"}, {u'参', "cs"}, {u'盛', "sc"}, {u'沈', "sc"},
    {u'石', "sd"}, {u'夏', "xs"}, {u'角', "jl"}, {u'车', "cj"}, {u'贾', "jg"}, {u'翟', "zd"},
    {u'仇', "cq"}, {u'区', "qo"}, {u'尉', "wy"}, {u'隗', "wk"}, {u'厦', "xs"}, {u'省', "sx"},
    {u'系', "xj"}, {u'券', "qx"}, {u'卡', "kq"}, {u'宿', "sx"}, {u'圈', "qj"}, {u'莘', "sx"},
    {u'铅', "qy"}, {u'番', "fp"}, {u'乘', "cs"}, {u'澄', "cd"}, {u'查', "cz"}, {u'奇', "qj"},
    {u'祭', "jz"}, {u'识', "sz"}, {u'折', "zs"}, {u'畜', "xc"}, {u'纤', "xq"}, {u'吓', "xh"},
    {u'伽', "jq"},
};

const char *readingsOf(char16_t character)
{
    for (const Readings &entry : severalReadings) {
        if (entry.character == character)
            return entry.initials;
    }
    return nullptr;
}

bool isDigitOrLatin(char16_t c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

char lowered(char16_t c)
{
    return static_cast<char>(c >= u'A' && c <= u'Z' ? c - u'A' + u'a' : c);
}

} // namespace

class Initials::Impl
{
public:
    Impl()
    {
        UErrorCode error = U_ZERO_ERROR;
        m_latin.reset(icu::Transliterator::createInstance(
            "Han-Latin; Latin-ASCII; Fullwidth-Halfwidth", UTRANS_FORWARD, error));
        if (U_FAILURE(error) || !m_latin)
            throw std::runtime_error(std::string("no transliteration from Chinese: ")
                                     + u_errorName(error));
    }

    /// The possible letters at each place of the name.
    std::vector<std::string> places(std::string_view name) const
    {
        const auto text = icu::UnicodeString::fromUTF8(
            icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
        std::vector<std::string> out;
        for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
            const UChar32 character = text.char32At(i);
            if (character < 0x10000) {
                const auto unit = static_cast<char16_t>(character);
                if (isDigitOrLatin(unit)) {
                    out.emplace_back(1, lowered(unit));
                    continue;
                }
                if (const char *several = readingsOf(unit)) {
                    out.emplace_back(several);
                    continue;
                }
            }
            icu::UnicodeString one(character);
            m_latin->transliterate(one);
            if (one.length() > 0 && isDigitOrLatin(one.charAt(0)))
                out.emplace_back(1, lowered(one.charAt(0)));
        }
        return out;
    }

private:
    std::unique_ptr<icu::Transliterator> m_latin;
};

Initials::Initials() : m_impl(std::make_unique<Impl>()) { }

Initials::~Initials() = default;

std::vector<std::string> Initials::of(std::string_view name) const
{
    std::vector<std::string> all(1);
    for (const std::string &place : m_impl->places(name)) {
        // Later readings go behind all earlier ones, so the list stays in the order of likelihood,
        // and over the bound only the most usual reading of a further character is kept.
        const std::size_t before = all.size();
        const std::size_t readings = before * place.size() > maximumReadings ? 1 : place.size();
        for (std::size_t r = 1; r < readings; ++r) {
            for (std::size_t i = 0; i < before; ++i)
                all.push_back(all[i] + place[r]);
        }
        for (std::size_t i = 0; i < before; ++i)
            all[i].push_back(place[0]);
    }
    if (all.front().empty())
        return {};
    std::vector<std::string> once;
    for (std::string &reading : all) {
        if (std::find(once.begin(), once.end(), reading) == once.end())
            once.push_back(std::move(reading));
    }
    return once;
}

} // namespace zvx
