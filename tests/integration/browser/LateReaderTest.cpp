#include "EngineFixture.h"

#include <QAccessible>
#include <QWidget>

namespace morvane {
namespace {

/// Whether a reader finds this text in or below an element.
bool holds(QAccessibleInterface *element, const QString &text)
{
    if (!element)
        return false;
    if (element->text(QAccessible::Name) == text)
        return true;
    for (int child = 0; child < element->childCount(); ++child)
        if (holds(element->child(child), text))
            return true;
    return false;
}

class LateReaderTest : public EngineFixture {
protected:
    ~LateReaderTest() override { QAccessible::setActive(m_wasActive); }

    const bool m_wasActive = QAccessible::isActive();
};

TEST_F(LateReaderTest, AReaderThatStartsAfterThePageFindsWhatStandsInIt)
{
    QAccessible::setActive(false);
    show("<p>A kingfisher eats fish.</p>");
    QAccessible::setActive(true);
    EXPECT_TRUE(waitUntil([this] {
        return holds(QAccessible::queryAccessibleInterface(page().view()), "A kingfisher eats fish.");
    }));
}

} // namespace
} // namespace morvane
