#include "exchange/service/corpus.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace zvxtest {

namespace {

namespace fs = std::filesystem;

std::string bytesOf(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// Calls `read(name, rest of the row)` for each row of a table, and holds it to its folder.
template <class Read>
void readTable(const std::string &name, const Read &read)
{
    const fs::path folder = fs::path(ZVX_CORPUS) / name;
    std::istringstream table(bytesOf(folder.string() + ".txt"));
    std::set<std::string> seen;
    for (std::string line; std::getline(table, line);) {
        std::istringstream row(line);
        std::string file;
        if (!(row >> file) || file.front() == '#')
            continue;
        if (!seen.insert(file).second)
            throw std::runtime_error(file + " has two rows");
        read(file, bytesOf(folder / file), row);
        if (!row)
            throw std::runtime_error("cannot understand the row of " + file);
    }
    for (const auto &entry : fs::directory_iterator(folder)) {
        if (seen.count(entry.path().filename().string()) == 0)
            throw std::runtime_error(entry.path().string() + " has no row");
    }
}

} // namespace

std::vector<RequestCase> requestCorpus()
{
    std::vector<RequestCase> cases;
    readTable("requests", [&](const std::string &name, std::string bytes, std::istream &row) {
        RequestCase one;
        one.name = name;
        one.bytes = std::move(bytes);
        std::string answers;
        row >> answers >> one.handled;
        std::istringstream list(answers == "-" ? std::string() : answers);
        for (std::string status; std::getline(list, status, ',');)
            one.answers.push_back(std::stoi(status));
        cases.push_back(std::move(one));
    });
    return cases;
}

std::vector<FormCase> formCorpus()
{
    std::vector<FormCase> cases;
    readTable("forms", [&](const std::string &name, std::string bytes, std::istream &row) {
        FormCase one;
        one.name = name;
        one.bytes = std::move(bytes);
        row >> one.pairs >> one.fault >> one.order;
        cases.push_back(std::move(one));
    });
    return cases;
}

} // namespace zvxtest
