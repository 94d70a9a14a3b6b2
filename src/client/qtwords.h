#pragma once

class QCoreApplication;

// What Qt itself writes: the menus of fields, links and scroll bars.
namespace qtwords {

// Has it written in Chinese, as everything else is. False where this machine has no catalogue of
// these words; they stay English then.
bool speakChinese(QCoreApplication &application);

} // namespace qtwords
