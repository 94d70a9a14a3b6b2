#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/path_call.h"

#include <optional>

namespace zvx {

class PublicAddress;
class SessionGate;
class WireAnswers;

/**
 * `pay/hx.html` and `pay/qrcode.html` of one platform: the bank card that is bound, one-time codes
 * and addresses for the pages that people open on a telephone, and the QR pictures of the codes.
 *
 * Called on the server's thread, and never keeps it waiting.
 */
class CardPaths
{
public:
    /// All have to outlive this and every request that it was handed.
    CardPaths(AccountDesk &desk, const SessionGate &gate, const PublicAddress &address,
              const WireAnswers &answers);

    /// Answers a path of PathRoom::Cards whose method fits.
    void handle(PathCall call) const;

    /// The picture for the code in the request's `s`, or nothing where this platform has no such
    /// code, or not any more.
    std::optional<HttpAnswer> qrCode(const HttpRequest &request) const;

private:
    void showCard(PathCall call, AccountId account) const;
    void makeCode(PathCall call, AccountId account) const;
    void makeAddresses(PathCall call, AccountId account) const;
    std::string addressOf(const std::string &base, LinkPurpose purpose,
                          std::string_view token) const;
    std::string cardJson(const std::string &base, const BankCard &card) const;

    AccountDesk &m_desk;
    const SessionGate &m_gate;
    const PublicAddress &m_address;
    const WireAnswers &m_answers;
};

} // namespace zvx
