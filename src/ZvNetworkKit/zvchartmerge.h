#pragma once

#include "ZvModelKit/zvubkline.h"
#include "ZvModelKit/zvubtimeline.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

// How answers about a part of a chart are laid onto what stands. Both are of the same collection
// and of the same run of the service.
namespace zvchart {

enum class Period { Day, Week, Month };

struct Laid {
    enum Kind {
        Same, // nothing is new
        Grown,
        Gap, // they do not meet: everything has to be asked for
        Older // of a session that is over: nothing to be shown
    };
    Kind kind = Same;
    int firstChanged = 0; // of the minutes or bars, where they have grown
};

// Lays the minutes from the last one that stands on onto `held`, which has minutes. Hours come
// along; where they alone are new the last minute counts as changed.
ZVNETWORKKIT_EXPORT Laid layTail(ZvUBTimeLine &held, const ZvUBTimeLine &tail);

// Lays the newest bars onto `held`, which has bars. The bar of a week or a month that grows bears
// another day every day, so it is its period that is compared.
ZVNETWORKKIT_EXPORT Laid layTail(ZvUBKLine &held, const ZvUBKLine &tail, Period period);

// Puts earlier bars in front of `held`, which has bars, and gives their number; -1, and nothing is
// done, where they are not earlier. A part of the first period that stands is left out.
ZVNETWORKKIT_EXPORT int layFront(ZvUBKLine &held, const ZvUBKLine &front, Period period);

} // namespace zvchart
