#pragma once

#include "support/PrivateDesktop.h"
#include "support/TestProgram.h"

#include <QStringList>
#include <functional>
#include <memory>

namespace morvane {

/// Orca, a real screen reader, with a voice that writes down instead of speaking. It reads what has the focus
/// on its desktop, as it would to a user.
class ScreenReader {
public:
    /// Starts it on `desktop`, which must outlive it, and waits until it says that it is there. `settings` is
    /// the folder with its voice and settings. Throws std::runtime_error with its log if it does not start.
    ScreenReader(const PrivateDesktop &desktop, const QString &settings);

    /// What was spoken since the last forget(), piece by piece, in order.
    QStringList heard() const;
    /// Whether `text` is a piece of it, now or soon.
    bool hears(const QString &text) const;
    /// Whether these pieces come in this order, other pieces between them or not, now or soon.
    bool hearsInOrder(const QStringList &texts) const;
    void forget();
    /// Whether it deals, now or soon, with `text` that `write` writes into a field, at its beginning: one
    /// line of at most 100 characters. A key that is pressed before that would make the text what the field
    /// has answered to the key, which is read out.
    bool takesIn(const QString &text, const std::function<void()> &write) const;

    /// Copies what was spoken and the reader's own log to `folder`.
    void keepEvidence(const QString &folder) const;

private:
    QStringList spoken() const;

    QString m_spokenPath;
    QString m_logPath;
    std::unique_ptr<TestProgram> m_process;
    qsizetype m_forgotten = 0;
};

} // namespace morvane
