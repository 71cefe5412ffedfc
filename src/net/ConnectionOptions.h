#pragma once

#include "net/HttpRequest.h"

#include <curl/curl.h>
#include <vector>

namespace morvane {

/// An option of libcurl whose value is a number.
struct NumberOption {
    CURLoption option;
    long value;
};

/// How the connection of a request is made, kept and used again.
std::vector<NumberOption> connectionOptions(const HttpRequest &request);

} // namespace morvane
