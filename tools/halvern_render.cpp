// halvern-render: runs audio through the reverb offline, block by block as a host
// would, writes the result with the reverb's tail, and prints a decay report measured
// on the impulse response of the same settings.

#include "analysis/impulse_analysis.h"
#include "audio_import/audio_file_reader.h"
#include "audio_import/audio_file_writer.h"
#include "editor/decay_display.h"
#include "editor/offscreen_editor.h"
#include "editor/reverb_editor_view.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "tools/render_session.h"
#include "tools/test_signal.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace halvern;
using namespace halvern::tools;

constexpr const char* kUsage =
    "Usage: halvern-render [--in FILE] [--out FILE] [--ir] [--preset NAME] [--set KEY=VALUE]...\n"
    "                      [--index N=X]... [--rate HZ] [--block N] [--plugin PATH.so]\n"
    "  --in FILE       audio file to process (mono feeds both channels); without it the\n"
    "                  built-in test signal (clicks and a tone burst) is used\n"
    "  --out FILE      where to write the result (default halvern-render.wav)\n"
    "  --ir            write the impulse response instead of the processed signal\n"
    "  --preset NAME   start from the factory preset of that name, loaded through the\n"
    "                  preset manager as the plug-in loads it; --set and --index then\n"
    "                  change it (the reverb built into the program only)\n"
    "  --set KEY=VALUE a parameter by its key, in display units (\"ReverbTime=2500\" ms,\n"
    "                  \"Size=20\" metres, \"ReverbDepth=80\" percent, \"ReverbMode=Mode 3\")\n"
    "  --index N=X     a parameter by its index, normalised 0..1\n"
    "  --rate HZ       sample rate for the built-in signal and the impulse (default 48000)\n"
    "  --block N       block length handed to the plug-in (default 512)\n"
    "  --plugin PATH   a VST 2.4 plug-in library to render through, loaded by its entry\n"
    "                  point as a host loads it, instead of the reverb built into the\n"
    "                  program; --set then takes the plug-in's parameter names\n"
    "  --editor-png FILE  draw the editor with these settings into a PNG picture, without\n"
    "                  any display, instead of rendering audio\n"
    "  --scale S       the editor picture's scale factor, 0.75 to 4 (default 1)\n"
    "  --page NAME     the editor picture with a page of the bottom area open: \"LFO 1\" to\n"
    "                  \"LFO 4\", \"MultiParameter 1\" to \"MultiParameter 4\", \"MIDI\", \"Morph\",\n"
    "                  \"Equalizer\" or \"Decay\"; or \"Presets\" for the preset window\n";

// A command line that cannot be run: the usage follows the message.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    bool help = false;
    std::string in;
    std::string out = "halvern-render.wav";
    std::string plugin;
    std::string preset;
    std::string editorPNG;
    std::string page;
    double scale = 1.0;
    bool impulse = false;
    double rate = 48000.0;
    int block = 512;
    std::vector<std::pair<std::string, std::string>> byKey;
    std::vector<std::pair<int, double>> byIndex;
};

std::pair<std::string, std::string> splitAssignment(const std::string& text)
{
    const auto equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError("expected KEY=VALUE, got \"" + text + "\"");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

// The whole text as a number, or a usage error naming what expected it.
double numberFor(const std::string& what, const std::string& text)
{
    size_t used = 0;
    try {
        const double number = std::stod(text, &used);
        if (used == text.size())
            return number;
    } catch (const std::exception&) {
    }
    throw UsageError(what + " takes a number, not \"" + text + "\"");
}

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        if (flag == "--help" || flag == "-h") {
            options.help = true;
            return options;
        }
        if (flag == "--ir") {
            options.impulse = true;
            continue;
        }
        const auto take = [&] {
            if (i + 1 >= argc)
                throw UsageError("missing value after " + flag);
            return std::string(argv[++i]);
        };
        if (flag == "--in")
            options.in = take();
        else if (flag == "--out")
            options.out = take();
        else if (flag == "--rate")
            options.rate = numberFor(flag, take());
        else if (flag == "--block")
            options.block = static_cast<int>(std::clamp(numberFor(flag, take()), 0.0, 65537.0)); // outside 1..65536 is refused below
        else if (flag == "--plugin")
            options.plugin = take();
        else if (flag == "--preset")
            options.preset = take();
        else if (flag == "--editor-png")
            options.editorPNG = take();
        else if (flag == "--scale")
            options.scale = numberFor(flag, take());
        else if (flag == "--page")
            options.page = take();
        else if (flag == "--set")
            options.byKey.push_back(splitAssignment(take()));
        else if (flag == "--index") {
            const auto [index, normalized] = splitAssignment(take());
            options.byIndex.emplace_back(static_cast<int>(std::clamp(numberFor(flag, index), -1.0, 1e6)), numberFor(flag, normalized));
        } else
            throw UsageError("unknown option " + flag);
    }
    if (options.block < 1 || options.block > 65536 || !(options.rate >= 8000.0 && options.rate <= 384000.0))
        throw UsageError("the block length must be 1..65536 and the rate 8000..384000 Hz");
    if (!(options.scale >= 0.75 && options.scale <= 4.0))
        throw UsageError("the scale must be 0.75..4");
    if (!options.editorPNG.empty() && !options.plugin.empty())
        throw UsageError("--editor-png draws the reverb built into the program, not --plugin");
    if (!options.preset.empty() && !options.plugin.empty())
        throw UsageError("--preset loads into the reverb built into the program, not into --plugin");
    return options;
}

void loadFactoryPreset(RenderSession& session, const std::string& name)
{
    halvern::ZAudioPlugin& core = session.core();
    for (int32_t program = 0; program < core.GetProgramCount(); ++program)
        if (core.GetProgramName(program) == name) {
            if (!core.LoadProgram(program))
                throw std::runtime_error("the factory preset \"" + name + "\" does not load");
            return;
        }
    throw std::runtime_error("there is no factory preset named \"" + name + "\"");
}

RenderSession makeSession(const Options& options, double rate)
{
    RenderSession session = options.plugin.empty() ? RenderSession(rate, options.block)
                                                   : RenderSession(rate, options.block, options.plugin);
    if (!options.preset.empty())
        loadFactoryPreset(session, options.preset);
    for (const auto& [key, text] : options.byKey)
        session.setByKey(key, text);
    for (const auto& [index, normalized] : options.byIndex)
        session.setByIndex(index, normalized);
    session.start();
    return session;
}

constexpr const char* kPresetWindow = "Presets";

// "LFO 2", "MultiParameter 3", "MIDI", "Morph", "Equalizer" or "Decay" as the page to open.
halvern::ZModulatorSelection pageNamed(const std::string& name)
{
    using Kind = halvern::ZModulatorSelection::Kind;
    if (name.empty() || name == kPresetWindow)
        return {};
    for (const auto& [named, kind] : {std::pair{"MIDI", Kind::MIDI}, std::pair{"Morph", Kind::Morph},
                                      std::pair{"Equalizer", Kind::Equalizer}, std::pair{"Decay", Kind::Decay}})
        if (name == named)
            return {kind, 0};
    for (int i = 0; i < 4; ++i) {
        if (name == "LFO " + std::to_string(i + 1))
            return {Kind::LFO, i};
        if (name == "MultiParameter " + std::to_string(i + 1))
            return {Kind::MultiParameter, i};
    }
    throw UsageError("there is no page \"" + name + "\"");
}

// The decay display measures on its own thread: the picture waits for its figures (a
// minute at most).
void waitForDecay(halvern::ZOffscreenEditor& editor)
{
    auto* decay = dynamic_cast<halvern::ZDecayDisplay*>(editor.root().content()->FindByName("DecayDisplay"));
    for (int tick = 0; decay != nullptr && !decay->measurement() && tick < 60 * 60; ++tick) {
        editor.Tick();
        std::this_thread::sleep_for(std::chrono::milliseconds(16));
    }
}

int drawEditor(const Options& options)
{
    const halvern::ZModulatorSelection page = pageNamed(options.page);
    RenderSession session = makeSession(options, options.rate);
    halvern::ZOffscreenEditor editor(session.core(), options.scale);
    editor.Open(page);
    if (options.page == kPresetWindow)
        editor.view().OpenPresetWindow();
    waitForDecay(editor);
    if (!editor.WritePNG(options.editorPNG))
        throw std::runtime_error("cannot write " + options.editorPNG);
    const halvern::ZCanvas& canvas = editor.root().canvas();
    std::printf("drew the editor into %s: %d x %d pixels at scale %.2f\n", options.editorPNG.c_str(),
                canvas.pixelWidth(), canvas.pixelHeight(), options.scale);
    return EXIT_SUCCESS;
}

int run(const Options& options)
{
    if (!options.editorPNG.empty())
        return drawEditor(options);
    const ZAudioData input = options.in.empty() ? MakeTestSignal(options.rate, 2.0) : ReadAudioFile(options.in);
    const double rate = options.impulse ? options.rate : input.sampleRate;
    RenderSession session = makeSession(options, rate);
    const auto started = std::chrono::steady_clock::now();
    const ZAudioData output = options.impulse ? session.renderImpulse() : session.render(input);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    WriteAudioFile(options.out, output);
    const double audioSeconds = static_cast<double>(output.frames()) / output.sampleRate;
    std::printf("rendered %s: %.2f s at %.0f Hz in blocks of %d, %.0f x real time\n", options.out.c_str(), audioSeconds,
                output.sampleRate, options.block, audioSeconds / seconds);

    // The decay report always comes from a fresh instance's impulse response.
    const ZAudioData response = options.impulse ? output : makeSession(options, rate).renderImpulse();
    std::printf("%s", FormatImpulseReport(AnalyseImpulseResponse(response)).c_str());
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const Options options = parse(argc, argv);
        if (options.help) {
            std::fputs(kUsage, stdout);
            return EXIT_SUCCESS;
        }
        return run(options);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "halvern-render: %s\n%s", error.what(), kUsage);
        return EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "halvern-render: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
