#pragma once

#include <QString>

namespace morvane {

/// Whether a notification daemon reads the body as markup or shows it as it is.
enum class BodyMarkup { shown, parsed };

/// What is handed to a daemon as the body of a banner: at most 1,000 characters (daemons lay out what they
/// are given), without control characters but line feeds, and with "&", "<" and ">" escaped where it parses.
QString bannerBody(const QString &text, BodyMarkup markup);

/// The same as a title, which is never parsed and has one line.
QString bannerTitle(const QString &text);

} // namespace morvane
