#pragma once

#include <string_view>

namespace zvx {

/// The way out for text messages.
class TextGateway
{
public:
    virtual ~TextGateway() = default;

    /// Hands one message over; may take its time, is called by one thread of each desk. Throws an
    /// exception whose what() holds nothing of the text.
    virtual void send(std::string_view phone, std::string_view text) = 0;
};

} // namespace zvx
