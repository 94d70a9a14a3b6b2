#include "client/keysinsight.h"

#include <QStackedWidget>

namespace {

void leaveTurnedPage(const QStackedWidget *pages)
{
    QWidget *kept = pages->focusWidget();
    const QWidget *page = pages->currentWidget();
    if (kept && page && kept != page && !page->isAncestorOf(kept))
        kept->clearFocus();
}

} // namespace

void keepKeysInSight(const QWidget *window)
{
    for (const QStackedWidget *pages : window->findChildren<QStackedWidget *>()) {
        QObject::connect(pages, &QStackedWidget::currentChanged, pages,
                         [pages] { leaveTurnedPage(pages); });
    }
}
