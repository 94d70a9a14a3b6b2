#pragma once

#include <string>

namespace zvx {

/// A bank card as the exchange knows it once it is bound. The whole number is kept nowhere.
struct BankCard {
    std::string bank; ///< id of a known bank, such as "yunhe"; see bank_list.h
    std::string holder; ///< the holder's name
    std::string tail; ///< the number's last four digits
    /// A keyed hash of the whole number in 32 lower-case hexadecimal digits: the same for the same
    /// number on one platform, and no way back to it without the platform's file.
    std::string fingerprint;
};

} // namespace zvx
