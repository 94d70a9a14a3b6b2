#pragma once

#include "campaign/campaign.h"
#include "randomevents/apart.h"
#include "randomevents/chance.h"
#include "randomevents/hands.h"
#include "randomevents/heldclock.h"
#include "randomevents/randomexchange.h"
#include "randomevents/soundness.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>
#include <vector>

class MainWindow;
class QEventLoop;
class StartScreen;

namespace randomevents {

// The windows in which events have to come, by class; those of several pages page by page.
QStringList expectedRooms();

// One program from its start to its end, as main() has it, in which nothing is done on purpose.
//
// The event loop itself drives it: at each turn one event is made, so that those of a dialog that
// runs a loop of its own go on inside. A dialog gets a number of events and is then closed.
class WindowLife : public QObject
{
    Q_OBJECT

public:
    WindowLife(quint64 seed, int events, HeldClock &clock, Journal &journal,
               campaign::Counts &counts);
    ~WindowLife() override;

    // Lives it. What does not hold ends it in the journal.
    void live();

public slots:
    void openPage(const QUrl &url); // instead of a browser

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    // One event loop on the stack.
    struct Loop {
        int events; // until it is to be ended
        int closings = 0;
    };

    void choosePlatform();
    void open();
    void close();
    void wake();
    void turn();
    void happen();
    void happenToWindow();
    void happenToProgram();
    void happenAtExchange();
    void callAsHost();
    void signIn();
    void emitSignal(QObject *object, const char *name);
    void endLoop(Loop &loop);
    bool isToBeEnded(Loop &loop);
    QWidget *windowInUse() const;
    void noteRoom(const QWidget *window);
    void letTimePass();
    void hearAnswers();
    void waitForDecoder();
    void check(const QString &fault);
    void note(const QString &event);

    Chance m_chance;
    HeldClock &m_clock;
    Journal &m_journal;
    campaign::Counts &m_counts;
    int m_left; // events
    bool m_isOpen = false; // the window has been shown
    Hands m_hands;
    Soundness m_soundness;
    QTemporaryDir m_folder;
    RandomExchange *m_exchange = nullptr; // owned by the kit
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<StartScreen> m_start;
    std::unique_ptr<QWidget> m_other; // a window of another program, as far as this one can tell
    std::vector<Loop> m_loops; // that this life has seen on the stack
    int m_busy = 0; // the level of the loop in which an event is being made
    int m_timer = 0;
    QPointer<QWidget> m_modal; // of the lowest loop, and so shown without a loop of its own
    int m_modalEvents = 0;
    QEventLoop *m_outer = nullptr;
};

} // namespace randomevents
