#pragma once

#include <QString>

class QMimeData;

namespace morvane {

/// The extension, such as "png", of the best format in which what was copied or dragged is a picture; empty
/// if it is none, or is also text.
QString pictureExtension(const QMimeData &data);

} // namespace morvane
