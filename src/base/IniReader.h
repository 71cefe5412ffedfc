#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVariantMap>
#include <optional>

namespace morvane {

/// Reads the INI form that iniText writes, and QSettings wrote before it. Holds nothing beyond the text that
/// it was given, which must outlive it.
class IniReader {
public:
    /// What a text holds.
    struct Content {
        /// By key; "group/key" below a section other than [General]. Texts, lists of texts and bytes have
        /// their type, an empty value of another type is invalid, all else is text.
        QVariantMap values;
        bool isDamaged = false; ///< There are lines without a meaning; the values are those of the others.
    };

    /// Keys, further elements of lists, and headings without a key that are read; a text with more is
    /// damaged, and the values are those before. Each costs some microseconds, however short; settings have
    /// some hundred. What was read whole is not too much to be written, in whatever sections.
    static constexpr qsizetype maximumItems = 20'000;

    explicit IniReader(QByteArrayView text);

    /// Whatever the text is, in one pass over it.
    Content read();

private:
    /// One line, which quotes and backslashes may carry over line ends.
    struct Line {
        QByteArrayView text;
        std::optional<qsizetype> equalsSign; ///< The first one outside of quotes.
    };

    std::optional<Line> nextLine();
    void skipBlanks();
    void skipComment();
    void skipEscape();

    QByteArrayView m_text;
    qsizetype m_at = 0;
};

} // namespace morvane
