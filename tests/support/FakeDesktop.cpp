#include "support/FakeDesktop.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString place(QPoint point)
{
    return QString::number(point.x()) + u',' + QString::number(point.y());
}

QString keyText(int code, quint32 flags)
{
    return QString::number(code) + u" flags "_s + QString::number(flags, 16);
}

class FakeLiveElement : public LiveElement {
public:
    explicit FakeLiveElement(FakeElement element) : m_element(std::move(element)) {}
    const FakeElement &element() const { return m_element; }

private:
    FakeElement m_element;
};

const FakeElement &fakeOf(const ScreenElement &element)
{
    return static_cast<const FakeLiveElement &>(*element.element).element();
}

std::optional<QString> present(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

ScreenElement screenElement(const FakeElement &fake)
{
    return {fake.role,
            fake.pressable,
            fake.frame.isNull() ? std::nullopt : std::optional(fake.frame),
            present(fake.title),
            present(fake.description),
            present(fake.value),
            !fake.children.isEmpty(),
            std::make_shared<FakeLiveElement>(fake)};
}

void tell(const QuestionHooks &hooks, const QString &name, const std::stop_token &stop)
{
    if (const auto hook = hooks.value(name))
        hook(stop);
}

class FakeInputSource : public InputSource {
public:
    FakeInputSource(DesktopLog &log, const std::atomic<KeyboardHolder> &holder, std::atomic<int> &unread)
        : m_log(log), m_holder(holder), m_unread(unread)
    {
    }
    ~FakeInputSource() override
    {
        for (const QString &held : std::as_const(m_held))
            m_log.add(u"release "_s + held);
    }

    void warp(QPoint point) override { m_log.add(u"warp "_s + place(point)); }
    void mouseMoved(QPoint point) override { m_log.add(u"moved "_s + place(point)); }
    void buttonDown(MouseButton button, QPoint point) override
    {
        m_log.add(name(button) + u" down "_s + place(point));
        m_held.append(name(button));
    }
    void buttonUp(MouseButton button, QPoint point) override
    {
        m_log.add(name(button) + u" up "_s + place(point));
        m_held.removeOne(name(button));
    }
    void dragged(QPoint point) override { m_log.add(u"dragged "_s + place(point)); }
    void scroll(int pixels) override { m_log.add(u"scroll "_s + QString::number(pixels)); }
    void keyDown(int code, quint32 flags) override
    {
        m_log.add(u"key down "_s + keyText(code, flags));
        m_held.append(u"key "_s + QString::number(code));
    }
    void keyUp(int code, quint32 flags) override
    {
        m_log.add(u"key up "_s + keyText(code, flags));
        m_held.removeOne(u"key "_s + QString::number(code));
    }
    KeyboardHolder keyboardHolder() override { return m_holder; }
    void prepareText(const QString &text) override { m_log.add(u"prepare "_s + text); }
    bool characterDown(char32_t character) override
    {
        if (m_unread > 0) {
            --m_unread;
            return false;
        }
        m_log.add(u"down "_s + text(character));
        return true;
    }
    void characterUp(char32_t character) override { m_log.add(u"up "_s + text(character)); }

private:
    static QString name(MouseButton button) { return button == MouseButton::left ? u"left"_s : u"right"_s; }
    static QString text(char32_t character) { return QString::fromUcs4(&character, 1); }

    DesktopLog &m_log;
    const std::atomic<KeyboardHolder> &m_holder;
    std::atomic<int> &m_unread;
    QStringList m_held;
};

} // namespace

void DesktopLog::add(const QString &event)
{
    const std::lock_guard lock(m_mutex);
    m_events.append(event);
}

QStringList DesktopLog::events() const
{
    const std::lock_guard lock(m_mutex);
    return m_events;
}

void DesktopLog::clear()
{
    const std::lock_guard lock(m_mutex);
    m_events.clear();
}

void FakeSequenceClock::sleep(std::chrono::milliseconds duration, const std::stop_token &)
{
    m_log.add(u"sleep "_s + QString::number(duration.count()));
    if (onSleep)
        onSleep();
}

QDeadlineTimer FakeSequenceClock::deadline(std::chrono::milliseconds)
{
    return isTimeUsedUp ? QDeadlineTimer(0) : QDeadlineTimer(QDeadlineTimer::Forever);
}

void FakeScreenCapture::requestAccess()
{
    m_log.add(u"request screen access"_s);
    granted = granted || grantsWhenAsked;
}

QList<QRect> FakeScreenCapture::displays(const std::stop_token &stop)
{
    tell(onAsked, u"displays"_s, stop);
    return frames;
}

QPoint FakeScreenCapture::pointer(const std::stop_token &stop)
{
    tell(onAsked, u"pointer"_s, stop);
    return mouse;
}

QImage FakeScreenCapture::capture(const QRect &region, const std::stop_token &stop)
{
    tell(onAsked, u"capture"_s, stop);
    m_log.add(
        u"capture %1,%2 %3x%4"_s.arg(region.x()).arg(region.y()).arg(region.width()).arg(region.height()));
    if (fails)
        return {};
    return QImage(qMax(1, region.width() * pixelsPerPoint), qMax(1, region.height() * pixelsPerPoint),
                  QImage::Format_RGB32);
}

std::optional<ScreenElement> FakeAccessibilityTree::application(qint64 pid, QDeadlineTimer)
{
    if (onApplication)
        onApplication();
    const auto found = applications.constFind(pid);
    return found != applications.cend() ? std::optional(screenElement(*found)) : std::nullopt;
}

QList<QList<ScreenElement>> FakeAccessibilityTree::children(const QList<ScreenElement> &parents,
                                                            QDeadlineTimer, const std::stop_token &stop)
{
    tell(onAsked, u"children"_s, stop);
    ++questions;
    QList<QList<ScreenElement>> families;
    for (const ScreenElement &parent : parents) {
        QList<ScreenElement> family;
        for (const FakeElement &child : fakeOf(parent).children)
            family.append(screenElement(child));
        families.append(family);
    }
    return families;
}

std::optional<ScreenElement> FakeAccessibilityTree::elementAt(QPointF point, const std::stop_token &stop)
{
    tell(onAsked, u"elementAt"_s, stop);
    m_log.add(u"look at "_s + place(point.toPoint()));
    return underPointer;
}

std::optional<ScreenElement> FakeAccessibilityTree::current(const ScreenElement &element,
                                                            const std::stop_token &stop)
{
    tell(onAsked, u"current"_s, stop);
    if (outcome == Outcome::gone)
        return std::nullopt;
    ScreenElement now = element;
    if (onCurrent)
        onCurrent(now);
    return now;
}

bool FakeAccessibilityTree::isCovered(const ScreenElement &, const std::stop_token &stop)
{
    tell(onAsked, u"isCovered"_s, stop);
    return covered;
}

AccessibilityTree::Outcome FakeAccessibilityTree::press(const ScreenElement &element,
                                                        const std::stop_token &stop)
{
    tell(onAsked, u"press"_s, stop);
    m_log.add(u"press "_s + element.title.value_or(QString()));
    return outcome;
}

AccessibilityTree::Outcome FakeAccessibilityTree::setValue(const ScreenElement &element, const QString &text,
                                                           const std::stop_token &stop)
{
    tell(onAsked, u"setValue"_s, stop);
    m_log.add(u"set "_s + element.title.value_or(QString()) + u" to "_s + text);
    return outcome;
}

std::optional<DesktopWindow> FakeApplications::focusedWindow(qint64, const std::stop_token &stop)
{
    tell(onAsked, u"focusedWindow"_s, stop);
    return focused;
}

QList<DesktopWindow> FakeApplications::windows(const std::stop_token &stop)
{
    tell(onAsked, u"windows"_s, stop);
    return allWindows;
}

void FakeApplications::activate(const RunningApplication &application, const std::stop_token &)
{
    m_log.add(u"activate "_s + application.name);
}

bool FakeApplications::open(const QString &name, const std::stop_token &stop)
{
    m_log.add(u"open "_s + name);
    if (onOpen)
        onOpen(stop);
    return opens && !stop.stop_requested();
}

bool FakeApplications::openAddress(const QUrl &address, const QString &application,
                                   const std::stop_token &stop)
{
    m_log.add(u"open address "_s + address.toString(QUrl::FullyEncoded) + u" in ["_s + application + u']');
    if (onOpen)
        onOpen(stop);
    return opens && !stop.stop_requested();
}

void FakeInputEvents::requestTrust()
{
    m_log.add(u"request trust"_s);
    trusted = trusted || trustsWhenAsked;
}

std::unique_ptr<InputSource> FakeInputEvents::newSource(const std::stop_token &)
{
    return std::make_unique<FakeInputSource>(m_log, keyboardHolder, unread);
}

QList<QString> FakeInputEvents::layoutCharacters()
{
    ++layoutQuestions;
    return layout;
}

void FakeClipboard::setText(const QString &text)
{
    m_log.add(u"clipboard "_s + text);
    content = text;
    if (onSet)
        onSet();
}

} // namespace morvane
