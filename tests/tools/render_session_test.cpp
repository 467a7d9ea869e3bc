// The renderer's two paths: the built-in core and the built plug-in library loaded
// through its VST 2.4 entry point must give the same samples for the same settings.

#include "tools/render_session.h"
#include "tools/test_signal.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace halvern::tools {
namespace {

TEST(RenderSession, PluginLibraryRendersTheSameAsTheBuiltInCore)
{
    const ZAudioData input = MakeTestSignal(44100.0, 0.5);
    auto renderThrough = [&](RenderSession session) {
        session.setByKey("ReverbTime", "1500");
        session.setByKey("ReverbMode", "Mode 3");
        session.setByIndex(1, 0.75); // exact in float, the VST 2.4 parameter type
        session.start();
        return std::pair{session.render(input), session.renderImpulse()};
    };
    const auto [builtInSignal, builtInImpulse] = renderThrough(RenderSession(44100.0, 300));
    const auto [pluginSignal, pluginImpulse] = renderThrough(RenderSession(44100.0, 300, HALVERN_PLUGIN_PATH));
    EXPECT_EQ(builtInSignal.channels, pluginSignal.channels);
    EXPECT_EQ(builtInImpulse.channels, pluginImpulse.channels);
    // The impulse rings until it is 100 dB down, beyond the whole seconds of tail reported.
    EXPECT_GT(builtInImpulse.frames(), 44100u * 3 / 2);
}

TEST(RenderSession, UnknownKeysTextsAndLibrariesAreReported)
{
    RenderSession session(48000.0, 512, HALVERN_PLUGIN_PATH);
    EXPECT_THROW(session.setByKey("NoSuchKey", "1"), std::runtime_error);
    EXPECT_THROW(session.setByKey("LowFreq", "0"), std::runtime_error); // not a frequency
    EXPECT_NO_THROW(session.setByKey("Gate", "On")); // a switch by its display text
    EXPECT_THROW(session.setByIndex(1000, 0.5), std::runtime_error);
    EXPECT_THROW(RenderSession(48000.0, 512, "/nonexistent/plugin.so"), std::runtime_error);
    EXPECT_THROW(session.core(), std::logic_error);
}

} // namespace
} // namespace halvern::tools
