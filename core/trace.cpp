#include "core/trace.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace halvern {
namespace {

std::mutex& sinkMutex()
{
    static std::mutex mutex;
    return mutex;
}

TraceSink& installedSink()
{
    static TraceSink sink;
    return sink;
}

bool traceEnabled()
{
    static const bool enabled = std::getenv("HALVERN_TRACE") != nullptr;
    return enabled;
}

} // namespace

void Trace(std::string_view text, std::string_view location)
{
    std::lock_guard<std::mutex> guard(sinkMutex());
    if (installedSink()) {
        installedSink()(text, location);
        return;
    }
    if (traceEnabled())
        std::fprintf(stderr, "[%.*s] %.*s\n", static_cast<int>(location.size()), location.data(),
                     static_cast<int>(text.size()), text.data());
}

TraceSink SetTraceSink(TraceSink sink)
{
    std::lock_guard<std::mutex> guard(sinkMutex());
    TraceSink previous = std::move(installedSink());
    installedSink() = std::move(sink);
    return previous;
}

} // namespace halvern
