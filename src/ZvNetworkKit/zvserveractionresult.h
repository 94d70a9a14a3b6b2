#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class ZvActionChecks;
enum class ZvKitEnd;
template <typename T, ZvKitEnd End>
struct ZvKitSingleton;

// Actions: what a user does at the exchange. Each call ends with exactly one of its two signals,
// through the event loop; a failure's text is fit to be shown as it stands.
//
// An action goes out once, under a key of its own, and one after the other in the order of the
// calls, those of the favourites in a row of their own. Where no answer comes, the exchange is
// asked what became of the key, which checks() tells of; nothing is ever sent a second time. What a
// user did belongs to the server and the session of that moment: where the session has changed
// before an action could leave, it fails unsent. Prices are yuan with at most two decimals, amounts
// texts of yuan such as "12.50", counts pieces, collections their ids.
class ZVNETWORKKIT_EXPORT ZvServerActionResult : public QObject
{
    Q_OBJECT

public:
    static ZvServerActionResult *getZvServerActionResultInstance();

    void sendRequest_login(QString phone, QString password);
    void sendRequest_register_sendCode(QString phone);
    void sendRequest_register(QString referee, QString phone, QString password, QString code);
    void sendRequest_changePasswd_sendCode(QString phone);
    void sendRequest_changePasswd(QString phone, QString password, QString code);
    void sendRequest_addOption(QString collectionId);
    void sendRequest_removeOption(QString collectionId);

    // The ids are always those of the server that is in view when they are told: where it changes
    // under way, the question is asked again.
    void sendRequest_getOptions(int page, int pageSize);
    void sendRequest_trade_buy(QString collectionId, float price, int count);
    void sendRequest_trade_sell(QString collectionId, float price, int count);
    void sendRequest_trade_revoke(QList<int> orderIds);

    // A prepared order. `direction` is 1 for a buy and 2 for a sale. While an order of the same
    // `md5` is under way the call adds nothing, and one that has succeeded succeeds again without
    // being sent; after a refusal it may be sent again.
    void sendRequest_prepay_send(QString md5, int direction, QString collectionId, float price,
                                 int count);
    void sendRequest_delivery(QString collectionId, int count, QString name, QString phone,
                              QString address);
    void sendRequest_deliveryCancel(QString deliveryId);
    void sendRequest_inMoney_sendCode(QString phone);

    // `first` and `second` are what signal_inMoney_sendCode_succeed() gave.
    void sendRequest_inMoney(QString amount, QString code, QString first, QString second);
    void sendRequest_outMoney(QString amount);

    // Which actions are being asked for at the moment.
    ZvActionChecks *checks() const;

signals:
    void signal_login_succeed();
    void signal_login_failed(const QString &message);
    void signal_register_sendCode_succeed();
    void signal_register_sendCode_failed(QString message);
    void signal_register_succeed();
    void signal_register_failed(QString message);
    void signal_changePasswd_sendCode_succeed();
    void signal_changePasswd_sendCode_failed(QString message);
    void signal_changePasswd_succeed();
    void signal_changePasswd_failed(QString message);
    void signal_addOption_succeed();
    void signal_addOption_failed(QString message);
    void signal_removeOption_succeed();
    void signal_removeOption_failed(QString message);
    void signal_getOption_succeed(QStringList collectionIds);
    void signal_getOption_failed(QString message);
    void signal_trade_buy_succeed();
    void signal_trade_buy_failed(QString message);
    void signal_trade_sell_succeed();
    void signal_trade_sell_failed(QString message);
    void signal_trade_revoke_succeed();
    void signal_trade_revoke_failed(QString message);
    void signal_prepay_send_succeed(QString md5);
    void signal_prepay_send_failed(QString md5, QString message);
    void signal_delivery_succeed();
    void signal_delivery_falied(QString message);
    void signal_cancelDelivery_succeed();
    void signal_cancelDelivery_failed(QString message);
    void signal_inMoney_sendCode_succeed(QString first, QString second);
    void signal_inMoney_sendCode_failed(QString message);
    void signal_inMoney_succeed();
    void signal_inMoney_failed(QString message);
    void signal_outMoney_succeed();
    void signal_outMoney_failed(QString message);

private:
    template <typename T, ZvKitEnd End>
    friend struct ZvKitSingleton;
    class Private;

    ZvServerActionResult();
    ~ZvServerActionResult() override;
    Q_DISABLE_COPY(ZvServerActionResult)

    std::unique_ptr<Private> d;
};
