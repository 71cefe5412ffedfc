#include "tools/screen/KeyCombination.h"

#include "base/Text.h"
#include "tools/screen/KeyTable.h"
#include "tools/screen/LayoutKeycodes.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {

std::expected<KeyCombination, QString> parseKeyCombination(const QString &key, const LayoutKeycodes &layout)
{
    QStringList parts = trimmed(key.toLower()).split(u'+');
    for (QString &part : parts)
        part = trimmed(part);
    const QString name = parts.takeLast();
    if (name.isEmpty())
        return std::unexpected(u"Error: no key was given."_s);
    std::optional<int> code;
    if (characterCount(name) == 1)
        code = layout.keyCodeFor(name);
    if (!code)
        code = keyCode(name);
    if (!code) {
        return std::unexpected(
            u"Error: unknown key \""_s + name +
            u"\". Supported keys: return, enter, tab, space, escape, delete, backspace, up, down, left, "
            u"right, "
            "home, end, pageup, pagedown, and letters or digits. Add modifiers like command+v, "
            "shift+command+return."_s);
    }
    KeyCombination combination{*code, 0};
    for (const QString &part : std::as_const(parts)) {
        const std::optional<quint32> flag = modifierFlag(part);
        if (!flag) {
            return std::unexpected(u"Error: unknown modifier \""_s + part +
                                   u"\". Supported modifiers: command, shift, option, control, fn."_s);
        }
        combination.flags |= *flag;
    }
    return combination;
}

} // namespace morvane
