#include "state/z_memory_stream.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

namespace halvern {
namespace {

using test::contentOf;
using test::ForwardOnlyStream;
using test::memoryOf;
using test::messageOf;

using Line = std::pair<std::string, int>;

Line readLine(ZStream& stream, int32_t capacity)
{
    std::vector<char> buffer(static_cast<size_t>(std::max(capacity, 1)), '#');
    const int status = static_cast<int>(stream.ReadLine(buffer.data(), capacity));
    return {capacity > 0 ? std::string(buffer.data()) : std::string(), status};
}

// The memory stream's own line scan is held to this reader by the random test below.
TEST(StreamTest, DefaultReadLineEndsAndCapacities)
{
    ForwardOnlyStream crlf("ab\r\ncd");
    EXPECT_EQ(readLine(crlf, 80), Line("ab", 0));
    EXPECT_EQ(readLine(crlf, 80), Line("cd", 0));
    EXPECT_EQ(readLine(crlf, 80), Line("", 2));

    // A zero byte ends a line too; carriage returns alone at the end are no data.
    ForwardOnlyStream zero(std::string("x\0\n\r\r", 5));
    EXPECT_EQ(readLine(zero, 80), Line("x", 0));
    EXPECT_EQ(readLine(zero, 80), Line("", 0));
    EXPECT_EQ(readLine(zero, 80), Line("", 2));

    ForwardOnlyStream stream("abcdef\n");
    EXPECT_EQ(readLine(stream, 3), Line("ab", 1));
    // Capacities 1 and 0 take nothing from the stream.
    EXPECT_EQ(readLine(stream, 1), Line("", 1));
    EXPECT_EQ(readLine(stream, 0).second, 1);
    EXPECT_EQ(readLine(stream, 3), Line("cd", 1));
    // The buffer fills before the line feed is seen: it stays for the next call.
    EXPECT_EQ(readLine(stream, 3), Line("ef", 1));
    EXPECT_EQ(readLine(stream, 3), Line("", 0));
    EXPECT_EQ(readLine(stream, 3), Line("", 2));
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

TEST(StreamTest, MemorySeekClampsToTheDataAndReadsAndWritesAtThePosition)
{
    ZMemoryStream digits = memoryOf("0123456789");
    struct Step { int64_t offset; int origin; int64_t position; };
    for (const Step step : {Step{4, 0, 4}, Step{-1, 1, 3}, Step{-2, 2, 8}, Step{25, 0, 10}, Step{-30, 1, 0},
                            Step{INT64_MAX, 1, 10}, Step{INT64_MIN, 2, 0}}) {
        digits.Seek(step.offset, step.origin);
        EXPECT_EQ(digits.Position(), step.position) << step.offset << " from " << step.origin;
        EXPECT_EQ(digits.IsEnd(), step.position == 10);
    }
    digits.Seek(4, 0);
    EXPECT_EQ(*digits.PositionPointer(), '4');
    EXPECT_EQ(messageOf([&] { digits.Seek(0, 3); }), "Invalid seek origin.");

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

    ZMemoryStream holder; // outlives the stream that made the block
    {
        ZMemoryStream writer;
        writer.WriteString("chunk");
        holder = writer;
    }
    EXPECT_EQ(contentOf(holder), "chunk");
}

} // namespace
} // namespace halvern
