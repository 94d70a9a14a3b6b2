#pragma once

#include "campaign/campaign.h"
#include "randomevents/chance.h"

#include "ZvNetworkKit/zvtransport.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <functional>

namespace randomevents {

// Says by chance what an exchange might say: any number of rows, figures from nothing to the
// largest, names that no operator would choose. Its answers keep to the protocol.
class RandomMarket
{
public:
    RandomMarket(Chance &chance, campaign::Counts &counts) : m_chance(chance), m_counts(counts) { }

    // The whole body of a good answer.
    QByteArray answerTo(const ZvRequest &request);

    // A body that says no.
    QByteArray refusal();

    // A body that says that the session is over.
    QByteArray endOfSession();

    // Another run of the service: what was told before counts no more.
    void beginAnew();

    // The id of a collection, or of none.
    QString anyId();

    static QStringList prefixes();

private:
    QByteArray dataFor(const ZvRequest &request);
    QByteArray topics(const ZvRequest &request);
    QByteArray topic(const QByteArray &name, const ZvRequest &request);
    QByteArray changes(qint64 base);
    QByteArray list(int most, const std::function<QByteArray(int)> &make);
    QByteArray object(std::initializer_list<std::pair<const char *, QByteArray>> fields) const;

    QByteArray figure(); // may be null
    QByteArray amount();
    qint64 price(); // above 0
    QByteArray number(int least, int most);
    QByteArray truth();
    QByteArray word(); // some text
    QByteArray time();
    QByteArray id(int i) const;
    QByteArray row(int i);
    QByteArray rows();
    QByteArray brief();
    QByteArray deal(int i);
    QByteArray levels();
    QByteArray bar(int i);
    QByteArray minute(int i);
    QByteArray order(int i);
    QByteArray holding(int i);
    QByteArray account();
    QByteArray take(int i);

    Chance &m_chance;
    campaign::Counts &m_counts;
    QByteArray m_boot = "b1";
    qint64 m_version = 1;
    int m_rows = 0; // of the list that was told last
};

} // namespace randomevents
