#include "core/trace.h"
#include "state/z_zlib_stream.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>
#include <vector>

namespace halvern {
namespace {

using test::contentOf;
using test::memoryOf;
using test::messageOf;
using test::RecordingStream;

std::string randomText(size_t size, unsigned seed, int letters)
{
    std::mt19937 random(seed);
    std::string text(size, 'a');
    for (char& letter : text)
        letter = static_cast<char>('a' + random() % static_cast<unsigned>(letters));
    return text;
}

std::string zlibCompress(const std::string& bytes, int level)
{
    uLongf length = compressBound(bytes.size());
    std::string out(length, '\0');
    EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(out.data()), &length, reinterpret_cast<const Bytef*>(bytes.data()),
                        bytes.size(), level),
              Z_OK);
    out.resize(length);
    return out;
}

std::string zlibUncompress(const std::string& compressed, size_t size)
{
    uLongf length = size + 1;
    std::string out(length, '\0');
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(out.data()), &length,
                         reinterpret_cast<const Bytef*>(compressed.data()), compressed.size()),
              Z_OK);
    out.resize(length);
    return out;
}

std::string compressThroughStream(const std::string& bytes, int quality, size_t piece)
{
    ZMemoryStream target;
    ZZLibStream stream(&target, true, quality);
    for (size_t at = 0; at < bytes.size(); at += piece)
        stream.Write(bytes.data() + at, static_cast<int32_t>(std::min(piece, bytes.size() - at)));
    EXPECT_EQ(stream.Position(), static_cast<int64_t>(bytes.size()));
    stream.Finish();
    return contentOf(target);
}

// Everything a decompressing stream delivers; the guard turns a hang into a failure.
std::string readAll(ZZLibStream& stream, int32_t piece)
{
    std::string out;
    std::vector<char> buffer(static_cast<size_t>(piece));
    for (int guard = 0; guard < 100000; ++guard) {
        const int32_t got = stream.Read(buffer.data(), piece);
        out.append(buffer.data(), static_cast<size_t>(got));
        if (got < piece)
            return out;
    }
    ADD_FAILURE() << "the stream never ended";
    return out;
}

TEST(ZLibStreamTest, FinishedOutputIsPlainZLibDataInPiecesOf4096AtTheLevelTheQualityChooses)
{
    const std::string sample = randomText(60000, 1, 4);
    const std::string compressed = compressThroughStream(sample, 100, 777);
    EXPECT_LT(compressed.size(), sample.size() / 2);
    EXPECT_EQ(static_cast<uint8_t>(compressed[0]), 0x78); // deflate, 32 KB window
    EXPECT_TRUE(zlibUncompress(compressed, sample.size()) == sample);
    EXPECT_EQ(zlibUncompress(compressThroughStream("", 50, 1), 0), "");

    // Incompressible bytes reach the target in pieces of 1 to 4096 bytes.
    const std::string noise = randomText(100000, 2, 256);
    RecordingStream target;
    ZZLibStream stream(&target, true, 100);
    stream.Write(noise.data(), 0);
    EXPECT_TRUE(target.writes.empty());
    stream.Write(noise.data(), static_cast<int32_t>(noise.size()));
    stream.Write(noise.data(), 0);
    stream.Finish();
    EXPECT_EQ(stream.Position(), 100000);
    int full = 0;
    for (int32_t size : target.writes) {
        EXPECT_TRUE(size > 0 && size <= 4096) << size;
        full += size == 4096;
    }
    EXPECT_GE(full, 24);
    EXPECT_TRUE(zlibUncompress(contentOf(target), noise.size()) == noise);

    // Over two letters every deflate level gives different bytes, so equal output identifies the level.
    const std::string text = randomText(20000, 3, 2);
    std::vector<std::string> byLevel;
    for (int level = 0; level <= 9; ++level) {
        byLevel.push_back(zlibCompress(text, level));
        for (int lower = 0; lower < level; ++lower)
            ASSERT_FALSE(byLevel[lower] == byLevel[level]) << lower << " and " << level;
    }
    // level = (quality - 1) / 10 truncated toward zero, clamped to 0 .. 9
    const std::pair<int, int> cases[] = {{100, 9}, {91, 9}, {90, 8}, {61, 6}, {60, 5}, {11, 1}, {10, 0}, {-20, 0}, {500, 9}};
    for (const auto& [quality, level] : cases) {
        const std::string ours = compressThroughStream(text, quality, text.size());
        if (level > 0) {
            EXPECT_TRUE(ours == byLevel[static_cast<size_t>(level)]) << "quality " << quality;
        } else { // stored blocks are cut by the output pieces: FLEVEL 0, the first block stored
            EXPECT_EQ(static_cast<uint8_t>(ours[1]) >> 6, 0) << quality;
            EXPECT_EQ(static_cast<uint8_t>(ours[2]) & 0x06, 0) << quality;
            EXPECT_GT(ours.size(), text.size()) << quality;
        }
    }
}

TEST(ZLibStreamTest, DetachWithoutFinishReportsTheLostData)
{
    const std::string message = "ZLIB stream has not been terminated.";
    ZMemoryStream target;
    ZZLibStream stream(&target, true, 80);
    stream.WriteString("forgotten");
    EXPECT_EQ(messageOf([&] { stream.Detach(); }), message);
    EXPECT_NO_THROW(stream.Detach());
    stream.Attach(&target, true, 80);
    stream.WriteString("forgotten");
    EXPECT_EQ(messageOf([&] { stream.Attach(&target, false, 0); }), message);

    // The destructor only traces it; a finished writer and a reader go quietly.
    std::vector<std::string> traced;
    const TraceSink previous = SetTraceSink([&](std::string_view text, std::string_view) { traced.emplace_back(text); });
    {
        ZZLibStream forgotten(&target, true, 80);
        forgotten.WriteString("forgotten");
        ZZLibStream finished(&target, true, 80);
        finished.Finish();
        ZMemoryStream source = memoryOf(zlibCompress("abc", 6));
        ZZLibStream reading(&source, false, 0);
    }
    SetTraceSink(previous);
    EXPECT_EQ(traced, std::vector<std::string>{message});

    ZZLibStream detached;
    char byte = 0;
    EXPECT_EQ(messageOf([&] { detached.Read(&byte, 1); }), "ZLIB stream is not attached.");
    stream.Attach(&target, true, 80);
    stream.Finish();
    EXPECT_EQ(messageOf([&] { stream.Write(&byte, 1); }), "ZLIB stream has already been finished.");
}

TEST(ZLibStreamTest, ReadsBackLargeDataWrittenByZLib)
{
    const std::string data = randomText(200000, 5, 3) + randomText(20000, 6, 256);
    const std::string compressed = zlibCompress(data, 6);
    RecordingStream source(compressed.data(), static_cast<int32_t>(compressed.size()));
    ZZLibStream stream(&source, false, 0);
    std::string out;
    char buffer[5000];
    const int32_t pieces[] = {1, 4096, 7, 5000, 333};
    for (int i = 0;; ++i) {
        const int32_t got = stream.Read(buffer, pieces[i % 5]);
        out.append(buffer, static_cast<size_t>(got));
        if (got < pieces[i % 5])
            break;
    }
    EXPECT_TRUE(out == data);
    EXPECT_TRUE(stream.reachedEnd());
    EXPECT_EQ(stream.Position(), static_cast<int64_t>(data.size()));
    EXPECT_EQ(stream.Read(buffer, 10), 0);
    EXPECT_EQ(source.reads, std::vector<int32_t>(source.reads.size(), 4096));
}

TEST(ZLibStreamTest, DamagedInputGetsZLibsOwnVerdictAndNeverHangs)
{
    const std::string data = randomText(20000, 9, 5);
    const std::string compressed = zlibCompress(data, 9);
    enum Verdict { Complete, Incomplete, Invalid };

    // One inflate call over all the input with room to spare: what zlib itself decides.
    auto zlibVerdict = [&](const std::string& input, std::string& out) {
        z_stream zlib{};
        EXPECT_EQ(inflateInit(&zlib), Z_OK);
        out.assign(2 * data.size(), '\0');
        zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
        zlib.avail_in = static_cast<uInt>(input.size());
        zlib.next_out = reinterpret_cast<Bytef*>(out.data());
        zlib.avail_out = static_cast<uInt>(out.size());
        const int result = inflate(&zlib, Z_SYNC_FLUSH);
        out.resize(out.size() - zlib.avail_out);
        inflateEnd(&zlib);
        return result == Z_STREAM_END ? Complete : result == Z_OK || result == Z_BUF_ERROR ? Incomplete : Invalid;
    };
    auto streamVerdict = [&](const std::string& input, std::string& out) {
        ZMemoryStream source = memoryOf(input);
        ZZLibStream stream(&source, false, 0);
        try {
            out = readAll(stream, 1000);
        } catch (const ZException& error) {
            EXPECT_STREQ(error.message(), "Source compressed stream has invalid content.");
            return Invalid;
        }
        return stream.reachedEnd() ? Complete : Incomplete;
    };
    auto check = [&](const std::string& input) {
        std::string expected, out;
        const Verdict verdict = zlibVerdict(input, expected);
        EXPECT_EQ(streamVerdict(input, out), verdict);
        if (verdict != Invalid) {
            EXPECT_TRUE(out == expected);
        }
        return verdict;
    };

    for (size_t length : {0ul, 1ul, 2ul, 3ul, compressed.size() / 2, compressed.size() - 5, compressed.size() - 1})
        EXPECT_EQ(check(compressed.substr(0, length)), Incomplete) << length;
    std::mt19937 random(11);
    int invalid = 0;
    for (int round = 0; round < 200; ++round) {
        std::string damaged = compressed;
        const size_t at = round < 2 ? static_cast<size_t>(round) : random() % damaged.size();
        damaged[at] = static_cast<char>(damaged[at] ^ (1 << (random() % 8)));
        invalid += check(damaged) == Invalid;
    }
    EXPECT_GE(invalid, 190); // the header check and the Adler-32 trailer catch nearly all
    EXPECT_EQ(check("plain text, not compressed"), Invalid);
}

} // namespace
} // namespace halvern
