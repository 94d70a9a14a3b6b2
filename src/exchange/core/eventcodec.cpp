#include "exchange/core/eventcodec.h"

#include "exchange/core/bytes.h"
#include "exchange/core/faults.h"

#include <utility>

namespace zvx {

namespace {

// The fields of every event, named once: encoding, decoding and describing all walk these lists.

template <class V>
void fields(CollectionListed &e, V &v)
{
    v("at", e.at), v("collection", e.collection), v("previousClose", e.previousClose),
        v("issued", e.issued), v("limit", e.limit), v("tick", e.tick), v("lot", e.lot),
        v("lower", e.lower), v("upper", e.upper);
}
template <class V>
void fields(CollectionSuspended &e, V &v)
{
    v("at", e.at), v("collection", e.collection), v("suspended", e.suspended);
}
template <class V>
void fields(AccountOpened &e, V &v)
{
    v("at", e.at), v("account", e.account), v("fee", e.fee);
}
template <class V>
void fields(AccountFrozen &e, V &v)
{
    v("at", e.at), v("account", e.account), v("frozen", e.frozen);
}
template <class V>
void fields(FeeRateSet &e, V &v)
{
    v("at", e.at), v("account", e.account), v("collection", e.collection), v("fee", e.fee);
}
template <class V>
void fields(CashMoved &e, V &v)
{
    v("at", e.at), v("account", e.account), v("amount", e.amount), v("available", e.available);
}
template <class V>
void fields(HoldingMoved &e, V &v)
{
    v("at", e.at), v("account", e.account), v("collection", e.collection),
        v("quantity", e.quantity), v("cost", e.cost), v("held", e.held);
}
template <class V>
void fields(OrderAccepted &e, V &v)
{
    v("at", e.at), v("order", e.order), v("account", e.account), v("collection", e.collection),
        v("side", e.side), v("price", e.price), v("quantity", e.quantity), v("fee", e.fee),
        v("frozenCash", e.frozenCash), v("feeCap", e.feeCap);
}
template <class V>
void fields(Deal &e, V &v)
{
    v("at", e.at), v("sequence", e.sequence), v("collection", e.collection), v("maker", e.maker),
        v("taker", e.taker), v("takerSide", e.takerSide), v("buyer", e.buyer),
        v("seller", e.seller), v("price", e.price), v("quantity", e.quantity),
        v("buyerFee", e.buyerFee), v("sellerFee", e.sellerFee), v("released", e.released);
}
template <class V>
void fields(OrderDone &e, V &v)
{
    v("at", e.at), v("order", e.order), v("account", e.account), v("collection", e.collection),
        v("reason", e.reason), v("unfilled", e.unfilled), v("releasedCash", e.releasedCash),
        v("releasedPieces", e.releasedPieces);
}
template <class V>
void fields(ActionAnswered &e, V &v)
{
    v("at", e.at), v("account", e.account), v("key", e.key), v("fingerprint", e.fingerprint),
        v("status", e.status), v("order", e.order), v("revoked", e.revoked);
}
template <class V>
void fields(CollectionSettled &e, V &v)
{
    v("at", e.at), v("collection", e.collection), v("day", e.day), v("session", e.session),
        v("open", e.open), v("high", e.high), v("low", e.low), v("last", e.last),
        v("volume", e.volume), v("amount", e.amount), v("previousClose", e.previousClose),
        v("lower", e.lower), v("upper", e.upper);
}
template <class V>
void fields(DaySettled &e, V &v)
{
    v("at", e.at), v("day", e.day), v("session", e.session);
}
template <class V>
void fields(PhaseSet &e, V &v)
{
    v("at", e.at), v("open", e.open);
}

template <class V>
void fields(TransferBegun &e, V &v)
{
    v("at", e.at), v("transfer", e.transfer), v("account", e.account), v("incoming", e.incoming),
        v("amount", e.amount), v("available", e.available), v("bank", e.bank), v("card", e.card),
        v("key", e.key);
}
template <class V>
void fields(TransferEnded &e, V &v)
{
    v("at", e.at), v("transfer", e.transfer), v("account", e.account), v("incoming", e.incoming),
        v("amount", e.amount), v("done", e.done), v("available", e.available);
}

template <class V>
void fields(DeliveryRequested &e, V &v)
{
    v("at", e.at), v("delivery", e.delivery), v("account", e.account),
        v("collection", e.collection), v("quantity", e.quantity), v("parcel", e.parcel),
        v("key", e.key);
}
template <class V>
void fields(DeliveryMoved &e, V &v)
{
    v("at", e.at), v("delivery", e.delivery), v("account", e.account),
        v("collection", e.collection), v("quantity", e.quantity), v("stage", e.stage),
        v("cost", e.cost);
}

template <class Enum>
struct Last;
template <>
struct Last<Side> {
    static constexpr Side value = Side::Sell;
};
template <>
struct Last<DoneReason> {
    static constexpr DoneReason value = DoneReason::SelfTrade;
};
template <>
struct Last<Status> {
    static constexpr Status value = kLastStatus;
};
template <>
struct Last<DeliveryStage> {
    static constexpr DeliveryStage value = kLastStage;
};

class FieldWriter
{
public:
    explicit FieldWriter(std::string &out) : m_writer(out) { }

    template <class Tag>
    void operator()(const char *, Number<Tag> value)
    {
        m_writer.put(value);
    }
    template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>>
    void operator()(const char *, Enum value)
    {
        m_writer.byte(static_cast<std::uint8_t>(value));
    }
    void operator()(const char *, bool value) { m_writer.byte(value ? 1 : 0); }
    void operator()(const char *, ActionKey value)
    {
        m_writer.fixed(value.high);
        m_writer.fixed(value.low);
    }
    void operator()(const char *, std::uint64_t value) { m_writer.fixed(value); }
    void operator()(const char *, std::int64_t value)
    {
        m_writer.number(static_cast<std::uint64_t>(value));
    }

private:
    core::Writer m_writer;
};

class FieldReader
{
public:
    explicit FieldReader(core::Reader &reader) : m_reader(reader) { }

    bool good() const { return m_good; }

    template <class Tag>
    void operator()(const char *, Number<Tag> &value)
    {
        m_good = m_good && m_reader.get(value);
    }
    template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>>
    void operator()(const char *, Enum &value)
    {
        std::uint8_t raw = 0;
        m_good
            = m_good && m_reader.byte(raw) && raw <= static_cast<std::uint8_t>(Last<Enum>::value);
        if (m_good)
            value = static_cast<Enum>(raw);
    }
    void operator()(const char *, bool &value)
    {
        std::uint8_t raw = 0;
        m_good = m_good && m_reader.byte(raw) && raw <= 1;
        value = raw == 1;
    }
    void operator()(const char *, ActionKey &value)
    {
        m_good = m_good && m_reader.fixed(value.high) && m_reader.fixed(value.low);
    }
    void operator()(const char *, std::uint64_t &value)
    {
        m_good = m_good && m_reader.fixed(value);
    }
    void operator()(const char *, std::int64_t &value)
    {
        std::uint64_t raw = 0;
        m_good = m_good && m_reader.number(raw) && raw <= std::uint64_t(kAmountBound);
        if (m_good)
            value = static_cast<std::int64_t>(raw);
    }

private:
    core::Reader &m_reader;
    bool m_good = true;
};

class FieldPrinter
{
public:
    explicit FieldPrinter(std::string &out) : m_out(out) { }

    template <class Tag>
    void operator()(const char *name, Number<Tag> value)
    {
        print(name, std::to_string(value.value()));
    }
    template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>>
    void operator()(const char *name, Enum value)
    {
        print(name, std::to_string(static_cast<int>(value)));
    }
    void operator()(const char *name, bool value) { print(name, value ? "yes" : "no"); }
    void operator()(const char *name, ActionKey value)
    {
        print(name, std::to_string(value.high) + ':' + std::to_string(value.low));
    }
    void operator()(const char *name, std::uint64_t value) { print(name, std::to_string(value)); }
    void operator()(const char *name, std::int64_t value) { print(name, std::to_string(value)); }

private:
    void print(const char *name, const std::string &value)
    {
        m_out += ' ';
        m_out += name;
        m_out += '=';
        m_out += value;
    }

    std::string &m_out;
};

const char *kindName(const Event &event)
{
    static constexpr const char *names[] = {"CollectionListed",
                                            "CollectionSuspended",
                                            "AccountOpened",
                                            "AccountFrozen",
                                            "FeeRateSet",
                                            "CashMoved",
                                            "HoldingMoved",
                                            "OrderAccepted",
                                            "Deal",
                                            "OrderDone",
                                            "ActionAnswered",
                                            "CollectionSettled",
                                            "DaySettled",
                                            "PhaseSet",
                                            "TransferBegun",
                                            "TransferEnded",
                                            "DeliveryRequested",
                                            "DeliveryMoved"};
    static_assert(std::size(names) == std::variant_size_v<Event>);
    return names[event.index()];
}

template <std::size_t Kind>
bool decodeKind(core::Reader &reader, Event &event)
{
    std::variant_alternative_t<Kind, Event> body{};
    FieldReader read(reader);
    fields(body, read);
    if (read.good())
        event = body;
    return read.good();
}

using KindDecoder = bool (*)(core::Reader &, Event &);

template <std::size_t... Kinds>
bool decodeBody(std::size_t kind, core::Reader &reader, Event &event, std::index_sequence<Kinds...>)
{
    static constexpr KindDecoder decoders[] = {&decodeKind<Kinds>...};
    return kind < sizeof...(Kinds) && decoders[kind](reader, event);
}

} // namespace

void encode(const Event &event, std::string &out)
{
    core::Writer head(out);
    head.byte(kEventVersion);
    head.byte(static_cast<std::uint8_t>(event.index()));
    FieldWriter write(out);
    std::visit(
        [&write](auto body) {
            if constexpr (std::is_same_v<decltype(body), Deal>) {
                if (fault("encoding-loses-release"))
                    body.released = Fen(0);
            }
            fields(body, write);
        },
        event);
}

bool decode(std::string_view &bytes, Event &event)
{
    core::Reader reader(bytes);
    std::uint8_t version = 0;
    std::uint8_t kind = 0;
    if (!reader.byte(version) || version != kEventVersion || !reader.byte(kind))
        return false;
    if (!decodeBody(kind, reader, event, std::make_index_sequence<std::variant_size_v<Event>>()))
        return false;
    bytes = reader.rest();
    return true;
}

bool sameEvent(const Event &a, const Event &b)
{
    std::string left;
    std::string right;
    encode(a, left);
    encode(b, right);
    return left == right;
}

std::string describe(const Event &event)
{
    std::string out = kindName(event);
    FieldPrinter print(out);
    std::visit([&print](auto body) { fields(body, print); }, event);
    return out;
}

} // namespace zvx
