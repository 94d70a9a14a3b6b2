#include "exchange/service/action_form.h"

#include "exchange/service/parameters.h"
#include "exchange/service/wire_answers.h"

#include <algorithm>

namespace zvx {

namespace {

constexpr std::string_view kFormType = "application/x-www-form-urlencoded";

/// Keys are lower case on the wire, so that one key has one text.
bool isKeyText(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'F'; });
}

} // namespace

bool isForm(std::string_view contentType)
{
    std::string_view name = contentType.substr(0, contentType.find(';'));
    while (!name.empty() && (name.back() == ' ' || name.back() == '\t'))
        name.remove_suffix(1);
    return name.size() == kFormType.size()
        && std::equal(name.begin(), name.end(), kFormType.begin(), [](char given, char wanted) {
               return (given >= 'A' && given <= 'Z' ? given - 'A' + 'a' : given) == wanted;
           });
}

std::variant<ActionForm, HttpAnswer> readActionForm(const HttpRequest &request,
                                                    const WireAnswers &answers)
{
    if (!isForm(request.contentType))
        return answers.badParameter("Content-Type");
    auto fields = HttpParameters::parse(request.body);
    if (!fields)
        return answers.badParameter("form");
    ActionForm form{std::move(*fields), {}, false};
    ParameterReader read(form.fields);
    if (!read.protocolFits())
        return answers.misread(read);
    form.resolve = read.integer("resolve", 1, 1).has_value();
    if (!read.fault().empty())
        return answers.badParameter(read.fault());
    const std::string *key = form.fields.find("key");
    const auto parsed = key && isKeyText(*key) ? ActionKey::fromText(*key) : std::nullopt;
    if (!parsed)
        return answers.badParameter("key");
    form.key = *parsed;
    return form;
}

} // namespace zvx
