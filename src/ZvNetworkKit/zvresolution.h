#pragma once

#include <QString>

struct ZvEnvelope;
struct ZvOutcome;

// What the exchange says when it is asked what became of an action.
enum class ZvResolution {
    None, // nothing of the action; ask again
    SignedOut, // it refuses the question, and says nothing about the action
    NotArrived, // the action has not come, and its key has no effect any more
    Ended // here is the action's answer
};

ZvResolution zvResolutionOf(const ZvOutcome &outcome);

// Why an action was refused: the exchange's own sentence, or one of the kit's where it sent none.
QString zvRefusalOf(const ZvEnvelope &envelope);
