#include "ZvNetworkKit/zvserveractionresult.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvfavouritesync.h"
#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QHash>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cmath>
#include <optional>

namespace {

using Result = ZvServerActionResult;

ZvExchangeLink *theLink()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance()->link();
}

// From here on a float does not tell every fen from the next.
constexpr float priceBound = 131072.0F;

// Fen of a price in yuan. A float that does not come back the same holds more than two decimals.
std::optional<qint64> fenOfPrice(float price)
{
    if (!std::isfinite(price) || price <= 0.0F || price >= priceBound)
        return std::nullopt;
    const qint64 fen = std::llround(static_cast<double>(price) * 100.0);
    if (static_cast<float>(static_cast<double>(fen) / 100.0) != price)
        return std::nullopt;
    return fen;
}

// Fen of an amount such as "12", "12.5" or "12.50".
std::optional<qint64> fenOfAmount(const QString &amount)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,13})(?:\\.([0-9]{1,2}))?\\z"));
    const QRegularExpressionMatch match = form.match(amount.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 fen = match.captured(1).toLongLong() * 100
        + match.captured(2).leftJustified(2, QLatin1Char('0')).toLongLong();
    return fen > 0 ? std::optional<qint64>(fen) : std::nullopt;
}

// Names this client to the exchange, so that its own second sign-in is none from elsewhere.
QString clientName()
{
    static const QString name = QStringLiteral("%1").arg(QRandomGenerator::system()->generate64(),
                                                         16, 16, QLatin1Char('0'));
    return name;
}

// Pages reload as soon as they hear of a sign-in, so session and account are in place before.
bool keepSignIn(const ZvReply &reply)
{
    const ZvSignIn &signIn = *reply.signIn;
    if (!signIn.flaw.isEmpty()) {
        qCWarning(zvNetworkLog).noquote().nospace()
            << "The answer of " << zvPath_login << " is refused: " << signIn.flaw;
        return false;
    }
    theLink()->setToken(signIn.token.toLatin1());
    ZvServerCache::getZvServerCacheInstance()->storeSignIn(signIn.account.value_or(ZvUBMyAcount()));
    return true;
}

// The exchange withdraws no more in one request.
constexpr int mostRevokes = 200;

const QString invalidPrice = QStringLiteral("价格无效，请输入大于零且不超过两位小数的价格");
const QString tooHighPrice = QStringLiteral("价格过高，最高可委托价格为131071.99元");
const QString invalidCount = QStringLiteral("数量无效，请输入大于零的数量");
const QString invalidAmount = QStringLiteral("金额无效，请输入大于零且不超过两位小数的金额");

} // namespace

class ZvServerActionResult::Private
{
public:
    explicit Private(Result *result)
        : q(result), queue(theLink(), &checks), favourites(theLink(), &checks),
          sync(theLink(), &favourites)
    {
    }

    // An action whose end is told by two signals without anything of the answer.
    ZvAction action(const QString &path, const ZvRequest::Parameters &parameters,
                    void (Result::*succeeded)(), void (Result::*failed)(QString))
    {
        ZvAction made;
        made.path = path;
        made.parameters = parameters;
        made.succeed = [this, succeeded](const ZvReply &) { emit(q->*succeeded)(); };
        made.fail = [this, failed](const QString &message) { emit(q->*failed)(message); };
        return made;
    }

    void send(const ZvIntent &intent, const QString &path, const ZvRequest::Parameters &parameters,
              void (Result::*succeeded)(), void (Result::*failed)(QString))
    {
        ZvAction made = action(path, parameters, succeeded, failed);
        made.intent = intent;
        queue.enqueue(made);
    }

    // What a user does who may not have a session yet.
    void sendUnsigned(const QString &path, const ZvRequest::Parameters &parameters,
                      void (Result::*succeeded)(), void (Result::*failed)(QString))
    {
        ZvAction made = action(path, parameters, succeeded, failed);
        made.isOfSession = false;
        queue.enqueue(made);
    }

    void sendFavourite(const QString &path, const QString &collectionId,
                       void (Result::*succeeded)(), void (Result::*failed)(QString))
    {
        favourites.enqueue(
            action(path, {{QStringLiteral("collection"), collectionId}}, succeeded, failed));
    }

    // Adds collection, price and quantity of an order and sends it, or ends it where they are none.
    void sendOrder(ZvAction order, ZvIntent::Matter matter, const QString &collectionId,
                   float price, int count)
    {
        order.intent = {matter, order.path == zvPath_trade_buy ? 1 : 2, collectionId};
        const std::optional<qint64> fen = fenOfPrice(price);
        if (!fen || count <= 0) {
            queue.fail(order,
                       fen                       ? invalidCount
                           : price >= priceBound ? tooHighPrice
                                                 : invalidPrice);
            return;
        }
        order.parameters.append({QStringLiteral("collection"), collectionId});
        order.parameters.append({QStringLiteral("price"), QString::number(*fen)});
        order.parameters.append({QStringLiteral("quantity"), QString::number(count)});
        queue.enqueue(order);
    }

    // The same for the amount of a transfer.
    void sendTransfer(ZvAction transfer, const QString &amount)
    {
        const std::optional<qint64> fen = fenOfAmount(amount);
        if (!fen) {
            queue.fail(transfer, invalidAmount);
            return;
        }
        transfer.intent.matter = ZvIntent::Transfer;
        transfer.parameters.prepend({QStringLiteral("amount"), QString::number(*fen)});
        queue.enqueue(transfer);
    }

    Result *q;
    ZvActionChecks checks;
    ZvActionQueue queue;

    // A row of their own: no order waits for a favourite.
    ZvActionQueue favourites;
    ZvFavouriteSync sync;

    // Prepared orders that are under way (false) or have succeeded (true).
    QHash<QString, bool> prepared;

    // Keys of prepared orders whose end is not known: sent again under its key, an order that has
    // arrived after all is not made twice.
    QHash<QString, QString> lost;
};

ZvServerActionResult *ZvServerActionResult::getZvServerActionResultInstance()
{
    return ZvKitSingleton<ZvServerActionResult, ZvKitEnd::Actions>::get();
}

ZvServerActionResult::ZvServerActionResult() : d(std::make_unique<Private>(this)) { }

ZvServerActionResult::~ZvServerActionResult() = default;

void ZvServerActionResult::sendRequest_login(QString phone, QString password)
{
    zvtrace::call("ZvServerActionResult::sendRequest_login", phone, zvtrace::Secret{password});
    ZvAction login;
    login.path = zvPath_login;
    login.parameters = {{QStringLiteral("phone"), phone},
                        {QStringLiteral("password"), password},
                        {QStringLiteral("client"), clientName()}};
    login.shape = ZvDecodeTask::SignIn;
    login.isOfSession = false;
    login.keep = keepSignIn;
    login.succeed = [this](const ZvReply &) { emit signal_login_succeed(); };
    login.fail = [this](const QString &message) { emit signal_login_failed(message); };
    d->queue.enqueue(login);
}

void ZvServerActionResult::sendRequest_register_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_register_sendCode", phone);
    d->sendUnsigned(zvPath_reg_send, {{QStringLiteral("phone"), phone}},
                    &Result::signal_register_sendCode_succeed,
                    &Result::signal_register_sendCode_failed);
}

void ZvServerActionResult::sendRequest_register(QString referee, QString phone, QString password,
                                                QString code)
{
    zvtrace::call("ZvServerActionResult::sendRequest_register", referee, phone,
                  zvtrace::Secret{password}, zvtrace::Secret{code});
    d->sendUnsigned(zvPath_reg,
                    {{QStringLiteral("referee"), referee},
                     {QStringLiteral("phone"), phone},
                     {QStringLiteral("password"), password},
                     {QStringLiteral("code"), code}},
                    &Result::signal_register_succeed, &Result::signal_register_failed);
}

void ZvServerActionResult::sendRequest_changePasswd_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_changePasswd_sendCode", phone);
    d->sendUnsigned(zvPath_forget_send, {{QStringLiteral("phone"), phone}},
                    &Result::signal_changePasswd_sendCode_succeed,
                    &Result::signal_changePasswd_sendCode_failed);
}

void ZvServerActionResult::sendRequest_changePasswd(QString phone, QString password, QString code)
{
    zvtrace::call("ZvServerActionResult::sendRequest_changePasswd", phone,
                  zvtrace::Secret{password}, zvtrace::Secret{code});
    d->sendUnsigned(zvPath_forget_validate,
                    {{QStringLiteral("phone"), phone},
                     {QStringLiteral("password"), password},
                     {QStringLiteral("code"), code}},
                    &Result::signal_changePasswd_succeed, &Result::signal_changePasswd_failed);
}

void ZvServerActionResult::sendRequest_addOption(QString collectionId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_addOption", collectionId);
    d->sendFavourite(zvPath_myaccount_append, collectionId, &Result::signal_addOption_succeed,
                     &Result::signal_addOption_failed);
}

void ZvServerActionResult::sendRequest_removeOption(QString collectionId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_removeOption", collectionId);
    d->sendFavourite(zvPath_myaccount_remove, collectionId, &Result::signal_removeOption_succeed,
                     &Result::signal_removeOption_failed);
}

void ZvServerActionResult::sendRequest_getOptions(int page, int pageSize)
{
    zvtrace::call("ZvServerActionResult::sendRequest_getOptions", page, pageSize);
    ZvAction question;
    question.path = zvPath_myaccount_optional;
    question.isQuestion = true;
    question.shape = ZvDecodeTask::Favourites;
    question.parameters = {{QStringLiteral("page"), QString::number(page)},
                           {QStringLiteral("size"), QString::number(pageSize)}};
    question.succeed
        = [this](const ZvReply &reply) { emit signal_getOption_succeed(*reply.favourites); };
    question.fail = [this](const QString &message) { emit signal_getOption_failed(message); };
    d->favourites.enqueue(question);
}

void ZvServerActionResult::sendRequest_trade_buy(QString collectionId, float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_buy", collectionId, price, count);
    d->sendOrder(d->action(zvPath_trade_buy, {}, &Result::signal_trade_buy_succeed,
                           &Result::signal_trade_buy_failed),
                 ZvIntent::Order, collectionId, price, count);
}

void ZvServerActionResult::sendRequest_trade_sell(QString collectionId, float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_sell", collectionId, price, count);
    d->sendOrder(d->action(zvPath_trade_sell, {}, &Result::signal_trade_sell_succeed,
                           &Result::signal_trade_sell_failed),
                 ZvIntent::Order, collectionId, price, count);
}

void ZvServerActionResult::sendRequest_trade_revoke(QList<int> orderIds)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_revoke", orderIds);
    if (orderIds.isEmpty() || orderIds.size() > mostRevokes) {
        d->queue.fail(d->action(zvPath_trade_revoke, {}, &Result::signal_trade_revoke_succeed,
                                &Result::signal_trade_revoke_failed),
                      orderIds.isEmpty()
                          ? QStringLiteral("没有要撤销的委托")
                          : QStringLiteral("一次最多撤销%1笔委托，请分次操作").arg(mostRevokes));
        return;
    }
    QStringList numbers;
    for (const int id : qAsConst(orderIds))
        numbers.append(QString::number(id));
    d->send({ZvIntent::Withdrawal, 0, QString()}, zvPath_trade_revoke,
            {{QStringLiteral("orders"), numbers.join(QLatin1Char(','))}},
            &Result::signal_trade_revoke_succeed, &Result::signal_trade_revoke_failed);
}

void ZvServerActionResult::sendRequest_prepay_send(QString md5, int direction, QString collectionId,
                                                   float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_prepay_send", md5, direction, collectionId,
                  price, count);
    const auto known = d->prepared.constFind(md5);
    if (known != d->prepared.constEnd()) {
        if (*known) {
            QMetaObject::invokeMethod(
                this, [this, md5] { emit signal_prepay_send_succeed(md5); }, Qt::QueuedConnection);
        }
        return;
    }
    d->prepared.insert(md5, false);
    ZvAction order;
    // The key stays with the order until its end is known: whatever else keeps it from leaving, an
    // earlier attempt may have arrived.
    order.key = d->lost.value(md5);
    order.lose = [this, md5](const QString &key) { d->lost.insert(md5, key); };
    order.burn = [this, md5] { d->lost.remove(md5); };
    order.path = direction == 1 ? zvPath_trade_buy : zvPath_trade_sell;
    order.parameters = {{QStringLiteral("prepared"), QStringLiteral("1")}};
    order.succeed = [this, md5](const ZvReply &) {
        d->prepared.insert(md5, true);
        d->lost.remove(md5);
        emit signal_prepay_send_succeed(md5);
    };
    order.fail = [this, md5](const QString &message) {
        d->prepared.remove(md5);
        emit signal_prepay_send_failed(md5, message);
    };
    if (direction == 1 || direction == 2)
        d->sendOrder(order, ZvIntent::PreparedOrder, collectionId, price, count);
    else
        d->queue.fail(order, QStringLiteral("买卖方向无效"));
}

void ZvServerActionResult::sendRequest_delivery(QString collectionId, int count, QString name,
                                                QString phone, QString address)
{
    zvtrace::call("ZvServerActionResult::sendRequest_delivery", collectionId, count, name, phone,
                  address);
    d->send({ZvIntent::Delivery, 0, collectionId}, zvPath_trade_take,
            {{QStringLiteral("collection"), collectionId},
             {QStringLiteral("quantity"), QString::number(count)},
             {QStringLiteral("person"), name},
             {QStringLiteral("phone"), phone},
             {QStringLiteral("address"), address}},
            &Result::signal_delivery_succeed, &Result::signal_delivery_falied);
}

void ZvServerActionResult::sendRequest_deliveryCancel(QString deliveryId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_deliveryCancel", deliveryId);
    d->send({ZvIntent::Delivery, 0, QString()}, zvPath_trade_take,
            {{QStringLiteral("cancel"), deliveryId}}, &Result::signal_cancelDelivery_succeed,
            &Result::signal_cancelDelivery_failed);
}

void ZvServerActionResult::sendRequest_inMoney_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_inMoney_sendCode", phone);
    ZvAction question;
    question.path = zvPath_pay_send;
    question.parameters = {{QStringLiteral("phone"), phone}};
    question.keep = [](const ZvReply &reply) {
        return reply.texts.contains(QStringLiteral("first"))
            && reply.texts.contains(QStringLiteral("second"));
    };
    question.succeed = [this](const ZvReply &reply) {
        emit signal_inMoney_sendCode_succeed(reply.texts.value(QStringLiteral("first")),
                                             reply.texts.value(QStringLiteral("second")));
    };
    question.fail
        = [this](const QString &message) { emit signal_inMoney_sendCode_failed(message); };
    d->queue.enqueue(question);
}

void ZvServerActionResult::sendRequest_inMoney(QString amount, QString code, QString first,
                                               QString second)
{
    zvtrace::call("ZvServerActionResult::sendRequest_inMoney", amount, zvtrace::Secret{code}, first,
                  second);
    d->sendTransfer(d->action(zvPath_pay_trade,
                              {{QStringLiteral("code"), code},
                               {QStringLiteral("first"), first},
                               {QStringLiteral("second"), second}},
                              &Result::signal_inMoney_succeed, &Result::signal_inMoney_failed),
                    amount);
}

void ZvServerActionResult::sendRequest_outMoney(QString amount)
{
    zvtrace::call("ZvServerActionResult::sendRequest_outMoney", amount);
    d->sendTransfer(d->action(zvPath_pay_cash_deal, {}, &Result::signal_outMoney_succeed,
                              &Result::signal_outMoney_failed),
                    amount);
}

ZvActionChecks *ZvServerActionResult::checks() const
{
    return &d->checks;
}
