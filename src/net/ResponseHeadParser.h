#pragma once

#include "net/HttpHeaders.h"

#include <QByteArrayView>

namespace morvane {

/// Gathers the header lines of a response, as libcurl hands them out, up to the empty line of the final head;
/// interim responses (1xx) are passed over.
class ResponseHeadParser {
public:
    /// Adds one line with its end. Not after isComplete().
    void addLine(QByteArrayView line);

    bool isComplete() const { return m_complete; }
    int status() const { return m_status; }
    const HttpHeaders &headers() const { return m_headers; }

private:
    void addField(QByteArrayView line);

    int m_status = 0;
    HttpHeaders m_headers;
    bool m_complete = false;
};

} // namespace morvane
