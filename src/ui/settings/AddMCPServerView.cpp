#include "ui/settings/AddMCPServerView.h"

#include "mcp/MCPManager.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/SegmentedPicker.h"
#include "ui/controls/WrappingButton.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int fieldSpacing = 6;

/// The user has asked for this sheet, so that nothing typed can be meant for something else: as much time has
/// passed at every look as the sheet's guard wants.
SteadyNow alwaysReady()
{
    return [moment = std::chrono::steady_clock::time_point()]() mutable {
        return moment += AnswerGuard::quietTime;
    };
}

void addField(QVBoxLayout *column, QLineEdit *field, const QString &name, const QString &prompt)
{
    auto *label = new QLabel(name);
    label->setBuddy(field);
    field->setAccessibleName(name);
    field->setPlaceholderText(prompt);
    column->addWidget(label);
    column->addWidget(field);
}

QVBoxLayout *newColumn(QWidget *part)
{
    auto *column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(fieldSpacing);
    return column;
}

} // namespace

AddMCPServerView::AddMCPServerView(MCPManager &manager, QWidget *window)
    : Sheet(window, alwaysReady()), m_manager(manager), m_name(new QLineEdit),
      m_transport(new SegmentedPicker(u"Transport"_s, {u"Local Command"_s, u"Remote URL"_s})),
      m_command(new QLineEdit), m_args(new QLineEdit), m_url(new QLineEdit), m_local(makeLocalPart()),
      m_remote(makeRemotePart()), m_add(new WrappingButton(u"Add Server"_s))
{
    auto *header = new SheetHeader;
    header->setContent(Symbol::server, SheetHeader::Tone::neutral, u"Add Tool Server"_s);
    card()->setAccessibleName(u"Add Tool Server"_s);
    auto *content = card()->content();
    content->addWidget(header);
    auto *name = new QVBoxLayout;
    name->setSpacing(fieldSpacing);
    content->addLayout(name);
    addField(name, m_name, u"Server name"_s, u"Name (for example: My Files)"_s);
    content->addWidget(m_transport);
    content->addWidget(m_local);
    content->addWidget(m_remote);
    auto *cancel = new WrappingButton(u"Cancel"_s);
    m_add->setDefault(true);
    m_add->setAccessibleDescription(u"Save the tool server"_s);
    card()->buttons()->addStretch();
    card()->buttons()->addWidget(cancel);
    card()->buttons()->addWidget(m_add);

    connect(m_transport, &SegmentedPicker::chosen, this, &AddMCPServerView::refresh);
    for (const QLineEdit *field : {m_name, m_command, m_url})
        connect(field, &QLineEdit::textChanged, this, &AddMCPServerView::refresh);
    connect(m_add, &QPushButton::clicked, this, &AddMCPServerView::save);
    connect(cancel, &QPushButton::clicked, this, &AddMCPServerView::closeSheet);
    refresh();
}

QWidget *AddMCPServerView::makeLocalPart()
{
    auto *part = new QWidget;
    auto *column = newColumn(part);
    addField(column, m_command, u"Command"_s,
             u"Command (for example: npx -y @modelcontextprotocol/server-filesystem)"_s);
    addField(column, m_args, u"Arguments"_s, u"Arguments, separated by spaces (for example: ~/Documents)"_s);
    column->addWidget(new NoteLabel(u"The command runs on this Mac every time Morvane starts."_s));
    return part;
}

QWidget *AddMCPServerView::makeRemotePart()
{
    auto *part = new QWidget;
    auto *column = newColumn(part);
    addField(column, m_url, u"Server URL"_s, u"https://example.com/mcp"_s);
    column->addWidget(new NoteLabel(u"The endpoint must speak the MCP HTTP transport."_s));
    return part;
}

void AddMCPServerView::open()
{
    for (QLineEdit *field : {m_name, m_command, m_args, m_url})
        field->clear();
    m_transport->setCurrentIndex(0);
    refresh();
    openSheet(m_name);
    card()->scrollTo(m_name);
}

NewServerForm AddMCPServerView::form() const
{
    return {m_name->text(), m_transport->currentIndex() == 0 ? u"stdio"_s : u"http"_s, m_command->text(),
            m_args->text(), m_url->text()};
}

void AddMCPServerView::refresh()
{
    const bool local = m_transport->currentIndex() == 0;
    m_local->setVisible(local);
    m_remote->setVisible(!local);
    m_add->setEnabled(form().isValid());
}

void AddMCPServerView::save()
{
    const NewServerForm filled = form();
    if (!filled.isValid())
        return;
    const MCPServerConfig server = filled.server();
    m_manager.appendServer(server);
    m_manager.saveServers();
    Q_EMIT added(server.id);
    m_manager.refresh();
    closeSheet();
}

void AddMCPServerView::returnPressed()
{
    // A segment that is reached, but not chosen yet.
    if (auto *button = qobject_cast<QAbstractButton *>(window()->focusWidget()))
        button->click();
    else
        save();
}

void AddMCPServerView::escapePressed()
{
    closeSheet();
}

} // namespace morvane
