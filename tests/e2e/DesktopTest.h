#pragma once

#include "MorvaneTest.h"

#include "support/TestProgram.h"
#include "support/XConnection.h"

namespace morvane {

/// The model looks at the desktop and acts on programs of others.
class DesktopTest : public MorvaneTest {
protected:
    /// A program that is there before Morvane's window is, which then lies in front of it.
    void startProgram(const MorvaneSession &morvane, const QString &program, const QStringList &arguments);

    /// A session that is in the middle of typing a long text into another program, and has further turns. It
    /// has keys in use that m_keys does not have.
    MorvaneSession &startTypingALot(std::vector<ScriptedTurn> further = {});

    void TearDown() override;

    /// What the tools answered, in order; older answers are cut in later requests.
    static QStringList results(MorvaneSession &morvane);

    /// What is on all keys.
    static QByteArray keyboardMapping(const XConnection &screen);
    /// A bit for each key that is down.
    static QByteArray heldKeys(const XConnection &screen);

    std::unique_ptr<TestProgram> m_program;
    QString m_typed; ///< The file with what has been typed.
    QByteArray m_keys;
};

} // namespace morvane
