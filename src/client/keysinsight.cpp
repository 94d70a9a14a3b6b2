#include "client/keysinsight.h"

#include <QApplication>
#include <QStackedWidget>

namespace {

// The widget that would get the keys in these pages, and the one that has them, which may be
// another.
void leaveTurnedPage(const QStackedWidget *pages)
{
    const QWidget *page = pages->currentWidget();
    for (QWidget *kept : {pages->focusWidget(), QApplication::focusWidget()}) {
        if (kept && page && kept != page && pages->isAncestorOf(kept) && !page->isAncestorOf(kept))
            kept->clearFocus();
    }
}

} // namespace

void keepKeysInSight(const QWidget *window)
{
    for (const QStackedWidget *pages : window->findChildren<QStackedWidget *>()) {
        QObject::connect(pages, &QStackedWidget::currentChanged, pages,
                         [pages] { leaveTurnedPage(pages); });
    }
}
