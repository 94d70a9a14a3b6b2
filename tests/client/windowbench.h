#pragma once

#include "client/mainwindow.h"

#include "ZvModelKit/zvubobject.h"

#include <QList>
#include <QSize>

#include <memory>

namespace zvtest {

// The window of the program on an exchange that says nothing: what it shows is what a test has put
// into the cache. Each has a server of its own, so that none takes the rows of another. Nobody is
// signed in when it ends.
class WindowBench
{
public:
    explicit WindowBench(const QSize &size);
    ~WindowBench();

    // On the screen, with the keys in it.
    void show() const;

    // Gives it a market of three collections, 1001 to 1003, each of a type of its own. Their
    // initials are "cp".
    static void fill();
    static QList<ZvUBObject> rows(qint64 latest = 1000);

    // Everybody in the house hears that an account has signed in.
    static void signIn();

    std::unique_ptr<MainWindow> window;
};

} // namespace zvtest
