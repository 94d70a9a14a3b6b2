#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include <sys/wait.h>

namespace {

/// What the program prints, and that it ends with 0.
std::string outputOf(const std::string &arguments)
{
    const std::string command = std::string("\"") + ZVX_PROGRAM + "\" " + arguments;
    std::FILE *pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return "";
    std::string text;
    char bytes[4096];
    for (std::size_t count = std::fread(bytes, 1, sizeof bytes, pipe); count > 0;
         count = std::fread(bytes, 1, sizeof bytes, pipe))
        text.append(bytes, count);
    const int status = ::pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command;
    return text;
}

TEST(Help, NamesEveryCommandAndOption)
{
    const std::string text = outputOf("--help");
    for (const char *word : {"serve",           "settle",       "outbox",
                             "--help",          "--version",    "--state",
                             "--listen",        "--catalogue",  "--host",
                             "--public-url",    "--robots",     "--transfer-limit",
                             "--day-limit",     "--bank-delay", "--bank-refuse",
                             "--prepare-delay", "--ship-delay", "--carrier-refuse",
                             "--seed",          "--demo",       "--until-stdin-closes",
                             "--attached",      "state folder"})
        EXPECT_NE(text.find(word), std::string::npos) << word << " is missing in\n" << text;
}

TEST(Help, OfACommandTellsItsOptionsAlone)
{
    const std::string serve = outputOf("serve --help");
    for (const char *word : {"--attached", "PORT", "SIGTERM", "Exit codes", "0 to 200"})
        EXPECT_NE(serve.find(word), std::string::npos) << word << " is missing in\n" << serve;
    const std::string settle = outputOf("settle --help");
    EXPECT_NE(settle.find("--state"), std::string::npos) << settle;
    EXPECT_EQ(settle.find("--robots"), std::string::npos) << settle;
}

} // namespace
