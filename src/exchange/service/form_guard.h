#pragma once

#include <string>
#include <string_view>

namespace zvx {

/**
 * Knows the forms that this run of the service has handed out.
 *
 * Each form carries a token that only the service can make, and that is good for one link and one
 * step alone; so a page of somebody else's cannot send a form in the name of whoever reads it.
 */
class FormGuard
{
public:
    FormGuard();
    ~FormGuard();
    FormGuard(const FormGuard &) = delete;
    FormGuard &operator=(const FormGuard &) = delete;

    /// 32 lower-case hexadecimal digits.
    std::string tokenOf(std::string_view link, std::string_view step) const;
    bool fits(std::string_view given, std::string_view link, std::string_view step) const;

private:
    std::string m_secret;
};

} // namespace zvx
