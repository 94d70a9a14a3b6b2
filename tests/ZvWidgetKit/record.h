#pragma once

#include "pagelog.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace zvtest {

// A log of pages and kit in which a test notes lines of its own between them, such as signals.
class Record
{
public:
    void note(const QString &line)
    {
        m_lines += m_log.take();
        m_lines << line;
    }

    // Notes `line` with each signal.
    template <typename Sender, typename Signal>
    void noteSignal(const Sender *sender, Signal signal, const QString &line)
    {
        QObject::connect(sender, signal, &m_context, [this, line] { note(line); });
    }

    // The lines since the start or the last call, one below the other.
    QString take()
    {
        m_lines += m_log.take();
        const QString text = m_lines.join(QLatin1Char('\n'));
        m_lines.clear();
        return text;
    }

protected:
    QObject m_context; // of the connections that end with the record

private:
    PageLog m_log;
    QStringList m_lines;
};

} // namespace zvtest
