#pragma once

#include <QObject>
#include <QString>

// Tells pages once more what the cache holds, when something about the view has changed.
//
// Announcements wait for the event loop, so none comes from inside a setter, and those that are
// made in one turn go out once.
class ZvAnnouncer : public QObject
{
    Q_OBJECT

public:
    enum Topic {
        MarketList = 1,
        Collection = 2, // item, trade and latest deals of the current collection
        Quote = 4, // trade of the current collection
        Cap = 8,
        Gather = 16
    };

    explicit ZvAnnouncer(QObject *parent = nullptr);

    // The collection that the announcements of collections are about.
    void setCollection(const QString &collectionId) { m_collection = collectionId; }
    QString collection() const { return m_collection; }

    void announce(int topics);

private:
    void tell();

    QString m_collection;
    int m_topics = 0;
};
