#pragma once

#include <QByteArray>
#include <QString>
#include <ostream>

// How GoogleTest shows the toolkit's texts where an expectation fails; by itself it shows the codes of their
// characters. It looks for the name in the namespace of the classes.

/// Of a long text the beginning.
inline void PrintTo(const QByteArray &bytes, std::ostream *out)
{
    *out << '"' << bytes.first(qMin(bytes.size(), qsizetype(2000))).toStdString() << '"';
    if (bytes.size() > 2000)
        *out << " and more, " << bytes.size() << " bytes in all";
}

/// Like the above, in UTF-8.
inline void PrintTo(const QString &text, std::ostream *out)
{
    PrintTo(text.toUtf8(), out);
}
