#pragma once

#include "model/ChatMessage.h"
#include "ui/conversation/RowLayout.h"

#include <QString>
#include <variant>

namespace morvane {

/// A message of which not everything is selected, with the segments that it is shown in.
struct SelectedStretch {
    ChatMessage message;
    RowLayout row;
    qsizetype first = 0; ///< Of the segments that are selected whole.
    qsizetype last = -1;
    QString head; ///< What is selected of the segment above them,
    QString tail; ///< and of the one below.
};

/// A row of what is selected: its text, or the message of which everything or a stretch is.
using SelectedRow = std::variant<QString, ChatMessage, SelectedStretch>;

} // namespace morvane
