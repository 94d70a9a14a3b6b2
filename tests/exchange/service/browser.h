#pragma once

#include "exchange/service/temporary_folder.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zvxtest {

/// A browser without a window that a test uses as a person does: it looks at pages, types and
/// touches. What cannot be done throws std::runtime_error.
class Browser
{
public:
    struct Size {
        int width = 0;
        int height = 0;
        bool isTelephone = false;
    };

    explicit Browser(Size size);
    ~Browser();
    Browser(const Browser &) = delete;

    void open(const std::string &address);
    void resize(Size size);
    /// Types into what a CSS selector names, behind what stands there.
    void type(const std::string &selector, const std::string &text);
    /// Chooses the entry of a list.
    void choose(const std::string &list, const std::string &value);
    /// Touches something that leads to another page, and waits for that page.
    void follow(const std::string &selector);
    void reload();
    void goBack();

    std::string address();
    std::string title();
    /// What a person sees of an element, "" where there is none.
    std::string text(const std::string &selector = "body");
    /// The value of a field.
    std::string value(const std::string &selector);
    /// Whether the page is wider than the window, so that one has to push it about.
    bool isTooWide();
    /// Height in pixels of the lowest thing that one touches on the page.
    int leastTouchHeight();
    /// What the browser complained of since it was asked last: blocked content, missing files.
    std::vector<std::string> complaints();

    /// PNG of the whole page.
    std::string picture();

private:
    nlohmann::json ask(const std::string &method, const std::string &path,
                       const nlohmann::json &body);
    nlohmann::json run(const std::string &script);
    std::string element(const std::string &selector);
    void start();

    TemporaryFolder m_folder;
    pid_t m_driver = -1;
    std::uint16_t m_port = 0;
    std::string m_session;
};

} // namespace zvxtest
