#include "base/IniText.h"

#include "support/TemporaryHome.h"

#include <QSettings>
#include <QSize>
#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class IniTextTest : public testing::Test {
protected:
    /// What QSettings makes of the text; a file of its own each time, since QSettings remembers files.
    QVariantMap readBack(const QVariantMap &values)
    {
        const QString path = home.write(u"%1.conf"_s.arg(++m_files), iniText(values));
        const QSettings file(path, QSettings::IniFormat);
        EXPECT_EQ(file.status(), QSettings::NoError);
        QVariantMap read;
        for (const QString &key : file.allKeys())
            read.insert(key, file.value(key));
        return read;
    }

    QVariant readBack(const QVariant &value)
    {
        return readBack(QVariantMap{{u"key"_s, value}}).value(u"key"_s);
    }

    TemporaryHome home;

private:
    int m_files = 0;
};

TEST_F(IniTextTest, KeysStandAtTheTopLevel)
{
    EXPECT_EQ(iniText({{"model", "qwen2.5"}, {"temperature", 0.7}, {"useTools", false}}),
              QByteArray("[General]\nmodel=qwen2.5\ntemperature=0.7\nuseTools=false\n"));
    EXPECT_EQ(iniText({}), QByteArray());
}

TEST_F(IniTextTest, TextsSurvive)
{
    for (const QString &text : {QString(),
                                u" "_s,
                                u" a "_s,
                                u"a, b"_s,
                                u"\"q\""_s,
                                u"a=b;c"_s,
                                u"@Invalid()"_s,
                                u"@"_s,
                                u"@@x"_s,
                                u"a\\b"_s,
                                u"a\nb\r\nc\td"_s,
                                u"ü 🙂 — “x”"_s,
                                u"[x]"_s,
                                u"%20"_s,
                                u"\x01"_s + u'f',
                                u"\u0085"_s,
                                u"true"_s,
                                u"0.70"_s,
                                u"#"_s,
                                u"\\"_s,
                                u"x"_s + QChar(0) + u'1',
                                QString(20'000, u'z')}) {
        const QVariant read = readBack(QVariant(text));
        EXPECT_EQ(read.typeId(), QMetaType::QString) << text.toStdString();
        EXPECT_EQ(read.toString(), text) << text.toStdString();
    }
}

TEST_F(IniTextTest, ListsSurvive)
{
    for (const QStringList &list :
         {QStringList{}, QStringList{"a"}, QStringList{"a, b"}, QStringList{"a", "b"}, QStringList{"", ""},
          QStringList{"a,b", " c", "\"d\"", "@e", "f\\", "ü"}, QStringList{"mcp_x_y", "write_file"}})
        EXPECT_EQ(readBack(QVariant(list)).toStringList(), list) << list.join(u'|').toStdString();
}

TEST_F(IniTextTest, NumbersAndBooleansConvertBack)
{
    EXPECT_EQ(readBack(QVariant(0.0)).toDouble(), 0.0);
    EXPECT_EQ(readBack(QVariant(0.1 + 0.2)).toDouble(), 0.1 + 0.2);
    EXPECT_EQ(readBack(QVariant(-7)).toInt(), -7);
    EXPECT_EQ(readBack(QVariant(qint64(1) << 60)).toLongLong(), qint64(1) << 60);
    EXPECT_FALSE(readBack(QVariant(false)).toBool());
    EXPECT_TRUE(readBack(QVariant(true)).toBool());
}

TEST_F(IniTextTest, BytesSurvive)
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const QByteArray &bytes : {QByteArray(""), QByteArray("[{\"id\":\"x, y\"}]"), all}) {
        const QVariant read = readBack(QVariant(bytes));
        EXPECT_EQ(read.typeId(), QMetaType::QByteArray);
        EXPECT_EQ(read.toByteArray(), bytes);
    }
}

TEST_F(IniTextTest, UnusualKeysAndGroupsSurvive)
{
    const QVariantMap values{{"apiKey_gemini", "k"}, {"with blank", "1"}, {"ü/🙂", "2"}, {"group/name", "3"},
                             {"group/a/b", "4"},     {"General/x", "5"},  {"a=b", "6"},  {"general/y/z", "7"},
                             {"percent%25", "8"},    {"dash-dot.", "9"}};
    EXPECT_EQ(readBack(values), values);
}

TEST_F(IniTextTest, OtherTypesAreLeftOut)
{
    EXPECT_EQ(readBack({{"size", QSize(1, 2)}, {"model", "m"}}), (QVariantMap{{"model", "m"}}));
}

TEST_F(IniTextTest, RandomValuesSurvive)
{
    std::mt19937 random(1);
    const QString alphabet = u"ab1f ,;=\"\\@%/[]#\n\r\t\x01\x7fäé—🙂\u2028"_s + QChar(0);
    const auto text = [&random, &alphabet] {
        QString result;
        for (auto length = random() % 12; length > 0; --length) {
            const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()));
            if (!alphabet[at].isSurrogate())
                result += alphabet[at];
        }
        return result;
    };
    QVariantMap values;
    for (int i = 0; i < 2000; ++i) {
        const QString key = u"key%1"_s.arg(i);
        if (i % 3 == 0)
            values.insert(key, QStringList{text(), text(), text()});
        else if (i % 3 == 1)
            values.insert(key, text());
        else
            values.insert(key, text().toUtf8());
    }
    const QVariantMap read = readBack(values);
    for (auto value = values.cbegin(); value != values.cend(); ++value)
        EXPECT_EQ(read.value(value.key()), *value) << value.key().toStdString();
}

} // namespace
} // namespace morvane
