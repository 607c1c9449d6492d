#include "os/whole_file.hpp"

#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace velmora {
namespace {

using testing::readText;
using testing::TempDir;
using testing::writeText;

TEST(ReadWholeFile, ReadsEveryByteOfAFileLargerThanOneChunk) {
    const TempDir tmp;
    std::string contents;
    for (int i = 0; i < 3000; ++i)
        contents += static_cast<char>(i % 251);
    contents += contents + contents;  // 9000 bytes with NULs and high bytes
    writeText(tmp / "f", contents);
    EXPECT_EQ(readWholeFile(tmp / "f"), contents);
}

TEST(ReadWholeFile, EmptyFileIsEmptyTextNotNothing) {
    const TempDir tmp;
    writeText(tmp / "f", "");
    EXPECT_EQ(readWholeFile(tmp / "f"), std::string());
}

TEST(ReadWholeFile, MissingFileAndDirectoryGiveNothing) {
    const TempDir tmp;
    EXPECT_FALSE(readWholeFile(tmp / "missing").has_value());
    EXPECT_FALSE(readWholeFile(tmp.path()).has_value());
}

TEST(WriteAll, WritesEveryByteAndReportsTheErrno) {
    const TempDir tmp;
    const std::string bytes(70000, 'q');
    const int fd = ::open((tmp / "out").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(writeAll(fd, bytes), 0);
    ::close(fd);
    EXPECT_EQ(readText(tmp / "out"), bytes);

    const int readOnly = ::open((tmp / "out").c_str(), O_RDONLY);
    EXPECT_EQ(writeAll(readOnly, "x"), EBADF);
    ::close(readOnly);
}

}  // namespace
}  // namespace velmora
