#pragma once

#include "base/Regex.h"
#include "base/RegularFile.h"
#include "tools/Glob.h"
#include "tools/PatternPrefilter.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <expected>
#include <optional>
#include <vector>

namespace morvane {

/// What a search finds in one file. Immutable; any number of threads, each with a buffer of its own.
class FileSearch {
public:
    /// Room for one file; kept from file to file, since most of a search is reading.
    using Buffer = std::vector<char>;

    /// Fails with the reason why the pattern is no regular expression. An empty `include` lets every file
    /// pass, one that is no name pattern none.
    static std::expected<FileSearch, QString> compile(const QString &pattern, const QString &include);

    struct Result {
        QStringList lines;   ///< "path:number: text" for each of the first 10 matches.
        bool gaveUp = false; ///< Matching took too long; there are no lines.
    };

    /// Nothing for files of 5,000,000 bytes or more, and for what cannot be read, is no regular file or no
    /// UTF-8.
    Result search(const char *path, RegularFile::Links links, Buffer &buffer) const;

private:
    FileSearch(Regex regex, PatternPrefilter prefilter)
        : m_regex(std::move(regex)), m_prefilter(std::move(prefilter))
    {
    }

    bool includes(std::string_view path) const;
    Result searchText(const char *path, const QString &text) const;

    Regex m_regex;
    PatternPrefilter m_prefilter;
    bool m_includesAll = true;
    std::optional<Glob> m_include;
};

} // namespace morvane
