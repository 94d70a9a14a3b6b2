#include "client/collectionsearch.h"

#include "ZvModelKit/zvubbriefinfo.h"

#include <array>

namespace {

constexpr int Whole = 0;
constexpr int Begins = 1;
constexpr int Holds = 2;
constexpr int Not = 3;
constexpr int Ranks = 2 * Not;

// Where `typed` stands in `text`.
int fit(const QString &text, const QString &typed)
{
    const int place = text.indexOf(typed);
    if (place != 0)
        return place > 0 ? Holds : Not;
    return text.size() == typed.size() ? Whole : Begins;
}

QString folded(const QString &text)
{
    QString plain = text.normalized(QString::NormalizationForm_KC).toLower();
    for (const QChar sign : {QChar(u' '), QChar(u'\''), QChar(u'\u2019')})
        plain.remove(sign);
    return plain;
}

// How many characters a name spends on its year, as in "85年放鸢全品" and "09泥塑全品"; its
// initials keep them.
int yearLength(const QString &name)
{
    int length = 0;
    while (length < name.size() && name.at(length).isDigit())
        ++length;
    const bool isSaid = length > 0 && name.midRef(length).startsWith(QChar(u'年'));
    return isSaid ? length + 1 : length;
}

} // namespace

CollectionSearch::CollectionSearch(const ZvUBBriefInfo &info)
{
    m_entries.reserve(info.data().items.size());
    for (const ZvUBBriefItem &item : info.data().items) {
        Entry entry{{item.code(), item.name(), item.initials().value(0)}, folded(item.code()), {}};
        const int year = yearLength(item.name());
        const auto add = [&entry, year](const QString &text, const QString &initials) {
            const QString key = folded(text);
            entry.keys.append({key, initials});
            if (year > 0)
                entry.keys.append({key.mid(year), initials});
        };
        add(item.name(), entry.match.initials);
        for (const QString &reading : item.initials())
            add(reading, reading);
        m_entries.append(entry);
    }
}

// From 0 for the best to `Ranks` for none; `match` gets what is to be shown.
int CollectionSearch::rankOf(const Entry &entry, const QString &typed, CollectionMatch &match)
{
    match = entry.match;
    int rank = 2 * fit(entry.code, typed);
    for (const Key &key : entry.keys) {
        const int other = 2 * fit(key.text, typed) + 1;
        if (other < rank) {
            rank = other;
            match.initials = key.initials;
        }
    }
    return qMin(rank, Ranks);
}

QVector<CollectionMatch> CollectionSearch::find(const QString &typed, int most) const
{
    QVector<CollectionMatch> found;
    const QString plain = folded(typed);
    if (plain.isEmpty())
        return found;
    std::array<QVector<CollectionMatch>, Ranks> ranks;
    CollectionMatch match;
    for (const Entry &entry : m_entries) {
        const int rank = rankOf(entry, plain, match);
        if (rank < Ranks)
            ranks[std::size_t(rank)].append(match);
    }
    for (const QVector<CollectionMatch> &each : ranks)
        found += each.mid(0, qMax(0, most - found.size()));
    return found;
}
