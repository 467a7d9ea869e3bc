#pragma once

// The one small interface between a host adapter and a plug-in's editor window. The
// adapter creates the editor through the core, hands it the host's parent window and
// pumps it from the host's UI thread; the editor reaches the host only through
// ZEditorHost. Nothing here runs on the audio thread.

#include <cstdint>
#include <memory>

namespace halvern {

class ZAudioPlugin;

// A size in device pixels.
struct ZEditorSize {
    int width = 0;
    int height = 0;
};

// What the editor asks of the host; implemented by each host adapter (and by the
// off-screen renderer and the tests).
class ZEditorHost {
public:
    virtual ~ZEditorHost() = default;
    // A gesture on one host parameter: begin, any number of changes, end. PerformEdit
    // sets the core's value at once and tells the host (normalised 0..1).
    virtual void BeginEdit(int32_t index) = 0;
    virtual void PerformEdit(int32_t index, double normalized) = 0;
    virtual void EndEdit(int32_t index) = 0;
    // The editor wants a new size in device pixels; false when the host refuses.
    virtual bool RequestResize(ZEditorSize size) = 0;
};

class ZPluginEditor {
public:
    virtual ~ZPluginEditor() = default;
    // The editor's size in device pixels, known before any window exists.
    virtual ZEditorSize Size() const = 0;
    // Opens the editor as a child of the host's window (an X11 window id); false when
    // it cannot (no display, a parent that does not exist).
    virtual bool Open(unsigned long parentWindow) = 0;
    // Closes the window; a gesture in progress ends first. Safe when not open.
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;
    // Runs pending window events, timers and repaints without blocking.
    virtual void Idle() = 0;
    // The window-system connection's file descriptor for a host's run loop; -1 when closed.
    virtual int ConnectionFileDescriptor() const = 0;
    // The nearest size the editor takes to the one asked for (75 % to 200 % of its
    // natural size at the current scale, aspect kept).
    virtual ZEditorSize ConstrainSize(ZEditorSize wanted) const = 0;
    // The host resized the window; the editor takes the constrained size.
    virtual void SetSize(ZEditorSize size) = 0;
    // The host's content scale (1 for 96 dpi); changes the natural size.
    virtual void SetContentScale(double scale) = 0;
};

// Builds the editor of a plug-in core; set on the core by whoever composes instances.
using ZEditorFactory = std::unique_ptr<ZPluginEditor> (*)(ZAudioPlugin& core, ZEditorHost& host);

} // namespace halvern
