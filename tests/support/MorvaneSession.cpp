#include "support/MorvaneSession.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr auto windowTitle = "Morvane";
const auto messageField = u"Message Morvane"_s;

QJsonObject lastMessage(const QJsonObject &conversation)
{
    return conversation.value("messages"_L1).toArray().last().toObject();
}

/// Whether what is reported tells of lost key events of the toolkit and their texts, and of nothing else. The
/// toolkit's bridge to the accessibility bus copies a key event, and forgets the copy when the event's window
/// closes before the bus has answered. A program that is started again may report a second time.
bool tellsOfForgottenKeysOnly(QString reports)
{
    static const QRegularExpression forgottenKeys(
        uR"(ERROR: LeakSanitizer: detected memory leaks\s+)"
        uR"(Direct leak of (\d+) byte\(s\) in (\d+) object\(s\) allocated from:\n +#0 [^\n]*\n +#1 [^\n]*libQt6Gui[^\n]*\n)"
        uR"((\s+Indirect leak of \d+ byte\(s\) in \d+ object\(s\) allocated from:\n +#0 [^\n]*\n +#1 [^\n]*libQt6Core)"
        uR"([^\n]*\n( +#\d[^\n]*\n)*)?\s+SUMMARY: AddressSanitizer: [^\n]*)"_s);
    static const QRegularExpression headings(u"==\\d+==(WARNING: [^\\n]*symbolizer!)?|={5,}"_s);
    // Of a program that was started again, in front of its report.
    static const QRegularExpression log(u"^morvane\\.[\\w.]+: .*\\n"_s, QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch &match : forgottenKeys.globalMatch(reports))
        if (match.captured(1).toULongLong() != match.captured(2).toULongLong() * sizeof(QKeyEvent))
            return false;
    return reports.remove(forgottenKeys).remove(log).remove(headings).trimmed().isEmpty();
}

} // namespace

MorvaneSession::MorvaneSession(const PrivateDesktop &desktop, const QString &program, ModelScript script,
                               AnnouncementRecorder::Hearing hearing, const QString &homeName)
    : m_desktop(desktop), m_programPath(program),
      m_home(desktop.newFolder(homeName + u'-' + QUuid::createUuid().toString(QUuid::Id128))),
      m_model(std::move(script)), m_screen(desktop.display()), m_bus(desktop.sessionBusAddress())
{
    m_settings = {{u"provider"_s, u"custom"_s},
                  {u"customBaseURL"_s, QString::fromStdString(m_model.baseURL() + "/v1")},
                  {u"model"_s, u"scripted"_s},
                  {u"hasCompletedOnboarding"_s, u"true"_s}};
    // What a reader registers when it starts, so that the program sends what it sends to a reader.
    for (const auto *event : {"object:children-changed", "object:state-changed:focused",
                              "object:property-change:accessible-name", "object:text-changed", "window"}) {
        m_bus.registerEvent(QString::fromLatin1(event));
    }
    m_ear = std::make_unique<AnnouncementRecorder>(m_bus, hearing);
}

void MorvaneSession::setSetting(const QString &key, const QString &value)
{
    m_settings.insert(key, value);
}

void MorvaneSession::writeSettings() const
{
    const QString folder = m_home + u"/.config/Morvane"_s;
    QDir().mkpath(folder);
    QFile file(folder + u"/Morvane.conf"_s);
    if (m_settings.isEmpty() || file.exists() || !file.open(QIODevice::WriteOnly))
        return;
    file.write("[General]\n");
    for (auto setting = m_settings.cbegin(); setting != m_settings.cend(); ++setting)
        file.write((setting.key() + u'=' + setting.value() + u'\n').toUtf8());
}

void MorvaneSession::start()
{
    writeSettings();
    m_program.reset();
    m_program = std::make_unique<AccessibleProgram>(m_desktop, m_bus, m_programPath, m_home,
                                                    m_home + u"/morvane.log"_s, m_environment);
    m_program->find(
        [](const AccessibleNode &node) {
            return node.role == AccessibleRole::frame && node.name == QLatin1String(windowTitle) &&
                   node.has(AccessibleState::active);
        },
        u"that is the active window"_s);
}

void MorvaneSession::quit()
{
    if (isRunning())
        m_program->process().end();
    m_program.reset();
}

QString MorvaneSession::log() const
{
    QFile file(m_home + u"/morvane.log"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString MorvaneSession::sanitizerReport() const
{
    static const QRegularExpression report(u"(ERROR: \\w+Sanitizer|runtime error: ).*"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QString found = report.match(log()).captured();
    return tellsOfForgottenKeysOnly(found) ? QString() : found;
}

std::unique_ptr<TestProgram> MorvaneSession::startAgain() const
{
    return std::make_unique<TestProgram>(m_programPath, QStringList{},
                                         environmentWithHome(m_desktop, m_home, m_environment),
                                         m_home + u"/second.log"_s);
}

void MorvaneSession::write(const QString &text)
{
    const AccessibleElement field = m_program->find(messageField);
    field.takeFocus();
    field.setText(text);
    m_program->focuses(messageField);
}

void MorvaneSession::send(const QString &text)
{
    write(text);
    m_keyboard.press(u"Return"_s);
}

bool MorvaneSession::hasStatus(const QString &status)
{
    return m_program->shows(u"Status. "_s + status);
}

QByteArray MorvaneSession::settingsText() const
{
    QFile file(m_home + u"/.config/Morvane/Morvane.conf"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList MorvaneSession::activity()
{
    // The log stands among the rows of the conversation: a heading with its number of steps, then the steps.
    static const QRegularExpression heading(u"^Activity, (\\d+) steps?$"_s);
    QStringList rows;
    m_program->tree().visit([&](const AccessibleNode &node) {
        for (qsizetype i = 0; i < node.children.size(); ++i) {
            const auto match = heading.match(node.children.at(i).name);
            for (const AccessibleNode &row : node.children.mid(i + 1, match.captured(1).toInt()))
                rows.append(row.name);
        }
    });
    return rows;
}

QMap<QString, QJsonObject> MorvaneSession::storedConversations() const
{
    QMap<QString, QJsonObject> conversations;
    const QDir folder(m_home + u"/.local/share/Morvane/Conversations"_s);
    for (const QString &name : folder.entryList({u"*.json"_s}, QDir::Files)) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            conversations.insert(name, QJsonDocument::fromJson(file.readAll()).object());
    }
    return conversations;
}

bool MorvaneSession::storesLastMessage(const QString &key, const QJsonValue &value) const
{
    return waitUntil([&] {
        for (const QJsonObject &conversation : storedConversations())
            if (lastMessage(conversation).value(key) == value)
                return true;
        return false;
    });
}

void MorvaneSession::keepEvidence(const QString &folder)
{
    m_desktop.keepEvidence(folder);
    QFile heard(folder + u"/announcements.txt"_s);
    if (heard.open(QIODevice::WriteOnly))
        heard.write(m_ear->heard().join(u'\n').toUtf8());
    QFile::remove(folder + u"/morvane.log"_s);
    QFile::copy(m_home + u"/morvane.log"_s, folder + u"/morvane.log"_s);
    QFile tree(folder + u"/tree.txt"_s);
    if (isRunning() && tree.open(QIODevice::WriteOnly))
        tree.write(m_program->tree(TreePart::whole).description().toUtf8());
}

} // namespace morvane
