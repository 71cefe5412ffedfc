#pragma once

#include <QObject>
#include <memory>

class QSocketNotifier;

namespace morvane {

/// Ends the event loop when the session or a terminal asks the process to stop (SIGTERM, SIGINT, SIGHUP), so
/// that waiting writes still reach the disk. Main thread; needs the application object. One in a process.
class TerminationSignals : public QObject {
public:
    TerminationSignals();
    ~TerminationSignals() override;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvane
