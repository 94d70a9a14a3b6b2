#pragma once

#include "ZvNetworkKit/zvserverengine.h"

#include <QWidget>
#include <QtTest/QtTest>

namespace zvtest {

// A window with nothing in it but what a test puts there, for the parts of the program's window
// that follow the account. Nobody is signed in when it begins and when it ends.
class PlainWindow : public QWidget
{
public:
    PlainWindow() { setSignedIn(false); }
    ~PlainWindow() override { setSignedIn(false); }

    // On the screen, with the keys in it.
    void open()
    {
        setGeometry(0, 0, 780, 560);
        show();
        activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(this));
    }

    static void setSignedIn(bool isSignedIn)
    {
        ZvServerEngine::getZvServerEngineInstance()->isLogged = isSignedIn;
    }
};

} // namespace zvtest
