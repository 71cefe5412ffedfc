#include "ui/controls/MenuPicker.h"

#include "support/WaitUntil.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QTest>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class MenuPickerTest : public testing::Test {
protected:
    MenuPickerTest()
    {
        QObject::connect(&picker, &MenuPicker::chosen, &picker,
                         [this](const QString &tag) { chosen.append(tag); });
        picker.setChoices({{"openai/gpt-5", "openai/gpt-5", "free"},
                           {"openai/gpt-5-mini", "openai/gpt-5-mini", {}},
                           {"meta/Llama-3", "meta/Llama-3", {}},
                           {"Custom", "custom", {}, PickerChoice::Search::always}});
        picker.select("meta/Llama-3");
        picker.show();
        picker.setFocus();
    }

    bool isOpen() { return picker.view()->isVisible(); }

    QStringList shownRows()
    {
        QStringList rows;
        auto *list = static_cast<QListView *>(picker.view());
        for (int row = 0; row < picker.count(); ++row)
            if (!list->isRowHidden(row))
                rows.append(picker.itemText(row));
        return rows;
    }

    /// Types into what has the keys: the open list, or the picker.
    void type(const QString &text)
    {
        for (const QChar character : text)
            QTest::sendKeyEvent(QTest::Click, isOpen() ? static_cast<QWidget *>(picker.view()) : &picker,
                                Qt::Key_unknown, QString(character), Qt::NoModifier);
    }
    void press(Qt::Key key)
    {
        QTest::keyClick(isOpen() ? static_cast<QWidget *>(picker.view()) : &picker, key);
    }

    MenuPicker picker{u"Model"_s};
    QStringList chosen;
};

TEST_F(MenuPickerTest, KeysOpenTheListAndChangeNothing)
{
    for (const Qt::Key key :
         {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageDown, Qt::Key_Space}) {
        press(key);
        EXPECT_TRUE(isOpen()) << key;
        press(Qt::Key_Escape);
        EXPECT_FALSE(isOpen()) << key;
    }
    EXPECT_EQ(picker.currentText(), "meta/Llama-3");
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(MenuPickerTest, AnArrowAndReturnChooseARow)
{
    press(Qt::Key_Down);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen, QStringList("openai/gpt-5-mini"));
}

TEST_F(MenuPickerTest, TypingOpensTheListAndLeavesTheRowsThatFit)
{
    type("GPT");
    ASSERT_TRUE(isOpen());
    EXPECT_EQ(picker.searchText(), "GPT");
    EXPECT_EQ(shownRows(), QStringList({"openai/gpt-5", "openai/gpt-5-mini", "Custom"}));
    type("-5-m");
    EXPECT_EQ(shownRows(), QStringList({"openai/gpt-5-mini", "Custom"}));
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList("openai/gpt-5-mini"));
    EXPECT_EQ(picker.searchText(), QString());
}

TEST_F(MenuPickerTest, BackspaceWidensTheSearchAndEscapeEndsItBeforeTheList)
{
    type("gptx");
    EXPECT_EQ(shownRows(), QStringList("Custom"));
    press(Qt::Key_Backspace);
    EXPECT_EQ(shownRows().size(), 3);
    press(Qt::Key_Escape);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(shownRows().size(), 4);
    press(Qt::Key_Backspace);
    EXPECT_TRUE(isOpen());
    press(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(MenuPickerTest, TheDetailIsFoundToo)
{
    type("fre");
    EXPECT_EQ(shownRows(), QStringList({"openai/gpt-5", "Custom"}));
}

TEST_F(MenuPickerTest, TheSearchIsShownWhileThereIsOne)
{
    picker.showPopup();
    auto *line = picker.view()->parentWidget()->findChild<QLabel *>();
    ASSERT_NE(line, nullptr);
    EXPECT_FALSE(line->isVisible()) << "four rows need no search";
    type("g<b>");
    EXPECT_TRUE(line->isVisible());
    EXPECT_EQ(line->text(), "Search: g<b>");
    EXPECT_EQ(picker.view()->accessibleName(), "Search: g<b>");
    EXPECT_EQ(line->textFormat(), Qt::PlainText);
}

TEST_F(MenuPickerTest, TheListOpensWholeAgainAfterASearch)
{
    type("gpt");
    picker.hidePopup();
    picker.showPopup();
    EXPECT_EQ(shownRows().size(), 4);
    EXPECT_EQ(picker.view()->currentIndex().row(), 2);
}

TEST_F(MenuPickerTest, ChoosingTheRowThatIsChosenIsAChoiceToo)
{
    picker.showPopup();
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList("meta/Llama-3"));
}

TEST_F(MenuPickerTest, SelectingAnnouncesNoChoice)
{
    picker.select("custom");
    EXPECT_EQ(picker.currentText(), "Custom");
    picker.select("not there");
    EXPECT_EQ(picker.currentIndex(), -1);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(MenuPickerTest, AListThatComesWhileItIsOpenTakesThePlace)
{
    type("gpt");
    QList<PickerChoice> many;
    for (int number = 0; number < 100; ++number)
        many.append({u"gpt-%1"_s.arg(number), QString::number(number), {}});
    many.append({"other", "other", {}});
    picker.setChoices(many);
    picker.select("7");
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(shownRows().size(), 100);
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList("0")) << "the first row that fits the search";
}

TEST_F(MenuPickerTest, ThousandsOfRowsAreSearched)
{
    QList<PickerChoice> many;
    for (int number = 0; number < 10'000; ++number)
        many.append({u"vendor/model-%1"_s.arg(number), QString::number(number), {}});
    picker.setChoices(many);
    picker.showPopup();
    EXPECT_LT(picker.view()->height(), QApplication::primaryScreen()->size().height());
    type("-9999");
    EXPECT_EQ(shownRows(), QStringList("vendor/model-9999"));
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList("9999"));
}

TEST_F(MenuPickerTest, AReaderFindsANamedBoxWithItsRows)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&picker);
    EXPECT_EQ(interface->role(), QAccessible::ComboBox);
    EXPECT_EQ(interface->text(QAccessible::Name), "Model");
    EXPECT_EQ(interface->text(QAccessible::Value), "meta/Llama-3");
    EXPECT_EQ(interface->childCount(), 0);
    ASSERT_NE(interface->textInterface(), nullptr);
    EXPECT_EQ(interface->textInterface()->text(0, -1), "meta/Llama-3");
    EXPECT_TRUE(interface->state().collapsed);
    picker.clearFocus();
    interface->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_EQ(picker.window()->focusWidget(), &picker);
    interface->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    EXPECT_TRUE(interface->state().expanded);
    ASSERT_EQ(interface->childCount(), 1);
    QAccessibleInterface *list = interface->child(0);
    ASSERT_EQ(list->childCount(), 4);
    EXPECT_EQ(interface->indexOfChild(list), 0);
    EXPECT_EQ(list->child(0)->text(QAccessible::Name), "openai/gpt-5, free");
}

} // namespace
} // namespace morvane
