#include "attachments/reader/RecognitionLanguages.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;

TEST(RecognitionLanguagesTest, ALanguageIsCalledByItsCodeOfThreeLettersWithEnglishBehindIt)
{
    EXPECT_THAT(recognitionLanguages({u"de-DE"_s}), ElementsAre(u"deu"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"fr_CA"_s, u"es"_s}), ElementsAre(u"fra"_s, u"spa"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"fa_IR"_s}), ElementsAre(u"fas"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"ja_JP"_s}), ElementsAre(u"jpn"_s, u"eng"_s));
}

TEST(RecognitionLanguagesTest, EachLanguageComesOnce)
{
    EXPECT_THAT(recognitionLanguages({u"en-US"_s, u"en-Latn-US"_s, u"de"_s, u"en"_s}),
                ElementsAre(u"eng"_s, u"deu"_s));
    EXPECT_THAT(recognitionLanguages({u"nb_NO"_s, u"nn_NO"_s}), ElementsAre(u"nor"_s, u"eng"_s));
}

TEST(RecognitionLanguagesTest, WhatIsNoLanguageIsLeftOut)
{
    EXPECT_THAT(recognitionLanguages({}), ElementsAre(u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"C"_s, u"POSIX"_s, u""_s, u"../../x"_s, u"qq_QQ"_s}),
                ElementsAre(u"eng"_s));
}

TEST(RecognitionLanguagesTest, ChineseIsReadInTheScriptOfThePlace)
{
    for (const QString &simplified : {u"zh"_s, u"zh_CN"_s, u"zh-SG"_s, u"zh-Hans-HK"_s})
        EXPECT_THAT(recognitionLanguages({simplified}), ElementsAre(u"chi_sim"_s, u"eng"_s));
    for (const QString &traditional : {u"zh_TW"_s, u"zh-HK"_s, u"zh_MO"_s, u"zh-Hant"_s, u"yue_HK"_s})
        EXPECT_THAT(recognitionLanguages({traditional}), ElementsAre(u"chi_tra"_s, u"eng"_s));
}

TEST(RecognitionLanguagesTest, LanguagesOfTwoScriptsAreReadInTheUsers)
{
    EXPECT_THAT(recognitionLanguages({u"sr_RS"_s}), ElementsAre(u"srp"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"sr-Latn-RS"_s}), ElementsAre(u"srp_latn"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"uz_UZ"_s}), ElementsAre(u"uzb"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"uz-Cyrl-UZ"_s}), ElementsAre(u"uzb_cyrl"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"az-Cyrl"_s}), ElementsAre(u"aze_cyrl"_s, u"eng"_s));
    EXPECT_THAT(recognitionLanguages({u"ku_TR"_s}), ElementsAre(u"kmr"_s, u"eng"_s));
}

} // namespace
} // namespace morvane
