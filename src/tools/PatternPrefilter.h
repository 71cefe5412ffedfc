#pragma once

#include <QByteArrayView>
#include <QStringView>
#include <memory>

namespace re2 {
class RE2;
}

namespace morvane {

/// Tells in time linear in a text that a regular expression cannot match in it. A search asks it first: RE2
/// reads the files' own bytes at a gigabyte a second and knows no slow patterns, while ICU, which finds the
/// matches, needs the text in UTF-16 and up to a thousand times longer. Immutable; any thread.
class PatternPrefilter {
public:
    /// Of a pattern in ICU's syntax, without options. Where it cannot be put to RE2, every text passes.
    explicit PatternPrefilter(QStringView pattern);

    /// False only if the pattern cannot match in this UTF-8 text.
    bool mayMatch(QByteArrayView text) const;

private:
    std::shared_ptr<const re2::RE2> m_regex;
};

} // namespace morvane
