#pragma once

#include <QString>
#include <QUrl>

// The program that is measured, in a process of its own: the client's window on an exchange, or the
// barest window that Qt can paint. What it finds out it writes to standard output, a word and a
// figure on a line; times are those of CLOCK_MONOTONIC, in nanoseconds.
namespace subject {

// painted <time> once the first frame is painted, resident <KiB> at rest. Returns the exit code.
int runBare(int argc, char **argv);

// The same for a window of about as many widgets as the client has, with a style sheet on each or
// with none.
int runCrowd(int argc, char **argv, bool isStyled);

enum class Task {
    FirstRows, // painted <time> once the first rows of the market are
    Resident, // resident <KiB> with market, chart and ticket open and an account signed in
    Idle, // paints <number> outside ticker and clock in so many seconds, painted <class> for each
    Load, // busy <milliseconds of CPU> in so many seconds of a living market
};

int runClient(int argc, char **argv, Task task, const QUrl &exchange, int seconds);

} // namespace subject
