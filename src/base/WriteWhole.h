#pragma once

#include <QByteArrayView>

namespace morvane {

/// Writes all of the bytes to an open descriptor, also where a signal comes between; false on failure, with
/// errno set. Any thread; blocks as long as the descriptor does.
bool writeWhole(int descriptor, QByteArrayView bytes);

} // namespace morvane
