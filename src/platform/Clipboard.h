#pragma once

#include <QString>
#include <optional>
#include <stop_token>

namespace morvane {

/// The clipboard of the desktop.
class Clipboard {
public:
    virtual ~Clipboard() = default;

    /// Replaces what is on it. Main thread.
    virtual void setText(const QString &text) = 0;
    /// How often programs have asked for what setText has put on it, since the start; this one counts as
    /// well. Any thread.
    virtual int readings() const = 0;

    /// The text on it, whole; nothing if there is none, its owner does not answer, or soon after `stop`.
    /// Blocks as long as the owner sends something; any thread but the main one.
    virtual std::optional<QString> text(const std::stop_token &stop) = 0;
};

} // namespace morvane
