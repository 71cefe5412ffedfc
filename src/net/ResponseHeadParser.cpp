#include "net/ResponseHeadParser.h"

namespace morvane {

namespace {

int statusOf(QByteArrayView line)
{
    const qsizetype blank = line.indexOf(' ');
    return blank < 0 ? 0 : line.sliced(blank + 1).trimmed().toByteArray().left(3).toInt();
}

bool isInterim(int status)
{
    return status >= 100 && status <= 199;
}

} // namespace

void ResponseHeadParser::addLine(QByteArrayView line)
{
    if (line.startsWith("HTTP/")) {
        m_status = statusOf(line);
        m_headers = {};
    } else if (!line.trimmed().isEmpty()) {
        addField(line);
    } else {
        m_complete = !isInterim(m_status);
    }
}

void ResponseHeadParser::addField(QByteArrayView line)
{
    const qsizetype colon = line.indexOf(':');
    const bool continuesLast = line.startsWith(' ') || line.startsWith('\t');
    if (colon <= 0 || continuesLast)
        return;
    m_headers.add(line.first(colon).trimmed().toByteArray(), line.sliced(colon + 1).trimmed().toByteArray());
}

} // namespace morvane
