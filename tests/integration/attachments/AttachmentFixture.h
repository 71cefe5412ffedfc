#pragma once

#include "attachments/AttachmentError.h"
#include "attachments/AttachmentProcessor.h"
#include "base/InstalledFiles.h"
#include "support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace morvane {

/// A processor with the real reader program, on files of a temporary home.
class AttachmentFixture : public testing::Test {
protected:
    static QString readerProgram()
    {
        return InstalledFiles::aroundProgram().helper(QStringLiteral("morvane-attachment-reader"));
    }
    ChatAttachment process(const QString &name, const QByteArray &content) const
    {
        return processor.process(QUrl::fromLocalFile(home.write(name, content)), stop);
    }
    /// What the user is told; empty if the file is taken.
    QString failureOf(const QString &name, const QByteArray &content) const
    {
        try {
            process(name, content);
        } catch (const AttachmentError &error) {
            return error.message();
        }
        return {};
    }

    TemporaryHome home;
    StopFlag stop;
    AttachmentProcessor processor{ReaderProcess(readerProgram())};
};

} // namespace morvane
