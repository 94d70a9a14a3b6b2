#include "ZvNetworkKit/zvjsonnode.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

// Builds the tree from the parser's events and stops it at the first thing that is refused.
class Builder
{
public:
    explicit Builder(int depthBound) : m_depthBound(static_cast<std::size_t>(depthBound)) { }

    ZvJsonNode root;
    QString error;

    bool null() { return take(ZvJsonNode()); }

    bool boolean(bool value)
    {
        ZvJsonNode node;
        node.kind = ZvJsonNode::Bool;
        node.boolean = value;
        return take(std::move(node));
    }

    bool number_integer(Json::number_integer_t value)
    {
        ZvJsonNode node;
        node.kind = ZvJsonNode::Integer;
        node.integer = value;
        return take(std::move(node));
    }

    bool number_unsigned(Json::number_unsigned_t value)
    {
        ZvJsonNode node;
        const auto largest = static_cast<Json::number_unsigned_t>(INT64_MAX);
        node.kind = value <= largest ? ZvJsonNode::Integer : ZvJsonNode::Other;
        node.integer = value <= largest ? static_cast<qint64>(value) : 0;
        return take(std::move(node));
    }

    bool number_float(Json::number_float_t, const Json::string_t &)
    {
        ZvJsonNode node;
        node.kind = ZvJsonNode::Other;
        return take(std::move(node));
    }

    bool string(Json::string_t &value)
    {
        ZvJsonNode node;
        node.kind = ZvJsonNode::Text;
        node.text = QString::fromUtf8(value.data(), static_cast<int>(value.size()));
        return take(std::move(node));
    }

    bool binary(Json::binary_t &) { return refuse(QStringLiteral("binary data")); }

    bool start_object(std::size_t) { return open(ZvJsonNode::Object); }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open(ZvJsonNode::Array); }
    bool end_array() { return close(); }

    bool key(Json::string_t &name)
    {
        const ZvJsonNode &object = m_open.back();
        if (object.items.size() >= ZvJsonNode::memberBound)
            return refuse(QStringLiteral("an object with too many members"));
        if (object.find(name.c_str()))
            return refuse(
                QStringLiteral("the key \"%1\" twice").arg(QString::fromStdString(name).left(40)));
        m_key = name;
        return true;
    }

    bool parse_error(std::size_t position, const std::string &, const Json::exception &)
    {
        return refuse(QStringLiteral("no JSON at byte %1").arg(position));
    }

private:
    bool refuse(const QString &reason)
    {
        if (error.isEmpty())
            error = reason;
        return false;
    }

    bool count()
    {
        return ++m_count <= ZvJsonNode::nodeBound || refuse(QStringLiteral("too many values"));
    }

    bool open(ZvJsonNode::Kind kind)
    {
        if (m_open.size() >= m_depthBound)
            return refuse(QStringLiteral("nested too deeply"));
        ZvJsonNode node;
        node.kind = kind;
        node.key = std::move(m_key);
        m_key.clear();
        m_open.push_back(std::move(node));
        return count();
    }

    bool close()
    {
        ZvJsonNode node = std::move(m_open.back());
        m_open.pop_back();
        place(std::move(node));
        return true;
    }

    bool take(ZvJsonNode node)
    {
        node.key = std::move(m_key);
        m_key.clear();
        place(std::move(node));
        return count();
    }

    void place(ZvJsonNode node)
    {
        if (m_open.empty())
            root = std::move(node);
        else
            m_open.back().items.push_back(std::move(node));
    }

    std::size_t m_depthBound;
    std::size_t m_count = 0;
    std::vector<ZvJsonNode> m_open;
    std::string m_key;
};

} // namespace

const ZvJsonNode *ZvJsonNode::find(const char *name) const
{
    for (const ZvJsonNode &item : items) {
        if (item.key == name)
            return &item;
    }
    return nullptr;
}

bool ZvJsonNode::parse(const QByteArray &body, int depthBound, ZvJsonNode &root, QString &error)
{
    Builder builder(depthBound);
    const bool isWhole
        = Json::sax_parse(body.constData(), body.constData() + body.size(), &builder);
    if (!isWhole) {
        error = builder.error.isEmpty() ? QStringLiteral("no JSON") : builder.error;
        return false;
    }
    root = std::move(builder.root);
    return true;
}
