#pragma once

#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "moneybench.h"

#include <QAbstractButton>
#include <QTableView>
#include <QtTest/QtTest>

#include <memory>

namespace zvtest {

// A page with a table, in a window of its own, on a scripted exchange. It is not shown until it is
// told. What is left under way ends with the bench.
template <typename Page>
class TablePageBench
{
public:
    TablePageBench()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
            QStringLiteral("/lc/youbika/"));
        page = std::make_unique<Page>();
    }

    ~TablePageBench()
    {
        // The page goes first: it would show the endings in boxes.
        page.reset();
        m_kit.endActions();
        dropNotices();
    }

    ZvScriptedTransport *exchange() const { return m_kit.exchange; }
    void settle() { m_kit.settle(); }

    void show(const QSize &size = QSize(1366, 400))
    {
        page->resize(size);
        page->show();
        QVERIFY(QTest::qWaitForWindowExposed(page.get()));
        QCOMPARE(page->size(), size);
    }

    // By object name; a name that is not there ends the test program.
    template <typename Widget = QWidget>
    Widget *named(const char *name) const
    {
        auto *found = page->template findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("the page has no %s", name);
        return found;
    }

    QTableView *table() const
    {
        auto *found = page->template findChild<QTableView *>();
        if (!found)
            qFatal("the page has no table");
        return found;
    }

    QAbstractItemModel *model() const { return table()->model(); }

    void click(const char *name)
    {
        QVERIFY2(named(name)->isVisible(), name);
        QTest::mouseClick(named(name), Qt::LeftButton);
    }

    // Calls a slot of the page or of its table as one that knows its name.
    void call(const char *slot)
    {
        QObject *owner
            = page->metaObject()->indexOfSlot(qPrintable(QLatin1String(slot) + "()")) >= 0
            ? static_cast<QObject *>(page.get())
            : table();
        QVERIFY2(QMetaObject::invokeMethod(owner, slot, Qt::DirectConnection), slot);
    }

    std::unique_ptr<Page> page;

private:
    KitBench m_kit;
};

} // namespace zvtest
