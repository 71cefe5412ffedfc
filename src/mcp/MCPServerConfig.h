#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

namespace morvane {

/// One tool server as the user set it up.
struct MCPServerConfig {
    QUuid id;          ///< Never changes.
    QString name;      ///< The user's name for it.
    QString transport; ///< "http"; anything else counts as "stdio".
    QString command;   ///< For stdio: a command line, split by the shell.
    QStringList args;  ///< Further arguments, not split.
    QString url;       ///< For http.
    bool enabled = true;

    bool isRemote() const { return transport == QLatin1String("http"); }

    bool operator==(const MCPServerConfig &) const = default;
};

/// The servers in the text of a list file; none if the text is no such list, or if a single record lacks a
/// key or holds a value of another type.
QList<MCPServerConfig> serversFromJson(QByteArrayView text);

/// The text of a list file.
QByteArray serversToJson(const QList<MCPServerConfig> &servers);

} // namespace morvane
