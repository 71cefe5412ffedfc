#include "tools/screen/LayoutKeycodes.h"

#include "base/Text.h"
#include "platform/InputEvents.h"
#include "tools/screen/KeyTable.h"

namespace morvane {

void LayoutKeycodes::warm(InputEvents &input)
{
    const std::lock_guard lock(m_layoutLock);
    if (m_isWarm)
        return;
    m_isWarm = true;
    const QList<QString> characters = input.layoutCharacters();
    for (int code = 0; code < characters.size(); ++code) {
        const QString character = firstCharacters(characters.at(code), 1);
        if (!character.isEmpty() && !m_layoutKeycodes.contains(character))
            m_layoutKeycodes.insert(character, code);
    }
}

std::optional<int> LayoutKeycodes::keyCodeFor(const QString &character) const
{
    const QString small = character.toLower();
    {
        const std::lock_guard lock(m_layoutLock);
        if (const auto code = m_layoutKeycodes.constFind(small); code != m_layoutKeycodes.cend())
            return *code;
    }
    return keyCode(small);
}

} // namespace morvane
