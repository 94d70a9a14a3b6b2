#pragma once

#include <QString>
#include <QTextDocument>

// Tool tips of texts that others have written. Not part of the exported interface.
namespace brelt {

// `text` as a tool tip that shows it to the letter. A tool tip guesses whether it is rich text, and
// a name such as "<b>1</b>" would lose its brackets.
inline QString plainToolTip(const QString &text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    return QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
}

} // namespace brelt
