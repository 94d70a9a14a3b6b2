#pragma once

class QAbstractScrollArea;

// Gives both scroll bars of `area` the library's sheet for scroll bars.
void applyScrollBarStyle(QAbstractScrollArea *area);
