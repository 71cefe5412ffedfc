#pragma once

#include "attachments/AttachmentLimits.h"

#include <QByteArray>
#include <QString>
#include <chrono>
#include <optional>

namespace morvane {

/// How long the parts of the work may take.
struct DocumentTimes {
    std::chrono::milliseconds text = attachmentLimits::documentTextTime;
    std::chrono::milliseconds recognition = attachmentLimits::recognitionTime;
    std::chrono::milliseconds recognitionOfPage = attachmentLimits::recognitionTimeOfPage;
};

/// The text of a PDF in the order in which it is read: that of its pages first, then what is recognised on
/// the pages that have none, each under "[Scanned page {n}]". Not more than the limits of AttachmentLimits.h
/// ask for; a last line names the pages that took too long, if there is any text. Nothing at all if the
/// document cannot be opened, also because it wants a password.
std::optional<QString> documentText(const QByteArray &bytes, const DocumentTimes &times = {});

} // namespace morvane
