#pragma once

namespace randomevents {

// What is counted: what the hands did, what the exchange did, and in which windows events came.
constexpr const char *kPress = "mouse button pressed";
constexpr const char *kRelease = "mouse button released";
constexpr const char *kDoubleClick = "double click";
constexpr const char *kMove = "mouse moved";
constexpr const char *kDrag = "drag";
constexpr const char *kWheel = "wheel turned";
constexpr const char *kKey = "key";
constexpr const char *kTyped = "text typed into a field";
constexpr const char *kComposed = "Chinese composed by an input method";
constexpr const char *kContextMenu = "context menu asked for";
constexpr const char *kFocus = "focus changed";
constexpr const char *kActivation = "another window activated";
constexpr const char *kResized = "window resized";
constexpr const char *kHidden = "window hidden or minimised";
constexpr const char *kCloseEvent = "close event";
constexpr const char *kLook = "font, palette or language changed";
constexpr const char *kHostCall = "slot called as a host does";
constexpr const char *kCacheSignal = "signal of the cache";
constexpr const char *kPoolSignal = "signal of the pool";
constexpr const char *kTime = "time passed";
constexpr const char *kPage = "page opened in a browser, or would have been";

constexpr const char *kAnswered = "answer";
constexpr const char *kPolled = "poll answered";
constexpr const char *kEmptyList = "empty list told";
constexpr const char *kExtreme = "extreme number told";
constexpr const char *kRefused = "refusal";
constexpr const char *kBroken = "answer that cannot be read";
constexpr const char *kLost = "call broken off";
constexpr const char *kSilent = "call left without an answer";
constexpr const char *kSignedIn = "sign-in";
constexpr const char *kElsewhere = "session ended by the exchange";
constexpr const char *kReboot = "exchange begun anew";
constexpr const char *kServer = "server changed";
constexpr const char *kOutage = "connection lost for a while";

} // namespace randomevents
