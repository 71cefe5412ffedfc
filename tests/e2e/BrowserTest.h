#pragma once

#include "MorvaneTest.h"

#include "support/PageServer.h"

namespace morvane {

/// Base of the tests of the built-in browser with its real engine, as the user sees, hears and operates it,
/// beside a small web site about birds.
class BrowserTest : public virtual MorvaneTest {
protected:
    BrowserTest();

    /// Starts the program beside a model that answers with these turns.
    MorvaneSession &startBrowser(std::vector<ScriptedTurn> turns);
    /// The same, not started yet.
    MorvaneSession &prepareBrowser(std::vector<ScriptedTurn> turns, Hearing hearing = Hearing::announcements);

    /// The same, with the browser's window in front and the page of birds in it.
    MorvaneSession &startWithBirds();

    /// Presses the button of the main window and waits for the start page.
    static void openWindow(MorvaneSession &morvane);
    static bool isInFront(MorvaneSession &morvane);
    /// Writes an address by the keyboard and waits for the page of this title.
    void openByKeyboard(MorvaneSession &morvane, const QString &path, const QString &title);
    /// Moves the focus by a key until what has this name has it.
    static bool moveTo(MorvaneSession &morvane, const QString &key, const QString &name);
    /// Writes a message into the panel's field, to which F6 leads, and sends it.
    static void sendFromPanel(MorvaneSession &morvane, const QString &text);
    /// Whether the page of this title is on show, now or soon.
    static bool showsPage(MorvaneSession &morvane, const QString &title);

    std::string address(const QString &path) const { return m_site.url(path).toString().toStdString(); }

    PageServer m_site;
};

} // namespace morvane
