#include "MorvaneTest.h"

#include "BuildTree.h"
#include "support/LogRecorder.h"

#include <QDeadlineTimer>
#include <QSet>
#include <QString>
#include <iostream>

using namespace Qt::StringLiterals;

namespace morvane {

std::unique_ptr<PrivateDesktop> MorvaneTest::s_desktop;

void MorvaneTest::startDesktop()
{
    s_desktop = std::make_unique<PrivateDesktop>();
}

void MorvaneTest::endDesktop()
{
    s_desktop.reset();
}

MorvaneSession &MorvaneTest::prepare(std::vector<ScriptedTurn> turns, Hearing hearing)
{
    ModelScript script;
    script.turns = std::move(turns);
    return prepareScript(std::move(script), hearing);
}

MorvaneSession &MorvaneTest::prepareScript(ModelScript script, Hearing hearing)
{
    return prepareProgram(build_tree::morvane(), std::move(script), hearing, u"home"_s);
}

MorvaneSession &MorvaneTest::prepareProgram(const QString &program, ModelScript script, Hearing hearing,
                                            const QString &homeName)
{
    m_session = std::make_unique<MorvaneSession>(*s_desktop, program, std::move(script), hearing, homeName);
    m_session->setVariable(u"QT_LOGGING_RULES"_s, u"morvane.*=true"_s);
    return *m_session;
}

MorvaneSession &MorvaneTest::start(std::vector<ScriptedTurn> turns)
{
    MorvaneSession &session = prepare(std::move(turns));
    session.start();
    return session;
}

void MorvaneTest::TearDown()
{
    if (!m_session)
        return;
    if (!HasFailure()) {
        m_session->quit(); // leaks are looked for at the end only
        EXPECT_EQ(m_session->sanitizerReport(), QString());
        EXPECT_EQ(linesThatMayQuoteTheUser(m_session->log()), QStringList());
    }
    if (HasFailure()) {
        const auto *test = testing::UnitTest::GetInstance()->current_test_info();
        const QString folder = build_tree::evidence(test->test_suite_name(), test->name());
        m_session->keepEvidence(folder);
        std::cout << "evidence: " << folder.toStdString() << '\n';
    }
    m_session.reset();
}

MorvaneSession &MorvaneTest::startToBeEndedByKey()
{
    MorvaneSession &session = prepare({});
    session.setVariable(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    session.start();
    return session;
}

bool MorvaneTest::pressUntil(MorvaneSession &morvane, const QString &key, const std::function<bool()> &isDone)
{
    QDeadlineTimer pause(0);
    return morvane.program().becomes([&] {
        if (isDone())
            return true;
        if (pause.hasExpired()) {
            morvane.keyboard().press(key);
            pause.setRemainingTime(1'500);
        }
        return false;
    });
}

std::optional<AccessibleNode> MorvaneTest::moveFocus(MorvaneSession &morvane, const QString &key)
{
    const auto before = morvane.program().focused();
    morvane.keyboard().press(key);
    std::optional<AccessibleNode> after;
    const bool moves = morvane.program().becomes([&] {
        after = morvane.program().focused();
        return after && (!before || after->element.path() != before->element.path());
    });
    return moves ? after : std::nullopt;
}

MorvaneSession &MorvaneTest::startWithAnswer(const std::string &answer)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({answer})});
    morvane.send(u"Which birds?"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    morvane.ear().forget();
    return morvane;
}

QString MorvaneTest::draft(MorvaneSession &morvane)
{
    return morvane.program().find(u"Message Morvane"_s).text();
}

void MorvaneTest::openSettings(MorvaneSession &morvane)
{
    morvane.program().find(u"Settings"_s, AccessibleRole::pushButton).press();
    morvane.program().find(
        [](const AccessibleNode &node) {
            return node.role == AccessibleRole::frame && node.name == "Morvane Settings"_L1 &&
                   node.has(AccessibleState::active);
        },
        u"that is the active settings window"_s);
}

void MorvaneTest::closeSettings(MorvaneSession &morvane)
{
    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(morvane.program().hides(u"Morvane Settings"_s));
}

QStringList MorvaneTest::nameless(MorvaneSession &morvane)
{
    static const QSet controls{AccessibleRole::pushButton, AccessibleRole::checkBox,
                               AccessibleRole::comboBox,   AccessibleRole::spinButton,
                               AccessibleRole::entry,      AccessibleRole::listItem,
                               AccessibleRole::menuItem,   AccessibleRole::progressBar};
    QStringList found;
    morvane.program().tree().visit([&found](const AccessibleNode &node) {
        const bool isControl = controls.contains(node.role) || node.has(AccessibleState::focusable);
        if (isControl && node.has(AccessibleState::showing) && node.name.isEmpty())
            found.append(node.description().trimmed());
    });
    return found;
}

QString MorvaneTest::lastResult(MorvaneSession &morvane)
{
    // A request for the conversation's title may have come behind.
    const auto requests = morvane.model().requests();
    for (auto request = requests.rbegin(); request != requests.rend(); ++request) {
        const auto &message = request->json.at("messages").as_array().back().as_object();
        if (message.at("role").as_string() == "tool")
            return QString::fromStdString(message.at("content").as_string().c_str());
    }
    return {};
}

ScriptedTurn callingTool(const std::string &name, const std::string &arguments)
{
    return ScriptedTurn::calling({{.name = name,
                                   .argumentFragments = {arguments},
                                   .id = "call_1",
                                   .index = {},
                                   .thoughtSignature = {}}});
}

} // namespace morvane
