#include "ui/window/ShortcutList.h"

#include "ui/window/ShortcutDelegate.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

struct Entry {
    const char *keys; ///< Empty for the title of a group.
    const char *meaning;
};

constexpr Entry entries[] = {
    {"", "Message"},
    {"Return", "Send the message"},
    {"Shift+Return", "Begin a new line"},
    {"Escape", "Stop generating"},
    {"Page Up, Page Down", "Scroll the conversation"},
    {"Any letter", "Go to the message and write"},
    {"", "Conversation"},
    {"Up, Down", "Go from message to message"},
    {"Home, End", "Go to the first or the last message"},
    {"Return, Space", "Show what can be done with a message, or fold the activity"},
    {"Shift+Up, Shift+Down", "Select messages"},
    {"Ctrl+A", "Select the whole conversation"},
    {"Ctrl+C", "Copy the selection or the message"},
    {"Ctrl+J", "Jump to the latest message"},
    {"Ctrl++, Ctrl+-, Ctrl+0", "Larger text, smaller text, usual size"},
    {"", "Find"},
    {"Ctrl+F", "Find in the conversation"},
    {"Return, F3", "Next match"},
    {"Shift+Return, Shift+F3", "Previous match"},
    {"Escape", "Close find"},
    {"", "Conversations"},
    {"Ctrl+N", "New conversation"},
    {"Return", "Open the conversation"},
    {"Delete", "Delete the conversation"},
    {"", "Program"},
    {"Tab, Shift+Tab", "Go to the next or the previous part of the window"},
    {"Ctrl+,", "Settings"},
    {"Ctrl+U", "Check for updates"},
    {"F1", "This list"},
    {"Ctrl+Q", "Quit"},
};

} // namespace

ShortcutList::ShortcutList(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(u"Keyboard Shortcuts"_s);
    auto *list = new QListWidget;
    list->setAccessibleName(u"Keyboard Shortcuts"_s);
    list->setItemDelegate(new ShortcutDelegate(list));
    list->setResizeMode(QListView::Adjust);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (const Entry &entry : entries) {
        const QString meaning = QString::fromLatin1(entry.meaning);
        if (*entry.keys == '\0')
            addGroup(*list, meaning);
        else
            add(*list, QString::fromLatin1(entry.keys), meaning);
    }
    list->setCurrentRow(1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setIcon({}); // as every other button
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *column = new QVBoxLayout(this);
    column->addWidget(list);
    column->addWidget(buttons);
    const int letter = fontMetrics().averageCharWidth();
    resize(QSize(letter * 72, fontMetrics().height() * 28).boundedTo(parent->size()));
    list->setFocus();
}

void ShortcutList::addGroup(QListWidget &list, const QString &title)
{
    auto *item = new QListWidgetItem(title, &list);
    item->setFlags(Qt::ItemIsEnabled);
}

void ShortcutList::add(QListWidget &list, const QString &keys, const QString &meaning)
{
    auto *item = new QListWidgetItem(meaning, &list);
    item->setData(ShortcutDelegate::keysRole, keys);
    item->setData(Qt::AccessibleTextRole, QString(meaning + u": "_s + keys));
}

} // namespace morvane
