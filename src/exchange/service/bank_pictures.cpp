#include "exchange/service/bank_pictures.h"

namespace zvx {

std::optional<HttpAnswer> bankPicture(std::string_view file)
{
    constexpr std::string_view ending = ".png";
    if (file.size() <= ending.size() || file.substr(file.size() - ending.size()) != ending)
        return std::nullopt;
    const std::string_view bytes = bankPictureBytes(file.substr(0, file.size() - ending.size()));
    if (bytes.empty())
        return std::nullopt;
    HttpAnswer answer = HttpAnswer::of(200, std::string(bytes));
    answer.contentType = "image/png";
    return answer;
}

} // namespace zvx
