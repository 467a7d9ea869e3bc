#include "state/z_std_file_stream.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace halvern {
namespace {

using test::messageOf;
using Mode = ZStdFileStream::Mode;

class FileStreamTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "halvern-streams-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::filesystem::path directory_;
};

TEST_F(FileStreamTest, WrittenBytesReadBack)
{
    const std::string name = (directory_ / "data.bin").string();
    {
        ZStdFileStream writer(name, Mode::Write);
        writer.WriteLine("first line");
        writer.WriteFill(3);
        writer.WriteString("0123456789");
        EXPECT_EQ(writer.Size(), 24); // buffered bytes count
        writer.Seek(-6, 1);
        writer.Truncate();
        EXPECT_EQ(writer.Size(), 18);
        char byte = 0;
        EXPECT_EQ(messageOf([&] { writer.Read(&byte, 1); }), "Service \"read from stream\" is not implemented.");
    }
    ZStdFileStream appender(name, Mode::Append);
    appender.WriteString("+more");
    appender.Close();
    EXPECT_FALSE(appender.IsInitialized());
    EXPECT_EQ(std::filesystem::file_size(name), 23u);

    ZStdFileStream reader(name, Mode::Read);
    char text[32] = {};
    EXPECT_EQ(reader.ReadLine(text, 32), ZStream::LineStatus::Complete);
    EXPECT_STREQ(text, "first line");
    reader.Seek(3, 1);
    EXPECT_EQ(reader.Read(text, 32), 9);
    EXPECT_EQ(std::string(text, 9), "0123+more");
    EXPECT_TRUE(reader.IsEnd());
    reader.Seek(-4, 2);
    EXPECT_FALSE(reader.IsEnd());
    EXPECT_EQ(reader.Read(text, 32), 4);
    EXPECT_EQ(std::string(text, 4), "more");
    EXPECT_EQ(messageOf([&] { reader.Seek(0, 7); }), "Invalid seek origin.");
    EXPECT_EQ(messageOf([&] { reader.Write("x", 1); }), "Service \"write to stream\" is not implemented.");
}

TEST_F(FileStreamTest, FailuresNameTheFile)
{
    ZStdFileStream closed;
    char byte = 0;
    EXPECT_FALSE(closed.IsInitialized());
    EXPECT_EQ(messageOf([&] { closed.Read(&byte, 1); }), "File stream is not initialized.");
    EXPECT_EQ(messageOf([&] { closed.Write(&byte, 1); }), "File stream is not initialized.");
    EXPECT_EQ(messageOf([&] { closed.Size(); }), "File stream is not initialized.");

    const std::string missing = (directory_ / "missing" / "file.txt").string();
    EXPECT_EQ(messageOf([&] { ZStdFileStream(missing, Mode::Read); }), "Could not open file \"" + missing + "\".");

    // Reading a directory fails in the read itself.
    ZStdFileStream folder(directory_.string(), Mode::Read);
    EXPECT_EQ(messageOf([&] { folder.Read(&byte, 1); }), "Error reading from file \"" + directory_.string() + "\".");

    // A device that is always full: the error shows when the bytes leave the buffer.
    const std::string full = "Error writing to file \"/dev/full\". Probably disk full.";
    ZStdFileStream device("/dev/full", Mode::Write);
    device.WriteString("x");
    EXPECT_EQ(messageOf([&] { device.Flush(); }), full);
    EXPECT_EQ(messageOf([&] { device.WriteString(std::string(100000, 'z')); }), full);
    device.WriteString("y");
    EXPECT_EQ(messageOf([&] { device.Close(); }), full);
    EXPECT_FALSE(device.IsInitialized());
}

} // namespace
} // namespace halvern
