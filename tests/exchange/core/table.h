#pragma once

#include "exchange/core/market.h"

#include <string>
#include <string_view>
#include <vector>

namespace zvxtest {

/**
 * Plays tables of text on a market: one command or question a line, then '=' and what is expected.
 * Money is in yuan with two decimals, sides are `buy` and `sell`, keys are small numbers.
 *
 *     list COLLECTION CLOSE ISSUED [limit PPM] [tick FEN] [lot PIECES]
 *     account ID [PPM]            rate ID COLLECTION PPM        freeze ID on|off
 *     deposit ID MONEY [key K]    withdraw ID MONEY [key K]     grant ID COLLECTION PIECES UNITCOST
 *     buy|sell ID COLLECTION PRICE PIECES [key K] [freeing]     revoke ID NUMBER... [key K]
 *     phase open|closed           suspend COLLECTION on|off     settle DAY
 *     burn ID key K
 *     in|out ID MONEY [key K] [no-card|limit|day-limit]         bank NUMBER done|refused
 *     take ID COLLECTION PIECES [key K]                         keep ID NUMBER [key K]
 *     carrier NUMBER preparing|sent|refused|cancelled
 *
 * Answers are a status name, with the order's, transfer's or delivery's number behind one that was
 * accepted, as in "accepted 3", and the first answer behind "exists". Questions:
 *
 *     cash ID = AVAILABLE FROZEN               holding ID COLLECTION = PIECES FROZEN COST
 *     book COLLECTION = PRICExPIECES ... | PRICExPIECES ...      (buys | sells, the best first)
 *     day COLLECTION = OPEN HIGH LOW LAST VOLUME AMOUNT          limits COLLECTION = LOWER UPPER
 *     rules COLLECTION = PREVIOUSCLOSE SESSION DAY               orders ID = NUMBER:REMAINING ...
 *     fees = MONEY
 *     deals = BUYER<SELLER PRICExPIECES ...    (since they were asked the last time)
 *     done = NUMBER REASON ...                 (likewise)
 *     transfers = NUMBER:in|out:ID:MONEY ...   (those that wait for the bank)
 *     deliveries = NUMBER:ID:COLLECTION:PIECES[:preparing] ...   (those under way)
 *
 * After every line the audit must be content, and a second market that only hears the events must
 * have the same hash.
 */
class Table
{
public:
    explicit Table(const zvx::Limits &limits = {});

    void play(std::string_view text);

    zvx::Market &market() { return m_market; }
    const std::vector<zvx::Event> &events() const { return m_events; }

private:
    std::string answer(const std::vector<std::string> &words);
    std::string command(const std::vector<std::string> &words);
    std::string question(const std::vector<std::string> &words);

    zvx::Market m_market;
    zvx::Market m_listener;
    std::vector<zvx::Event> m_events;
    std::size_t m_asked = 0; ///< events up to here were shown by `deals`
    std::size_t m_askedDone = 0;
    std::int64_t m_now = 1'577'836'800'000;
};

/**
 * A table of an open market: collection 7 at 10.00 with so many pieces issued, and accounts from 1
 * on.
 */
class OpenMarket : public Table
{
public:
    explicit OpenMarket(int accounts, int issued = 100);
};

} // namespace zvxtest
