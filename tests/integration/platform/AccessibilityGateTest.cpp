#include "platform/linux/AccessibilityGate.h"

#include "platform/AssistiveCommands.h"
#include "platform/linux/ScreenReaderWatch.h"
#include "support/AccessibilityBus.h"
#include "support/AccessibleElement.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QLineEdit>
#include <QSlider>
#include <QVBoxLayout>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

struct FakeCommands : AssistiveCommands {
    bool mayChange(QAccessibleInterface &) override { return isAllowed; }
    bool replaceText(QAccessibleInterface &, int from, int to, const QString &text) override
    {
        taken.append(u"%1-%2 %3"_s.arg(from).arg(to).arg(text));
        return takesTexts;
    }
    bool pasteText(QAccessibleInterface &, int at) override
    {
        taken.append(u"paste at %1"_s.arg(at));
        return takesTexts;
    }

    bool isAllowed = true;
    bool takesTexts = false;
    QStringList taken;
};

/// A window of this program as assistive technology reaches it over the real bus.
class AccessibilityGateTest : public testing::Test {
protected:
    AccessibilityGateTest()
    {
        auto *layout = new QVBoxLayout(&window);
        for (QWidget *part : std::initializer_list<QWidget *>{&field, &box, &slider})
            layout->addWidget(part);
        field.setAccessibleName(u"Field"_s);
        field.setText(u"before"_s);
        window.show();
        EXPECT_TRUE(waitUntil([this] { return gate && gate->isClosed(); }));
    }
    ~AccessibilityGateTest() override
    {
        for (QWidget *part : std::initializer_list<QWidget *>{&field, &box, &slider})
            part->setParent(nullptr);
    }

    AccessibleElement element(QWidget &widget)
    {
        const auto id = QAccessible::uniqueId(QAccessible::queryAccessibleInterface(&widget));
        return {bus, ScreenReaderWatch::bus().baseService(),
                u"/org/a11y/atspi/accessible/"_s + QString::number(id)};
    }
    void setValue(QWidget &widget, double value)
    {
        bus.answer(bus.ask(
            element(widget), u"org.freedesktop.DBus.Properties"_s, u"Set"_s,
            {u"org.a11y.atspi.Value"_s, u"CurrentValue"_s, QVariant::fromValue(QDBusVariant(value))}));
    }

    AccessibilityBus bus{qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS")};
    QWidget window;
    QLineEdit field;
    QCheckBox box{u"Box"_s};
    QSlider slider;
    FakeCommands commands;
    std::unique_ptr<AccessibilityGate> gate = std::make_unique<AccessibilityGate>(commands);
};

TEST_F(AccessibilityGateTest, WhatIsAllowedGoesOnToTheToolkit)
{
    element(field).setText(u"after"_s);
    EXPECT_EQ(field.text(), u"after"_s);
    element(field).insertText(1, u"-"_s);
    EXPECT_EQ(field.text(), u"a-fter"_s);
    element(box).act(u"Toggle"_s);
    EXPECT_TRUE(box.isChecked());
    setValue(slider, 7);
    EXPECT_EQ(slider.value(), 7);
}

TEST_F(AccessibilityGateTest, WhatIsNotAllowedChangesNothing)
{
    commands.isAllowed = false;
    EXPECT_THROW(element(field).setText(u"after"_s), AccessibilityError);
    EXPECT_THROW(element(field).insertText(1, u"-"_s), AccessibilityError);
    EXPECT_THROW(element(field).pasteText(1), AccessibilityError);
    element(box).act(u"Toggle"_s);
    EXPECT_THROW(setValue(slider, 7), AccessibilityError);
    EXPECT_EQ(field.text(), u"before"_s);
    EXPECT_FALSE(box.isChecked());
    EXPECT_EQ(slider.value(), 0);
    EXPECT_THAT(commands.taken, IsEmpty());
}

TEST_F(AccessibilityGateTest, WhatIsNotAllowedCanBeRead)
{
    commands.isAllowed = false;
    EXPECT_EQ(element(field).name(), u"Field"_s);
    EXPECT_EQ(element(field).text(), u"before"_s);
    EXPECT_THAT(element(box).actions(), testing::Contains(u"Toggle"_s));
    EXPECT_TRUE(element(field).has(AccessibleState::enabled));
}

TEST_F(AccessibilityGateTest, TextsAndPastesTakeTheirOwnRoads)
{
    commands.takesTexts = true;
    element(field).setText(u"after"_s);
    element(field).insertText(3, u"more"_s);
    element(field).pasteText(2);
    EXPECT_THAT(commands.taken, ElementsAre(u"0-6 after"_s, u"3-3 more"_s, u"paste at 2"_s));
    EXPECT_EQ(field.text(), u"before"_s);
}

TEST_F(AccessibilityGateTest, AFieldThatIsOnlyReadTakesNothing)
{
    commands.takesTexts = true;
    field.setReadOnly(true);
    EXPECT_THROW(element(field).setText(u"after"_s), AccessibilityError);
    EXPECT_EQ(field.text(), u"before"_s);
    EXPECT_THAT(commands.taken, IsEmpty());
}

TEST_F(AccessibilityGateTest, NonsenseIsAnsweredByAnError)
{
    const auto editing = u"org.a11y.atspi.EditableText"_s;
    const AccessibleElement gone(bus, ScreenReaderWatch::bus().baseService(),
                                 u"/org/a11y/atspi/accessible/4711"_s);
    EXPECT_THROW(gone.setText(u"x"_s), AccessibilityError);
    EXPECT_EQ(element(field).name(), u"Field"_s);
}

TEST_F(AccessibilityGateTest, WithoutTheGateTheToolkitIsThereAgain)
{
    commands.isAllowed = false;
    gate.reset();
    element(field).setText(u"after"_s);
    EXPECT_EQ(field.text(), u"after"_s);
}

} // namespace
} // namespace morvane
