#include "MorvaneTest.h"

#include "support/ClipboardOwner.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"
#include "support/TemporaryHome.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Files as they lie in a user's folder, attached in the ways that a user has.
class AttachmentTest : public MorvaneTest {
protected:
    MorvaneSession &startSeeing()
    {
        MorvaneSession &morvane = prepare({ScriptedTurn::saying({"I have read all of it."})});
        morvane.setSetting(u"model"_s, u"scripted-vision"_s);
        morvane.start();
        return morvane;
    }
    void paste(MorvaneSession &morvane)
    {
        const auto field = u"Message Morvane"_s;
        morvane.program().find(field).takeFocus();
        ASSERT_TRUE(morvane.program().focuses(field));
        morvane.keyboard().press(u"Ctrl+V"_s);
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
          uriList({m_files.write(u"photo.jpg"_s, m_photo),
                   m_files.write(u"scan.pdf"_s, samplePdf({{SamplePage::Kind::scanned, u"Dear reader"_s}})),
                   m_files.write(u"notes.txt"_s, "Remember the milk.")})}});
    paste(morvane);
    for (const char *name : {"photo.jpg", "scan.pdf", "notes.txt"}) {
        EXPECT_TRUE(morvane.ear().hears(u"Attaching %1…"_s.arg(QLatin1String(name))));
        EXPECT_TRUE(morvane.ear().hears(u"Attached %1."_s.arg(QLatin1String(name))));
    }
    EXPECT_TRUE(morvane.program().shows(u"3 pending attachments"_s));
    EXPECT_TRUE(morvane.program().shows(u"Attachment photo.jpg, image"_s));
    morvane.send(u"What do these say?"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I have read all of it."_s));
    EXPECT_TRUE(morvane.program().hides(u"3 pending attachments"_s));

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
    const QString path = m_files.write(u"large.png"_s, m_largePhoto);
    morvane.program().find(u"Attach a file or image"_s, AccessibleRole::pushButton).press();
    const AccessibleElement name = morvane.program().find(
        [](const AccessibleNode &node) {
            return node.role == AccessibleRole::text && node.has(AccessibleState::focused) &&
                   node.name != "Message Morvane"_L1;
        },
        u"the dialog's file name"_s);
    name.setText(path);
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Attached large.png."_s));
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I have read all of it."_s));

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
    ASSERT_TRUE(morvane.ear().hears(u"Attached Pasted image.png."_s));
    morvane.send(u"And this?"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I have read all of it."_s));
    EXPECT_EQ(sentContent(morvane).at(1).at("image_url").at("url").as_string(),
              "data:image/png;base64," + png.toBase64().toStdString());
}

TEST_F(AttachmentTest, ModelThatCannotSeeIsWarnedOfAndTheDraftIsKept)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"Text only."})});
    const ClipboardOwner clipboard(morvane.display(),
                                   {{"text/uri-list", uriList({m_files.write(u"photo.jpg"_s, m_photo)})}});
    paste(morvane);
    ASSERT_TRUE(morvane.ear().hears(u"Attached photo.jpg."_s));
    EXPECT_TRUE(morvane.program().shows(
        u"Warning: the current model can't see images. Switch to a vision model to send them."_s));
    morvane.send(u"What is this?"_s);
    EXPECT_TRUE(morvane.ear().hears(
        u"The current model can't see images. Switch to a vision model, like Gemini or G P T "
        "five mini, to send this attachment, or remove the image."_s));
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), u"What is this?"_s);
    morvane.program().find(u"Remove attachment photo.jpg"_s).press();
    EXPECT_TRUE(morvane.ear().hears(u"Removed attachment photo.jpg"_s));
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text only."_s));
}

TEST_F(AttachmentTest, RefusedFileIsHeard)
{
    MorvaneSession &morvane = startSeeing();
    const ClipboardOwner clipboard(
        morvane.display(), {{"text/uri-list", uriList({m_files.write(u"archive.zip"_s, "PK\x03\x04\xFF")})}});
    paste(morvane);
    EXPECT_TRUE(morvane.ear().hears(
        u"\"archive.zip\" does not appear to be a text file. Supported types are images, PDFs, "
        "and text or code files."_s));
    EXPECT_TRUE(morvane.program().hides(u"1 pending attachment"_s));
}

TEST_F(AttachmentTest, ASentPictureIsSeenAndOpenedByAPress)
{
    MorvaneSession &morvane = startSeeing();
    const ClipboardOwner clipboard(morvane.display(),
                                   {{"text/uri-list", uriList({m_files.write(u"photo.jpg"_s, m_photo)})}});
    paste(morvane);
    ASSERT_TRUE(morvane.ear().hears(u"Attached photo.jpg."_s));
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said I have read all of it."_s));
    morvane.program().find(u"Picture photo.jpg"_s, AccessibleRole::pushButton).press();
    EXPECT_TRUE(morvane.program().shows(u"photo.jpg"_s));
    const auto isShown = [](const AccessibleNode &node) {
        return node.name == "Picture photo.jpg"_L1 && node.role != AccessibleRole::pushButton;
    };
    EXPECT_TRUE(morvane.program().shows(isShown));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().hides(u"photo.jpg"_s));
}

} // namespace
} // namespace morvane
