#pragma once

#include "model/ChatAttachment.h"

#include <QString>

namespace morvane {

/// The bracketed text that stands for a document or a text file in a request to a model.
QString attachedFileText(const ChatAttachment &attachment);

/// The bracketed note that stands for an image that the model does not get to see.
QString imagePlaceholder(const ChatAttachment &image);

} // namespace morvane
