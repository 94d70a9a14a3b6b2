#include "serving/benchcatalogue.h"

namespace benchcatalogue {

std::string text(std::size_t collections)
{
    std::string json = R"({"format": 1, "platforms": [{"id": "lc", "name": "岚川", "markets": [)"
                       R"({"name": "邮币", "prefix": "/lc/bench/", "limitPpm": 100000, )"
                       R"("feePpm": 3000, "types": [{"id": 1, "name": "邮票"}], "collections": [)";
    for (std::size_t i = 0; i < collections; ++i) {
        const std::string id = std::to_string(firstCollection + static_cast<int>(i));
        json += (i > 0 ? ",\n" : "\n") + std::string(R"({"id": )") + id + R"(, "code": ")"
            + std::to_string(600'000 + i) + R"(", "name": "长城邮票)" + id
            + R"(", "type": 1, "listed": 1000000000, "previousClose": )"
            + std::to_string(previousClose(i)) + R"(, "introduction": ""})";
    }
    return json + "]}]}]}\n";
}

} // namespace benchcatalogue
