#include "platform/linux/desktop/LinuxInputEvents.h"

#include "platform/DisplaySilent.h"
#include "platform/Log.h"
#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/desktop/XHeldNote.h"
#include "platform/linux/desktop/XInputSource.h"
#include "platform/linux/desktop/XLentKeys.h"

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

/// What each key types by itself, by virtual key code.
QList<QString> charactersOf(const XKeyboard &keyboard)
{
    QList<QString> characters(virtualKeys);
    for (int code = 0; code < virtualKeys; ++code)
        if (const auto symbol = numberPadSymbol(code))
            characters[code] = QString(QChar(ushort(*symbol)));
        else if (const auto key = keyAtPosition(code))
            characters[code] = keyboard.character(*key);
    return characters;
}

/// What is held or lent still, whatever has become of who read the keys.
void giveBackAll(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return;
    XHeldNote::letGoOfWhatIsLeft(*display);
    if (XLentKeys lent(*display); !lent.isEmpty())
        lent.giveBack();
}

} // namespace

LinuxInputEvents::~LinuxInputEvents()
{
    try {
        if (m_isBegun)
            giveBackAll({});
    } catch (const DisplaySilent &) {
        qCWarning(platformLog) << "keys stay lent until the next start: the display does not answer";
    }
}

void LinuxInputEvents::begin(const std::stop_token &stop)
{
    const std::lock_guard lock(m_mutex);
    if (!m_isBegun)
        giveBackAll(stop);
    m_isBegun = true;
}

bool LinuxInputEvents::isTrusted(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    return display && display->hasExtension(&xcb_test_id);
}

std::unique_ptr<InputSource> LinuxInputEvents::newSource(const std::stop_token &stop)
{
    begin(stop);
    if (auto display = XDisplay::open(stop))
        return std::make_unique<XInputSource>(std::move(display));
    return std::make_unique<NoInputSource>();
}

QList<QString> LinuxInputEvents::layoutCharacters()
{
    try {
        begin({});
        const auto display = XDisplay::open();
        const auto keyboard = display ? XKeyboard::read(*display) : std::nullopt;
        return keyboard ? charactersOf(*keyboard) : QList<QString>();
    } catch (const DisplaySilent &) {
        qCWarning(platformLog) << "the keyboard's layout is not known: the display does not answer";
        return {};
    }
}

} // namespace morvane
