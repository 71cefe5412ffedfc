#pragma once

#include "platform/MachineFacts.h"

namespace morvane {

/// The facts as the kernel and the distribution publish them in files.
class LinuxMachineFacts final : public MachineFacts {
public:
    /// `root` stands in front of every path that is read; empty for the running system.
    explicit LinuxMachineFacts(QString root = QString());

    /// The DMI product name, else the device tree's model (computers without PC firmware).
    QString modelIdentifier() const override;
    /// The first "model name" of /proc/cpuinfo; ARM kernels give none.
    QString chip() const override;
    quint64 physicalMemory() const override;
    /// PRETTY_NAME of the os-release file.
    QString osVersion() const override;
    bool isArm64() const override;

private:
    QByteArray read(const QString &path) const;

    QString m_root;
};

} // namespace morvane
