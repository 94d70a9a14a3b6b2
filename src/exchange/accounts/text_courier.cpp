#include "exchange/accounts/text_courier.h"

#include "exchange/accounts/text_gateway.h"

#include <exception>
#include <utility>

namespace zvx {

TextCourier::TextCourier(std::shared_ptr<TextGateway> gateway, AccountCounters &counters,
                         std::function<void(const std::string &)> notice)
    : m_gateway(std::move(gateway)), m_counters(counters), m_notice(std::move(notice)),
      m_thread([this] { run(); })
{
}

TextCourier::~TextCourier()
{
    stop();
}

void TextCourier::take(TextMessage message)
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_queue.push_back(std::move(message));
    }
    m_wake.notify_one();
}

std::size_t TextCourier::waiting() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_queue.size();
}

void TextCourier::stop()
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_stopped = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void TextCourier::run()
{
    for (;;) {
        TextMessage message;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopped || !m_queue.empty(); });
            if (m_queue.empty())
                return;
            message = std::move(m_queue.front());
            m_queue.pop_front();
        }
        if (!message.text.empty())
            send(message);
    }
}

void TextCourier::send(const TextMessage &message)
{
    try {
        m_gateway->send(message.phone, message.text.text());
        ++m_counters.texts;
    } catch (const std::exception &error) {
        ++m_counters.textsFailed;
        if (m_notice)
            m_notice(std::string("a text message was not sent: ") + error.what());
    }
}

} // namespace zvx
