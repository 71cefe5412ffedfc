#pragma once

#include "support/AccessibleProgram.h"
#include "support/AnnouncementRecorder.h"
#include "support/Keyboard.h"
#include "support/ScriptedModel.h"
#include "support/XConnection.h"

#include <QJsonObject>
#include <memory>

namespace morvane {

/// The real program on a private desktop beside a scripted model, with a screen reader's ear and a keyboard.
class MorvaneSession {
public:
    /// Prepares an empty home whose settings point at a model that answers with `script`; the program is not
    /// started yet. `desktop` must outlive the session.
    MorvaneSession(const PrivateDesktop &desktop, const QString &program, ModelScript script,
                   AnnouncementRecorder::Hearing hearing = AnnouncementRecorder::Hearing::announcements,
                   const QString &homeName = QStringLiteral("home"));

    /// Adds or replaces a value of the settings file; before start().
    void setSetting(const QString &key, const QString &value);
    /// The home has no settings, as a newcomer's; before start().
    void forgetSettings() { m_settings.clear(); }
    /// Adds a variable to the program's environment; before start().
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }

    /// Starts the program and waits until its window takes keys.
    void start();
    /// Ends the program as the session's end would, if it runs.
    void quit();
    /// What the program has written to standard output and error, from its first start on.
    QString log() const;
    /// What the sanitizers said of the program, from its first start on; empty without a report.
    QString sanitizerReport() const;
    /// A further start of the program in the same home, beside the first.
    std::unique_ptr<TestProgram> startAgain() const;

    /// Whether the program has been started and still runs.
    bool isRunning() const { return m_program && m_program->process().isRunning(); }

    /// The user's home folder of this session.
    const QString &home() const { return m_home; }

    AccessibleProgram &program() { return *m_program; }
    AnnouncementRecorder &ear() { return *m_ear; }
    const Keyboard &keyboard() const { return m_keyboard; }
    const XConnection &screen() const { return m_screen; }
    QString display() const { return m_desktop.display(); }
    ScriptedModel &model() { return m_model; }
    const PrivateDesktop &desktop() const { return m_desktop; }

    /// Writes `text` into the message field through the accessibility bus; the keyboard is in it afterwards.
    void write(const QString &text);
    /// Writes `text` into the message field and presses Return.
    void send(const QString &text);

    /// Whether the status line reads `status`, now or soon.
    bool hasStatus(const QString &status);

    /// The settings file as it is now.
    QByteArray settingsText() const;

    /// The names of the rows of the activity log, oldest first.
    QStringList activity();

    /// The stored conversations by file name.
    QMap<QString, QJsonObject> storedConversations() const;
    /// Whether some stored conversation has a last message with this value, now or soon.
    bool storesLastMessage(const QString &key, const QJsonValue &value) const;

    /// Writes the tree and what was heard to `folder`, beside the desktop's own evidence.
    void keepEvidence(const QString &folder);

private:
    void writeSettings() const;

    const PrivateDesktop &m_desktop;
    QString m_programPath;
    QString m_home;
    QMap<QString, QString> m_settings;
    QProcessEnvironment m_environment; ///< What it adds to the desktop's.
    ScriptedModel m_model;
    XConnection m_screen;
    Keyboard m_keyboard{m_screen};
    AccessibilityBus m_bus;
    std::unique_ptr<AnnouncementRecorder> m_ear;
    std::unique_ptr<AccessibleProgram> m_program;
};

} // namespace morvane
