#include "tools/TodoList.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(TodoListTest, NumbersTheItems)
{
    TodoList todos;
    EXPECT_EQ(todos.updateTodos({"read", "write"}), "Todo list:\n1. read\n2. write");
    EXPECT_EQ(todos.updateTodos({"one"}), "Todo list:\n1. one");
}

TEST(TodoListTest, AnEmptyListClearsAndSaysSo)
{
    TodoList todos;
    EXPECT_EQ(todos.updateTodos({}), "Todo list cleared.");
    todos.updateTodos({"read"});
    EXPECT_EQ(todos.updateTodos({}), "Todo list cleared.");
}

TEST(TodoListTest, ItemsComeBackAsGiven)
{
    TodoList todos;
    EXPECT_EQ(todos.updateTodos({"", " two\nlines ", "%1"}), "Todo list:\n1. \n2.  two\nlines \n3. %1");
}

TEST(TodoListTest, ConcurrentUpdatesEachAnswerForTheirOwnList)
{
    TodoList todos;
    std::vector<std::thread> threads;
    std::vector<QString> answers(4);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 200; ++round)
                answers[i] = todos.updateTodos(QStringList(3, QString::number(i)));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (std::size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i], u"Todo list:\n1. %1\n2. %1\n3. %1"_s.arg(i));
}

} // namespace
} // namespace morvane
