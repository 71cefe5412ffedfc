#pragma once

#include "base/FileDescriptor.h"
#include "platform/linux/desktop/AccessibilityConnection.h"
#include "platform/linux/desktop/ActionRequest.h"

#include <QString>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>

namespace morvane {

/// Tells programs to act, each time over a line of its own beside the accessibility bus. A program of GTK 3
/// reads nothing more where it was told to press a button, while the dialog is open that this opens: over the
/// bus it would be silent to everybody, screen readers among them. The lines to a program are held by a
/// process that outlives this one (carrier/CarrierMain.cpp), since the program hangs for good when one ends
/// meanwhile. Any thread but the main one.
class ActionCarrier {
public:
    /// `program` is the path of morvane-action-carrier.
    ActionCarrier(AccessibilityConnection &bus, QString program) : m_bus(bus), m_program(std::move(program))
    {
    }

    /// Over the bus where the program, whose process is `pid`, has no other lines. It has `limit` from when
    /// it has been told on. Nothing if `stop` came before, and it has not been told.
    std::optional<AccessibilityAnswer> tell(const AccessibilityCall &call, qint64 pid,
                                            std::chrono::milliseconds limit, const std::stop_token &stop);

private:
    /// The paths of the dialogs that a program has open.
    QStringList openDialogs(const QString &service, QDeadlineTimer deadline);
    /// How the request ends on this socket; nothing if it has not got there.
    static std::optional<AccessibilityAnswer>
    carry(const FileDescriptor &carrier, const ActionRequest &request, std::chrono::milliseconds limit);
    FileDescriptor newCarrier() const;

    AccessibilityConnection &m_bus;
    const QString m_program;
    std::mutex m_mutex;
    std::map<QString, FileDescriptor> m_carriers; ///< By service.
    quint32 m_number = 0;
};

/// The address of the lines of a program; empty where it has none, or tells one that does not lead to the
/// process `pid`.
QString lineAddress(AccessibilityConnection &bus, const QString &service, qint64 pid,
                    QDeadlineTimer deadline);

} // namespace morvane
