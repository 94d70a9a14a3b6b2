#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvNetworkKit/zvdecoder.h"

#include <QList>

struct ZvJsonNode;

// Readers of what an account reads page by page, and of its bank card. They throw ZvRefusal where
// an answer is not as the protocol has it.
namespace zvread {

// Collections that are open for application, and applications that were made.
QList<ZvUBApplyItem> openApplications(const ZvJsonNode &data);
QList<ZvUBApplyItem> applications(const ZvJsonNode &data);

QList<ZvUBMoneyFlowItem> moneyFlows(const ZvJsonNode &data);
ZvBankCard bankCard(const ZvJsonNode &data);
ZvMoneyAddresses moneyAddresses(const ZvJsonNode &data);

} // namespace zvread
