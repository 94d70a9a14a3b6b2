#pragma once

namespace zvxtest {

// What is counted.
constexpr const char *kKill = "service killed under load";
constexpr const char *kKillUnread = "service killed with answers unread";
constexpr const char *kKillOpening = "service killed while it opened the folder";
constexpr const char *kOrderThere = "acknowledged order there after a kill";
constexpr const char *kRevokeThere = "acknowledged withdrawal there after a kill";
constexpr const char *kTransferThere = "acknowledged transfer there after a kill";
constexpr const char *kTakeThere = "acknowledged request for goods there after a kill";
constexpr const char *kTakeBackThere = "acknowledged cancel of one there after a kill";
constexpr const char *kRefusalThere = "refusal told again after a kill";
constexpr const char *kUnheardDone = "action without an answer had been done";
constexpr const char *kUnheardNotDone = "action without an answer had not been done";
constexpr const char *kSentAgain = "action sent again, answered as before";
constexpr const char *kDeal = "deal";
constexpr const char *kParcelWaiting = "goods under way in the end";
constexpr const char *kParcelSent = "goods sent";
constexpr const char *kParcelCancelled = "goods cancelled";

} // namespace zvxtest
