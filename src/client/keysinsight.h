#pragma once

class QWidget;

// Keeps the keys of a window out of pages that are not in front. Qt moves them along where a page
// is turned in sight; below a menu or a box, or behind another page, it does not, and would give
// them back to a table that nobody sees. Looks after all the pages that the window has by then.
void keepKeysInSight(const QWidget *window);
