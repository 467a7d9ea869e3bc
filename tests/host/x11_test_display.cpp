#include "x11_test_display.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <chrono>
#include <cmath>
#include <stdexcept>
#include <thread>

namespace editorhost {

TestDisplay::TestDisplay() : display_(XOpenDisplay(nullptr))
{
    int event = 0, error = 0, major = 0, minor = 0;
    if (display_ == nullptr)
        throw std::runtime_error("no X display: run the editor tests under xvfb-run");
    if (!XTestQueryExtension(display_, &event, &error, &major, &minor)) {
        XCloseDisplay(display_);
        throw std::runtime_error("the X server lacks the XTest extension");
    }
}

TestDisplay::~TestDisplay() { XCloseDisplay(display_); }

Window TestDisplay::CreateParent(int x, int y, int width, int height)
{
    const int screen = DefaultScreen(display_);
    const Window window = XCreateSimpleWindow(display_, RootWindow(display_, screen), x, y, static_cast<unsigned>(width),
                                              static_cast<unsigned>(height), 0, 0, BlackPixel(display_, screen));
    XSelectInput(display_, window, StructureNotifyMask);
    XMapRaised(display_, window);
    XEvent event;
    do
        XWindowEvent(display_, window, StructureNotifyMask, &event);
    while (event.type != MapNotify);
    return window;
}

void TestDisplay::Destroy(Window window)
{
    XDestroyWindow(display_, window);
    XSync(display_, False);
}

void TestDisplay::Resize(Window window, int width, int height)
{
    XResizeWindow(display_, window, static_cast<unsigned>(width), static_cast<unsigned>(height));
    XSync(display_, False);
}

void TestDisplay::Raise(Window window)
{
    XRaiseWindow(display_, window);
    XSync(display_, False);
}

std::vector<Window> TestDisplay::Children(Window window)
{
    Window root = 0, parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    std::vector<Window> found;
    if (XQueryTree(display_, window, &root, &parent, &children, &count) != 0 && children != nullptr) {
        found.assign(children, children + count);
        XFree(children);
    }
    return found;
}

std::pair<int, int> TestDisplay::Size(Window window)
{
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display_, window, &attributes) == 0)
        return {0, 0};
    return {attributes.width, attributes.height};
}

unsigned long TestDisplay::Pixel(Window window, int x, int y)
{
    XImage* image = XGetImage(display_, window, x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr)
        return ~0UL;
    const unsigned long pixel = XGetPixel(image, 0, 0) & 0xFFFFFF;
    XDestroyImage(image);
    return pixel;
}

void TestDisplay::MoveTo(Window window, double x, double y)
{
    int rootX = 0, rootY = 0;
    Window child = 0;
    XTranslateCoordinates(display_, window, DefaultRootWindow(display_), static_cast<int>(std::lround(x)),
                          static_cast<int>(std::lround(y)), &rootX, &rootY, &child);
    XTestFakeMotionEvent(display_, DefaultScreen(display_), rootX, rootY, CurrentTime);
    XSync(display_, False);
}

void TestDisplay::Button(unsigned button, bool press)
{
    XTestFakeButtonEvent(display_, button, press ? True : False, CurrentTime);
    XSync(display_, False);
}

void TestDisplay::Click(unsigned button)
{
    Button(button, true);
    Button(button, false);
}

void TestDisplay::Key(unsigned long keysym, bool press)
{
    XTestFakeKeyEvent(display_, XKeysymToKeycode(display_, keysym), press ? True : False, CurrentTime);
    XSync(display_, False);
}

void TestDisplay::Type(unsigned long keysym)
{
    Key(keysym, true);
    Key(keysym, false);
}

bool TestDisplay::PumpUntil(const std::function<void()>& pump, const std::function<bool()>& done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        pump();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

void TestDisplay::PumpFor(const std::function<void()>& pump, int milliseconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < end) {
        pump();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace editorhost
