#include "AttachmentFixture.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <chrono>
#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Programs that stand in the reader's place and misbehave.
class ReaderProcessTest : public AttachmentFixture {
protected:
    AttachmentProcessor withReader(const QByteArray &script, std::chrono::milliseconds limit = 20s)
    {
        const QString path = home.write(u"reader"_s, "#!/bin/sh\n" + script + '\n');
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return AttachmentProcessor(ReaderProcess(path, limit));
    }
    void expectFailure(const AttachmentProcessor &broken)
    {
        const auto image = broken.prepareForVision("bytes", u"gif"_s, stop);
        EXPECT_EQ(image.data, "bytes");
        EXPECT_EQ(image.mimeType, u"image/gif"_s);
        EXPECT_EQ(broken.ocr("bytes", stop), QString());
        const QUrl document = QUrl::fromLocalFile(home.write(u"a.pdf"_s, "%PDF"));
        try {
            broken.process(document, stop);
            ADD_FAILURE() << "the document was taken";
        } catch (const AttachmentError &error) {
            EXPECT_EQ(error.message(), u"Could not open \"a.pdf\" as a PDF."_s);
        }
    }
    /// The process id that a script of this fixture has left in the home folder, now or soon.
    pid_t startedProcess() const
    {
        while (QFileInfo(home.path(u"pid"_s)).size() == 0)
            std::this_thread::yield();
        return home.read(u"pid"_s).trimmed().toInt();
    }
    QByteArray leavingPid() const
    {
        const QByteArray path = QFile::encodeName(home.path(u"pid"_s));
        return "echo $$ > " + path + ".part; mv " + path + ".part " + path + '\n';
    }
};

TEST_F(ReaderProcessTest, ReaderThatCrashes)
{
    expectFailure(withReader("kill -SEGV $$"));
}

TEST_F(ReaderProcessTest, ReaderThatFailsAfterARightAnswer)
{
    expectFailure(withReader("printf 'MARt\\004\\000\\000\\000text'; exit 1"));
    expectFailure(withReader("printf 'MARt\\004\\000\\000\\000text'; kill -ABRT $$"));
}

TEST_F(ReaderProcessTest, ReaderThatAnswersGarbage)
{
    expectFailure(withReader("head -c 100000 /dev/urandom"));
    expectFailure(withReader("echo nonsense"));
    expectFailure(withReader("exit 0"));
    expectFailure(withReader("printf 'MARt\\377\\377\\377\\377text'"));
    expectFailure(withReader("printf 'MARj\\004\\000\\000\\000text'"));
}

TEST_F(ReaderProcessTest, ReaderThatNeverEndsItsAnswer)
{
    expectFailure(withReader("exec cat /dev/zero"));
}

TEST_F(ReaderProcessTest, ReaderThatHangsIsKilledAtTheLimit)
{
    expectFailure(withReader("exec sleep 1000", 100ms));
}

TEST_F(ReaderProcessTest, ReaderThatHangsBehindItsAnswerIsKilledAtTheLimit)
{
    expectFailure(withReader("printf 'MARt\\004\\000\\000\\000text'; exec sleep 1000 >&-", 100ms));
}

TEST_F(ReaderProcessTest, AnswerOfTheRightFormIsTaken)
{
    const AttachmentProcessor reader = withReader("printf 'MARt\\004\\000\\000\\000text'");
    EXPECT_EQ(reader.ocr("bytes", stop), u"text"_s);
}

TEST_F(ReaderProcessTest, JobIsNamedAndTheFileComesThroughTheInput)
{
    const AttachmentProcessor reader =
        withReader("input=$(cat); text=\"$1:$input\"; printf 'MARt\\021\\000\\000\\000%s' \"$text\"");
    EXPECT_EQ(reader.ocr("bytes", stop), u"recognition:bytes"_s);
}

TEST_F(ReaderProcessTest, RaisedFlagKillsTheReader)
{
    const AttachmentProcessor hanging = withReader(leavingPid() + "exec sleep 1000", 1h);
    std::jthread worker([&] { hanging.ocr("bytes", stop); });
    const pid_t reader = startedProcess();
    EXPECT_EQ(::kill(reader, 0), 0);
    stop.raise();
    worker.join();
    EXPECT_NE(::kill(reader, 0), 0);
}

TEST_F(ReaderProcessTest, RealReaderWantsOneJob)
{
    const auto statusOf = [](const QStringList &arguments) {
        QProcess reader;
        reader.setStandardInputFile(QProcess::nullDevice());
        reader.start(readerProgram(), arguments);
        EXPECT_TRUE(reader.waitForFinished());
        return reader.exitCode();
    };
    EXPECT_EQ(statusOf({u"document"_s}), 0);
    EXPECT_EQ(statusOf({}), 2);
    EXPECT_EQ(statusOf({u"document"_s, u"more"_s}), 2);
}

} // namespace
} // namespace morvane
