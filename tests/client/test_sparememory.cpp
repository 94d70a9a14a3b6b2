#include "client/sparememory.h"

#include "support/testregistry.h"

#include <QFile>
#include <QStandardItemModel>
#include <QTimer>
#include <QtTest/QtTest>

#include <cstring>
#include <vector>

#include <unistd.h>

// The allocator of the system itself: a sanitizer stands before malloc().
extern "C" void *__libc_malloc(size_t size);
extern "C" void __libc_free(void *block);

namespace {

constexpr int block = 4096;
constexpr int blocks = 8192;
constexpr qint64 half = qint64(block) * blocks / 2;

qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

// What is free goes back once a whole market has been taken.
class SpareMemoryTest : public QObject
{
    Q_OBJECT

private:
    void *m_last = nullptr;

private slots:
    // Much is free below a block that is not.
    void init()
    {
        std::vector<void *> all;
        for (int i = 0; i < blocks; ++i) {
            all.push_back(__libc_malloc(block));
            std::memset(all.back(), 1, block);
        }
        m_last = all.back();
        all.pop_back();
        for (void *each : all)
            __libc_free(each);
    }
    void cleanup() { __libc_free(m_last); }

    void itGoesBackAfterAWholeList()
    {
        QStandardItemModel market(1, 1);
        QObject owner;
        new SpareMemory(&market, &owner);
        const qint64 before = residentBytes();
        market.clear();
        QVERIFY(before - residentBytes() < half); // what follows the list may want it
        QTRY_VERIFY_WITH_TIMEOUT(before - residentBytes() > half, 20000);
    }

    void changesAloneLeaveItThere()
    {
        QStandardItemModel market(1, 1);
        QObject owner;
        new SpareMemory(&market, &owner);
        const auto *rest = owner.findChild<QTimer *>();
        market.setData(market.index(0, 0), 1);
        QVERIFY(!rest->isActive());
        market.clear();
        QVERIFY(rest->isActive());
    }
};

ZV_TEST(SpareMemoryTest)
#include "test_sparememory.moc"
