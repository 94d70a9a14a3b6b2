#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

class ZvUBBriefInfo;

// A collection that answers to what was typed.
struct CollectionMatch {
    QString code;
    QString name;
    QString initials; // of the reading that answered; of the first one where another thing did
};

// Finds collections by what a trader remembers of them: the code or a part of it, the pinyin
// initials of the name in any of its readings, or a part of the name itself. A year at the head of
// a name may be left out.
class CollectionSearch
{
public:
    CollectionSearch() = default;
    explicit CollectionSearch(const ZvUBBriefInfo &info);

    bool isEmpty() const { return m_entries.isEmpty(); }

    // At most `most` collections, the best first: what is typed is the whole of something, then its
    // beginning, then a part of it, each time the code before the initials and the name. Among
    // equals the order of the server holds. Case and width of letters and digits do not count, nor
    // do blanks and apostrophes, which unfinished compositions of an input method hold. Nothing
    // typed finds nothing.
    QVector<CollectionMatch> find(const QString &typed, int most) const;

private:
    struct Key {
        QString text; // folded
        QString initials; // to be shown with it
    };
    struct Entry {
        CollectionMatch match;
        QString code; // folded
        QVector<Key> keys; // the name and its readings
    };
    static int rankOf(const Entry &entry, const QString &typed, CollectionMatch &match);

    QVector<Entry> m_entries; // in the order of the server
};
