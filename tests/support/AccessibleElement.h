#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

namespace morvane {

class AccessibilityBus;

/// Roles by the numbers of the accessibility protocol, since the names differ between toolkits.
enum class AccessibleRole : uint32_t {
    invalid = 0,
    checkBox = 7,
    comboBox = 11,
    dialog = 16,
    filler = 20,
    frame = 23,
    label = 29,
    layeredPane = 30,
    list = 31,
    listItem = 32,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    panel = 39,
    passwordText = 40,
    popupMenu = 41,
    progressBar = 42,
    pushButton = 43,
    spinButton = 52,
    splitPane = 53,
    statusBar = 54,
    text = 61,
    toggleButton = 62,
    toolBar = 63,
    application = 75,
    entry = 79,
    grouping = 99,
    notification = 101,
    staticText = 116,
};

/// States by the numbers of the accessibility protocol.
enum class AccessibleState : uint32_t {
    active = 1,
    checked = 4,
    defunct = 6,
    editable = 7,
    enabled = 8,
    focusable = 11,
    focused = 12,
    modal = 16,
    selected = 23,
    sensitive = 24,
    showing = 25,
    visible = 30,
};

/// One object of another program's accessibility tree, as a screen reader holds it. Every function asks the
/// program and throws AccessibilityError if it does not answer.
class AccessibleElement {
public:
    AccessibleElement() = default;
    AccessibleElement(AccessibilityBus &bus, QString service, QString path);

    QString name() const;
    QString description() const;
    AccessibleRole role() const;
    bool has(AccessibleState state) const;
    QList<AccessibleElement> children() const;

    /// The content of a text, whole.
    QString text() const;
    /// Where the caret of a text stands, counted in characters.
    int caret() const;
    /// What is selected of a text.
    QString selectedText() const;
    /// Replaces the content of an editable text, as a reader's dictation does.
    void setText(const QString &text) const;
    /// Writes into an editable text at a position counted in characters.
    void insertText(int at, const QString &text) const;
    /// Pastes the clipboard at a position.
    void pasteText(int at) const;
    QStringList actions() const;
    /// Does the action of this name.
    void act(const QString &action) const;
    /// Does the action that a click stands for.
    void press() const;
    void takeFocus() const;

    const QString &service() const { return m_service; }
    const QString &path() const { return m_path; }
    AccessibilityBus &bus() const { return *m_bus; }
    bool operator==(const AccessibleElement &other) const;

private:
    AccessibilityBus *m_bus = nullptr;
    QString m_service;
    QString m_path;
};

} // namespace morvane
