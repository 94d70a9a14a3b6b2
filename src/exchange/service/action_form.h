#pragma once

#include "exchange/core/types.h"
#include "exchange/service/http_message.h"

#include <string_view>
#include <variant>

namespace zvx {

class WireAnswers;

/// Whether a Content-Type names a form, whatever its case and parameters.
bool isForm(std::string_view contentType);

/// The fields of an action, which every POST carries in its body.
struct ActionForm {
    HttpParameters fields;
    ActionKey key;
    /// The client does not act, it asks what became of the key.
    bool resolve = false;
};

/// Reads an action's body, or gives the answer to one that cannot be read: another content type, a
/// malformed form, a missing key, another protocol.
std::variant<ActionForm, HttpAnswer> readActionForm(const HttpRequest &request,
                                                    const WireAnswers &answers);

} // namespace zvx
