#pragma once

#include "cost.h"

#include "ZvWidgetKit/collection_tableview.h"

#include <QObject>

#include <memory>
#include <optional>

class Market;
class ZvScriptedTransport;

// The product's way of a tick: a poll's answer goes through the link to the decoder's thread, from
// there into the cache, and the cache's signal feeds the table. Only the network is not there.
//
// One at a time: the kit has one link and one cache.
class ClientTable : public QObject
{
    Q_OBJECT

public:
    // A visible window of `size` that shows `market` from its first row on, sorted by `sortColumn`.
    ClientTable(const Market &market, QSize size, int sortColumn);
    ~ClientTable() override;

    // Takes the last tick of the market, or a poll without news, as a poll's answer.
    Cost takeTick();
    Cost takeNothingNew();

    // Answers the open poll with `data` and does not wait for its end.
    void sayTick(const QByteArray &data);

    Collection_TableView &view() { return *m_view; }

    // The rows of the cache.
    QList<ZvUBObject> rows() const;

private:
    Cost take(const QByteArray &data, bool isFed);
    void feed();

    const Market &m_market;
    ZvScriptedTransport *m_transport;
    std::unique_ptr<Collection_TableView> m_view;
    int m_fed = 0;
    std::optional<Stopwatch> m_watch;
    double m_settled = 0;
};
