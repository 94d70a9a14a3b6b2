#pragma once

#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/logindialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QStringList>

class ZvScriptedTransport;

namespace zvtest {

extern const QStringList loginEditNames; // all of them, in the order of the tab key, page by page
extern const QStringList loginButtonNames;

// The sign-in dialog on a scripted exchange, as a host shows it. What is left under way ends with
// the bench.
class LoginBench
{
public:
    LoginBench();
    ~LoginBench();

    ZvScriptedTransport *exchange() const { return m_kit.exchange; }
    void settle() { m_kit.settle(); }

    // By object name; a name that is not there ends the test program.
    QLineEdit *edit(const QString &name) const { return named<QLineEdit>(name); }
    QPushButton *button(const QString &name) const { return named<QPushButton>(name); }
    QLabel *label(const QString &name) const { return named<QLabel>(name); }
    QWidget *widget(const QString &name) const { return named<QWidget>(name); }
    QStackedWidget *stack() const { return named<QStackedWidget>(QStringLiteral("stackedWidget")); }

    // Clicks with the mouse; the button's page has to be in front.
    void click(const QString &button);

    // Fills edits as a program would, past the validators: pairs of a name and a text.
    void fill(const QList<QPair<QString, QString>> &texts);

    // The names and texts of the prompts of a page that show more than blanks, as "name: text".
    QStringList prompts(const QString &page) const;

    // The names of the buttons that Return would press.
    QStringList defaultButtons() const;

    QPointer<LoginDialog> dialog; // deleted with the bench, unless the test has done so

private:
    template <typename Widget>
    Widget *named(const QString &name) const
    {
        auto *found = dialog->findChild<Widget *>(name);
        if (!found)
            qFatal("the sign-in dialog has no %s", qPrintable(name));
        return found;
    }

    void endWhatIsUnderWay();

    KitBench m_kit;
};

} // namespace zvtest
