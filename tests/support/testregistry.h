#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

// One binary holds many test classes, and each runs as a process of its own, named by its file:
// `ZvWidgetKitTests pool` runs the class of test_pool.cpp. Further arguments go to QtTest.
//
// A warning that a test did not announce fails it: see expectMessage().

namespace zvtest {

using TestMaker = std::function<std::unique_ptr<QObject>()>;

// Registers a class under the subject of its source file; returns true, for a static initialiser.
bool registerTest(const char *sourceFile, TestMaker maker);

// Announces one message of the logger at warning level or above whose text contains `part`;
// a test that announced a message which never came fails too.
void expectMessage(const QString &part);

// Runs the class that the first argument names; returns the process's exit code.
int runRegisteredTest(int argc, char **argv);

} // namespace zvtest

#define ZV_TEST(Class)                                                                             \
    static const bool Class##Registered =                                                          \
        zvtest::registerTest(__FILE__, [] { return std::make_unique<Class>(); });
