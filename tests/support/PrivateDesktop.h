#pragma once

#include "support/TestProgram.h"

#include <QImage>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <memory>

namespace morvane {

/// A desktop that belongs to one test program and leaves nothing behind: temporary home folders, an X server
/// without a screen, a window manager, a session bus, and by activation from it the accessibility bus.
class PrivateDesktop {
public:
    /// Starts everything and waits until it serves. Throws std::runtime_error with the log of what failed.
    explicit PrivateDesktop(QSize screen = {1280, 960});
    ~PrivateDesktop();

    /// The whole environment of a program on this desktop; nothing of the caller's session shines through.
    QProcessEnvironment environment() const { return m_environment; }

    /// Makes the calling process live on this desktop too; before its application object is made.
    void adopt() const;

    QString display() const { return m_environment.value(QStringLiteral("DISPLAY")); }
    QString sessionBusAddress() const;
    /// A folder for the files of one test, emptied with the desktop.
    QString newFolder(const QString &name) const;

    /// What the screen shows now.
    QImage screenshot() const;

    /// Copies a picture of the screen and every log to `folder`.
    void keepEvidence(const QString &folder) const;

private:
    void startServer(QSize screen);
    void startBus();
    void startWindowManager();
    QString logPath(const QString &name) const;

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    std::unique_ptr<TestProgram> m_server;
    std::unique_ptr<TestProgram> m_bus;
    std::unique_ptr<TestProgram> m_windowManager;
};

} // namespace morvane
