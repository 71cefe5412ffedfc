#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>
#include <boost/json/object.hpp>
#include <optional>

namespace morvane {

// JSON-RPC 2.0 as tool servers speak it, whatever carries it. All functions: any thread.

/// The text without white space and line ends, as Unicode has them, at both ends. `text` is UTF-8.
QByteArrayView trimmedJSONText(QByteArrayView text);

/// The same for blanks only: space separators and the tab.
QByteArrayView trimmedBlanks(QByteArrayView text);

/// The object that a message's text holds from that byte on, behind an optional "data:" or two; nothing for
/// anything else. Takes least memory of a text that nobody shares.
std::optional<boost::json::object> parseJSONText(QByteArray text, qsizetype from = 0);

/// The number in a message's `id`, which some servers send back as text; nothing if there is none.
std::optional<qint64> usableID(const boost::json::object &message);

/// The id of the request that a message answers. A message with a `method` answers nothing: servers number
/// their own requests as they like.
std::optional<qint64> answeredID(const boost::json::object &message);

/// The text of a request. `params` is the text of a JSON object.
QByteArray requestText(qint64 id, QByteArrayView method, QByteArrayView params);

/// The text of a notification with empty params.
QByteArray notificationText(QByteArrayView method);

/// An answer that was not sent by the server but stands for a failure on the way to it.
boost::json::object failureMessage(QStringView description);

} // namespace morvane
