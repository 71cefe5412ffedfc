#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace morvane {

/// The text of a PDF: that of its pages first, then what is recognised on the pages that have none, each
/// under "[Scanned page {n}]". Not more than the limits of AttachmentLimits.h ask for; pages that take too
/// long give nothing. Nothing at all if the document cannot be opened, also because it wants a password.
std::optional<QString> documentText(const QByteArray &bytes);

} // namespace morvane
