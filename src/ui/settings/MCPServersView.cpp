#include "ui/settings/MCPServersView.h"

#include "mcp/MCPManager.h"
#include "platform/Announcer.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/SymbolLabel.h"
#include "ui/settings/AddMCPServerView.h"
#include "ui/settings/ButtonsBeside.h"
#include "ui/settings/CenteredColumn.h"
#include "ui/settings/MCPServerRow.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QShowEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int viewMargin = 20;
constexpr int viewSpacing = 12;
constexpr int widestView = 720;

} // namespace

MCPServersView::MCPServersView(MCPManager &manager, Announcer &announcer, QWidget *window)
    : m_manager(manager), m_announcer(announcer), m_form(new AddMCPServerView(manager, window)),
      m_add(new QPushButton(u"Add Server"_s)), m_empty(makeEmptyState()), m_rowLayout(new QVBoxLayout)
{
    auto *center = new QWidget;
    center->setMaximumWidth(widestView);
    auto *column = new QVBoxLayout(center);
    column->setContentsMargins(viewMargin, viewMargin, viewMargin, viewMargin);
    column->setSpacing(viewSpacing);
    column->addWidget(makeHeader());
    column->addWidget(m_empty);
    m_rowLayout->setSpacing(viewSpacing);
    column->addLayout(m_rowLayout);
    column->addStretch();
    QScrollArea *const scroll = scrollCentered(center);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scroll);

    connect(&manager, &MCPManager::serversChanged, this, &MCPServersView::updateRows);
    connect(&manager, &MCPManager::statusTextChanged, this, [this](QUuid id) {
        if (MCPServerRow *const row = rowOf(id))
            row->takeNewStatus();
    });
    connect(m_form, &AddMCPServerView::added, this, [this](QUuid id) {
        if (MCPServerRow *const row = rowOf(id))
            row->awaitOutcome();
    });
    updateRows();
}

QWidget *MCPServersView::makeHeader()
{
    auto *header = new ButtonsBeside;
    auto *reconnect = new QPushButton(symbolIcon(Symbol::arrowClockwise), u"Reconnect"_s);
    reconnect->setAccessibleName(u"Reconnect all tool servers"_s);
    m_add->setAccessibleName(u"Add a tool server"_s);
    auto *title = new HeadingLabel(u"Tool Servers"_s, HeadingLabel::Level::title);
    auto *titleRow = new QHBoxLayout;
    titleRow->addWidget(new SymbolLabel(Symbol::puzzle, &ThemeColors::accent));
    titleRow->addWidget(title, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(reconnect);
    buttons->addWidget(m_add);
    header->setParts(titleRow, buttons);
    connect(reconnect, &QPushButton::clicked, this, &MCPServersView::reconnect);
    connect(m_add, &QPushButton::clicked, m_form, &AddMCPServerView::open);
    return header;
}

QWidget *MCPServersView::makeEmptyState()
{
    auto *empty = new QWidget;
    auto *column = new QVBoxLayout(empty);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(new HeadingLabel(u"No tool servers yet."_s, HeadingLabel::Level::group));
    column->addWidget(new NoteLabel(
        u"MCP (Model Context Protocol) servers add extra tools to Morvane — databases, browsers, calendars, "
        "anything with an MCP server. Add a local command or a remote URL; its tools appear automatically "
        "and always ask before running."_s));
    auto *example =
        new NoteLabel(u"Example command: npx -y @modelcontextprotocol/server-filesystem ~/Documents"_s);
    example->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(example);
    return empty;
}

void MCPServersView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A window that was only minimised has not gone.
    if (!event->spontaneous())
        m_manager.refresh();
}

void MCPServersView::updateRows()
{
    const QList<MCPServerConfig> &servers = m_manager.servers();
    std::optional<qsizetype> lostFocus;
    for (qsizetype i = 0; i < m_rows.size();) {
        const QUuid id = m_rows[i]->server();
        const bool stays = std::any_of(servers.begin(), servers.end(),
                                       [id](const MCPServerConfig &server) { return server.id == id; });
        if (stays) {
            m_rows[i++]->refresh();
            continue;
        }
        MCPServerRow *gone = m_rows.takeAt(i);
        if (gone->isAncestorOf(window()->focusWidget()))
            lostFocus = i;
        gone->hide();
        gone->deleteLater();
    }
    for (const MCPServerConfig &server : servers.sliced(m_rows.size())) {
        m_rows.append(newRow(server));
        m_rowLayout->addWidget(m_rows.last());
    }
    m_empty->setVisible(m_rows.isEmpty());
    // The button that took the place of the one with the focus is the next to be wanted.
    if (lostFocus && !m_rows.isEmpty())
        m_rows[std::min(*lostFocus, m_rows.size() - 1)]->removeButton()->setFocus();
    else if (lostFocus)
        m_add->setFocus();
}

MCPServerRow *MCPServersView::rowOf(QUuid id) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [id](const MCPServerRow *each) { return each->server() == id; });
    return row == m_rows.end() ? nullptr : *row;
}

MCPServerRow *MCPServersView::newRow(const MCPServerConfig &server)
{
    auto *row = new MCPServerRow(server, m_manager);
    connect(row, &MCPServerRow::outcome, this, [this](const QString &text) { m_announcer.announce(text); });
    return row;
}

void MCPServersView::reconnect()
{
    for (MCPServerRow *row : std::as_const(m_rows))
        row->awaitOutcome();
    m_manager.refresh();
}

} // namespace morvane
