#include "base/IniReader.h"

#include "base/IniText.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QSettings>
#include <QStringList>
#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QVariantMap valuesOf(QByteArrayView text)
{
    const IniReader::Content content = IniReader(text).read();
    EXPECT_FALSE(content.isDamaged) << text.toByteArray().constData();
    return content.values;
}

/// What QSettings says of the same files, each under a name of its own, since it remembers files.
class IniReaderAndQSettingsTest : public testing::Test {
protected:
    QString newPath() { return home.path(u"%1.conf"_s.arg(++m_files)); }

    IniReader::Content readByQSettings(const QByteArray &text)
    {
        const QString path = newPath();
        home.write(path.section(u'/', -1), text);
        const QSettings settings(path, QSettings::IniFormat);
        IniReader::Content content;
        for (const QString &key : settings.allKeys())
            content.values.insert(key, plain(settings.value(key)));
        content.isDamaged = settings.status() != QSettings::NoError;
        return content;
    }

    static std::string shown(const QVariant &value)
    {
        return (u'<' + value.toStringList().join(u'|') + u'>').toStdString();
    }

    /// Lists hold texts only.
    static QVariant plain(const QVariant &value)
    {
        return value.typeId() == QMetaType::QVariantList ? QVariant(value.toStringList()) : value;
    }

    QByteArray writtenByQSettings(const QVariantMap &values)
    {
        const QString path = newPath();
        QSettings settings(path, QSettings::IniFormat);
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            settings.setValue(value.key(), *value);
        settings.sync();
        return home.read(path.section(u'/', -1));
    }

    QString randomText(QStringView alphabet)
    {
        QString result;
        for (auto length = random() % 12; length > 0; --length)
            result += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
        return result;
    }

    TemporaryHome home;
    std::mt19937 random{3};

private:
    int m_files = 0;
};

TEST(IniReaderTest, SectionsKeysAndComments)
{
    EXPECT_EQ(valuesOf("; a comment\n[General]\nmodel = qwen2.5 ; "
                       "another\n\r\n[a\\b]\nc=1\r[general]\nd=\n[%General]\ne=2"),
              (QVariantMap{{"model", "qwen2.5"}, {"a/b/c", "1"}, {"d", ""}, {"General/e", "2"}}));
    EXPECT_TRUE(valuesOf("").isEmpty());
    EXPECT_EQ(valuesOf("\xEF\xBB\xBF"
                       "a=b"),
              (QVariantMap{{"a", "b"}}));
}

TEST(IniReaderTest, TheLastOfEqualKeysCounts)
{
    EXPECT_EQ(valuesOf("a=1\na=2\n[General]\na=3\n"), (QVariantMap{{"a", "3"}}));
}

TEST(IniReaderTest, TextsOfEveryForm)
{
    EXPECT_EQ(valuesOf(R"(a="x;y, z=\"1\"\n")").value("a"), QVariant(u"x;y, z=\"1\"\n"_s));
    EXPECT_EQ(valuesOf(R"(a=\x41\102 \q.)").value("a"), QVariant(u"AB ."_s));
    EXPECT_EQ(valuesOf("a=one\\\n two").value("a"), QVariant(u"one two"_s));
    EXPECT_EQ(valuesOf("a=caf\xe9 \xc3\xa9").value("a"), QVariant(u"caf\uFFFD é"_s));
    EXPECT_EQ(valuesOf("a=@@x").value("a"), QVariant(u"@x"_s));
    EXPECT_EQ(valuesOf("a=@ByteArray(x\\xff)").value("a"), QVariant(QByteArray("x\xff")));
    EXPECT_EQ(valuesOf("a=@String(x\\0y)").value("a"), QVariant(u"x"_s + QChar(0) + u'y'));
    EXPECT_FALSE(valuesOf("a=@Invalid()").value("a").isValid());
    EXPECT_EQ(valuesOf("a=x, \" y \", , @@z").value("a"), QVariant(QStringList{"x", " y ", "", "@z"}));
}

TEST(IniReaderTest, LinesWithoutAMeaningAreDamageAndCostNothingElse)
{
    for (const char *text :
         {"[General]\na=1\nno key here\nb=2\n", "[x\n[General]\na=1\nb=2", "a=1\nb=2\n\"open"}) {
        const IniReader::Content content = IniReader(text).read();
        EXPECT_TRUE(content.isDamaged) << text;
        EXPECT_EQ(content.values, (QVariantMap{{"a", "1"}, {"b", "2"}})) << text;
    }
    EXPECT_TRUE(IniReader(QByteArray(4096, '\0')).read().isDamaged);
    EXPECT_TRUE(IniReader("{\"model\":1}").read().isDamaged);
}

TEST(IniReaderTest, KeysOfAnyLengthAreReadInOnePass)
{
    // Were the rest of the key copied at each of its characters, this would take hours.
    const QString key(8 * 1024 * 1024, u'k');
    const QByteArray text = "[" + key.toUtf8() + "]\n" + key.toUtf8() + "=1\n";
    EXPECT_EQ(IniReader(text).read().values.value(key + u'/' + key), QVariant(u"1"_s));
}

/// So many keys of every kind that with `more` of them the text has as many items as are read.
QByteArray fullText(int more)
{
    QByteArray text = "first=x";
    for (qsizetype left = IniReader::maximumItems - 1 - more; left > 0; --left)
        text += ", y";
    text += more > 0 ? "\n[one]\n" : "\n";
    for (int i = 0; i < more; ++i)
        text += i % 2 == 0 ? "k" + QByteArray::number(i) + "=1\n"
                           : "[g" + QByteArray::number(i) + "]\nother\\k=1\n";
    return text;
}

TEST(IniReaderTest, ATextOfAnySizeHasABoundedNumberOfItems)
{
    constexpr int megabytes = 8;
    const auto filledWith = [](const QByteArray &piece) {
        return piece.repeated(megabytes * 1024 * 1024 / piece.size());
    };
    for (const QByteArray &piece : {"[a]\n", "[]\n", "x\n", "=\n", "[a]\nb=\n", "a=,\n"}) {
        const IniReader::Content content = IniReader("first=1\n" + filledWith(piece)).read();
        EXPECT_TRUE(content.isDamaged) << piece.constData();
        EXPECT_EQ(content.values.value("first"), QVariant("1")) << piece.constData();
    }
    for (const QByteArray &piece : {",", "x,", "\"\",", ", "}) {
        const IniReader::Content content = IniReader("first=1\nlist=" + filledWith(piece)).read();
        EXPECT_TRUE(content.isDamaged) << piece.constData();
        EXPECT_EQ(content.values, (QVariantMap{{"first", "1"}})) << piece.constData();
    }
}

TEST(IniReaderTest, WhatIsReadWholeIsNotTooMuchToBeWritten)
{
    for (const int more : {0, 1, 2, 999, 5000, int(IniReader::maximumItems) - 1}) {
        const IniReader::Content content = IniReader(fullText(more)).read();
        EXPECT_FALSE(content.isDamaged) << more;
        EXPECT_EQ(iniItems(content.values), IniReader::maximumItems) << more;
        EXPECT_EQ(valuesOf(iniText(content.values)), content.values) << more;
        EXPECT_TRUE(IniReader(fullText(more) + "last=1").read().isDamaged) << more;
        EXPECT_TRUE(IniReader(fullText(more) + "[empty]\n").read().isDamaged) << more;
    }
}

TEST(IniReaderTest, WhatWasWrittenIsReadBack)
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    const QVariantMap values{{"text", u" a, \"b\"\n🙂\\"_s + QChar(0) + QChar(0xd83d)},
                             {"", "empty key"},
                             {"/x", "empty group"},
                             {"General/x", "1"},
                             {"g ü/a/b", "2"},
                             {"g/a//", "3"},
                             {"bytes", all},
                             {"list", QStringList{"@a", "", " b", u"\uFEFFc"_s}},
                             {"mark", u"\uFEFF"_s},
                             {"none", QVariant()}};
    EXPECT_EQ(valuesOf(iniText(values)), values);
}

TEST_F(IniReaderAndQSettingsTest, FilesThatQSettingsWroteAreReadTheSame)
{
    const QString alphabet = u"ab1f ,;=\"\\@%/[]()#\n\r\t\x01\x7fäé—🙂\u2028"_s + QChar(0);
    for (int round = 0; round < 100; ++round) {
        QVariantMap values{{"true", true}, {"int", 7}, {"double", 0.1}, {"none", QVariant()}};
        for (int i = 0; i < 30; ++i) {
            const QString text = QString::fromUtf8(randomText(alphabet).toUtf8());
            const QString key = u"group%1/key%2"_s.arg(i % 3).arg(i);
            if (i % 3 == 0)
                values.insert(key, QStringList{text, randomText(u"ab@"), u"c"_s});
            else if (i % 3 == 1)
                values.insert(key, text);
            else
                values.insert(key, text.toUtf8());
        }
        const QByteArray text = writtenByQSettings(values);
        const IniReader::Content ours = IniReader(text).read();
        const IniReader::Content theirs = readByQSettings(text);
        EXPECT_FALSE(ours.isDamaged);
        ASSERT_EQ(ours.values, theirs.values) << text.constData();
    }
}

TEST_F(IniReaderAndQSettingsTest, FilesThatWereEditedByHandAreReadTheSame)
{
    const QString alphabet = u"ab07fxU=;,\"\\@%[] \t\n\n==é"_s;
    for (int round = 0; round < 3000; ++round) {
        QByteArray text;
        for (int i = 0; i < 5; ++i)
            text += randomText(alphabet).toUtf8();
        const IniReader::Content ours = IniReader(text).read();
        const IniReader::Content theirs = readByQSettings(text);
        ASSERT_EQ(ours.isDamaged, theirs.isDamaged) << text.constData();
        ASSERT_EQ(ours.values.keys(), theirs.values.keys()) << text.constData();
        for (auto value = ours.values.cbegin(); value != ours.values.cend(); ++value) {
            // QSettings cannot be asked for a key that it would have written in another way.
            const bool isUsual = !value.key().isEmpty() && !(u'/' + value.key() + u'/').contains("//"_L1);
            if (isUsual)
                ASSERT_EQ(*value, theirs.values.value(value.key()))
                    << text.constData() << shown(*value) << shown(theirs.values.value(value.key()));
        }
    }
}

} // namespace
} // namespace morvane
