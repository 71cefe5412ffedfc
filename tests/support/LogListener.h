#pragma once

#include "support/LogRecorder.h"

#include <gtest/gtest.h>
#include <optional>

namespace morvane {

/// Switches the log on for every test of a program; a line in it that could quote the user fails the test.
class LogListener : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo &) override { m_recorder.emplace(); }
    void OnTestEnd(const testing::TestInfo &) override
    {
        for (const QString &line : m_recorder->lines())
            EXPECT_FALSE(mayQuoteTheUser(line)) << line.toStdString();
        m_recorder.reset();
    }

private:
    std::optional<LogRecorder> m_recorder;
};

/// Has every test that runs from now on watched. Before RUN_ALL_TESTS().
inline void watchTheLog()
{
    testing::UnitTest::GetInstance()->listeners().Append(new LogListener);
}

} // namespace morvane
