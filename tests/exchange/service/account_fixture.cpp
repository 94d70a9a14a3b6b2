#include "exchange/service/account_fixture.h"

#include "exchange/accounts/outbox.h"
#include "exchange/accounts/password_hasher.h"

#include "exchange/service/until.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace zvxtest {

namespace {

std::string textOf(const std::filesystem::path &file)
{
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

nlohmann::json bodyOf(RawClient &client)
{
    const auto answer = client.answer();
    return answer ? nlohmann::json::parse(answer->body) : nlohmann::json();
}

} // namespace

AccountTest::AccountTest()
{
    options.folder = folder.path();
    options.firstCatalogue = textOf(ZVX_SMALL_CATALOGUE);
    options.robotOrdersPerSecond = 0;
    options.passwordHasher = std::make_shared<zvx::ArgonHasher>(zvx::ArgonCost::least());
    options.accountLimits.codePause = 0;
}

std::string AccountTest::newKey()
{
    char text[40];
    std::snprintf(text, sizeof text, "%032llx", static_cast<unsigned long long>(++m_keys));
    return text;
}

nlohmann::json AccountTest::post(const std::string &path, const std::string &form,
                                 const std::string &token) const
{
    RawClient client(port());
    client.post(path, form, token);
    return bodyOf(client);
}

nlohmann::json AccountTest::get(const std::string &path, const std::string &token) const
{
    RawClient client(port());
    if (token.empty())
        client.get(path);
    else
        client.get(path, token);
    return bodyOf(client);
}

nlohmann::json AccountTest::act(const std::string &path, const std::string &fields,
                                const std::string &token)
{
    return post(path, "key=" + newKey() + '&' + fields, token);
}

nlohmann::json AccountTest::timeless(nlohmann::json answer)
{
    answer.erase("time");
    return answer;
}

std::string AccountTest::codeOf(const std::string &phone) const
{
    std::string code;
    until([&] {
        const std::string text = textOf(folder.path() / zvx::Outbox::kFileName);
        const std::size_t line = text.rfind('\t' + phone + '\t');
        const std::size_t first
            = line == std::string::npos ? line : text.find_first_of("0123456789", line + 13);
        if (first != std::string::npos && text.find('\n', first) != std::string::npos)
            code = text.substr(first, text.find_first_not_of("0123456789", first) - first);
        return !code.empty();
    });
    return code;
}

std::size_t AccountTest::texts() const
{
    const std::string text = textOf(folder.path() / zvx::Outbox::kFileName);
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

void AccountTest::registerAccount(const std::string &phone, const std::string &password,
                                  const std::string &market)
{
    const std::size_t before = texts();
    ASSERT_EQ(act(market + "reg/send.html", "phone=" + phone)["status"], "ok");
    ASSERT_TRUE(until([&] { return texts() > before; }));
    const auto answer
        = act(market + "reg.html",
              "referee=&phone=" + phone + "&password=" + password + "&code=" + codeOf(phone));
    ASSERT_EQ(answer["status"], "ok") << answer;
}

std::string AccountTest::signIn(const std::string &phone, const std::string &password,
                                const std::string &client, const std::string &market)
{
    const auto answer = act(market + "login.html",
                            "phone=" + phone + "&password=" + password + "&client=" + client);
    EXPECT_EQ(answer["status"], "ok") << answer;
    return answer.value("/data/token"_json_pointer, std::string());
}

std::string AccountTest::metric(const std::string &name) const
{
    const std::string text = fetch(port(), "/metrics").body;
    const std::size_t at = text.find('\n' + name + ' ');
    return at == std::string::npos
        ? ""
        : text.substr(at + name.size() + 2, text.find('\n', at + 1) - at - name.size() - 2);
}

} // namespace zvxtest
