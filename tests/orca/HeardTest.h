#pragma once

#include "MorvaneTest.h"

#include "support/ScreenReader.h"

namespace morvane {

/// Base of the tests that listen with a real screen reader. It starts before the program, and one that fails
/// leaves what was spoken and the reader's log with the other evidence.
class HeardTest : public virtual MorvaneTest {
protected:
    /// Starts the reader and the program beside a model that answers with these turns, and waits until the
    /// reader has read out where the user is.
    MorvaneSession &listen(std::vector<ScriptedTurn> turns);
    /// Starts the reader and then the program of a session that was prepared.
    void listenTo(MorvaneSession &session);
    ScreenReader &reader() { return *m_reader; }

    /// Writes a text into a field; the reader has dealt with it afterwards.
    void write(const AccessibleElement &field, const QString &text);
    /// Writes a message and presses Return when the reader has dealt with it.
    void send(MorvaneSession &morvane, const QString &text);
    /// Presses a key until the sheet with this control is gone.
    static bool answer(MorvaneSession &morvane, const QString &key, const QString &control);
    /// Moves on with the keyboard and waits until the reader has said `last`.
    bool moves(MorvaneSession &morvane, const QString &key, const QString &last);
    /// Goes on with Tab, and waits each time until the reader has said the next of these.
    void goesBy(MorvaneSession &morvane, const QStringList &stops);
    /// What was spoken since the last forget(), with "…" in place of times of day.
    QStringList heard();
    /// How often a piece was spoken since the last forget().
    qsizetype times(const QString &text) { return reader().heard().count(text); }

    /// What a page of docs/ says is heard, in its first block, without the keys that are pressed in between.
    static QStringList documentedIn(const QString &page);

    void TearDown() override;

private:
    std::unique_ptr<ScreenReader> m_reader;
};

} // namespace morvane
