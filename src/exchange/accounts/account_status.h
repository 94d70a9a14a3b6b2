#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvx {

/// How an operation on accounts ended. A closed list: the values are stored with the answers of
/// keys, so new ones go to the end and none changes its number.
enum class AccountStatus : std::uint8_t {
    Done = 0,
    Busy = 1, ///< a bounded queue is full; nothing happened, and the key is not used up
    Failed = 2, ///< the desk ended; whether anything happened is only known after a restart
    BadKey = 3, ///< the null key, where a key is needed
    BadPhone = 4,
    BadPassword = 5,
    BadCode = 6, ///< not so many digits as a code of this purpose has
    BadReferee = 7,
    BadMarket = 8,
    BadPage = 9,
    BadPeer = 10,
    KeyDiffers = 11, ///< the key was used before with another content
    KeyUnknown = 12, ///< the key was asked for before anything was done under it, and is burnt
    WrongPassword = 13, ///< told alike for a phone without an account
    TooOften = 14, ///< refused without checking; AccountAnswer::wait says for how long
    CodePause = 15, ///< a code was sent a moment ago; AccountAnswer::wait says for how long
    CodeLimit = 16, ///< no more codes for this phone today
    CodeMissing = 17, ///< none was sent
    CodeWrong = 18,
    CodeExpired = 19,
    CodeUsed = 20, ///< this code was right and has done its work
    CodeSpent = 21, ///< guessed at too often; a new one has to be sent
    GuessLimit = 22, ///< no more guesses at codes of this phone today, right or wrong
    AlreadyRegistered = 23, ///< told to those only who hold the code that the phone was sent
    NotYourPhone = 24, ///< a code that moves money goes to the account's own phone
    AccountUnknown = 25,
    TooManyFavourites = 26,
    LinkUnknown = 27, ///< or for something else
    LinkExpired = 28,
    LinkUsed = 29, ///< it has done its work
    BadBank = 30,
    BadHolder = 31,
    BadCardNumber = 32,
    BadAmount = 33,
    CardBound = 34, ///< the account has a card
    CardTaken = 35, ///< another account has this card; told to those only who hold the code
};

constexpr AccountStatus kLastAccountStatus = AccountStatus::CardTaken;

/// What a status means to whoever asked.
enum class AccountVerdict : std::uint8_t {
    Done,
    Refused, ///< a rule says no; final, the key is used up
    Malformed, ///< the request itself is wrong; nothing happened, the key is not used up
    Busy, ///< nothing happened; ask again after a pause
    Failed, ///< unknown until the service is back
};

AccountVerdict verdict(AccountStatus status);

/// One word for programs, such as "wrong-password". "" for Done.
std::string_view reason(AccountStatus status);

/// A Chinese sentence fit to be shown as it stands; "" for Done. `wait` in seconds stands in those
/// of TooOften and CodePause.
std::string sentence(AccountStatus status, std::int64_t wait = 0);

} // namespace zvx
