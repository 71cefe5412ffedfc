#include "tools/screen/ElementWalk.h"

#include "support/FakeDesktop.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ElementWalkTest : public testing::Test {
protected:
    QStringList labels(const FakeElement &root)
    {
        QStringList found;
        for (const AXElementInfo &element : walk(root))
            found.append(element.label);
        return found;
    }

    QList<AXElementInfo> walk(const FakeElement &root)
    {
        m_tree.applications[1] = root;
        return ElementWalk(m_tree, QDeadlineTimer(std::chrono::seconds(20)), {})
            .find(*m_tree.application(1, {}));
    }

    DesktopLog m_log;
    FakeAccessibilityTree m_tree{m_log};
};

FakeElement element(const QString &role, const QString &title, QRectF frame, bool pressable = false,
                    const QList<FakeElement> &children = {})
{
    return {role, title, frame, pressable, children, {}, {}};
}

TEST_F(ElementWalkTest, ParentsComeBeforeTheirChildrenAndFamiliesStayTogether)
{
    const auto root = element(u"AXApplication"_s, {}, {}, false,
                              {element(u"AXButton"_s, u"a"_s, {0, 0, 10, 10}, true,
                                       {element(u"AXLink"_s, u"b"_s, {50, 0, 10, 10})}),
                               element(u"AXButton"_s, u"c"_s, {0, 50, 10, 10})});
    EXPECT_THAT(labels(root), ElementsAre(u"a"_s, u"b"_s, u"c"_s));
}

TEST_F(ElementWalkTest, ControlsCountWithoutAnActionOfTheirOwn)
{
    const QStringList roles{u"AXButton"_s,      u"AXLink"_s,       u"AXCheckBox"_s,    u"AXRadioButton"_s,
                            u"AXPopUpButton"_s, u"AXMenuButton"_s, u"AXMenuItem"_s,    u"AXTextField"_s,
                            u"AXTextArea"_s,    u"AXComboBox"_s,   u"AXSearchField"_s, u"AXSlider"_s,
                            u"AXTabGroup"_s,    u"AXIncrementor"_s};
    QList<FakeElement> controls;
    for (const QString &role : roles + QStringList{u"AXCell"_s, u"AXWindow"_s, QString()})
        controls.append(element(role, role, {0, controls.size() * 20.0, 10, 10}));
    EXPECT_EQ(labels(element(u"AXApplication"_s, {}, {}, false, controls)), roles);
}

TEST_F(ElementWalkTest, APressableElementOfAnyRoleCountsButForGroupsAndPlainTexts)
{
    const auto root = element(u"AXApplication"_s, {}, {}, false,
                              {element(u"AXCell"_s, u"cell"_s, {0, 0, 10, 10}, true),
                               element(u"AXGroup"_s, u"group"_s, {20, 0, 10, 10}, true),
                               element(u"AXStaticText"_s, u"text"_s, {40, 0, 10, 10}, true),
                               element(u"AXImage"_s, u"image"_s, {60, 0, 10, 10}, false)});
    EXPECT_THAT(labels(root), ElementsAre(u"cell"_s));
}

TEST_F(ElementWalkTest, ElementsWithoutAFrameOrTooSmallAreDroppedButNotTheirChildren)
{
    const auto child = element(u"AXButton"_s, u"child"_s, {0, 0, 4, 4});
    const auto root = element(u"AXApplication"_s, {}, {}, false,
                              {element(u"AXButton"_s, u"no frame"_s, {}, true, {child}),
                               element(u"AXButton"_s, u"flat"_s, {0, 90, 10, 3}),
                               element(u"AXButton"_s, u"thin"_s, {0, 60, 3, 9})});
    EXPECT_THAT(labels(root), ElementsAre(u"child"_s));
}

TEST_F(ElementWalkTest, TheSameControlInNestedWrappersAppearsOnce)
{
    const auto root = element(u"AXApplication"_s, {}, {}, false,
                              {element(u"AXLink"_s, u"outer"_s, {0, 0, 20, 20}, true,
                                       {element(u"AXButton"_s, u"inner"_s, {1, 1, 20, 20}, true),
                                        element(u"AXButton"_s, u"beside"_s, {2, 0, 20, 20}, true)})});
    EXPECT_THAT(labels(root), ElementsAre(u"outer"_s, u"beside"_s));
}

TEST_F(ElementWalkTest, TheLabelIsTheFirstOfTitleDescriptionAndValueThatIsNotEmpty)
{
    FakeElement described = element(u"AXButton"_s, {}, {0, 0, 10, 10});
    described.description = u"described"_s;
    described.value = u"valued"_s;
    FakeElement valued = element(u"AXButton"_s, {}, {0, 50, 10, 10});
    valued.value = u"valued"_s;
    EXPECT_THAT(labels(element(u"AXApplication"_s, {}, {}, false, {described, valued})),
                ElementsAre(u"described"_s, u"valued"_s));
}

TEST_F(ElementWalkTest, AValueOf61CharactersIsCutAndOneOf60IsNot)
{
    FakeElement exact = element(u"AXTextField"_s, {}, {0, 0, 10, 10});
    exact.value = QString(60, u'x');
    FakeElement longer = element(u"AXTextField"_s, {}, {0, 50, 10, 10});
    longer.value = QString(61, u'y');
    FakeElement ofPairs = element(u"AXTextField"_s, {}, {0, 100, 10, 10});
    ofPairs.value = u"😀"_s.repeated(60);
    EXPECT_THAT(labels(element(u"AXApplication"_s, {}, {}, false, {exact, longer, ofPairs})),
                ElementsAre(QString(60, u'x'), QString(60, u'y') + u'…', u"😀"_s.repeated(60)));
}

TEST_F(ElementWalkTest, TheTwelfthLevelIsTheLast)
{
    FakeElement deepest = element(u"AXButton"_s, u"13"_s, {0, 1300, 10, 10});
    for (int level = 12; level >= 1; --level) {
        deepest =
            element(u"AXButton"_s, QString::number(level), {0, level * 100.0, 10, 10}, false, {deepest});
    }
    const QStringList found = labels(element(u"AXApplication"_s, {}, {}, false, {deepest}));
    EXPECT_EQ(found.size(), 12);
    EXPECT_EQ(found.last(), u"12"_s);
}

TEST_F(ElementWalkTest, ALargeTreeIsNotReadBeyondTheBudget)
{
    QList<FakeElement> branches;
    for (int branch = 0; branch < 500; ++branch) {
        QList<FakeElement> leaves;
        for (int leaf = 0; leaf < 10; ++leaf)
            leaves.append(element(u"AXButton"_s, QString::number(branch * 10 + leaf),
                                  {leaf * 20.0, branch * 20.0, 10, 10}));
        branches.append(element(u"AXGroup"_s, {}, {}, false, leaves));
    }
    const QStringList found = labels(element(u"AXApplication"_s, {}, {}, false, branches));
    EXPECT_EQ(found.size(), 120);
    EXPECT_EQ(found.last(), u"119"_s);
    EXPECT_EQ(m_tree.questions, 2);
}

TEST_F(ElementWalkTest, TheFirst120CountEvenIfTheyAreTheDeepestAndReadLast)
{
    QList<FakeElement> shallow;
    for (int at = 0; at < 150; ++at)
        shallow.append(element(u"AXButton"_s, u"shallow"_s, {0, at * 20.0, 10, 10}));
    QList<FakeElement> deep;
    for (int at = 0; at < 100; ++at)
        deep.append(element(u"AXButton"_s, u"deep"_s, {500, at * 20.0, 10, 10}));
    FakeElement nest = element(u"AXGroup"_s, {}, {}, false, deep);
    for (int level = 0; level < 8; ++level)
        nest = element(u"AXGroup"_s, {}, {}, false, {nest});
    const QStringList found = labels(element(u"AXApplication"_s, {}, {}, false, QList{nest} + shallow));
    EXPECT_EQ(found.count(u"deep"_s), 100);
    EXPECT_EQ(found.count(u"shallow"_s), 20);
}

TEST_F(ElementWalkTest, AStopOrTheEndOfTheTimeEndsTheWalkWithWhatIsKnown)
{
    m_tree.applications[1] =
        element(u"AXApplication"_s, {}, {}, false, {element(u"AXButton"_s, u"never read"_s, {0, 0, 10, 10})});
    std::stop_source stop;
    stop.request_stop();
    const auto root = *m_tree.application(1, {});
    EXPECT_THAT(ElementWalk(m_tree, QDeadlineTimer(std::chrono::seconds(20)), stop.get_token()).find(root),
                IsEmpty());
    EXPECT_THAT(ElementWalk(m_tree, QDeadlineTimer(0), {}).find(root), IsEmpty());
    EXPECT_EQ(m_tree.questions, 0);
}

TEST(ReadingOrderTest, LinesWithin12PointsReadFromLeftToRightAndEqualsKeepTheirOrder)
{
    const auto at = [](qreal x, qreal y, const QString &label) {
        AXElementInfo info;
        info.label = label;
        info.center = {x, y};
        return info;
    };
    const auto ordered = inReadingOrder({at(300, 10, u"c"_s), at(100, 22, u"a"_s), at(200, 15, u"b"_s),
                                         at(0, 40, u"d"_s), at(0, 40, u"e"_s)});
    QStringList labels;
    for (const AXElementInfo &info : ordered)
        labels.append(info.label);
    EXPECT_THAT(labels, ElementsAre(u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s));
}

TEST(FriendlyRoleTest, KnownRolesHaveTheirWordsAndOthersLoseTheirPrefix)
{
    const std::pair<const char16_t *, const char16_t *> words[] = {{u"AXButton", u"button"},
                                                                   {u"AXLink", u"link"},
                                                                   {u"AXCheckBox", u"checkbox"},
                                                                   {u"AXRadioButton", u"radio button"},
                                                                   {u"AXPopUpButton", u"popup menu"},
                                                                   {u"AXMenuButton", u"popup menu"},
                                                                   {u"AXMenuItem", u"menu item"},
                                                                   {u"AXTextField", u"text field"},
                                                                   {u"AXSearchField", u"text field"},
                                                                   {u"AXTextArea", u"text area"},
                                                                   {u"AXComboBox", u"combo box"},
                                                                   {u"AXSlider", u"slider"},
                                                                   {u"AXTabGroup", u"tab"},
                                                                   {u"AXIncrementor", u"stepper"},
                                                                   {u"AXCell", u"cell"},
                                                                   {u"Odd", u"odd"}};
    for (const auto &[role, word] : words)
        EXPECT_EQ(friendlyRole(QString::fromUtf16(role)), QString::fromUtf16(word));
}

} // namespace
} // namespace morvane
