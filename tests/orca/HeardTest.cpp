#include "HeardTest.h"

#include "BuildTree.h"
#include "support/WaitUntil.h"

#include <QFile>
#include <QRegularExpression>
#include <iostream>

using namespace Qt::StringLiterals;

namespace morvane {

MorvaneSession &HeardTest::listen(std::vector<ScriptedTurn> turns)
{
    MorvaneSession &session = prepare(std::move(turns), Hearing::notifications);
    listenTo(session);
    EXPECT_TRUE(m_reader->hears(u"Type your message, then press Return to send it."_s));
    return session;
}

void HeardTest::listenTo(MorvaneSession &session)
{
    m_reader = std::make_unique<ScreenReader>(session.desktop(), QStringLiteral(MORVANE_READER_SETTINGS));
    session.start();
}

void HeardTest::write(const AccessibleElement &field, const QString &text)
{
    EXPECT_TRUE(m_reader->takesIn(text, [&] { field.setText(text); }));
}

void HeardTest::send(MorvaneSession &morvane, const QString &text)
{
    EXPECT_TRUE(m_reader->takesIn(text, [&] { morvane.write(text); }));
    morvane.keyboard().press(u"Return"_s);
}

bool HeardTest::answer(MorvaneSession &morvane, const QString &key, const QString &control)
{
    return pressUntil(morvane, key, [&] {
        return !morvane.program().tree().first([&](const AccessibleNode &node) {
            return node.name == control && node.has(AccessibleState::showing);
        });
    });
}

bool HeardTest::moves(MorvaneSession &morvane, const QString &key, const QString &last)
{
    const qsizetype before = heard().count(last);
    morvane.keyboard().press(key);
    return waitUntil([&] { return heard().count(last) > before; });
}

void HeardTest::goesBy(MorvaneSession &morvane, const QStringList &stops)
{
    for (const QString &stop : stops)
        ASSERT_TRUE(moves(morvane, u"Tab"_s, stop)) << stop.toStdString();
}

QStringList HeardTest::heard()
{
    static const QRegularExpression time(u"updated [^,]+, [^,]+,"_s);
    return reader().heard().replaceInStrings(time, u"updated …,"_s);
}

QStringList HeardTest::documentedIn(const QString &page)
{
    QFile file(QStringLiteral(MORVANE_SOURCE_DIR "/docs/") + page);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QString block = QString::fromUtf8(file.readAll()).section(u"```\n"_s, 1, 1);
    QStringList lines = block.split(u'\n', Qt::SkipEmptyParts);
    lines.removeIf([](const QString &line) { return line.startsWith(u'['); });
    return lines;
}

void HeardTest::TearDown()
{
    if (HasFailure() && m_reader) {
        std::cout << "heard:\n";
        for (const QString &piece : m_reader->heard())
            std::cout << "  " << piece.toStdString() << '\n';
        const auto *test = testing::UnitTest::GetInstance()->current_test_info();
        m_reader->keepEvidence(build_tree::evidence(test->test_suite_name(), test->name()));
    }
    m_reader.reset();
    MorvaneTest::TearDown();
}

} // namespace morvane
