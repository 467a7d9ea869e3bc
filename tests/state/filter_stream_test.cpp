#include "core/trace.h"
#include "state/z_buffering_stream.h"
#include "state/z_console_stream.h"
#include "state/z_hexa_stream.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace halvern {
namespace {

using test::contentOf;
using test::memoryOf;
using test::messageOf;
using test::RecordingStream;

TEST(HexaStreamTest, BytesRoundTripAsUpperCaseDigitPairsAndReadingRejectsAnythingElse)
{
    ZMemoryStream target;
    ZHexaStream writer(&target);
    const uint8_t written[] = {0x00, 0xFF, 0xA5};
    writer.Write(written, 3);
    EXPECT_EQ(contentOf(target), "00FFA5");
    EXPECT_EQ(writer.Position(), 6);

    // Every byte value, across several stack pieces of digits.
    std::string all;
    for (int value = 0; value < 5 * 256; ++value)
        all += static_cast<char>(value);
    ZMemoryStream dump;
    ZHexaStream(&dump).Write(all.data(), static_cast<int32_t>(all.size()));
    dump.Seek(0, 0);
    ZHexaStream dumpReader(&dump);
    std::string back(all.size() + 10, '\0');
    EXPECT_EQ(dumpReader.Read(back.data(), 3), 3);
    EXPECT_EQ(dumpReader.Read(back.data() + 3, static_cast<int32_t>(back.size() - 3)), static_cast<int32_t>(all.size() - 3));
    back.resize(all.size());
    EXPECT_TRUE(back == all);

    ZMemoryStream lower = memoryOf("ffa57e");
    ZHexaStream reader(&lower);
    uint8_t bytes[8] = {};
    EXPECT_EQ(reader.Read(bytes, 8), 3);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xA5);
    EXPECT_EQ(bytes[2], 0x7E);

    for (const char* text : {"0G", "A 1B", "ABC"}) {
        ZMemoryStream source = memoryOf(text);
        ZHexaStream stream(&source);
        EXPECT_EQ(messageOf([&] { stream.Read(bytes, 8); }), "Hexadecimal stream has invalid content.") << text;
    }
    ZHexaStream detached;
    EXPECT_EQ(messageOf([&] { detached.Write(bytes, 1); }), "Hexadecimal stream has no target.");
}

TEST(BufferingStreamTest, WritesAndReadsReachTheTargetInBlocks)
{
    RecordingStream target;
    {
        ZBufferingStream stream(&target, 16);
        for (int i = 0; i < 10; ++i)
            stream.WriteString("abc");
        EXPECT_EQ(target.writes, (std::vector<int32_t>{16}));
        // A large write completes the pending block; the rest goes out whole.
        stream.WriteString(std::string(40, 'L'));
        EXPECT_EQ(target.writes, (std::vector<int32_t>{16, 16, 38}));
        stream.WriteString("tail");
        stream.WriteBuffered();
        stream.WriteString("end");
        EXPECT_EQ(target.writes.back(), 4);
    }
    const std::string text = "abcabcabcabcabcabcabcabcabcabc" + std::string(40, 'L') + "tailend";
    EXPECT_EQ(contentOf(target), text);

    target.Seek(0, 0);
    target.reads.clear();
    ZBufferingStream stream(&target, 32);
    char buffer[100];
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(stream.Read(buffer + 5 * i, 5), 5);
    EXPECT_EQ(target.reads, (std::vector<int32_t>{32, 32}));
    // Larger than a block: what is left, then straight from the target.
    EXPECT_EQ(stream.Read(buffer + 50, 40), 27);
    EXPECT_EQ(stream.Read(buffer, 40), 0);
    EXPECT_EQ(std::string(buffer + 10, 67), text.substr(10));
}

TEST(BufferingStreamTest, DirectionChangesAndFailures)
{
    ZMemoryStream target = memoryOf("0123456789");
    ZBufferingStream stream(&target, 4);
    char buffer[4];
    ASSERT_EQ(stream.Read(buffer, 2), 2);
    EXPECT_EQ(messageOf([&] { stream.WriteString("x"); }),
              "Buffering stream cannot write while read-ahead bytes are unread.");
    ASSERT_EQ(stream.Read(buffer, 2), 2);
    stream.WriteString("AB");
    ASSERT_EQ(stream.Read(buffer, 2), 2); // writes "AB" out first
    EXPECT_EQ(std::string(buffer, 2), "67");
    EXPECT_EQ(contentOf(target), "0123AB6789");

    ZBufferingStream empty;
    EXPECT_EQ(messageOf([&] { empty.Write(buffer, 1); }), "Buffering stream has not been initialized.");
    EXPECT_EQ(messageOf([&] { empty.Read(buffer, 1); }), "Buffering stream has not been initialized.");

    // A target that refuses the last bytes: the destructor reports it and does not throw.
    std::vector<std::string> traced;
    const TraceSink previous = SetTraceSink([&](std::string_view text, std::string_view) { traced.emplace_back(text); });
    {
        ZStream readOnly; // its Write is the not-implemented default
        ZBufferingStream failing(&readOnly, 8);
        failing.WriteString("abc");
    }
    SetTraceSink(previous);
    EXPECT_EQ(traced, std::vector<std::string>{"Service \"write to stream\" is not implemented."});
}

TEST(ConsoleStreamTest, WritesOutputAndReadsLinesOfInput)
{
    std::FILE* input = std::tmpfile();
    std::FILE* output = std::tmpfile();
    ASSERT_TRUE(input && output);
    std::fputs("ab\r\ncd", input);
    std::rewind(input);
    {
        ZConsoleStream console(input, output);
        console.Write("x=12", 4);
        console.WriteLine("");
        char line[8];
        EXPECT_EQ(console.ReadLine(line, 2), ZStream::LineStatus::Truncated);
        EXPECT_EQ(console.ReadLine(line, 8), ZStream::LineStatus::Complete);
        EXPECT_STREQ(line, "b");
        EXPECT_EQ(console.Read(line, 8), 2);
        EXPECT_EQ(console.ReadLine(line, 8), ZStream::LineStatus::NoData);
    }
    std::rewind(output);
    char written[32] = {};
    EXPECT_EQ(std::string(written, std::fread(written, 1, sizeof(written), output)), "x=12\n");
    std::fclose(input);
    std::fclose(output);
}

} // namespace
} // namespace halvern
