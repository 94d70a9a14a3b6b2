#pragma once

#include "exchange/service/account_fixture.h"

#include <string>

namespace zvxtest {

/// A registered account, and the pages behind its one-time links as a browser without script uses
/// them.
class LinkTest : public AccountTest
{
protected:
    /// Begins to serve, registers and signs in.
    void beginSignedIn();

    /// A fresh code for opening an account.
    std::string newCode(const std::string &market = "/lc/youbika/");
    /// A fresh page of "in" or "out": its address behind the host, "/lc/money-in.html?s=…".
    std::string newAddress(const std::string &which, const std::string &market = "/lc/youbika/");

    RawAnswer page(const std::string &address) const { return fetch(port(), address); }
    /// Sends a form of a page: the hidden field of the form with this step comes from `shown`.
    RawAnswer submit(const RawAnswer &shown, const std::string &step,
                     const std::string &fields) const;
    /// The same from another address of this machine.
    RawAnswer submit(const RawAnswer &shown, const std::string &step, const std::string &fields,
                     const char *from) const;
    /// Sends any bytes as a form.
    RawAnswer post(const std::string &address, const std::string &body) const;

    /// Waits for one more text message than `before` and gives its code.
    std::string codeAfter(std::size_t before) const;
    /// Binds a card by the pages.
    void bindCard(const std::string &fields
                  = "holder=林晓月&bank=lanchuan&number=9990001234567890121");

    static std::string headerOf(const RawAnswer &answer, const std::string &name);
    /// The text between two marks of a page, "" where they are not there.
    static std::string between(const std::string &text, const std::string &begin,
                               const std::string &end);

    const std::string phone = "13900000001";
    const std::string password = "open-sesame";
    const std::string form = "holder=林晓月&bank=lanchuan&number=9990001234567890121";
    std::string token;
};

} // namespace zvxtest
