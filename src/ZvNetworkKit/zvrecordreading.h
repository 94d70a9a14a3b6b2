#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvNetworkKit/zvdecoder.h"

#include <QList>

struct ZvJsonNode;

// Readers of what an account reads page by page, and of its bank card. They throw ZvRefusal where
// an answer is not as the protocol has it, a page of more rows than the exchange gives among them.
namespace zvread {

// Orders that can be taken back, and orders open or done.
QList<ZvUBRevokeItem> openOrders(const ZvJsonNode &data);
QList<ZvUBEntrustItem> orders(const ZvJsonNode &data);

QList<ZvUBDealRecordItem> dealRecords(const ZvJsonNode &data);
QList<ZvUBDeliveryRecordItem> deliveries(const ZvJsonNode &data);

// Collections that are open for application, and applications that were made.
QList<ZvUBApplyItem> openApplications(const ZvJsonNode &data);
QList<ZvUBApplyItem> applications(const ZvJsonNode &data);

QList<ZvUBMoneyFlowItem> moneyFlows(const ZvJsonNode &data);
ZvBankCard bankCard(const ZvJsonNode &data);
ZvMoneyAddresses moneyAddresses(const ZvJsonNode &data);

} // namespace zvread
