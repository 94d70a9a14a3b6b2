#pragma once

#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/transaction_widget.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QStringList>

#include <memory>

class DealWidget_AllWidgets;

namespace zvtest {

// The object names of the navigation's buttons, from the top to the bottom.
extern const QStringList navigationButtons;

// The trading half in a window of its own, on a scripted exchange, unsigned. What is left under way
// ends with the bench.
class TransactionBench
{
public:
    // `platform` is 1 or 2, and `size` that of the window.
    explicit TransactionBench(int platform = 1, const QSize &size = QSize(1366, 307));
    ~TransactionBench();

    KitBench *kit() { return &m_kit; }
    ZvScriptedTransport *exchange() const { return m_kit.exchange; }

    // By object name; a name that is not there ends the test program.
    template <typename Widget>
    Widget *named(const QString &name) const
    {
        auto *found = trading->findChild<Widget *>(name);
        if (!found)
            qFatal("the trading half has no %s", qPrintable(name));
        return found;
    }
    QPushButton *button(const QString &name) const { return named<QPushButton>(name); }

    // A click with the mouse on a button that can be seen.
    void click(const QString &name);

    // The checked buttons of the navigation, from the top to the bottom, and those on the screen.
    QStringList checked() const;
    QStringList shown() const;
    bool isSelectOpen() const;

    // The pages, and the class of the one in front.
    QStackedWidget *pages() const;
    QString page() const;

    // The panel and the lock page, and which of them is in front.
    QStackedWidget *stack() const;
    bool isLocked() const;
    QWidget *lockPage() const { return stack()->widget(1); }
    QLineEdit *password() const { return lockPage()->findChild<QLineEdit *>(); }
    QPushButton *unlockButton() const { return lockPage()->findChild<QPushButton *>(); }
    QLabel *hint() const { return lockPage()->findChild<QLabel *>(); }

    // Calls a slot as a host does that knows its name.
    void call(const char *slot);

    std::unique_ptr<Transaction_Widget> trading; // deleted with the bench, unless before

private:
    KitBench m_kit;
};

} // namespace zvtest
