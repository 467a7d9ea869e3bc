#pragma once

// The editor hosts' side of the X display (the Xvfb server the editor tests run on): a
// connection of the host's own, top-level parent windows for editors, and the user's
// pointer and keyboard through the XTest extension.

#include <functional>
#include <utility>
#include <vector>

// Xlib's types without its macros (None, Bool, Status), which clash with other headers.
typedef struct _XDisplay Display;
typedef unsigned long Window;

namespace editorhost {

class TestDisplay {
public:
    // Opens DISPLAY; throws when there is none or it lacks XTest.
    TestDisplay();
    ~TestDisplay();
    TestDisplay(const TestDisplay&) = delete;
    TestDisplay& operator=(const TestDisplay&) = delete;

    Display* display() const { return display_; }

    // A mapped top-level window at (x, y) of the size, raised above the others.
    Window CreateParent(int x, int y, int width, int height);
    void Destroy(Window window);
    void Resize(Window window, int width, int height);
    void Raise(Window window);
    // The window's child windows (an editor's window inside a parent).
    std::vector<Window> Children(Window window);
    // The window's size in pixels; {0, 0} when it does not exist.
    std::pair<int, int> Size(Window window);
    // The colour (0xRRGGBB) of one pixel of a window.
    unsigned long Pixel(Window window, int x, int y);

    // The pointer to a point of a window (its pixels), buttons and keys as a user would.
    void MoveTo(Window window, double x, double y);
    void Button(unsigned button, bool press);
    void Click(unsigned button);
    void Key(unsigned long keysym, bool press);
    void Type(unsigned long keysym);

    // Calls pump until done answers true or about two seconds passed; false on time-out.
    static bool PumpUntil(const std::function<void()>& pump, const std::function<bool()>& done);
    // Pumps for the given milliseconds.
    static void PumpFor(const std::function<void()>& pump, int milliseconds);

private:
    Display* display_;
};

} // namespace editorhost
