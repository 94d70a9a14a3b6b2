#include "endtoend/marketpage.h"

#include "endtoend/programs.h"

#include "ZvWidgetKit/market_tablewidget.h"

#include <QButtonGroup>
#include <QPushButton>
#include <QTableView>

namespace endtoend {
namespace {

QButtonGroup *groupOf(const QWidget &window)
{
    return window.findChild<Market_TableWidget *>()->findChild<QButtonGroup *>();
}

QAbstractButton *buttonOf(const QWidget &window, const QString &text)
{
    for (QAbstractButton *button : groupOf(window)->buttons()) {
        if (button->text() == text && button->isVisible())
            return button;
    }
    return nullptr;
}

} // namespace

QTableView *marketTable(const QWidget &window)
{
    return window.findChild<Market_TableWidget *>()->findChild<QTableView *>();
}

bool choose(const QWidget &window, const QString &text)
{
    if (!until([&] { return buttonOf(window, text) != nullptr; }))
        return false;
    QTest::mouseClick(buttonOf(window, text), Qt::LeftButton);
    return chosen(window) == text;
}

bool showWholeMarket(const QWidget &window)
{
    return until([&] { return groupOf(window)->buttons().size() > 2; })
        && choose(window, QStringLiteral("行情"));
}

QStringList choices(const QWidget &window)
{
    QStringList texts;
    for (const QAbstractButton *button : groupOf(window)->buttons())
        texts << button->text();
    return texts;
}

QString chosen(const QWidget &window)
{
    const QAbstractButton *button = groupOf(window)->checkedButton();
    return button ? button->text() : QString();
}

QStringList textsOfColumn(const QWidget &window, int column)
{
    const QAbstractItemModel *model = marketTable(window)->model();
    QStringList texts;
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->index(row, column).data().toString();
    return texts;
}

} // namespace endtoend
