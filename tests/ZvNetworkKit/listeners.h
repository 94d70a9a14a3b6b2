#pragma once

#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

class QSignalSpy;

// Watches every signal of an object.
class Ear
{
public:
    explicit Ear(QObject *object);
    ~Ear();
    Q_DISABLE_COPY(Ear)

    int count() const;

    // Names of the signals that came, in the order of the meta-object.
    QStringList heard() const;

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

// Counts the lines that the kit's network side writes, at whatever level. They go on to the test's
// own log, where a warning has to be announced, unless the test judges each line by itself. One at
// a time.
class LogLines
{
public:
    enum Onward { PassOn, Keep };

    explicit LogLines(Onward onward = PassOn);
    ~LogLines();
    Q_DISABLE_COPY(LogLines)

    static QStringList lines();
};
