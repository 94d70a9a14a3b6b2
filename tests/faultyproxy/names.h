#pragma once

namespace faultyproxy {

// What is counted: the proxy's faults, and what the kit made of them.
constexpr const char *kHandedOn = "request handed on as it was";
constexpr const char *kClosedUnread = "connection closed before the service read the request";
constexpr const char *kClosedDone = "connection closed after the commit";
constexpr const char *kHalfHead = "answer cut off in its head";
constexpr const char *kHalfBody = "answer cut off in its body";
constexpr const char *kLateAnswer = "answer held back past its deadline";
constexpr const char *kOvertaken = "action arrived after the question about it";
constexpr const char *kReplayed = "action replayed at once";
constexpr const char *kReplayedLate = "old action replayed later";
constexpr const char *kQuestionBroken = "question about a key broken as well";
constexpr const char *kAsked = "action asked for by its key";
constexpr const char *kDone = "action done";
constexpr const char *kRefused = "action refused by the market";
constexpr const char *kNotArrived = "action never arrived, and its owner was told so";

} // namespace faultyproxy
