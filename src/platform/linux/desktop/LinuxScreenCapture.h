#pragma once

#include "platform/ScreenCapture.h"

namespace morvane {

/// Pictures of an X server, through shared memory where it is on this computer.
class LinuxScreenCapture final : public ScreenCapture {
public:
    bool isGranted(const std::stop_token &stop) override;
    /// Nothing: an X server shows all to everyone, and there is nobody to ask on others.
    void requestAccess() override {}

    QList<QRect> displays(const std::stop_token &stop) override;
    QPoint pointer(const std::stop_token &stop) override;
    QImage capture(const QRect &region, const std::stop_token &stop) override;
};

} // namespace morvane
