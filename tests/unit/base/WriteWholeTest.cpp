#include "base/WriteWhole.h"

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace morvane {
namespace {

TEST(WriteWholeTest, WhatDoesNotGoOutAtOnceGoesOutWhole)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor out(ends[0]);
    FileDescriptor in(ends[1]);
    const QByteArray bytes = QByteArray("a long word ").repeated(100'000); // more than a pipe holds
    bool isWritten = false;
    std::jthread writer([&] {
        isWritten = writeWhole(in.get(), bytes);
        in.close();
    });
    QByteArray read;
    std::array<char, 4096> piece{};
    for (ssize_t count = 0; (count = ::read(out.get(), piece.data(), piece.size())) > 0;)
        read.append(piece.data(), count);
    writer.join();
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(read, bytes);
}

TEST(WriteWholeTest, AFailureIsTold)
{
    errno = 0;
    EXPECT_FALSE(writeWhole(-1, "x"));
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(writeWhole(-1, {})) << "there is nothing to write";
}

} // namespace
} // namespace morvane
