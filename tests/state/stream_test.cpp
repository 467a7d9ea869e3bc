#include "state/z_memory_stream.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace halvern {
namespace {

using test::contentOf;
using test::ForwardOnlyStream;
using test::memoryOf;
using test::messageOf;
using test::RecordingStream;

using Line = std::pair<std::string, int>;

Line readLine(ZStream& stream, int32_t capacity)
{
    std::vector<char> buffer(static_cast<size_t>(std::max(capacity, 1)), '#');
    const int status = static_cast<int>(stream.ReadLine(buffer.data(), capacity));
    return {capacity > 0 ? std::string(buffer.data()) : std::string(), status};
}

TEST(StreamTest, FillAndLineWritersBuildOnWrite)
{
    RecordingStream stream;
    stream.WriteFill(2500);
    stream.WriteFill(0);
    stream.WriteFill(-7);
    EXPECT_EQ(stream.writes, (std::vector<int32_t>{1024, 1024, 452}));
    EXPECT_EQ(contentOf(stream), std::string(2500, '\0'));

    stream.clear();
    stream.WriteString("ab");
    stream.WriteLine("cd");
    stream.WriteLine("");
    EXPECT_EQ(contentOf(stream), "abcd\n\n");
}

// The default line reader (over a stream with only Read) and the memory stream's own
// scan must both give the documented results.
TEST(StreamTest, ReadLineEndsAndCapacities)
{
    for (const bool memory : {false, true}) {
        SCOPED_TRACE(memory ? "memory stream" : "default reader");
        const auto make = [&](std::string bytes) -> std::unique_ptr<ZStream> {
            if (memory)
                return std::make_unique<ZMemoryStream>(memoryOf(bytes));
            return std::make_unique<ForwardOnlyStream>(std::move(bytes));
        };
        auto stream = make("ab\r\ncd");
        EXPECT_EQ(readLine(*stream, 80), Line("ab", 0));
        EXPECT_EQ(readLine(*stream, 80), Line("cd", 0));
        EXPECT_EQ(readLine(*stream, 80), Line("", 2));

        // A zero byte ends a line too; carriage returns alone at the end are no data.
        stream = make(std::string("x\0\n\r\r", 5));
        EXPECT_EQ(readLine(*stream, 80), Line("x", 0));
        EXPECT_EQ(readLine(*stream, 80), Line("", 0));
        EXPECT_EQ(readLine(*stream, 80), Line("", 2));

        stream = make("abcdef\n");
        EXPECT_EQ(readLine(*stream, 3), Line("ab", 1));
        // Capacities 1 and 0 take nothing from the stream.
        EXPECT_EQ(readLine(*stream, 1), Line("", 1));
        EXPECT_EQ(readLine(*stream, 0).second, 1);
        EXPECT_EQ(readLine(*stream, 3), Line("cd", 1));
        // The buffer fills before the line feed is seen: it stays for the next call.
        EXPECT_EQ(readLine(*stream, 3), Line("ef", 1));
        EXPECT_EQ(readLine(*stream, 3), Line("", 0));
        EXPECT_EQ(readLine(*stream, 3), Line("", 2));
    }
}

TEST(StreamTest, MemoryLineScanMatchesTheDefaultOnRandomInput)
{
    std::mt19937 random(7);
    const char alphabet[] = {'a', 'b', '\r', '\n', '\0', 'z'};
    for (int round = 0; round < 300; ++round) {
        std::string bytes(random() % 40, ' ');
        for (char& byte : bytes)
            byte = alphabet[random() % sizeof(alphabet)];
        ForwardOnlyStream reference(bytes);
        ZMemoryStream memory = memoryOf(bytes);
        for (int call = 0; call < 50; ++call) {
            const auto capacity = static_cast<int32_t>(random() % 8);
            ASSERT_EQ(readLine(memory, capacity), readLine(reference, capacity)) << round << '/' << call;
            ASSERT_EQ(memory.Position(), reference.Position());
        }
    }
}

TEST(StreamTest, DefaultSeekSkipsForwardOnly)
{
    std::string bytes(3000, '\0');
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i % 251);
    ForwardOnlyStream stream(bytes);
    char byte = 0;
    stream.Seek(2500, 0);
    EXPECT_EQ(stream.reads, 3); // 1024-byte pieces
    stream.Seek(10, 1);
    stream.Read(&byte, 1);
    EXPECT_EQ(byte, bytes[2510]);
    stream.Seek(-10, 2);
    stream.Read(&byte, 1);
    EXPECT_EQ(byte, bytes[2990]);

    const std::string backward = "Service \"backward seek in a stream\" is not implemented.";
    EXPECT_EQ(messageOf([&] { stream.Seek(0, 0); }), backward);
    EXPECT_EQ(messageOf([&] { stream.Seek(-1, 1); }), backward);
    EXPECT_EQ(messageOf([&] { stream.Seek(0, 3); }), "Invalid seek origin.");
    // Past the end the skip stops silently where the data end.
    stream.Seek(5000, 1);
    EXPECT_EQ(stream.Position(), 3000);
}

TEST(StreamTest, MemorySeekClampsToTheData)
{
    ZMemoryStream stream = memoryOf("0123456789");
    struct Step { int64_t offset; int origin; int64_t position; };
    for (const Step step : {Step{4, 0, 4}, Step{-1, 1, 3}, Step{-2, 2, 8}, Step{25, 0, 10}, Step{-30, 1, 0},
                            Step{INT64_MAX, 1, 10}, Step{INT64_MIN, 2, 0}}) {
        stream.Seek(step.offset, step.origin);
        EXPECT_EQ(stream.Position(), step.position) << step.offset << " from " << step.origin;
        EXPECT_EQ(stream.IsEnd(), step.position == 10);
    }
    stream.Seek(4, 0);
    EXPECT_EQ(*stream.PositionPointer(), '4');
    EXPECT_EQ(messageOf([&] { stream.Seek(0, 3); }), "Invalid seek origin.");
}

TEST(StreamTest, MemoryReadsAndWritesAtThePosition)
{
    ZMemoryStream stream;
    char buffer[16] = {};
    EXPECT_EQ(stream.Read(buffer, 4), 0);
    stream.WriteString("hello world");
    stream.Seek(6, 0);
    stream.WriteString("there!");
    stream.Seek(0, 0);
    stream.WriteString("J");
    EXPECT_EQ(contentOf(stream), "Jello there!");
    EXPECT_EQ(stream.Read(buffer, 4), 4);
    EXPECT_EQ(stream.Read(buffer + 4, 16), 7);
    EXPECT_EQ(std::string(buffer, 11), "ello there!");

    // Appending the stream's own bytes while the write has to grow the buffer.
    ZMemoryStream self = memoryOf("abcd");
    const uint8_t* own = self.PositionPointer();
    self.Seek(0, 2);
    self.Write(own, 4);
    EXPECT_EQ(contentOf(self), "abcdabcd");
}

TEST(StreamTest, MemoryCopiesShareUntilOneWrites)
{
    ZMemoryStream original = memoryOf("shared bytes");
    ZMemoryStream copy = original;
    EXPECT_EQ(copy.data(), original.data());
    copy.WriteString("SHARED");
    EXPECT_EQ(contentOf(copy), "SHARED bytes");
    EXPECT_EQ(contentOf(original), "shared bytes");

    // The other way round: the first stream writes while a copy holds the buffer.
    ZMemoryStream second;
    second = original;
    original.Seek(0, 2);
    original.WriteString("!");
    EXPECT_EQ(contentOf(original), "shared bytes!");
    EXPECT_EQ(contentOf(second), "shared bytes");

    // A copy keeps the block alive after the stream that made it is gone.
    ZMemoryStream holder;
    {
        ZMemoryStream writer;
        writer.WriteString("chunk");
        holder = writer;
    }
    EXPECT_EQ(contentOf(holder), "chunk");

    // reserve makes the buffer private; writes within it then do not move it.
    ZMemoryStream reserved = holder;
    reserved.reserve(1000);
    const uint8_t* before = reserved.data();
    EXPECT_NE(before, holder.data());
    reserved.Seek(0, 2);
    reserved.WriteFill(995);
    EXPECT_EQ(reserved.data(), before);
    EXPECT_EQ(contentOf(holder), "chunk");
}

} // namespace
} // namespace halvern
