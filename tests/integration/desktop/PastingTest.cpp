#include "DesktopFixture.h"

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Has a program go on when pasting waits for it, which it then does ten times as long.
class WakingClock final : public SequenceClock {
public:
    explicit WakingClock(const TestProgram &program) : m_program(program.pid()) {}

    void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override
    {
        if (duration != 10ms)
            return m_real.sleep(duration, stop);
        ::kill(pid_t(m_program), SIGCONT);
        m_real.sleep(100ms, stop);
    }
    QDeadlineTimer deadline(std::chrono::milliseconds limit) override { return m_real.deadline(limit); }

private:
    const qint64 m_program;
    RealSequenceClock m_real;
};

using PastingTest = DesktopFixture;

TEST_F(PastingTest, ASlowProgramPastesWhatWasMeantForItAndNotWhatIsCopiedNext)
{
    TestProgram &program =
        startWindow(u"widget = Gtk.Entry()\n"
                    "widget.connect('changed', lambda field: print(field.get_text(), flush=True))"_s);
    captureWith(u"text field"_s);
    holdUp(program);
    ScreenTools tools(desktop(std::make_shared<WakingClock>(program)));
    EXPECT_EQ(run(tools.pasteText(u"amber"_s)), u"Pasted 5 characters into the focused app."_s);
    EXPECT_EQ(run(tools.clipboardSet(u"secret"_s)), u"Copied 6 characters to the clipboard."_s);
    ::kill(pid_t(program.pid()), SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return program.log() == u"amber\n"_s; })) << program.log().toStdString();
}

} // namespace
} // namespace morvane
