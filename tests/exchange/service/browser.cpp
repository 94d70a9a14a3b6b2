#include "exchange/service/browser.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/until.h"

#include <nlohmann/json.hpp>
#include <sodium.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zvxtest {

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

/// The name under which the protocol hands out elements.
constexpr const char *elementKey = "element-6066-11e4-a52e-4f735466cecf";

std::string textOf(const std::filesystem::path &file)
{
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

Browser::Browser(Size size)
{
    start();
    // A test often runs as root, for whom the browser has no sandbox, and on machines with little
    // shared memory.
    const json arguments = {"--headless=new",
                            "--no-sandbox",
                            "--disable-gpu",
                            "--disable-dev-shm-usage",
                            "--disable-background-networking",
                            "--disable-component-update",
                            "--disable-sync",
                            "--no-first-run",
                            "--no-default-browser-check",
                            "--hide-scrollbars",
                            "--lang=zh-CN",
                            "--user-data-dir=" + (m_folder.path() / "profile").string()};
    const json wanted = {{"browserName", "chrome"},
                         {"goog:loggingPrefs", {{"browser", "ALL"}}},
                         {"goog:chromeOptions", {{"args", arguments}}}};
    m_session = ask("POST", "/session", {{"capabilities", {{"alwaysMatch", wanted}}}})["sessionId"];
    resize(size);
}

Browser::~Browser()
{
    try {
        ask("DELETE", "", {});
    } catch (const std::exception &) {
        // It ends all the same: the driver leads a group of its own.
    }
    ::kill(-m_driver, SIGKILL);
    ::waitpid(m_driver, nullptr, 0);
}

void Browser::start()
{
    const std::string log = (m_folder.path() / "driver.log").string();
    m_driver = ::fork();
    if (m_driver == 0) {
        ::setpgid(0, 0);
        const int file = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
        ::dup2(file, STDOUT_FILENO);
        ::dup2(file, STDERR_FILENO);
        ::setenv("HOME", m_folder.path().c_str(), 1);
        ::execlp("chromedriver", "chromedriver", "--port=0", static_cast<char *>(nullptr));
        ::_exit(127);
    }
    ::setpgid(m_driver, m_driver);
    const std::string mark = "successfully on port ";
    until([&] {
        const std::string text = textOf(log);
        const std::size_t at = text.find(mark);
        if (at != std::string::npos && text.find('.', at) != std::string::npos)
            m_port = static_cast<std::uint16_t>(std::stoi(text.substr(at + mark.size())));
        return m_port != 0;
    });
    if (m_port == 0)
        throw std::runtime_error("chromedriver does not start, install chromium-driver: "
                                 + textOf(log));
}

json Browser::ask(const std::string &method, const std::string &path, const json &body)
{
    const std::string text = method == "POST" ? body.dump() : "";
    const std::string address = m_session.empty() ? path : "/session/" + m_session + path;
    RawClient client(m_port);
    client.send(method + ' ' + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: "
                + std::to_string(text.size()) + "\r\n\r\n" + text);
    const auto answer = client.answer(60s);
    if (!answer)
        throw std::runtime_error("the browser does not answer");
    const json value = json::parse(answer->body)["value"];
    if (answer->status != 200)
        throw std::runtime_error(method + ' ' + path + ": "
                                 + value.value("message", std::string("refused")));
    return value;
}

json Browser::run(const std::string &script)
{
    return ask("POST", "/execute/sync", {{"script", script}, {"args", json::array()}});
}

std::string Browser::element(const std::string &selector)
{
    return ask("POST", "/element", {{"using", "css selector"}, {"value", selector}})[elementKey];
}

void Browser::resize(Size size)
{
    ask("POST", "/goog/cdp/execute",
        {{"cmd", "Emulation.setDeviceMetricsOverride"},
         {"params",
          {{"width", size.width},
           {"height", size.height},
           {"deviceScaleFactor", 1},
           {"mobile", size.isTelephone}}}});
}

void Browser::open(const std::string &address)
{
    ask("POST", "/url", {{"url", address}});
}

void Browser::type(const std::string &selector, const std::string &text)
{
    ask("POST", "/element/" + element(selector) + "/value", {{"text", text}});
}

void Browser::choose(const std::string &list, const std::string &value)
{
    ask("POST", "/element/" + element(list + " option[value=\"" + value + "\"]") + "/click",
        json::object());
}

void Browser::follow(const std::string &selector)
{
    // The old page's element is gone as soon as the new page has taken its place.
    const std::string old = element("html");
    ask("POST", "/element/" + element(selector) + "/click", json::object());
    const bool left = until([&] {
        try {
            ask("GET", "/element/" + old + "/name", {});
        } catch (const std::runtime_error &) {
            return true;
        }
        return false;
    });
    if (!left || !until([&] { return run("return document.readyState") == "complete"; }))
        throw std::runtime_error(selector + " leads nowhere");
}

void Browser::reload()
{
    ask("POST", "/refresh", json::object());
}

void Browser::goBack()
{
    ask("POST", "/back", json::object());
}

std::string Browser::address()
{
    return ask("GET", "/url", {});
}

std::string Browser::title()
{
    return ask("GET", "/title", {});
}

std::string Browser::text(const std::string &selector)
{
    const json found = ask("POST", "/elements", {{"using", "css selector"}, {"value", selector}});
    if (found.empty())
        return {};
    return ask("GET", "/element/" + found[0][elementKey].get<std::string>() + "/text", {});
}

std::string Browser::value(const std::string &selector)
{
    return ask("GET", "/element/" + element(selector) + "/property/value", {});
}

bool Browser::isTooWide()
{
    return run("return document.documentElement.scrollWidth > window.innerWidth");
}

int Browser::leastTouchHeight()
{
    return run("return Math.floor(Math.min(...Array.from(document.querySelectorAll("
               "'input:not([type=hidden]), select, button')).map("
               "e => e.getBoundingClientRect().height)))");
}

std::vector<std::string> Browser::complaints()
{
    std::vector<std::string> all;
    for (const json &entry : ask("POST", "/se/log", {{"type", "browser"}}))
        all.push_back(entry["message"]);
    return all;
}

std::string Browser::picture()
{
    const json shot = ask("POST", "/goog/cdp/execute",
                          {{"cmd", "Page.captureScreenshot"},
                           {"params", {{"format", "png"}, {"captureBeyondViewport", true}}}});
    const std::string text = shot["data"];
    std::string bytes(text.size(), '\0');
    std::size_t size = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char *>(bytes.data()), bytes.size(),
                          text.data(), text.size(), nullptr, &size, nullptr,
                          sodium_base64_VARIANT_ORIGINAL)
        != 0)
        throw std::runtime_error("a picture that is none");
    bytes.resize(size);
    return bytes;
}

} // namespace zvxtest
