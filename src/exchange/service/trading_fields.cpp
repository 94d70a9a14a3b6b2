#include "exchange/service/trading_fields.h"

#include "exchange/service/parameters.h"

#include <algorithm>

namespace zvx {

std::variant<PlaceOrder, WrongField> readOrderForm(const HttpParameters &fields, Side side)
{
    ParameterReader read(fields);
    const auto collection = read.collection();
    // What is too high for the collection, or for any, is for the market to refuse in words.
    const auto price = read.integer("price", 1, kAmountBound);
    const auto quantity = read.integer("quantity", 1, kAmountBound);
    const bool prepared = read.integer("prepared", 1, 1).has_value();
    if (!read.fault().empty())
        return read.fault();
    if (!collection)
        return "collection";
    if (!price)
        return "price";
    if (!quantity)
        return "quantity";
    PlaceOrder order;
    order.collection = *collection;
    order.side = side;
    order.price = Fen(*price);
    order.quantity = Quantity(*quantity);
    order.refusalFreesKey = prepared;
    return order;
}

std::vector<OrderNumber> readOrderNumbers(std::string_view text)
{
    std::vector<OrderNumber> numbers;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto number = readInteger(text.substr(begin, end - begin), 1, OrderNumber::most);
        if (!number || numbers.size() >= mostRevokes)
            return {};
        numbers.push_back(OrderNumber(*number));
        begin = end + 1;
    }
    std::vector<OrderNumber> sorted = numbers;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
        return {};
    return numbers;
}

} // namespace zvx
