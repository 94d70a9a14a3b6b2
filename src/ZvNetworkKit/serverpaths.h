#pragma once

#include <QString>

// The addresses of the exchange's requests, relative to a server's prefix, in the order of the list.
//
// They are constants of internal linkage on purpose: each source file that includes this header
// owns a set of its own, built when it is loaded and destroyed at exit, so no file's start depends
// on another's. QStringLiteral keeps the texts in read-only memory.

[[maybe_unused]] const QString zvPath_sync = QStringLiteral("sync.html");
[[maybe_unused]] const QString zvPath_update = QStringLiteral("update.html");
[[maybe_unused]] const QString zvPath_market = QStringLiteral("market.html");
[[maybe_unused]] const QString zvPath_message = QStringLiteral("message.html");
[[maybe_unused]] const QString zvPath_market_check = QStringLiteral("market/check.html");
[[maybe_unused]] const QString zvPath_market_composite = QStringLiteral("market/composite.html");
[[maybe_unused]] const QString zvPath_market_collection = QStringLiteral("market/collection.html");
[[maybe_unused]] const QString zvPath_market_list = QStringLiteral("market/list.html");
[[maybe_unused]] const QString zvPath_collection_item = QStringLiteral("collection/item.html");
[[maybe_unused]] const QString zvPath_collection_trade = QStringLiteral("collection/trade.html");
[[maybe_unused]] const QString zvPath_market_latest_list = QStringLiteral("market/latest-list.html");
[[maybe_unused]] const QString zvPath_collection_type = QStringLiteral("collection/type.html");
[[maybe_unused]] const QString zvPath_market_jit = QStringLiteral("market/jit.html");
[[maybe_unused]] const QString zvPath_market_day = QStringLiteral("market/day.html");
[[maybe_unused]] const QString zvPath_market_week = QStringLiteral("market/week.html");
[[maybe_unused]] const QString zvPath_market_month = QStringLiteral("market/month.html");
[[maybe_unused]] const QString zvPath_market_detail = QStringLiteral("market/detail.html");
[[maybe_unused]] const QString zvPath_myaccount = QStringLiteral("myaccount.html");
[[maybe_unused]] const QString zvPath_cap = QStringLiteral("cap.html");
[[maybe_unused]] const QString zvPath_myaccount_gather = QStringLiteral("myaccount/gather.html");
[[maybe_unused]] const QString zvPath_revoke = QStringLiteral("revoke.html");
[[maybe_unused]] const QString zvPath_myaccount_optional = QStringLiteral("myaccount/optional.html");
[[maybe_unused]] const QString zvPath_myaccount_append = QStringLiteral("myaccount/append.html");
[[maybe_unused]] const QString zvPath_myaccount_remove = QStringLiteral("myaccount/remove.html");
[[maybe_unused]] const QString zvPath_myaccount_entrust = QStringLiteral("myaccount/entrust.html");
[[maybe_unused]] const QString zvPath_myaccount_his_entrust = QStringLiteral("myaccount/his-entrust.html");
[[maybe_unused]] const QString zvPath_myaccount_trade = QStringLiteral("myaccount/trade.html");
[[maybe_unused]] const QString zvPath_myaccount_hold = QStringLiteral("myaccount/hold.html");
[[maybe_unused]] const QString zvPath_myaccount_take_list = QStringLiteral("myaccount/take-list.html");
[[maybe_unused]] const QString zvPath_pay_list = QStringLiteral("pay/list.html");
[[maybe_unused]] const QString zvPath_login = QStringLiteral("login.html");
[[maybe_unused]] const QString zvPath_reg = QStringLiteral("reg.html");
[[maybe_unused]] const QString zvPath_reg_send = QStringLiteral("reg/send.html");
[[maybe_unused]] const QString zvPath_forget_validate = QStringLiteral("forget/validate.html");
[[maybe_unused]] const QString zvPath_forget_send = QStringLiteral("forget/send.html");
[[maybe_unused]] const QString zvPath_pay_qrcode = QStringLiteral("pay/qrcode.html");
[[maybe_unused]] const QString zvPath_pay_send = QStringLiteral("pay/send.html");
[[maybe_unused]] const QString zvPath_pay_trade = QStringLiteral("pay/trade.html");
[[maybe_unused]] const QString zvPath_pay_cash_deal = QStringLiteral("pay/cash-deal.html");
[[maybe_unused]] const QString zvPath_hold_list = QStringLiteral("hold/list.html");
[[maybe_unused]] const QString zvPath_pay_hx = QStringLiteral("pay/hx.html");
[[maybe_unused]] const QString zvPath_trade_buy = QStringLiteral("trade/buy.html");
[[maybe_unused]] const QString zvPath_trade_sell = QStringLiteral("trade/sell.html");
[[maybe_unused]] const QString zvPath_trade_revoke = QStringLiteral("trade/revoke.html");
[[maybe_unused]] const QString zvPath_myaccount_take = QStringLiteral("myaccount/take.html");
[[maybe_unused]] const QString zvPath_trade_take = QStringLiteral("trade/take.html");
