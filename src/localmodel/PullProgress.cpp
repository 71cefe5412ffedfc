#include "localmodel/PullProgress.h"

#include "base/Text.h"

#include <QRegularExpression>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Whatever is longer is no progress, and what stands behind this is not looked at.
constexpr qsizetype longestReadLine = 4096;

} // namespace

std::optional<PullProgress> parsePullProgress(QStringView line)
{
    // Each digit and each blank can belong to one part of the expression only, so that no line makes it slow.
    static const QRegularExpression percentPattern(u"([0-9]+)%"_s);
    static const QRegularExpression sizesPattern(
        u"([0-9]+(?:\\.[0-9]+)?)\\s*(?:[KMGT]?B)?\\s*/\\s*([0-9]+(?:\\.[0-9]+)?)\\s*(GB|MB)"_s);
    const QString text = trimmed(line.first(std::min(line.size(), longestReadLine)));
    const QRegularExpressionMatch percentMatch = percentPattern.match(text);
    if (!percentMatch.hasMatch())
        return std::nullopt;
    // A percentage of a hundred digits is one, too.
    const double percent = std::min(percentMatch.captured(1).toDouble(), 1e9);
    PullProgress progress;
    progress.label = u"Downloading model… %1%"_s.arg(static_cast<qint64>(percent));
    if (const QRegularExpressionMatch sizes = sizesPattern.match(text); sizes.hasMatch())
        progress.label += u" ("_s + sizes.captured(0) + u')';
    progress.fraction = std::clamp(percent / 100, 0.0, 1.0);
    return progress;
}

} // namespace morvane
