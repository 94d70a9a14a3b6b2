#include "ZvNetworkKit/zvjsonreading.h"

#include "ZvModelKit/zvubvalues.h"

#include <algorithm>
#include <limits>

namespace zvread {

using Node = ZvJsonNode;

void refuse(const char *what, const char *key)
{
    throw ZvRefusal{QStringLiteral("%1: \"%2\"").arg(QLatin1String(what), QLatin1String(key))};
}

const Node &member(const Node &object, const char *key)
{
    if (object.kind != Node::Object)
        refuse("no object around", key);
    const Node *found = object.find(key);
    if (!found)
        refuse("missing", key);
    return *found;
}

qint64 integerIn(const Node &node, const char *key, qint64 least, qint64 most)
{
    if (node.kind != Node::Integer)
        refuse("no whole number", key);
    if (node.integer < least || node.integer > most)
        refuse("number out of range", key);
    return node.integer;
}

qint64 integer(const Node &object, const char *key, qint64 least, qint64 most)
{
    return integerIn(member(object, key), key, least, most);
}

qint64 figureIn(const Node &node, const char *key)
{
    return node.kind == Node::Null ? zvub::noValue : integerIn(node, key, 0, figureBound);
}

qint64 figure(const Node &object, const char *key)
{
    return figureIn(member(object, key), key);
}

qint64 sum(const Node &object, const char *key)
{
    return std::max<qint64>(0, figure(object, key));
}

qint64 amount(const Node &object, const char *key)
{
    return integer(object, key, 0, figureBound);
}

qint64 balance(const Node &object, const char *key)
{
    return integer(object, key, -figureBound, figureBound);
}

qint64 version(const Node &object)
{
    return integer(object, "version", 0, std::numeric_limits<qint64>::max());
}

QString textIn(const Node &node, const char *key)
{
    if (node.kind != Node::Text)
        refuse("no text", key);
    return node.text;
}

QString text(const Node &object, const char *key)
{
    return textIn(member(object, key), key);
}

QString webAddress(const QString &text)
{
    const bool isWeb = text.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)
        || text.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
    return isWeb ? text : QString();
}

bool boolean(const Node &object, const char *key)
{
    const Node &node = member(object, key);
    if (node.kind != Node::Bool)
        refuse("neither true nor false", key);
    return node.boolean;
}

const std::vector<Node> &arrayIn(const Node &node, const char *key)
{
    if (node.kind != Node::Array)
        refuse("no list", key);
    return node.items;
}

const std::vector<Node> &array(const Node &object, const char *key)
{
    return arrayIn(member(object, key), key);
}

QString collectionIdIn(const Node &node, const char *key)
{
    const QString id = textIn(node, key);
    const int first = id.startsWith(QLatin1Char('-')) ? 1 : 0;
    const int digits = id.size() - first;
    bool isNumber = digits >= 1 && digits <= 18;
    for (int i = first; i < id.size(); ++i)
        isNumber = isNumber && id.at(i) >= QLatin1Char('0') && id.at(i) <= QLatin1Char('9');
    if (!isNumber)
        refuse("no collection id", key);
    return id;
}

QString collectionId(const Node &object, const char *key)
{
    return collectionIdIn(member(object, key), key);
}

} // namespace zvread
