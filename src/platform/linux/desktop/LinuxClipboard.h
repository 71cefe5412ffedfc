#pragma once

#include "platform/Clipboard.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace morvane {

/// The clipboard of the desktop: set through the application, read over a connection of its own, so that an
/// owner that hangs holds up nothing but the question.
class LinuxClipboard final : public Clipboard {
public:
    /// `patience` is how long an owner may keep a question waiting beyond what its bytes earn
    /// (XSelectionReader).
    explicit LinuxClipboard(std::chrono::milliseconds patience = std::chrono::seconds(2))
        : m_patience(patience)
    {
    }

    void setText(const QString &text) override;
    int readings() const override { return *m_readings; }
    std::optional<QString> text(const std::stop_token &stop) override;

private:
    /// Of what the desktop may ask for when the clipboard has gone, too.
    const std::shared_ptr<std::atomic<int>> m_readings = std::make_shared<std::atomic<int>>(0);
    const std::chrono::milliseconds m_patience;
};

} // namespace morvane
