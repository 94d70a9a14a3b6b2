#include "ZvModelKit/zvubbriefitem.h"

ZvUBBriefItem::ZvUBBriefItem() : ZvUBBriefItem(zvub::emptyItem<ZvUBBriefItem>()) { }

ZvUBBriefItem::ZvUBBriefItem(const Data &data) : m_data(data) { }
