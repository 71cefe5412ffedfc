#include "platform/linux/desktop/LinuxInputEvents.h"

#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/desktop/XInputSource.h"
#include "platform/linux/desktop/XLentKeys.h"

#include <utility>
#include <xcb/xtest.h>

namespace morvane {
namespace {

constexpr int virtualKeys = 128;

/// Takes the place of a source when the X server has gone away.
class NoInputSource final : public InputSource {
public:
    void warp(QPoint) override {}
    void mouseMoved(QPoint) override {}
    void buttonDown(MouseButton, QPoint) override {}
    void buttonUp(MouseButton, QPoint) override {}
    void dragged(QPoint) override {}
    void scroll(int) override {}
    void keyDown(int, quint32) override {}
    void keyUp(int, quint32) override {}
    KeyboardHolder keyboardHolder() override { return KeyboardHolder::sameWindow; }
    void prepareText(const QString &) override {}
    bool characterDown(char32_t) override { return true; }
    void characterUp(char32_t) override {}
};

/// Whatever has become of who read them.
void giveBackLentKeys()
{
    const auto display = XDisplay::open();
    if (!display)
        return;
    if (XLentKeys lent(*display); !lent.isEmpty())
        lent.giveBack();
}

} // namespace

LinuxInputEvents::~LinuxInputEvents()
{
    if (m_isBegun)
        giveBackLentKeys();
}

void LinuxInputEvents::begin()
{
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_isBegun, true))
        giveBackLentKeys();
}

bool LinuxInputEvents::isTrusted()
{
    const auto display = XDisplay::open();
    return display && display->hasExtension(&xcb_test_id);
}

std::unique_ptr<InputSource> LinuxInputEvents::newSource()
{
    begin();
    if (auto display = XDisplay::open())
        return std::make_unique<XInputSource>(std::move(display));
    return std::make_unique<NoInputSource>();
}

QList<QString> LinuxInputEvents::layoutCharacters()
{
    begin();
    const auto display = XDisplay::open();
    const auto keyboard = display ? XKeyboard::read(*display) : std::nullopt;
    if (!keyboard)
        return {};
    QList<QString> characters(virtualKeys);
    for (int code = 0; code < virtualKeys; ++code)
        if (const auto symbol = numberPadSymbol(code))
            characters[code] = QString(QChar(ushort(*symbol)));
        else if (const auto key = keyAtPosition(code))
            characters[code] = keyboard->character(*key);
    return characters;
}

} // namespace morvane
