#include "exchange/service/mutator.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace zvxtest {

Mutator::Mutator(std::uint32_t seed, std::vector<std::string> corpus,
                 std::vector<std::string> spice)
    : m_random(seed), m_corpus(std::move(corpus)), m_spice(std::move(spice))
{
}

std::string Mutator::next(std::size_t most)
{
    std::string text = any(m_corpus);
    for (std::size_t steps = 1 + below(most); steps > 0; --steps)
        mutate(text);
    return text;
}

std::vector<std::string> Mutator::split(const std::string &text, std::size_t most)
{
    std::vector<std::size_t> cuts = {0, text.size()};
    for (std::size_t i = 1; i < most && text.size() > 1; ++i)
        cuts.push_back(1 + below(text.size() - 1));
    std::sort(cuts.begin(), cuts.end());
    cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
    std::vector<std::string> pieces;
    for (std::size_t i = 1; i < cuts.size(); ++i)
        pieces.push_back(text.substr(cuts[i - 1], cuts[i] - cuts[i - 1]));
    return pieces;
}

void Mutator::mutate(std::string &text)
{
    const std::size_t at = below(text.size() + 1);
    const std::size_t most = std::min<std::size_t>(text.size() - at, 24);
    switch (below(6)) {
    case 0:
        text.insert(at, any(m_spice));
        break;
    case 1:
        text.erase(at, below(most + 1));
        break;
    case 2:
        if (at < text.size())
            text[at] = static_cast<char>(below(256));
        break;
    case 3:
        text.insert(at, text.substr(at, below(most + 1)));
        break;
    case 4:
        text.resize(at);
        break;
    default: {
        const std::string &other = any(m_corpus);
        text = text.substr(0, at) + other.substr(below(other.size() + 1));
    }
    }
}

std::vector<std::string> requestSpice()
{
    return {"\r\n",
            "\n",
            "\r",
            "\r\n\r\n",
            std::string(1, '\0'),
            " ",
            "\t",
            ":",
            ";",
            ",",
            "%",
            "%00",
            "%zz",
            "%C0%AF",
            "\xC3\xA9",
            "\xFF",
            "\x7f",
            "Content-Length: 0\r\n",
            "Content-Length: 5\r\n",
            "Content-Length: 99999999999999999999\r\n",
            "Transfer-Encoding: chunked\r\n",
            "Expect: 100-continue\r\n",
            "Connection: close\r\n",
            "Host: g\r\n",
            "HTTP/1.1",
            "HTTP/1.0",
            "0\r\n\r\n",
            "5\r\nprice\r\n",
            "ffffffffffffffff\r\n",
            "-1",
            "GET /evil HTTP/1.1\r\nHost: h\r\n\r\n",
            "a: b\r\n c: d\r\n",
            "?",
            "#",
            "&",
            std::string(5000, 'a'),
            std::string(17'000, '/')};
}

std::vector<std::string> formSpice()
{
    return {"&",
            "=",
            "%",
            "%00",
            "%zz",
            "%C0%80",
            "%ED%A0%80",
            "%F4%90",
            "%E9",
            "%26",
            "%3D",
            "%2B",
            "%25",
            "+",
            "-",
            "\xE9\x95\xBF",
            "\xFF",
            "price=",
            "9",
            "0",
            "e9",
            ".",
            "#",
            ";",
            "\r\n",
            std::string(1, '\0'),
            "18446744073709551616",
            "protocol=1&",
            "&a=&b=&c=&d=&e=&f=&g=&h=&i=&j=&k=&l="};
}

FuzzEffort::FuzzEffort()
{
    if (const char *text = std::getenv("ZV_FUZZ_SEED"))
        seed = static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
    if (const char *text = std::getenv("ZV_FUZZ_TIMES"))
        times = std::max(1, std::atoi(text));
    std::cout << "seed " << seed << "; again with ZV_FUZZ_SEED=" << seed
              << ", more with ZV_FUZZ_TIMES\n";
}

std::string FuzzEffort::describe(int number) const
{
    return "seed " + std::to_string(seed) + ", case " + std::to_string(number);
}

} // namespace zvxtest
