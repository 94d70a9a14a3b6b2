#pragma once

#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/market_widget.h"

#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QStringList>
#include <QTimer>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

namespace zvtest {

// Runs `cause` and, once a modal dialog of this class runs inside it, `inside`, which has to end
// it. True where that dialog came; `cause` has returned by then.
template <typename Dialog>
bool withDialog(const std::function<void()> &cause, const std::function<void(Dialog *)> &inside)
{
    bool hasCome = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        watch.stop();
        hasCome = true;
        const QPointer<Dialog> guard(dialog);
        inside(dialog);
        if (guard && guard->isVisible()) {
            QTest::qFail("the dialog was left open", __FILE__, __LINE__);
            guard->close();
        }
    });
    watch.start(0);
    cause();
    return hasCome;
}

// The market half in a window of its own, with three collections, 1001 to 1003, of which 1002 is
// the current one. What is left under way ends with the bench.
class MarketBench
{
public:
    MarketBench();
    ~MarketBench();

    KitBench *kit() { return &m_kit; }
    ZvScriptedTransport *exchange() const { return m_kit.exchange; }

    // A button of the title row by its text; one that is not there ends the test program.
    QPushButton *button(const QString &text) const;
    void click(const QString &text);

    // The buttons of the title row that can be seen, and the checked ones, from left to right.
    QString shown() const;
    QString checked() const;

    QStackedWidget *stack() const;

    // "table", "chart" or "deals".
    QString page() const;

    // Calls a slot as a host does that knows its name; for those that answer, the answer.
    void call(const char *slot);
    bool asks(const char *slot);

    std::unique_ptr<Market_Widget> market; // deleted with the bench, unless the test has done so

private:
    QList<QPushButton *> buttons() const;

    KitBench m_kit;
};

} // namespace zvtest
