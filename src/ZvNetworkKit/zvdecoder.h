#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvModelKit/zvubobject.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvModelKit/zvubtimeline.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvmarketlist.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QByteArray>
#include <QDate>
#include <QHash>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

// What every answer begins with.
struct ZvEnvelope {
    QString status; // a word of the closed list, such as "ok" or "refused"
    QString message; // a sentence for the user where `status` is not "ok"
    QString reason; // a word for programs where `status` is "refused"
    QString boot; // the run of the service that its versions count in
    qint64 time = 0; // the service's clock, UTC milliseconds
    qint64 version = 0; // of the topic that was asked for; 0 without one

    // Refused because the session is over, or because there is none.
    bool isOfSession() const
    {
        return status == QLatin1String("session") || status == QLatin1String("elsewhere");
    }
};

// A topic in an answer: its data, or the word that they are to be asked for.
template <typename Value>
struct ZvTopicPart {
    qint64 version = 0;
    bool gap = false; // ask the topic's path
    bool unknown = false; // there is no such collection
    std::optional<Value> data;
};

// Whether the market is open, on which business date and in which session.
struct ZvMarketCheck {
    bool open = false;
    QDate tradingDay;
    int session = 0;

    bool operator==(const ZvMarketCheck &other) const
    {
        return open == other.open && tradingDay == other.tradingDay && session == other.session;
    }
    bool operator!=(const ZvMarketCheck &other) const { return !(*this == other); }
};

// A page of the deals of a session.
struct ZvDealPage {
    QString collectionId;
    int page = 0;
    QList<ZvUBDealItem> deals; // the oldest first
};

// The bank card of an account, or what stands for it until there is one.
struct ZvBankCard {
    bool isBound = false;
    QString picturePrefix; // prefix + name + "." + suffix is the address of a picture
    QString pictureName;
    QString pictureSuffix;
    QString tail; // the last digits of its number
    QString code; // for the account-opening QR picture, where none is bound
};

// Where money is moved in and out by hand.
struct ZvMoneyAddresses {
    QString in;
    QString out;
};

// What a sign-in has brought.
struct ZvSignIn {
    QString token; // fit for a header
    std::optional<ZvUBMyAcount> account; // where the answer has it
    QString flaw; // why it cannot be used, a sentence for the log; empty when it can
};

// What belongs to one collection.
template <typename Value>
struct ZvOfCollection {
    QString collectionId;
    Value value;
};

template <typename Value>
using ZvTopic = std::optional<ZvTopicPart<Value>>;

// A decoded answer: items with their texts, ready for the cache. The poll and the topics' own paths
// give the same; what was not in the answer is not set.
struct ZvReply {
    ZvEnvelope envelope;
    ZvTopic<QList<QPair<QString, QString>>> market;
    ZvTopic<QList<QPair<QString, QString>>> message;
    ZvTopic<ZvMarketCheck> check;
    ZvTopic<std::optional<ZvUBObject>> composite;
    ZvTopic<ZvUBBriefInfo> brief;
    ZvTopic<QList<QPair<QString, int>>> type;
    ZvTopic<ZvMarketList> list; // rows that are as they were share their memory
    ZvTopic<ZvOfCollection<ZvUBProItem>> item;
    ZvTopic<ZvOfCollection<ZvUBTopFive>> trade;
    ZvTopic<ZvOfCollection<QList<ZvUBDealItem>>> latest;
    ZvTopic<ZvUBCapInfo> cap;
    std::optional<ZvUBGatherInfo> gather;
    std::optional<ZvUBMyAcount> account;
    std::optional<QStringList> favourites; // ids of collections
    std::optional<ZvSignIn> signIn;
    std::optional<ZvUBTimeLine> timeLine;
    std::optional<ZvUBKLine> kLine;
    std::optional<ZvDealPage> detail;
    std::optional<ZvBankCard> bankCard;
    std::optional<ZvMoneyAddresses> moneyAddresses;
    std::optional<QList<ZvUBApplyItem>> applications; // made, or open to be made
    std::optional<QList<ZvUBMoneyFlowItem>> moneyFlows;
    std::optional<QList<ZvUBRevokeItem>> openOrders;
    std::optional<QList<ZvUBEntrustItem>> orders;
    std::optional<QList<ZvUBDealRecordItem>> dealRecords;
    std::optional<QList<ZvUBDeliveryRecordItem>> deliveries;
    QMap<QString, QString> texts; // the plain texts of an action's answer
};

// What an answer is to be read as.
struct ZvDecodeTask {
    enum Shape {
        Envelope, // nothing but the envelope
        Action, // texts
        SignIn,
        Poll,
        Market,
        Message,
        Check,
        Composite,
        Brief,
        Type,
        List,
        Item,
        Trade,
        Latest,
        Account,
        Cap,
        Gather,
        Favourites,
        TimeLine,
        KLine,
        Detail,
        BankCard,
        MoneyAddresses,
        OpenApplications,
        Applications,
        MoneyFlows,
        OpenOrders,
        Orders,
        DealRecords,
        Deliveries
    };

    Shape shape = Envelope;
    QString server; // prefix that was asked
    int exchange = 0; // another number is another exchange, whose versions are others too
};

// Turns answers into items. Every answer is hostile until it is decoded: it is refused as a whole
// when it is not UTF-8 JSON of the shape asked for, with exact integers where integers are due,
// without duplicate keys, within the bounds of size and depth. Unknown keys are skipped.
//
// Not shared between threads: it holds the rows of the market in view, onto which it lays the
// changes of a poll.
class ZVNETWORKKIT_EXPORT ZvDecoder
{
public:
    static constexpr int bodyBound = 8 * 1024 * 1024; // bytes
    static constexpr int depthBound = 16; // nested objects and arrays

    ZvDecoder();
    ~ZvDecoder();

    // True and `reply`, or false and a sentence for the log; the decoder's rows are then as they
    // were.
    bool decode(const QByteArray &body, const ZvDecodeTask &task, ZvReply &reply, QString &error);

private:
    struct State;
    std::unique_ptr<State> m_state;
};
