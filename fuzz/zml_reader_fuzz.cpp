// Feeds arbitrary bytes to the markup reader. A document it accepts is written back in
// both layouts; each written document must read back to an equal tree and write again
// to the same bytes, and the stream paths must agree with the string paths. Anything
// else than a ZException from the first read aborts.

#include "core/z_exception.h"
#include "state/z_stream.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using namespace halvern;

// Reads from a fixed byte range and collects what is written.
class BytesStream : public ZStream {
public:
    explicit BytesStream(std::string_view bytes = {}) : bytes_(bytes) {}

    int32_t Read(void* bytes, int32_t count) override
    {
        const size_t piece = std::min(static_cast<size_t>(count), bytes_.size() - read_);
        std::memcpy(bytes, bytes_.data() + read_, piece);
        read_ += piece;
        return static_cast<int32_t>(piece);
    }

    void Write(const void* bytes, int32_t count) override
    {
        written.append(static_cast<const char*>(bytes), static_cast<size_t>(count));
    }

    std::string written;

private:
    std::string_view bytes_;
    size_t read_ = 0;
};

void check(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::unique_ptr<ZMLElement> first;
    try {
        first = ReadZMLDocument(input);
    } catch (const ZException&) {
        return 0;
    }

    BytesStream source(input);
    check(*ReadZMLDocument(source) == *first);

    for (const ZMLLayout layout : {ZMLLayout::Compact, ZMLLayout::Indented}) {
        const std::string text = ZMLDocumentText(*first, layout);
        BytesStream sink;
        WriteZMLDocument(sink, *first, layout);
        check(sink.written == text);

        const std::unique_ptr<ZMLElement> again = ReadZMLDocument(text);
        check(*again == *first);
        check(ZMLDocumentText(*again, layout) == text);
    }
    return 0;
}
