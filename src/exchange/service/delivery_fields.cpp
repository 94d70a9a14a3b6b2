#include "exchange/service/delivery_fields.h"

#include "exchange/service/http_message.h"
#include "exchange/service/key_text.h"
#include "exchange/service/parameters.h"

#include <algorithm>
#include <utility>

namespace zvx {

namespace {

constexpr std::size_t kPersonMost = 40;
constexpr std::size_t kAddressMost = 200;
constexpr std::size_t kPhoneLeast = 5;
constexpr std::size_t kPhoneMost = 20;
constexpr std::string_view kWideBlank = "\u3000";

std::string_view trimmed(std::string_view text)
{
    const auto beginsWith
        = [&](std::string_view blank) { return text.substr(0, blank.size()) == blank; };
    const auto endsWith = [&](std::string_view blank) {
        return text.size() >= blank.size() && text.substr(text.size() - blank.size()) == blank;
    };
    for (;;) {
        if (beginsWith(" "))
            text.remove_prefix(1);
        else if (beginsWith(kWideBlank))
            text.remove_prefix(kWideBlank.size());
        else if (endsWith(" "))
            text.remove_suffix(1);
        else if (endsWith(kWideBlank))
            text.remove_suffix(kWideBlank.size());
        else
            return text;
    }
}

/// What ends a line, turns its direction, or is not to be seen at all: on a label nobody should
/// read anything else than what was typed.
bool isControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7f && c <= 0x9f) || (c >= 0x200e && c <= 0x200f)
        || (c >= 0x2028 && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069) || c == 0xfeff;
}

/// The characters of a text, which is UTF-8; nothing where one of them is a control character.
std::optional<std::size_t> characters(std::string_view text)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++count) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t size = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
        char32_t character = size == 1 ? lead : lead & (0x7fU >> size);
        for (std::size_t k = 1; k < size; ++k)
            character = character << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3fU);
        if (isControl(character))
            return std::nullopt;
        i += size;
    }
    return count;
}

std::optional<std::string> plainText(const std::string *field, std::size_t most)
{
    const std::string_view text = field ? trimmed(*field) : std::string_view();
    const auto count = characters(text);
    return count && *count >= 1 && *count <= most ? std::make_optional(std::string(text))
                                                  : std::nullopt;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Of this country or another one. The bar is in it since telephones of accounts may have it.
std::optional<std::string> phoneText(const std::string *field)
{
    const std::string_view text = field ? trimmed(*field) : std::string_view();
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) {
        return isDigit(c) || std::string_view("+- |").find(c) != std::string_view::npos;
    });
    const auto digits = std::count_if(text.begin(), text.end(), isDigit);
    return isPlain && text.size() <= kPhoneMost
            && digits >= static_cast<std::ptrdiff_t>(kPhoneLeast)
        ? std::make_optional(std::string(text))
        : std::nullopt;
}

} // namespace

std::variant<DeliveryForm, WrongDeliveryField> readDeliveryForm(const HttpParameters &fields)
{
    ParameterReader read(fields);
    const auto collection = read.collection();
    const auto quantity = read.integer("quantity", 1, kAmountBound);
    if (!read.fault().empty())
        return read.fault();
    auto person = plainText(fields.find("person"), kPersonMost);
    auto phone = phoneText(fields.find("phone"));
    auto address = plainText(fields.find("address"), kAddressMost);
    for (const auto &[name, isThere] :
         {std::pair("collection", collection.has_value()),
          std::pair("quantity", quantity.has_value()), std::pair("person", person.has_value()),
          std::pair("phone", phone.has_value()), std::pair("address", address.has_value())}) {
        if (!isThere)
            return std::string(name);
    }
    return DeliveryForm{*collection,
                        Quantity(*quantity),
                        {std::move(*person), std::move(*phone), std::move(*address)}};
}

std::string_view deliveryFieldSentence(std::string_view field)
{
    if (field == "quantity")
        return "请输入有效的提货数量。";
    if (field == "person")
        return "请填写收货人姓名，最多 40 个字。";
    if (field == "phone")
        return "请填写正确的收货电话。";
    if (field == "address")
        return "请填写收货地址，最多 200 个字。";
    return {};
}

std::optional<ParcelId> readParcelId(std::string_view text)
{
    const auto id = ParcelId::fromText(text);
    return id && keyText(*id) == text ? id : std::nullopt;
}

} // namespace zvx
