#pragma once

#include "exchange/service/http_message.h"

#include <optional>
#include <string>
#include <string_view>

namespace zvx {

/**
 * The pages of a platform that people read in a browser: `agreement.html`, which a client links
 * beside its registration form, `risk.html`, and the style sheet of both. They run no script and
 * load nothing from elsewhere.
 */
class PlatformPages
{
public:
    /// `name` is the platform's own, such as 岚川.
    explicit PlatformPages(std::string_view name);

    /// The page of that name, or nothing.
    std::optional<HttpAnswer> page(std::string_view name) const;

private:
    HttpFragment m_agreement;
    HttpFragment m_risk;
    HttpFragment m_style;
};

} // namespace zvx
