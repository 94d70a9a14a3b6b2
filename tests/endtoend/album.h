#pragma once

#include <QImage>
#include <QString>

class QWidget;

namespace endtoend {

// The pictures of a walk through the program, numbered in their order, for people to look through.
class Album
{
public:
    // Makes the folder where it is not there, and takes the pictures of an earlier walk out of it.
    explicit Album(const QString &folder);

    // What the screen shows of a window and of whatever stands over it. Gives what is wrong with
    // the picture, "" where nothing is: that next to nothing can be seen on it, that it does not
    // differ from the one before, or that it cannot be written.
    QString take(const QString &name, QWidget *window);

    QString folder() const { return m_folder; }

private:
    QString m_folder;
    QImage m_last;
    int m_count = 0;
};

} // namespace endtoend
