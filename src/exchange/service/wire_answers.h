#pragma once

#include "exchange/service/http_message.h"
#include "exchange/service/protocol.h"

#include <string>
#include <string_view>

namespace zvx {

class ParameterReader;

/// What any path may have to answer, in the service's own words. From any thread.
class WireAnswers
{
public:
    /// `envelope` has to outlive this.
    explicit WireAnswers(const Envelope &envelope);

    const Envelope &envelope() const { return m_envelope; }

    /// Status ok. `parts` is what stands behind the envelope: `"version":3,"data":{…}`.
    HttpAnswer done(HttpFragment parts) const;
    /// Status ok with `data`, a JSON object.
    HttpAnswer doneWith(std::string_view data = "{}") const;
    /// A rule says no; `reason` is one of the protocol's words.
    HttpAnswer refused(std::string_view reason, std::string_view message) const;

    HttpAnswer badParameter(std::string_view name) const;
    /// To a request whose reading stopped: at a wrong parameter, or at another protocol.
    HttpAnswer misread(const ParameterReader &read) const;
    HttpAnswer wrongProtocol() const;
    HttpAnswer notFound() const;
    HttpAnswer unknownCollection() const;
    /// A code that never was, or has expired, or has done its work.
    HttpAnswer unknownCode() const;
    HttpAnswer wrongMethod(std::string_view allowed) const;
    HttpAnswer signInNeeded() const;
    HttpAnswer signedInElsewhere() const;
    HttpAnswer busy() const;
    /// The service ends, or has ended inside; what became of the request is not known.
    HttpAnswer stopping() const;

private:
    const Envelope &m_envelope;
};

} // namespace zvx
