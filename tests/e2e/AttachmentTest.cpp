#include "MorvaneTest.h"

#include "support/ClipboardOwner.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"
#include "support/TemporaryHome.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

/// Files as they lie in a user's folder, attached in the ways that a user has.
class AttachmentTest : public MorvaneTest {
protected:
    MorvaneSession &startSeeing()
    {
        MorvaneSession &morvane = prepare({ScriptedTurn::saying({"I have read all of it."})});
        morvane.setSetting(QStringLiteral("model"), QStringLiteral("scripted-vision"));
        morvane.start();
        return morvane;
    }
    void paste(MorvaneSession &morvane)
    {
        const auto field = QStringLiteral("Message Morvane");
        morvane.program().find(field).takeFocus();
        ASSERT_TRUE(morvane.program().focuses(field));
        morvane.keyboard().press(QStringLiteral("Ctrl+V"));
    }
    /// The content of the user's message in the request that the model got.
    static boost::json::value sentContent(MorvaneSession &morvane)
    {
        EXPECT_TRUE(morvane.model().waitForRequests(1));
        const auto request = morvane.model().requests().at(0);
        return request.json.at("messages").as_array().back().at("content");
    }

    const QByteArray m_photo = encoded(samplePhoto({120, 80}), "jpeg", 80);
    const QByteArray m_largePhoto = encoded(samplePhoto({2'400, 1'200}), "png");
    TemporaryHome m_files;
};

TEST_F(AttachmentTest, PastedImageScanAndTextReachTheModel)
{
    MorvaneSession &morvane = startSeeing();
    const ClipboardOwner clipboard(
        morvane.display(),
        {{"text/uri-list",
          uriList({m_files.write(QStringLiteral("photo.jpg"), m_photo),
                   m_files.write(QStringLiteral("scan.pdf"),
                                 samplePdf({{SamplePage::Kind::scanned, QStringLiteral("Dear reader")}})),
                   m_files.write(QStringLiteral("notes.txt"), "Remember the milk.")})}});
    paste(morvane);
    for (const char *name : {"photo.jpg", "scan.pdf", "notes.txt"}) {
        EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Attaching %1…").arg(QLatin1String(name))));
        EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Attached %1.").arg(QLatin1String(name))));
    }
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("3 pending attachments")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Attachment photo.jpg, image")));
    morvane.send(QStringLiteral("What do these say?"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("I have read all of it.")));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("3 pending attachments")));

    const auto content = sentContent(morvane);
    ASSERT_EQ(content.as_array().size(), 2u);
    const std::string text(content.at(0).at("text").as_string());
    EXPECT_THAT(text, testing::StartsWith("What do these say?\n\n["));
    EXPECT_THAT(text, testing::HasSubstr("[Attached document scan.pdf]\n[Scanned page 1]\nDear reader\n[End "
                                         "of scan.pdf]"));
    EXPECT_THAT(text,
                testing::HasSubstr("[Attached file notes.txt]\nRemember the milk.\n[End of notes.txt]"));
    EXPECT_EQ(content.at(1).at("image_url").at("url").as_string(),
              "data:image/jpeg;base64," + m_photo.toBase64().toStdString());
}

TEST_F(AttachmentTest, FileFromTheDialogIsPreparedForTheModel)
{
    MorvaneSession &morvane = startSeeing();
    const QString path = m_files.write(QStringLiteral("large.png"), m_largePhoto);
    morvane.program().find(QStringLiteral("Attach a file or image"), AccessibleRole::pushButton).press();
    const AccessibleElement name = morvane.program().find(
        [](const AccessibleNode &node) {
            return node.role == AccessibleRole::text && node.has(AccessibleState::focused) &&
                   node.name != QLatin1String("Message Morvane");
        },
        QStringLiteral("the dialog's file name"));
    name.setText(path);
    morvane.keyboard().press(QStringLiteral("Return"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Attached large.png.")));
    morvane.keyboard().press(QStringLiteral("Return"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("I have read all of it.")));

    const auto content = sentContent(morvane);
    ASSERT_EQ(content.as_array().size(), 1u);
    const std::string url(content.at(0).at("image_url").at("url").as_string());
    const std::string head = "data:image/jpeg;base64,";
    ASSERT_TRUE(url.starts_with(head));
    const auto jpeg = QByteArray::fromBase64(QByteArray::fromStdString(url.substr(head.size())));
    EXPECT_EQ(QImage::fromData(jpeg, "jpeg").size(), QSize(1'568, 784));
}

TEST_F(AttachmentTest, PastedPictureIsSentAsItWasCopied)
{
    MorvaneSession &morvane = startSeeing();
    const QByteArray png = encoded(samplePhoto({60, 40}), "png");
    const ClipboardOwner clipboard(morvane.display(), {{"image/png", png}});
    paste(morvane);
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Attached Pasted image.png.")));
    morvane.send(QStringLiteral("And this?"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("I have read all of it.")));
    EXPECT_EQ(sentContent(morvane).at(1).at("image_url").at("url").as_string(),
              "data:image/png;base64," + png.toBase64().toStdString());
}

TEST_F(AttachmentTest, ModelThatCannotSeeIsWarnedOfAndTheDraftIsKept)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"Text only."})});
    const ClipboardOwner clipboard(
        morvane.display(),
        {{"text/uri-list", uriList({m_files.write(QStringLiteral("photo.jpg"), m_photo)})}});
    paste(morvane);
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Attached photo.jpg.")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral(
        "Warning: the current model can't see images. Switch to a vision model to send them.")));
    morvane.send(QStringLiteral("What is this?"));
    EXPECT_TRUE(morvane.ear().hears(
        QStringLiteral("The current model can't see images. Switch to a vision model, like Gemini or G P T "
                       "five mini, to send this attachment, or remove the image.")));
    EXPECT_EQ(morvane.program().find(QStringLiteral("Message Morvane")).text(),
              QStringLiteral("What is this?"));
    morvane.program().find(QStringLiteral("Remove attachment photo.jpg")).press();
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Removed attachment photo.jpg")));
    EXPECT_TRUE(morvane.program().focuses(QStringLiteral("Message Morvane")));
    morvane.keyboard().press(QStringLiteral("Return"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Text only.")));
}

TEST_F(AttachmentTest, RefusedFileIsHeard)
{
    MorvaneSession &morvane = startSeeing();
    const ClipboardOwner clipboard(
        morvane.display(),
        {{"text/uri-list", uriList({m_files.write(QStringLiteral("archive.zip"), "PK\x03\x04\xFF")})}});
    paste(morvane);
    EXPECT_TRUE(morvane.ear().hears(
        QStringLiteral("\"archive.zip\" does not appear to be a text file. Supported types are images, PDFs, "
                       "and text or code files.")));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("1 pending attachment")));
}

} // namespace
} // namespace morvane
