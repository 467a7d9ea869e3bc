#pragma once

// ZX11Clipboard: the X CLIPBOARD selection as the toolkit's clipboard, for one window.
// Setting text makes the window the selection's owner, and it answers other clients'
// requests for TARGETS, UTF8_STRING and STRING while it owns it. Reading asks the owner
// for UTF-8 text and waits for the answer at most kReadTimeout; nothing else blocks.

#include "ui/clipboard.h"

#include <X11/Xlib.h>

#include <string>

namespace halvern {

class ZX11Clipboard : public ZClipboard {
public:
    static constexpr int kReadTimeout = 100; // milliseconds

    ZX11Clipboard(Display* display, Window window);

    void SetText(const std::string& utf8) override;
    std::string Text() override;

    // Takes the selection events (requests, clears); false for any other event.
    bool HandleEvent(const XEvent& event);
    // The timestamp of the latest user event, for claiming the selection and asking for it.
    void SetTime(Time time) { time_ = time; }

private:
    void answer(const XSelectionRequestEvent& request);
    bool waitForAnswer(XEvent& answer);
    std::string readAnswer(const XSelectionEvent& answer);

    Display* display_;
    Window window_;
    Atom clipboard_;
    Atom utf8_;
    Atom targets_;
    Atom transfer_; // the window property the owner puts its answer in
    Time time_ = CurrentTime;
    std::string text_;
    bool owner_ = false;
};

} // namespace halvern
