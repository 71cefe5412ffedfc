#pragma once

#include "ui/conversation/ConversationItem.h"
#include "ui/conversation/TextSelection.h"

#include <QPoint>
#include <QString>
#include <optional>

namespace morvane {

class ConversationLayout;

/// What lies at a place of the conversation.
struct TextHit {
    TextPlace place;
    QString link; ///< The address under the place, or empty.
};

/// The text at `place`, whose y counts from the top of the first row, or the nearest. Nothing without rows.
std::optional<TextHit> hitTest(ConversationLayout &layout, const QPoint &place);

} // namespace morvane
