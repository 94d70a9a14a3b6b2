#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class QTableView;

namespace endtoend {

// The trading half of the window, as a user takes it. Its parts are found by the names of their
// classes and objects.
class TradingPanel
{
public:
    explicit TradingPanel(const QWidget &window) : m_window(window) { }

    // Chooses a collection by a click on its row of the market table, and waits for its quote.
    bool choose(const QString &code) const;

    // Brings a page to the front by its button on the left, such as "pushButton_sell".
    void open(const char *button) const;

    // Types into the ticket, and sends it by its button. A box that asks is somebody else's to
    // answer.
    void type(const QString &price, const QString &count) const;
    void order() const;

    // A widget of a page; null where it is not there.
    template <typename Widget = QWidget>
    Widget *in(const char *pageClass, const char *name) const;
    template <typename Widget = QWidget>
    Widget *inTicket(const char *name) const
    {
        return in<Widget>("DealWidget_BuySell", name);
    }

    // What a label of the ticket says.
    QString says(const char *label) const;

    void click(const char *pageClass, const char *button) const;

    // The table of a class, and what stands in one of its columns.
    QTableView *table(const char *viewClass) const;
    QStringList column(const char *viewClass, int column) const;

private:
    QWidget *ofClass(const char *name) const;

    const QWidget &m_window;
};

template <typename Widget>
Widget *TradingPanel::in(const char *pageClass, const char *name) const
{
    const QWidget *page = ofClass(pageClass);
    return page ? page->findChild<Widget *>(QLatin1String(name)) : nullptr;
}

// A sentence as the boxes of the panel say it.
QString paragraph(const QString &text);

// The last of the passing notices; empty where there was none.
QString notice();

// The money that the window says may be used, yuan.
double available();

} // namespace endtoend
