#pragma once

#include "ZvNetworkKit/zvjsonnode.h"

#include <QString>

#include <vector>

// What is wrong with an answer; thrown by the readers and caught by ZvDecoder alone.
struct ZvRefusal {
    QString reason; // a sentence for the log
};

// The words of the readers: what is due in an answer is taken out of it, or the answer is refused.
//
// Each function names the key that it reads, for the log. Those that end in `In` read a value, the
// others a member of an object.
namespace zvread {

// The largest price, quantity or amount that the exchange knows.
constexpr qint64 figureBound = 9000000000000000;

[[noreturn]] void refuse(const char *what, const char *key);

const ZvJsonNode &member(const ZvJsonNode &object, const char *key);

// An exact whole number between `least` and `most`.
qint64 integerIn(const ZvJsonNode &node, const char *key, qint64 least, qint64 most);
qint64 integer(const ZvJsonNode &object, const char *key, qint64 least, qint64 most);

// A price, quantity or amount that may not exist yet: null gives zvub::noValue.
qint64 figureIn(const ZvJsonNode &node, const char *key);
qint64 figure(const ZvJsonNode &object, const char *key);

// The same for what counts from nothing: null gives 0.
qint64 sum(const ZvJsonNode &object, const char *key);

// A quantity or an amount that is always known, and one that may be below zero.
qint64 amount(const ZvJsonNode &object, const char *key);
qint64 balance(const ZvJsonNode &object, const char *key);

qint64 version(const ZvJsonNode &object);

QString textIn(const ZvJsonNode &node, const char *key);
QString text(const ZvJsonNode &object, const char *key);

// The text itself where it is a web address, an empty one otherwise: pages open these addresses in
// a browser.
QString webAddress(const QString &text);

bool boolean(const ZvJsonNode &object, const char *key);
const std::vector<ZvJsonNode> &arrayIn(const ZvJsonNode &node, const char *key);
const std::vector<ZvJsonNode> &array(const ZvJsonNode &object, const char *key);

// A decimal number of at most 18 digits, such as "1001" or "-1".
QString collectionIdIn(const ZvJsonNode &node, const char *key);
QString collectionId(const ZvJsonNode &object, const char *key);

} // namespace zvread
