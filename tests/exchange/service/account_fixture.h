#pragma once

#include "exchange/service/service.h"
#include "exchange/service/service_log.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace zvxtest {

/// A service with the small catalogue, without robots, whose passwords are cheap to hash, and what
/// clients of it ask. Sentences of answers are compared without their time.
class AccountTest : public testing::Test
{
protected:
    AccountTest();

    void begin() { service = std::make_unique<zvx::Service>(options, log); }
    void restart()
    {
        service.reset();
        begin();
    }
    std::uint16_t port() const { return service->port(); }

    /// A key that was not used before.
    std::string newKey();

    /// The body of the answer, which has to be JSON.
    nlohmann::json post(const std::string &path, const std::string &form,
                        const std::string &token = {}) const;
    nlohmann::json get(const std::string &path, const std::string &token = {}) const;
    /// An action with a key of its own.
    nlohmann::json act(const std::string &path, const std::string &fields,
                       const std::string &token = {});

    /// Everything of an answer but its time.
    static nlohmann::json timeless(nlohmann::json answer);

    /// The code of the newest text message to a phone, "" where none comes.
    std::string codeOf(const std::string &phone) const;
    /// Text messages in the outbox.
    std::size_t texts() const;

    /// Registers through the paths of `market`, and expects that it works.
    void registerAccount(const std::string &phone, const std::string &password,
                         const std::string &market = "/lc/youbika/");
    /// Signs in and gives the token.
    std::string signIn(const std::string &phone, const std::string &password,
                       const std::string &client = "00000000000000aa",
                       const std::string &market = "/lc/youbika/");

    /// The value of a line of /metrics, "" where there is none.
    std::string metric(const std::string &name) const;

    const std::string lc = "/lc/youbika/";
    const std::string tea = "/lc/chajiu/";
    const std::string ch = "/ch/youbi/";
    TemporaryFolder folder;
    zvx::ServiceOptions options;
    zvx::ServiceLog log{true};
    std::unique_ptr<zvx::Service> service;

private:
    std::uint64_t m_keys = 0;
};

} // namespace zvxtest
