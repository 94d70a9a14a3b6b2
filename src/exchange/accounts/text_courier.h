#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/accounts/secret.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace zvx {

class TextGateway;

/// A message for the gateway. One without a text is carried like the others and not handed over.
struct TextMessage {
    std::string phone;
    Secret text;
};

/// Hands text messages to the gateway on a thread of its own: an answer must not wait for the
/// gateway, and its time must not tell whether there was a message.
class TextCourier
{
public:
    TextCourier(std::shared_ptr<TextGateway> gateway, AccountCounters &counters,
                std::function<void(const std::string &)> notice);
    ~TextCourier();

    TextCourier(const TextCourier &) = delete;
    TextCourier &operator=(const TextCourier &) = delete;

    void take(TextMessage message);
    std::size_t waiting() const;

    /// Sends what waits and ends the thread. Idempotent.
    void stop();

private:
    void run();
    void send(const TextMessage &message);

    std::shared_ptr<TextGateway> m_gateway;
    AccountCounters &m_counters;
    std::function<void(const std::string &)> m_notice;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<TextMessage> m_queue;
    bool m_stopped = false;
    std::thread m_thread;
};

} // namespace zvx
