#include "exchange/service/wire_answers.h"

#include "exchange/service/parameters.h"

namespace zvx {

WireAnswers::WireAnswers(const Envelope &envelope) : m_envelope(envelope) { }

HttpAnswer WireAnswers::done(HttpFragment parts) const
{
    static const HttpFragment end = std::make_shared<const std::string>("}");
    HttpAnswer answer;
    answer.body = {std::make_shared<const std::string>(m_envelope.open(WireStatus::Ok) + ','),
                   std::move(parts), end};
    return answer;
}

HttpAnswer WireAnswers::doneWith(std::string_view data) const
{
    return HttpAnswer::of(
        httpStatus(WireStatus::Ok),
        m_envelope.open(WireStatus::Ok).append(",\"data\":").append(data).append("}"));
}

HttpAnswer WireAnswers::refused(std::string_view reason, std::string_view message) const
{
    return m_envelope.refusal(WireStatus::Refused, message, reason);
}

HttpAnswer WireAnswers::badParameter(std::string_view name) const
{
    return m_envelope.refusal(WireStatus::BadRequest,
                              std::string("参数 ").append(name).append(" 不正确。"), name);
}

HttpAnswer WireAnswers::misread(const ParameterReader &read) const
{
    return read.fault().empty() ? wrongProtocol() : badParameter(read.fault());
}

HttpAnswer WireAnswers::wrongProtocol() const
{
    return m_envelope.refusal(WireStatus::Protocol, "客户端与服务的协议版本不同，请更新客户端。");
}

HttpAnswer WireAnswers::notFound() const
{
    return m_envelope.refusal(WireStatus::NotFound, "没有这个地址。");
}

HttpAnswer WireAnswers::unknownCollection() const
{
    return m_envelope.refusal(WireStatus::NotFound, "没有这个藏品。");
}

HttpAnswer WireAnswers::unknownCode() const
{
    return m_envelope.refusal(WireStatus::NotFound, "二维码已失效，请重新获取。");
}

HttpAnswer WireAnswers::wrongMethod(std::string_view allowed) const
{
    HttpAnswer answer = m_envelope.refusal(WireStatus::Method, "此地址不支持这种请求方法。");
    answer.allow = allowed;
    return answer;
}

HttpAnswer WireAnswers::signInNeeded() const
{
    return m_envelope.refusal(WireStatus::Session, "登录已失效，请重新登录。");
}

HttpAnswer WireAnswers::signedInElsewhere() const
{
    return m_envelope.refusal(WireStatus::Elsewhere, "您的账号已在别处登录。");
}

HttpAnswer WireAnswers::busy() const
{
    return m_envelope.refusal(WireStatus::Busy, "服务繁忙，请稍后再试。");
}

HttpAnswer WireAnswers::stopping() const
{
    HttpAnswer answer = m_envelope.refusal(WireStatus::Failed, "服务正在停止，请稍后再试。");
    answer.close = true;
    return answer;
}

} // namespace zvx
