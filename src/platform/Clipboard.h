#pragma once

#include <QString>
#include <optional>

namespace morvane {

/// The clipboard of the desktop.
class Clipboard {
public:
    virtual ~Clipboard() = default;

    /// Replaces what is on it. Main thread.
    virtual void setText(const QString &text) = 0;

    /// The text on it, whole; nothing if there is none or its owner does not answer. Blocks, with a limit;
    /// any thread but the main one.
    virtual std::optional<QString> text() = 0;
};

} // namespace morvane
