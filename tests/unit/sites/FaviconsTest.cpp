#include "browser/sites/Favicons.h"

#include "async/Sleep.h"
#include "net/TransportError.h"
#include "support/FakeClock.h"
#include "support/FakeWebPage.h"
#include "support/RunTask.h"

#include <QHash>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

class FaviconsTest : public testing::Test {
protected:
    ~FaviconsTest() override { scheduler.shutdown(1s); }

    Task<FetchResult> fetch(HttpRequest request, qint64 maximumBytes)
    {
        const QString address = request.url.toString();
        asked.append(address);
        EXPECT_EQ(request.silenceLimit, 6s);
        EXPECT_EQ(request.redirects, RedirectRule::allowGet);
        EXPECT_LE(maximumBytes, 256 * 1024);
        if (silent.contains(address))
            co_await sleepFor(1h);
        if (unreachable.contains(address))
            throw TransportError(TransportError::Kind::cannotConnectToHost);
        FetchResult result;
        result.status = answers.contains(address) ? status : 404;
        result.body = answers.value(address, "<html>");
        co_return result;
    }
    static Task<QImage> decode(QByteArray bytes)
    {
        if (!bytes.startsWith("icon"))
            co_return QImage();
        QImage image(static_cast<int>(bytes.size()), 1, QImage::Format_RGB32);
        image.fill(Qt::red);
        co_return image;
    }
    QImage fetched(const QString &host = u"a.test"_s)
    {
        return runTask(scheduler, favicons.fetchFavicon(host, &page));
    }
    /// The page has this in `href` of its link.
    void name(const QVariant &address)
    {
        page.answers = [address](const QString &) { return address; };
    }

    FakeClock clock;
    Scheduler scheduler{clock};
    FakeWebPage page;
    Favicons favicons{[this](HttpRequest request, qint64 most) { return fetch(std::move(request), most); },
                      decode};
    QStringList asked;
    QHash<QString, QByteArray> answers;
    QStringList unreachable;
    QStringList silent;
    int status = 200;
};

TEST_F(FaviconsTest, ThePagesOwnIconComesFirst)
{
    name(u"https://cdn.test/icon.png"_s);
    answers[u"https://cdn.test/icon.png"_s] = "icon";
    EXPECT_FALSE(fetched().isNull());
    EXPECT_EQ(asked, QStringList{u"https://cdn.test/icon.png"_s});
    EXPECT_EQ(page.scripts, QStringList{u"document.querySelector('link[rel*=\"icon\"]')?.href"_s});
}

TEST_F(FaviconsTest, TheUsualPlaceIsTriedFirstWithAndThenWithoutEncryption)
{
    answers[u"http://a.test/favicon.ico"_s] = "icon";
    EXPECT_FALSE(fetched().isNull());
    EXPECT_EQ(asked, (QStringList{u"https://a.test/favicon.ico"_s, u"http://a.test/favicon.ico"_s}));
}

TEST_F(FaviconsTest, AHostOfNumbersHasItsBrackets)
{
    fetched(u"::1"_s);
    EXPECT_EQ(asked.value(0), u"https://[::1]/favicon.ico"_s);
}

TEST_F(FaviconsTest, AnIconIsKeptByItsHost)
{
    answers[u"https://a.test/favicon.ico"_s] = "icon";
    EXPECT_TRUE(favicons.cached(u"a.test"_s).isNull());
    const QImage icon = fetched();
    asked.clear();
    EXPECT_EQ(fetched(), icon);
    EXPECT_EQ(favicons.cached(u"a.test"_s), icon);
    EXPECT_TRUE(favicons.cached(u"b.test"_s).isNull());
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(FaviconsTest, ThatThereIsNoneIsNotKept)
{
    EXPECT_TRUE(fetched().isNull());
    answers[u"https://a.test/favicon.ico"_s] = "icon";
    EXPECT_FALSE(fetched().isNull());
}

TEST_F(FaviconsTest, WhatIsNoPictureOrNoSuccessIsPassedOver)
{
    name(u"https://a.test/page"_s);
    answers[u"https://a.test/page"_s] = "<html>";
    answers[u"https://a.test/favicon.ico"_s] = "icon";
    EXPECT_FALSE(fetched().isNull());
    EXPECT_EQ(asked.size(), 2);
    status = 203;
    answers[u"https://b.test/favicon.ico"_s] = "icon";
    EXPECT_TRUE(fetched(u"b.test"_s).isNull());
}

TEST_F(FaviconsTest, AFailureLeadsToTheNextPlace)
{
    unreachable = {u"https://a.test/favicon.ico"_s};
    answers[u"http://a.test/favicon.ico"_s] = "icon";
    EXPECT_FALSE(fetched().isNull());
}

TEST_F(FaviconsTest, NothingButTheWebIsAsked)
{
    for (const QVariant &address :
         {QVariant(u"file:///etc/passwd"_s), QVariant(u"data:image/png;base64,AAAA"_s), QVariant(u"//x"_s),
          QVariant(), QVariant(7), QVariant(QString(u"https://a.test/"_s + QString(100'000, u'x')))}) {
        asked.clear();
        name(address);
        fetched();
        EXPECT_EQ(asked, (QStringList{u"https://a.test/favicon.ico"_s, u"http://a.test/favicon.ico"_s}));
    }
}

TEST_F(FaviconsTest, AServerHasSixSecondsForTheWholeIcon)
{
    silent = {u"https://a.test/favicon.ico"_s};
    answers[u"http://a.test/favicon.ico"_s] = "icon";
    auto task = scheduler.spawn(favicons.fetchFavicon(u"a.test"_s, nullptr));
    settle();
    clock.advance(5999ms);
    settle();
    EXPECT_EQ(asked.size(), 1);
    clock.advance(1ms);
    settle();
    ASSERT_TRUE(task.done());
    EXPECT_FALSE(task.result().isNull());
}

TEST_F(FaviconsTest, APageThatGoesMeanwhileIsNoHarm)
{
    auto going = std::make_unique<FakeWebPage>();
    going->holdsAnswers = true;
    answers[u"https://a.test/favicon.ico"_s] = "icon";
    auto task = scheduler.spawn(favicons.fetchFavicon(u"a.test"_s, going.get()));
    settle();
    going.reset();
    settle();
    ASSERT_TRUE(task.done());
    EXPECT_FALSE(task.result().isNull());
}

} // namespace
} // namespace morvane
