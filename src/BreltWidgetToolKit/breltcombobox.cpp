#include "BreltWidgetToolKit/breltcombobox.h"

#include "BreltWidgetToolKit/breltinputwatch.h"
#include "BreltWidgetToolKit/breltreturnkey.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QListView>
#include <QStyle>
#include <QWheelEvent>

namespace {

const int c_largestListWidth = 480;
const int c_listPadding = 16;

} // namespace

BreltComboBox::BreltComboBox(QWidget *parent) : QComboBox(parent)
{
    brelt::watchInput();
    setFocusPolicy(Qt::StrongFocus);
    setMaxVisibleItems(12);
    // Measuring every entry for the field's own size would cost a list of hundreds each refresh.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    if (auto *list = qobject_cast<QListView *>(view()))
        list->setUniformItemSizes(true);
}

BreltComboBox::~BreltComboBox() = default;

void BreltComboBox::showPopup()
{
    int longest = 0;
    for (int i = 0; i < count(); ++i)
        longest = qMax(longest, view()->fontMetrics().horizontalAdvance(itemText(i)));
    const int wanted = longest + c_listPadding + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    view()->setMinimumWidth(qMin(wanted, c_largestListWidth));
    QComboBox::showPopup();
}

// Return takes the completion that is marked: the completer does so when the key comes back to it
// unused. Where none is marked, the list of completions closes first, since the field does not look
// at its own text below an open one.
void BreltComboBox::keyPressEvent(QKeyEvent *event)
{
    if (!brelt::isReturnKey(event)) {
        QComboBox::keyPressEvent(event);
        return;
    }
    if (completer() && completer()->completionMode() == QCompleter::PopupCompletion
        && completer()->popup()->isVisible()) {
        if (completer()->popup()->currentIndex().isValid()) {
            event->ignore();
            return;
        }
        completer()->popup()->hide();
    }
    brelt::takeReturnKey(
        event, [this, event] { QComboBox::keyPressEvent(event); }, [] {});
}

void BreltComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}
