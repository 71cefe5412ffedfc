#include "browser/window/ComingDocument.h"

#include "ui/controls/AccessibleEvents.h"

#include <utility>

namespace morvane {
namespace {

using namespace std::chrono_literals;

constexpr auto lookPause = 50ms;
/// A document that is loaded anew may have come before it was known that it would.
constexpr int mostLooks = 100;

} // namespace

ComingDocument::ComingDocument(std::function<bool()> hasKeyboard, QObject *parent)
    : QObject(parent), m_hasKeyboard(std::move(hasKeyboard))
{
    m_looking.setInterval(lookPause);
    connect(&m_looking, &QTimer::timeout, this, &ComingDocument::look);
}

void ComingDocument::replaced()
{
    m_looking.stop();
    m_before = m_hasKeyboard() ? foundFocus() : 0;
}

void ComingDocument::loaded()
{
    m_looks = 0;
    m_looking.start();
    look();
}

void ComingDocument::forget()
{
    m_looking.stop();
    m_before = 0;
}

void ComingDocument::look()
{
    const bool isSeen = m_hasKeyboard();
    if (isSeen && m_before != 0 && foundFocus() == m_before && ++m_looks < mostLooks)
        return;
    forget();
    if (isSeen)
        Q_EMIT found();
}

} // namespace morvane
