#include "ZvNetworkKit/zvserveractionresult.h"

#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"

namespace {

QString unreachable()
{
    return QStringLiteral("尚未连接交易所，请稍后再试");
}

} // namespace

class ZvServerActionResult::Private
{
};

ZvServerActionResult *ZvServerActionResult::getZvServerActionResultInstance()
{
    return ZvKitSingleton<ZvServerActionResult, ZvKitEnd::Actions>::get();
}

ZvServerActionResult::ZvServerActionResult() : d(std::make_unique<Private>()) { }

ZvServerActionResult::~ZvServerActionResult() = default;

void ZvServerActionResult::sendRequest_login(QString phone, QString password)
{
    zvtrace::call("ZvServerActionResult::sendRequest_login", phone, zvtrace::Secret{password});
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_login_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_register_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_register_sendCode", phone);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_register_sendCode_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_register(QString referee, QString phone, QString password,
                                                QString code)
{
    zvtrace::call("ZvServerActionResult::sendRequest_register", referee, phone,
                  zvtrace::Secret{password}, zvtrace::Secret{code});
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_register_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_changePasswd_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_changePasswd_sendCode", phone);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_changePasswd_sendCode_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_changePasswd(QString phone, QString password, QString code)
{
    zvtrace::call("ZvServerActionResult::sendRequest_changePasswd", phone,
                  zvtrace::Secret{password}, zvtrace::Secret{code});
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_changePasswd_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_addOption(QString collectionId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_addOption", collectionId);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_addOption_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_removeOption(QString collectionId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_removeOption", collectionId);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_removeOption_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_getOptions(int page, int pageSize)
{
    zvtrace::call("ZvServerActionResult::sendRequest_getOptions", page, pageSize);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_getOption_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_trade_buy(QString collectionId, float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_buy", collectionId, price, count);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_trade_buy_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_trade_sell(QString collectionId, float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_sell", collectionId, price, count);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_trade_sell_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_trade_revoke(QList<int> orderIds)
{
    zvtrace::call("ZvServerActionResult::sendRequest_trade_revoke", orderIds);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_trade_revoke_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_prepay_send(QString md5, int direction, QString collectionId,
                                                   float price, int count)
{
    zvtrace::call("ZvServerActionResult::sendRequest_prepay_send", md5, direction, collectionId,
                  price, count);
    QMetaObject::invokeMethod(
        this,
        [this, md5] {
            const QString message = unreachable();
            emit signal_prepay_send_failed(md5, message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_delivery(QString collectionId, int count, QString name,
                                                QString phone, QString address)
{
    zvtrace::call("ZvServerActionResult::sendRequest_delivery", collectionId, count, name, phone,
                  address);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_delivery_falied(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_deliveryCancel(QString deliveryId)
{
    zvtrace::call("ZvServerActionResult::sendRequest_deliveryCancel", deliveryId);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_cancelDelivery_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_inMoney_sendCode(QString phone)
{
    zvtrace::call("ZvServerActionResult::sendRequest_inMoney_sendCode", phone);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_inMoney_sendCode_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_inMoney(QString amount, QString code, QString first,
                                               QString second)
{
    zvtrace::call("ZvServerActionResult::sendRequest_inMoney", amount, zvtrace::Secret{code}, first,
                  second);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_inMoney_failed(message);
        },
        Qt::QueuedConnection);
}

void ZvServerActionResult::sendRequest_outMoney(QString amount)
{
    zvtrace::call("ZvServerActionResult::sendRequest_outMoney", amount);
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QString message = unreachable();
            emit signal_outMoney_failed(message);
        },
        Qt::QueuedConnection);
}
