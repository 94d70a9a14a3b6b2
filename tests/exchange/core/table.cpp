#include "exchange/core/table.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace zvx;

namespace zvxtest {

namespace {

std::int64_t number(const std::string &text)
{
    return std::stoll(text);
}

Fen money(const std::string &text)
{
    const std::size_t dot = text.find('.');
    if (dot == std::string::npos || text.size() != dot + 3)
        throw std::invalid_argument("money has two decimals: " + text);
    std::string digits = text;
    digits.erase(dot, 1);
    return Fen(number(digits));
}

std::string yuan(Fen amount)
{
    std::ostringstream out;
    const std::int64_t cents = amount.value() % 100;
    out << amount.value() / 100 << '.' << (cents < 10 ? "0" : "") << cents;
    return out.str();
}

/** The word behind `name`, or `otherwise`. */
std::string option(const std::vector<std::string> &words, const std::string &name,
                   const std::string &otherwise)
{
    for (std::size_t i = 1; i + 1 < words.size(); ++i) {
        if (words[i] == name)
            return words[i + 1];
    }
    return otherwise;
}

ActionKey key(const std::vector<std::string> &words)
{
    return {0, static_cast<std::uint64_t>(number(option(words, "key", "0")))};
}

std::vector<std::string> split(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}

std::string joined(const std::vector<std::string> &words)
{
    std::string line;
    for (const std::string &word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

} // namespace

Table::Table(const Limits &limits)
    : m_market(TradingDay(20'200'101), limits), m_listener(TradingDay(20'200'101), limits)
{
}

void Table::play(std::string_view text)
{
    std::istringstream in{std::string(text)};
    for (std::string line; std::getline(in, line);) {
        const std::size_t equals = line.find('=');
        const std::vector<std::string> words = split(line.substr(0, equals));
        if (words.empty())
            continue;
        SCOPED_TRACE(line);
        ASSERT_NE(equals, std::string::npos) << "a line without an expectation";
        const std::size_t before = m_events.size();
        EXPECT_EQ(answer(words), joined(split(line.substr(equals + 1))));
        for (std::size_t i = before; i < m_events.size(); ++i)
            m_listener.replay(m_events[i]);
        EXPECT_EQ(m_market.audit().value_or("content"), "content");
        EXPECT_EQ(m_listener.stateHash(), m_market.stateHash());
    }
}

OpenMarket::OpenMarket(int accounts, int issued)
{
    std::ostringstream head;
    head << "list 7 10.00 " << issued << " = accepted\n";
    for (int id = 1; id <= accounts; ++id)
        head << "account " << id << " = accepted\n";
    head << "phase open = accepted\n";
    play(head.str());
}

std::string Table::answer(const std::vector<std::string> &words)
{
    for (const char *name : {"cash", "holding", "book", "day", "limits", "orders", "fees", "deals",
                             "rules", "done", "transfers", "deliveries"}) {
        if (words.front() == name)
            return question(words);
    }
    return command(words);
}

std::string Table::command(const std::vector<std::string> &words)
{
    const std::string &verb = words.front();
    const auto at = [&words](std::size_t i) { return number(words.at(i)); };
    const auto on = [&words](std::size_t i) { return words.at(i) == "on"; };
    Command body;
    if (verb == "list") {
        ListCollection listing;
        listing.collection = CollectionId(at(1));
        listing.previousClose = money(words.at(2));
        listing.issued = Quantity(at(3));
        listing.limit = PartsPerMillion(number(option(words, "limit", "100000")));
        listing.tick = Fen(number(option(words, "tick", "1")));
        listing.lot = Quantity(number(option(words, "lot", "1")));
        body = listing;
    } else if (verb == "account") {
        OpenAccount account;
        account.account = AccountId(at(1));
        if (words.size() > 2)
            account.fee = PartsPerMillion(at(2));
        body = account;
    } else if (verb == "rate") {
        body = SetFeeRate{AccountId(at(1)), CollectionId(at(2)), PartsPerMillion(at(3))};
    } else if (verb == "freeze") {
        body = FreezeAccount{AccountId(at(1)), on(2)};
    } else if (verb == "deposit") {
        body = Deposit{AccountId(at(1)), money(words.at(2)), key(words)};
    } else if (verb == "withdraw") {
        body = Withdraw{AccountId(at(1)), money(words.at(2)), key(words)};
    } else if (verb == "grant") {
        body = GrantHolding{AccountId(at(1)), CollectionId(at(2)), Quantity(at(3)),
                            money(words.at(4)), key(words)};
    } else if (verb == "buy" || verb == "sell") {
        PlaceOrder order;
        order.account = AccountId(at(1));
        order.collection = CollectionId(at(2));
        order.side = verb == "buy" ? Side::Buy : Side::Sell;
        order.price = money(words.at(3));
        order.quantity = Quantity(at(4));
        order.key = key(words);
        order.refusalFreesKey = words.back() == "freeing";
        body = order;
    } else if (verb == "revoke") {
        RevokeOrders revoke;
        revoke.account = AccountId(at(1));
        for (std::size_t i = 2; i < words.size() && words[i] != "key"; ++i)
            revoke.orders.push_back(OrderNumber(at(i)));
        revoke.key = key(words);
        body = revoke;
    } else if (verb == "burn") {
        body = BurnKey{AccountId(at(1)), key(words)};
    } else if (verb == "in" || verb == "out") {
        BeginTransfer transfer;
        transfer.account = AccountId(at(1));
        transfer.incoming = verb == "in";
        transfer.amount = money(words.at(2));
        transfer.bank = {1, static_cast<std::uint64_t>(m_now)};
        transfer.card = 7;
        transfer.key = key(words);
        transfer.ruling = words.back() == "no-card" ? Status::NoBankCard
            : words.back() == "limit"               ? Status::AboveTransferLimit
            : words.back() == "day-limit"           ? Status::AboveDayLimit
                                                    : Status::Accepted;
        body = transfer;
    } else if (verb == "bank") {
        body = EndTransfer{TransferNumber(at(1)), words.at(2) == "done"};
    } else if (verb == "take") {
        body = RequestDelivery{AccountId(at(1)), CollectionId(at(2)), Quantity(at(3)),
                               ParcelId{1, static_cast<std::uint64_t>(m_now)}, key(words)};
    } else if (verb == "keep") {
        body = CancelDelivery{AccountId(at(1)), DeliveryNumber(at(2)), key(words)};
    } else if (verb == "carrier") {
        const std::string &word = words.at(2);
        body = AdvanceDelivery{DeliveryNumber(at(1)),
                               word == "preparing"     ? DeliveryStage::Preparing
                                   : word == "sent"    ? DeliveryStage::Sent
                                   : word == "refused" ? DeliveryStage::Refused
                                                       : DeliveryStage::Cancelled};
    } else if (verb == "phase") {
        body = SetPhase{words.at(1) == "open"};
    } else if (verb == "suspend") {
        body = SuspendCollection{CollectionId(at(1)), on(2)};
    } else if (verb == "settle") {
        body = SettleDay{TradingDay(at(1))};
    } else {
        return "no such verb: " + verb;
    }

    const Result result = m_market.apply(body, TimeMs(++m_now), m_events);
    std::string text = name(result.status);
    if (result.status == Status::Exists)
        text += std::string(" ") + name(result.first);
    if (result.order != OrderNumber(0))
        text += ' ' + std::to_string(result.order.value());
    if (std::holds_alternative<BeginTransfer>(body) && result.transfer != TransferNumber(0))
        text += ' ' + std::to_string(result.transfer.value());
    if (std::holds_alternative<RequestDelivery>(body) && result.delivery != DeliveryNumber(0))
        text += ' ' + std::to_string(result.delivery.value());
    if (std::holds_alternative<RevokeOrders>(body) && result.revoked > 0)
        text += ' ' + std::to_string(result.revoked);
    return text;
}

std::string Table::question(const std::vector<std::string> &words)
{
    const std::string &verb = words.front();
    const std::int64_t id = words.size() > 1 ? number(words[1]) : 0;
    std::ostringstream out;
    if (verb == "cash") {
        const auto account = m_market.account(AccountId(id));
        if (account)
            out << yuan(account->available) << ' ' << yuan(account->frozenCash);
    } else if (verb == "holding") {
        const HoldingView holding
            = m_market.holding(AccountId(id), CollectionId(number(words.at(2))));
        out << holding.quantity.value() << ' ' << holding.frozen.value() << ' '
            << yuan(holding.cost);
    } else if (verb == "book") {
        std::vector<Level> levels;
        m_market.levels(CollectionId(id), Side::Buy, 100, levels);
        for (const Level &level : levels)
            out << yuan(level.price) << 'x' << level.quantity.value() << ' ';
        out << "| ";
        m_market.levels(CollectionId(id), Side::Sell, 100, levels);
        for (const Level &level : levels)
            out << yuan(level.price) << 'x' << level.quantity.value() << ' ';
    } else if (verb == "day") {
        const auto facts = m_market.collection(CollectionId(id));
        if (facts)
            out << yuan(facts->day.open) << ' ' << yuan(facts->day.high) << ' '
                << yuan(facts->day.low) << ' ' << yuan(facts->day.last) << ' '
                << facts->day.volume.value() << ' ' << yuan(facts->day.amount);
    } else if (verb == "limits") {
        const auto facts = m_market.collection(CollectionId(id));
        if (facts)
            out << yuan(facts->day.lower) << ' ' << yuan(facts->day.upper);
    } else if (verb == "rules") {
        const auto facts = m_market.collection(CollectionId(id));
        if (facts)
            out << yuan(facts->day.previousClose) << ' ' << m_market.session().value() << ' '
                << m_market.day().value();
    } else if (verb == "orders") {
        std::vector<OrderView> orders;
        m_market.ordersOf(AccountId(id), orders);
        for (const OrderView &order : orders)
            out << order.order.value() << ':' << order.remaining.value() << ' ';
    } else if (verb == "fees") {
        out << yuan(m_market.feesEarned());
    } else if (verb == "deals") {
        for (; m_asked < m_events.size(); ++m_asked) {
            if (const auto *deal = std::get_if<Deal>(&m_events[m_asked]))
                out << deal->buyer.value() << '<' << deal->seller.value() << ' '
                    << yuan(deal->price) << 'x' << deal->quantity.value() << ' ';
        }
    } else if (verb == "transfers") {
        std::vector<TransferView> transfers;
        m_market.transfers(transfers);
        for (const TransferView &transfer : transfers)
            out << transfer.transfer.value() << ':' << (transfer.incoming ? "in" : "out") << ':'
                << transfer.account.value() << ':' << yuan(transfer.amount) << ' ';
    } else if (verb == "deliveries") {
        std::vector<DeliveryView> deliveries;
        m_market.deliveries(deliveries);
        for (const DeliveryView &delivery : deliveries)
            out << delivery.delivery.value() << ':' << delivery.account.value() << ':'
                << delivery.collection.value() << ':' << delivery.quantity.value()
                << (delivery.stage == DeliveryStage::Preparing ? ":preparing" : "") << ' ';
    } else if (verb == "done") {
        static constexpr const char *reasons[] = {"filled", "revoked", "ended", "self-trade"};
        for (; m_askedDone < m_events.size(); ++m_askedDone) {
            if (const auto *done = std::get_if<OrderDone>(&m_events[m_askedDone]))
                out << done->order.value() << ' ' << reasons[static_cast<int>(done->reason)] << ' ';
        }
    }
    return joined(split(out.str()));
}

} // namespace zvxtest
