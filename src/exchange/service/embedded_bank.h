#pragma once

#include "exchange/service/bank_gateway.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace zvx {

class Clock;
class TextGateway;

/// Which transfers the embedded bank refuses.
enum class BankRefusal : std::uint8_t { None, In, Out, All };

struct EmbeddedBankOptions {
    std::filesystem::path folder; ///< has to exist
    std::int64_t delay = 0; ///< ms from a question to its answer
    BankRefusal refusal = BankRefusal::None;
    std::shared_ptr<Clock> clock; ///< the machine's without it
    std::shared_ptr<TextGateway> outbox; ///< an Outbox in the folder without it
    /// A line for the operator's log.
    std::function<void(const std::string &line)> notice;
};

/**
 * The bank of an exchange without one: it carries out what it is asked for, or refuses it where it
 * was told to, and says in the outbox what it did.
 *
 * Its words stand in `bank.ledger`, a line each, before anybody hears them, so that an id has the
 * same word after a restart. What it was asked for and did not answer yet is forgotten then, and
 * the exchange asks again. Where the ledger cannot be written it stays silent.
 */
class EmbeddedBank : public BankGateway
{
public:
    static constexpr const char *kFileName = "bank.ledger";

    /// Reads the ledger. Throws std::runtime_error where it cannot be read or holds something else.
    explicit EmbeddedBank(EmbeddedBankOptions options);
    /// Questions that wait stay without an answer.
    ~EmbeddedBank() override;

    void ask(const BankOrder &order, Answered answered) override;

private:
    class Counter;
    std::unique_ptr<Counter> m_counter;
};

} // namespace zvx
