#pragma once

// ZWindow: an editor's window on X11, a child of the host's window, drawn from a
// ZUIRoot. It opens its own connection to the display and is used only on the host's UI
// thread (no thread of its own, no XInitThreads). It turns the window's X events into
// calls on the root in the root's logical units (device pixels / scale), uploads what
// the root repainted, shows the cursor the root asks for and gives the root the X
// CLIPBOARD selection as its clipboard.
//
// Every X call runs with an error trap in place, so a failing request (a parent that
// vanished, a window the host destroyed) never reaches the host's error handler. When
// the window is destroyed under it, it counts as closed from then on.

#include "ui/geometry.h"

#include <functional>
#include <memory>
#include <vector>

typedef union _XEvent XEvent;

namespace halvern {

class ZUIRoot;

class ZWindow {
public:
    explicit ZWindow(ZUIRoot& root);
    ~ZWindow();
    ZWindow(const ZWindow&) = delete;
    ZWindow& operator=(const ZWindow&) = delete;

    // Makes and shows the window as a child of parent (an X window id) at the size in
    // device pixels. False, with nothing left behind, when there is no display, the
    // parent does not exist or its visual is not TrueColor.
    bool Open(unsigned long parent, int pixelWidth, int pixelHeight);
    // Destroys the window and closes the connection; safe when not open.
    void Close();
    // True between a successful Open and Close, unless the window was destroyed under it.
    bool IsOpen() const;

    // Handles every event that is waiting, without blocking; exposed areas are uploaded
    // again from the canvas as it is.
    void ProcessEvents();
    // Puts rectangles of the root's canvas (device pixels) into the window.
    void Upload(const std::vector<ZRect>& pixelRects);
    // Resizes the window (device pixels).
    void SetPixelSize(int pixelWidth, int pixelHeight);
    // Called with the new size when someone else resized the window.
    void SetResizeListener(std::function<void(int pixelWidth, int pixelHeight)> listener)
    {
        resized_ = std::move(listener);
    }
    // The connection's file descriptor for a host's run loop; -1 when not open.
    int ConnectionFileDescriptor() const;

private:
    struct Connection;

    void closeConnection();
    void dispatch(XEvent& event, std::vector<ZRect>& exposed);
    void configured(int pixelWidth, int pixelHeight);
    void pressed(XEvent& event);
    void released(XEvent& event);
    void takeKeyboardIfWanted(unsigned long time);
    void moved(int x, int y, unsigned state);
    void left(XEvent& event);
    void keyPressed(XEvent& event);
    void showCursor();
    ZPoint logical(int x, int y) const;

    ZUIRoot& root_;
    std::unique_ptr<Connection> x_;
    std::function<void(int, int)> resized_;
};

// The desktop's scale for editors: Xft.dpi / 96 from the display's resource database
// (at least 1), or 1 without a display or the resource.
double SystemContentScale();

} // namespace halvern
