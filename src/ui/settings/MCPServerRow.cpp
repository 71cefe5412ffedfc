#include "ui/settings/MCPServerRow.h"

#include "base/Text.h"
#include "mcp/MCPManager.h"
#include "ui/controls/ReadableText.h"
#include "ui/controls/WrappingCheckBox.h"
#include "ui/settings/QuietText.h"
#include "ui/theme/CardPainting.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int rowPadding = 12;
constexpr int rowSpacing = 4;
/// Names and commands come from a file, too, where anything can stand; in characters.
constexpr qsizetype longestName = 200;
constexpr qsizetype longestDetail = 1'000;
constexpr QuietText::Most mostDetail{6};
/// All of every reason that MCPManager tells in letters, in a narrow window and a large font.
constexpr QuietText::Most mostStatus{400, 4'500};

constexpr QLatin1StringView troublePrefix = "Could not connect"_L1;
constexpr QLatin1StringView connectedPrefix = "Connected via"_L1;

QString detailOf(const MCPServerConfig &server)
{
    const QString detail =
        server.isRemote() ? server.url : (QStringList{server.command} + server.args).join(u' ');
    return readableText(flattened(detail, longestDetail));
}

} // namespace

MCPServerRow::MCPServerRow(const MCPServerConfig &server, MCPManager &manager, QWidget *parent)
    : ButtonsBeside(parent), m_id(server.id), m_name(readableText(flattened(server.name, longestName))),
      m_manager(manager), m_switch(new WrappingCheckBox(m_name)), m_status(new QuietText(mostStatus)),
      m_copy(new QPushButton(u"Copy Error"_s)), m_remove(new QPushButton(u"Remove"_s))
{
    auto *detail = new QuietText(mostDetail);
    detail->setContent(detailOf(server), &ThemeColors::secondaryText);
    QFont bold = m_switch->font();
    bold.setBold(true);
    m_switch->setFont(bold);
    m_copy->setAccessibleName(u"Copy the error of the %1 server"_s.arg(m_name));
    m_remove->setAccessibleName(u"Remove the %1 server"_s.arg(m_name));

    auto *texts = new QVBoxLayout;
    texts->setSpacing(rowSpacing);
    texts->addWidget(m_switch);
    texts->addWidget(detail);
    texts->addWidget(m_status);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_remove);
    buttons->addWidget(m_copy);
    setParts(texts, buttons);
    layout()->setContentsMargins(rowPadding, rowPadding, rowPadding, rowPadding);

    // Assistive technology toggles without a click.
    connect(m_switch, &QAbstractButton::toggled, this, [this](bool checked) {
        m_isAwaited = checked;
        m_manager.toggleServer(m_id, checked);
        m_manager.refresh();
    });
    connect(m_copy, &QPushButton::clicked, this, &MCPServerRow::copyStatus);
    connect(m_remove, &QPushButton::clicked, this, [this] { m_manager.removeServer(m_id); });
    refresh();
}

void MCPServerRow::refresh()
{
    const auto &servers = m_manager.servers();
    const auto server = std::find_if(servers.begin(), servers.end(),
                                     [this](const MCPServerConfig &config) { return config.id == m_id; });
    if (server == servers.end())
        return;
    const QString status = readableText(m_manager.statusText(m_id));
    const bool trouble = status.startsWith(troublePrefix);
    {
        const QSignalBlocker blocker(m_switch);
        m_switch->setChecked(server->enabled);
    }
    // A name is an event for assistive technology even if it is the old one, and every change of the list
    // comes to all rows.
    const QString name = status.isEmpty() ? m_name : m_name + u", "_s + status;
    if (m_switch->accessibleName() != name)
        m_switch->setAccessibleName(name);
    m_status->setVisible(!status.isEmpty());
    m_copy->setVisible(trouble);
    if (trouble)
        m_status->setContent(status, &ThemeColors::warning, Symbol::triangleExclamation);
    else if (status.startsWith(connectedPrefix))
        m_status->setContent(status, &ThemeColors::success, Symbol::checkCircle);
    else
        m_status->setContent(status, &ThemeColors::text);
}

void MCPServerRow::takeNewStatus()
{
    refresh();
    const QString status = m_manager.statusText(m_id);
    if (!status.startsWith(troublePrefix) && !status.startsWith(connectedPrefix))
        return;
    // A reader speaks no name that changes, not even of the element that has the focus.
    if (std::exchange(m_isAwaited, false))
        Q_EMIT outcome(m_switch->accessibleName());
}

void MCPServerRow::copyStatus()
{
    QApplication::clipboard()->setText(m_manager.statusText(m_id));
}

void MCPServerRow::paintEvent(QPaintEvent *)
{
    paintCard(*this);
}

} // namespace morvane
