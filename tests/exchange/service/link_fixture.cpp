#include "exchange/service/link_fixture.h"

#include "exchange/service/until.h"

namespace zvxtest {

void LinkTest::beginSignedIn()
{
    begin();
    registerAccount(phone, password);
    token = signIn(phone, password);
}

std::string LinkTest::newCode(const std::string &market)
{
    const auto answer = get(market + "pay/hx.html", token);
    EXPECT_EQ(answer["status"], "ok") << answer;
    EXPECT_EQ(answer.value("/data/bound"_json_pointer, true), false) << answer;
    return answer.value("/data/code"_json_pointer, std::string());
}

std::string LinkTest::newAddress(const std::string &which, const std::string &market)
{
    const auto answer = get(market + "pay/hx.html?addresses=1", token);
    EXPECT_EQ(answer["status"], "ok") << answer;
    const std::string address = answer["data"].value(which, std::string());
    return address.substr(address.find('/', sizeof "http://"));
}

RawAnswer LinkTest::post(const std::string &address, const std::string &body) const
{
    RawClient client(port());
    client.post(address, body);
    return client.answer().value_or(RawAnswer());
}

RawAnswer LinkTest::submit(const RawAnswer &shown, const std::string &step,
                           const std::string &fields) const
{
    return submit(shown, step, fields, "127.0.0.1");
}

RawAnswer LinkTest::submit(const RawAnswer &shown, const std::string &step,
                           const std::string &fields, const char *from) const
{
    // The form that holds a button of this step, and no other form before it.
    const std::string button = "name=\"step\" value=\"" + step + "\"";
    const std::size_t at = shown.body.find(button);
    EXPECT_NE(at, std::string::npos) << "no button for " << step << " in\n" << shown.body;
    if (at == std::string::npos)
        return {};
    const std::string own = shown.body.substr(shown.body.rfind("<form ", at));
    const std::string address = between(own, "action=\"", "\"");
    const std::string guard = between(own, "name=\"form\" value=\"", "\"");
    RawClient client(port(), from);
    client.post("/lc/" + address,
                "form=" + guard + "&step=" + step + (fields.empty() ? "" : "&" + fields));
    return client.answer().value_or(RawAnswer());
}

std::string LinkTest::codeAfter(std::size_t before) const
{
    EXPECT_TRUE(until([&] { return texts() > before; })) << "no text message came";
    return codeOf(phone);
}

void LinkTest::bindCard(const std::string &fields)
{
    const std::size_t before = texts();
    const RawAnswer first = page("/lc/card.html?s=" + newCode());
    const RawAnswer second = submit(first, "prepare", fields);
    ASSERT_EQ(second.status, 200) << second.body;
    const RawAnswer third = submit(second, "confirm", "code=" + codeAfter(before));
    ASSERT_EQ(third.status, 200) << third.body;
}

std::string LinkTest::headerOf(const RawAnswer &answer, const std::string &name)
{
    return between(answer.head, "\r\n" + name + ": ", "\r\n");
}

std::string LinkTest::between(const std::string &text, const std::string &begin,
                              const std::string &end)
{
    const std::size_t from = text.find(begin);
    if (from == std::string::npos)
        return {};
    const std::size_t to = text.find(end, from + begin.size());
    return to == std::string::npos ? std::string()
                                   : text.substr(from + begin.size(), to - from - begin.size());
}

} // namespace zvxtest
