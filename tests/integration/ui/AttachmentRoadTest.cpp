#include "support/AppFixture.h"

#include "attachments/AttachmentWorkers.h"
#include "base/InstalledFiles.h"
#include "net/HttpClient.h"
#include "providers/HttpAIService.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"
#include "support/ScriptedModel.h"
#include "ui/window/ComposerView.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// The whole road of attached files, from the composer to the provider's server, with nothing made up but the
/// server itself.
class AttachmentRoadTest : public AppFixture {
protected:
    AttachmentRoadTest() { view = std::make_unique<ComposerView>(*roadModel, roadModel->updates()); }
    ~AttachmentRoadTest() override
    {
        view.reset();
        scheduler.shutdown(5s);
    }

    static Endpoints endpointsAt(const QString &origin)
    {
        Endpoints endpoints;
        endpoints.gemini = origin;
        endpoints.groq = origin;
        endpoints.openai = origin;
        return endpoints;
    }
    /// Attaches the three files, sends them with a question, and gives what the server got for them.
    boost::json::value sent(ProviderID provider, const QString &modelName)
    {
        settings->setProviderID(provider);
        settings->setApiKey(u"key"_s);
        settings->setModel(modelName);
        server.appendTurn(ScriptedTurn::saying({"Seen."}));
        view->handleFiles({file(u"photo.png"_s, photo),
                           file(u"scan.pdf"_s, samplePdf({{SamplePage::Kind::scanned, u"Dear reader"_s}})),
                           file(u"notes.txt"_s, "Remember the milk.")});
        EXPECT_TRUE(waitUntil([this] { return view->attachments().processingCount() == 0; }));
        EXPECT_EQ(view->attachments().attachments().size(), 3);
        EXPECT_TRUE(roadModel->send(u"What is this?"_s, view->attachments().attachments()));
        EXPECT_TRUE(waitUntil([this] { return !roadModel->isBusy(); }));
        EXPECT_FALSE(server.requests().empty());
        return server.requests().empty() ? boost::json::object() : server.requests().front().json;
    }
    QUrl file(const QString &name, const QByteArray &content) const
    {
        return QUrl::fromLocalFile(home.write(name, content));
    }
    static void expectFilesIn(const boost::json::value &text)
    {
        const std::string sentText(text.as_string());
        EXPECT_THAT(sentText, testing::StartsWith("What is this?\n\n["));
        EXPECT_THAT(sentText, testing::HasSubstr("[Attached document scan.pdf]\n[Scanned page 1]\nDear "
                                                 "reader\n[End of scan.pdf]"));
        EXPECT_THAT(sentText,
                    testing::HasSubstr("[Attached file notes.txt]\nRemember the milk.\n[End of notes.txt]"));
    }

    const QByteArray photo = encoded(samplePhoto({60, 40}), "png");
    ScriptedModel server;
    HttpClient http;
    HttpAIService realService{http, endpointsAt(QString::fromStdString(server.baseURL()))};
    AttachmentWorkers workers{AttachmentProcessor(
        ReaderProcess(InstalledFiles::aroundProgram().helper(u"morvane-attachment-reader"_s)))};
    AppServices road = servicesAround({
        .scheduler = scheduler,
        .settings = *settings,
        .conversations = *store,
        .executeTool = services->executeTool,
        .machine = services->machineSummary(),
        .service = &realService,
        .attachments = &workers,
    });
    std::unique_ptr<AppModel> roadModel = std::make_unique<AppModel>(road);
    std::unique_ptr<ComposerView> view;
};

TEST_F(AttachmentRoadTest, GeminiGetsPicturesBeforeTheText)
{
    const auto body = sent(ProviderID::gemini, u"gemini-scripted"_s);
    const auto &parts = body.at("contents").at(0).at("parts").as_array();
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts.at(0).at("inline_data").at("mime_type").as_string(), "image/png");
    EXPECT_EQ(parts.at(0).at("inline_data").at("data").as_string(), photo.toBase64().toStdString());
    expectFilesIn(parts.at(1).at("text"));
}

TEST_F(AttachmentRoadTest, OpenAIGetsPicturesBehindTheText)
{
    const auto body = sent(ProviderID::openai, u"scripted"_s);
    const auto &content = body.at("messages").as_array().back().at("content").as_array();
    ASSERT_EQ(content.size(), 2u);
    expectFilesIn(content.at(0).at("text"));
    EXPECT_EQ(content.at(1).at("image_url").at("url").as_string(),
              "data:image/png;base64," + photo.toBase64().toStdString());
}

TEST_F(AttachmentRoadTest, ModelThatSeesByItsNameGetsThePicture)
{
    const auto body = sent(ProviderID::groq, u"some-vision-model"_s);
    EXPECT_EQ(body.at("messages").as_array().back().at("content").as_array().size(), 2u);
}

} // namespace
} // namespace morvane
