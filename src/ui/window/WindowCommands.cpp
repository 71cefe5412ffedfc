#include "ui/window/WindowCommands.h"

#include "ui/controls/AccessibleEvents.h"
#include "ui/controls/FieldPasting.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/sheets/Sheet.h"
#include "ui/window/ComposerEdit.h"

#include <QLineEdit>

namespace morvane {

namespace {

/// By its place, and not by its class: what the web engine shows of a page is built without the types of a
/// program that runs, and a cast by them would end this one.
bool isConversationRow(const QAccessibleInterface &element)
{
    const QAccessibleInterface *const parent = element.object() == nullptr ? element.parent() : nullptr;
    return parent != nullptr && qobject_cast<const ChatScrollView *>(parent->object()) != nullptr;
}

} // namespace

bool WindowCommands::mayChange(QAccessibleInterface &element)
{
    // A row of the conversation is read or copied, which whoever is asked about it may want.
    if (isConversationRow(element))
        return true;
    const QWidget *const widget = widgetOf(&element);
    return widget == nullptr || !Sheet::holds(*widget);
}

bool WindowCommands::replaceText(QAccessibleInterface &element, int from, int to, const QString &text)
{
    auto *const composer = qobject_cast<ComposerEdit *>(element.object());
    if (composer == nullptr)
        return false;
    composer->replaceBetween(from, to, text);
    return true;
}

bool WindowCommands::pasteText(QAccessibleInterface &element, int at)
{
    if (auto *const composer = qobject_cast<ComposerEdit *>(element.object())) {
        composer->pasteAt(at);
        return true;
    }
    auto *const line = qobject_cast<QLineEdit *>(element.object());
    if (line == nullptr)
        return false;
    m_pasting.paste(*line, at);
    return true;
}

} // namespace morvane
