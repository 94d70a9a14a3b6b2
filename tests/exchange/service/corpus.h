#pragma once

#include <string>
#include <vector>

namespace zvxtest {

/// A row of corpus/requests.txt with the bytes of its file.
struct RequestCase {
    std::string name;
    std::string bytes;
    std::vector<int> answers; ///< their statuses
    std::size_t handled = 0;

    bool isRefused() const { return !answers.empty() && answers.back() >= 400; }
};

/// A row of corpus/forms.txt with the bytes of its file.
struct FormCase {
    std::string name;
    std::string bytes;
    std::string pairs; ///< a number, or "refused"
    std::string fault; ///< "-" is none
    std::string order; ///< "1001,1200,5"
};

/// Both throw std::runtime_error where a row has no file, a file no row, or a row no sense.
std::vector<RequestCase> requestCorpus();
std::vector<FormCase> formCorpus();

} // namespace zvxtest
