#include "app/FriendlyError.h"

#include "localmodel/InstallError.h"
#include "net/TransportError.h"
#include "providers/AIServiceError.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

template <class Error> QString textOf(const Error &error)
{
    return friendlyError(std::make_exception_ptr(error));
}

TEST(FriendlyErrorTest, ConnectionFailuresAreOneText)
{
    using Kind = TransportError::Kind;
    for (const Kind kind : {Kind::notConnectedToInternet, Kind::networkConnectionLost,
                            Kind::cannotConnectToHost, Kind::timedOut})
        EXPECT_EQ(textOf(TransportError(kind)),
                  u"Could not connect to the AI provider. Check your internet connection and try again."_s);
}

TEST(FriendlyErrorTest, AnUnknownHostKeepsItsOwnWords)
{
    EXPECT_EQ(textOf(TransportError(TransportError::Kind::unresolvedHost)),
              u"No server with this name was found."_s);
}

TEST(FriendlyErrorTest, OurOwnErrorsSayWhatTheySay)
{
    EXPECT_EQ(textOf(AIServiceError(AIServiceError::Api{u"x"_s})), u"x"_s);
    EXPECT_EQ(textOf(InstallError(u"Ollama is not running."_s)), u"Ollama is not running."_s);
}

TEST(FriendlyErrorTest, WhatALibrarySaysIsNotShown)
{
    EXPECT_EQ(textOf(std::bad_alloc()), u"There is not enough memory for that."_s);
    EXPECT_EQ(textOf(std::runtime_error("basic_string::_M_construct")), u"Unknown error."_s);
    EXPECT_EQ(textOf(7), u"Unknown error."_s);
}

} // namespace
} // namespace morvane
