#include "endtoend/wiretrader.h"

#include "endtoend/people.h"
#include "endtoend/programs.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QUrlQuery>
#include <QUuid>

namespace endtoend {

namespace {

constexpr int bankCodeDigits = 6;

QString newKey()
{
    return QUuid::createUuid().toString(QUuid::Id128);
}

QUrlQuery queryOf(const WireTrader::Fields &fields)
{
    QUrlQuery query;
    for (const auto &field : fields)
        query.addQueryItem(field.first, QString::fromUtf8(QUrl::toPercentEncoding(field.second)));
    return query;
}

// A card number of somebody's own, whose last digit fits the others.
QString cardNumber(const QString &phone)
{
    const QString digits = QStringLiteral("9990") + phone + QStringLiteral("000");
    int sum = 0;
    for (int i = 0; i < digits.size(); ++i) {
        const int digit = digits.at(digits.size() - 1 - i).digitValue();
        const int doubled = i % 2 == 0 ? 2 * digit : digit;
        sum += doubled > 9 ? doubled - 9 : doubled;
    }
    return digits + QString::number((10 - sum % 10) % 10);
}

QByteArray bodyOf(QNetworkReply *reply)
{
    const std::unique_ptr<QNetworkReply> owner(reply);
    until([reply] { return reply->isFinished(); });
    return reply->readAll();
}

QNetworkRequest formRequest(const QUrl &address)
{
    QNetworkRequest request(address);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    return request;
}

} // namespace

QJsonObject WireTrader::take(const QByteArray &body)
{
    const QJsonObject answer = QJsonDocument::fromJson(body).object();
    m_isOk = answer.value(QStringLiteral("status")).toString() == QLatin1String("ok");
    m_refusal = answer.value(QStringLiteral("reason")).toString();
    m_sentence = answer.value(QStringLiteral("message")).toString();
    return answer.value(QStringLiteral("data")).toObject();
}

QJsonObject WireTrader::get(const QString &path, const Fields &fields)
{
    QUrl address(m_exchange);
    address.setPath(m_server + path);
    address.setQuery(queryOf(Fields{{QStringLiteral("protocol"), QStringLiteral("1")}} + fields));
    QNetworkRequest request(address);
    request.setRawHeader("Authorization", "Bearer " + m_token);
    QNetworkAccessManager manager;
    return take(bodyOf(manager.get(request)));
}

QJsonObject WireTrader::post(const QString &path, const Fields &fields)
{
    QUrl address(m_exchange);
    address.setPath(m_server + path);
    QNetworkRequest request = formRequest(address);
    if (!m_token.isEmpty())
        request.setRawHeader("Authorization", "Bearer " + m_token);
    const Fields all = Fields{{QStringLiteral("protocol"), QStringLiteral("1")},
                              {QStringLiteral("key"), newKey()}}
        + fields;
    QNetworkAccessManager manager;
    return take(bodyOf(manager.post(request, queryOf(all).toString(QUrl::FullyEncoded).toUtf8())));
}

// A page for people: the platform's own folder, and no session but that of its link.
QByteArray WireTrader::page(const QString &path, const Fields &form)
{
    QUrl address(m_exchange);
    address.setPath(m_server.section(QLatin1Char('/'), 0, 1)
                    + path.section(QLatin1Char('?'), 0, 0));
    address.setQuery(path.section(QLatin1Char('?'), 1));
    QNetworkAccessManager manager;
    if (form.isEmpty())
        return bodyOf(manager.get(QNetworkRequest(address)));
    return bodyOf(
        manager.post(formRequest(address), queryOf(form).toString(QUrl::FullyEncoded).toUtf8()));
}

bool WireTrader::signIn(const QString &phone, const QString &password)
{
    m_token.clear();
    const QJsonObject data = post(QStringLiteral("login.html"),
                                  {{QStringLiteral("phone"), phone},
                                   {QStringLiteral("password"), password},
                                   {QStringLiteral("client"), newKey().left(16)}});
    m_token = data.value(QStringLiteral("token")).toString().toLatin1();
    return !m_token.isEmpty();
}

bool WireTrader::bindCard(const StateFolder &state, const QString &phone)
{
    const QString code
        = get(QStringLiteral("pay/hx.html")).value(QStringLiteral("code")).toString();
    const QString card = QStringLiteral("/card.html?s=") + code;
    // Each form knows which step it is of.
    const auto tokenIn = [](const QByteArray &html) {
        static const QRegularExpression form(QStringLiteral("name=\"form\" value=\"([^\"]+)\""));
        return form.match(QString::fromUtf8(html)).captured(1);
    };
    const QByteArray second = page(card,
                                   {{QStringLiteral("form"), tokenIn(page(card, {}))},
                                    {QStringLiteral("step"), QStringLiteral("prepare")},
                                    {QStringLiteral("holder"), QStringLiteral("林晓月")},
                                    {QStringLiteral("bank"), QStringLiteral("lanchuan")},
                                    {QStringLiteral("number"), cardNumber(phone)}});
    const QByteArray done
        = page(card,
               {{QStringLiteral("form"), tokenIn(second)},
                {QStringLiteral("step"), QStringLiteral("confirm")},
                {QStringLiteral("code"), lastCode(state, phone, bankCodeDigits)}});
    return QString::fromUtf8(done).contains(QStringLiteral("绑定成功"));
}

bool WireTrader::openAccount(const StateFolder &state, const QString &phone,
                             const QString &password)
{
    return registerAccount(state, m_exchange, phone, password, m_server) && signIn(phone, password)
        && bindCard(state, phone);
}

bool WireTrader::moveIn(const StateFolder &state, const QString &phone, const QString &password,
                        qint64 fen)
{
    if (!openAccount(state, phone, password))
        return false;
    const QString before = lastCode(state, phone, bankCodeDigits);
    const QJsonObject pair
        = post(QStringLiteral("pay/send.html"), {{QStringLiteral("phone"), phone}});
    until([&] { return lastCode(state, phone, bankCodeDigits) != before; }, 5000);
    post(QStringLiteral("pay/trade.html"),
         {{QStringLiteral("amount"), QString::number(fen)},
          {QStringLiteral("code"), lastCode(state, phone, bankCodeDigits)},
          {QStringLiteral("first"), pair.value(QStringLiteral("first")).toString()},
          {QStringLiteral("second"), pair.value(QStringLiteral("second")).toString()}});
    return m_isOk;
}

int WireTrader::buy(const QString &collection, qint64 price, int quantity)
{
    return post(QStringLiteral("trade/buy.html"),
                {{QStringLiteral("collection"), collection},
                 {QStringLiteral("price"), QString::number(price)},
                 {QStringLiteral("quantity"), QString::number(quantity)}})
        .value(QStringLiteral("order"))
        .toInt();
}

int WireTrader::sell(const QString &collection, qint64 price, int quantity)
{
    return post(QStringLiteral("trade/sell.html"),
                {{QStringLiteral("collection"), collection},
                 {QStringLiteral("price"), QString::number(price)},
                 {QStringLiteral("quantity"), QString::number(quantity)}})
        .value(QStringLiteral("order"))
        .toInt();
}

bool WireTrader::revoke(int order)
{
    post(QStringLiteral("trade/revoke.html"), {{QStringLiteral("orders"), QString::number(order)}});
    return m_isOk;
}

QJsonObject WireTrader::cap()
{
    return get(QStringLiteral("cap.html"));
}

QJsonArray WireTrader::openOrders()
{
    return get(QStringLiteral("revoke.html"),
               {{QStringLiteral("page"), QStringLiteral("1")},
                {QStringLiteral("size"), QStringLiteral("200")}})
        .value(QStringLiteral("orders"))
        .toArray();
}

QJsonArray WireTrader::ordersOfToday()
{
    return get(QStringLiteral("myaccount/entrust.html"),
               {{QStringLiteral("page"), QStringLiteral("1")},
                {QStringLiteral("size"), QStringLiteral("200")},
                {QStringLiteral("type"), QStringLiteral("2")}})
        .value(QStringLiteral("orders"))
        .toArray();
}

QPair<int, int> WireTrader::holding(const QString &collection)
{
    const QJsonArray items = cap().value(QStringLiteral("items")).toArray();
    for (const QJsonValue &entry : items) {
        const QJsonObject item = entry.toObject();
        if (item.value(QStringLiteral("collection")).toString() == collection)
            return {item.value(QStringLiteral("quantity")).toInt(),
                    item.value(QStringLiteral("sellable")).toInt()};
    }
    return {0, 0};
}

} // namespace endtoend
