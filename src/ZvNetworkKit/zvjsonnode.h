#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

// A parsed JSON value with exact integers. A number that is no 64-bit integer is kept as Other, so
// that it can be skipped under an unknown key and is refused where an integer is due.
struct ZvJsonNode {
    enum Kind { Null, Bool, Integer, Text, Array, Object, Other };

    Kind kind = Null;
    bool boolean = false;
    qint64 integer = 0;
    QString text;
    std::string key; // within its object
    std::vector<ZvJsonNode> items;

    // The member of an object; null when there is none.
    const ZvJsonNode *find(const char *name) const;

    static constexpr std::size_t nodeBound = 500000;
    static constexpr std::size_t memberBound = 64; // of one object

    // True and `root`, or false and a sentence for the log. Refuses what is not JSON in UTF-8,
    // duplicate keys, more nesting than `depthBound`, and more values than the bounds allow.
    static bool parse(const QByteArray &body, int depthBound, ZvJsonNode &root, QString &error);
};
