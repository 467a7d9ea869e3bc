#include "ui/window.h"

#include "ui/click_counter.h"
#include "ui/ui_root.h"
#include "ui/x11_clipboard.h"
#include "ui/x11_error_trap.h"
#include "ui/x11_image_writer.h"
#include "ui/x11_keys.h"

#include <X11/Xlib.h>
#include <X11/Xresource.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace halvern {
namespace {

constexpr long kEventMask = ExposureMask | StructureNotifyMask | ButtonPressMask | ButtonReleaseMask |
                            PointerMotionMask | EnterWindowMask | LeaveWindowMask | FocusChangeMask | KeyPressMask;
constexpr unsigned kButtonsHeld = Button1Mask | Button2Mask | Button3Mask;
constexpr size_t kCursorCount = static_cast<size_t>(ZCursor::Crosshair) + 1;

unsigned FontCursorShape(ZCursor cursor)
{
    switch (cursor) {
    case ZCursor::Hand:
        return XC_hand2;
    case ZCursor::VerticalResize:
        return XC_sb_v_double_arrow;
    case ZCursor::Move:
        return XC_fleur;
    case ZCursor::Text:
        return XC_xterm;
    case ZCursor::Crosshair:
        return XC_crosshair;
    case ZCursor::Arrow:
        break;
    }
    return XC_left_ptr;
}

ZMouseButton HeldButton(unsigned state)
{
    if ((state & Button1Mask) != 0)
        return ZMouseButton::Left;
    if ((state & Button2Mask) != 0)
        return ZMouseButton::Middle;
    if ((state & Button3Mask) != 0)
        return ZMouseButton::Right;
    return ZMouseButton{};
}

// Wheel buttons: 4 and 5 turn up and down, 6 and 7 left and right (right counts as up).
std::optional<double> WheelSteps(unsigned button)
{
    switch (button) {
    case 4:
    case 7:
        return 1.0;
    case 5:
    case 6:
        return -1.0;
    default:
        return std::nullopt;
    }
}

} // namespace

// Everything the window holds of the X server while open.
struct ZWindow::Connection {
    explicit Connection(Display* opened) : display(opened) {}

    Display* display;
    Window window = 0; // 0 once destroyed
    GC gc = nullptr;
    XIM inputMethod = nullptr;
    XIC inputContext = nullptr;
    ZX11ImageWriter writer;
    std::unique_ptr<ZX11Clipboard> clipboard;
    std::array<Cursor, kCursorCount> cursors{};
    std::optional<ZCursor> shownCursor;
    ZClickCounter clicks;
    int pixelWidth = 0;
    int pixelHeight = 0;

    // An input context turns key presses into UTF-8 text with the user's compose rules;
    // without one, keys give the text of their keysyms.
    void openInput()
    {
        inputMethod = XOpenIM(display, nullptr, nullptr, nullptr);
        if (inputMethod == nullptr)
            return;
        inputContext = XCreateIC(inputMethod, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow, window,
                                 XNFocusWindow, window, nullptr);
        long filtered = 0;
        if (inputContext != nullptr && XGetICValues(inputContext, XNFilterEvents, &filtered, nullptr) == nullptr)
            XSelectInput(display, window, kEventMask | filtered);
    }

    // Frees what the window made on the server; the connection stays.
    void destroy()
    {
        if (inputContext != nullptr)
            XDestroyIC(inputContext);
        if (inputMethod != nullptr)
            XCloseIM(inputMethod);
        for (Cursor cursor : cursors)
            if (cursor != 0)
                XFreeCursor(display, cursor);
        if (gc != nullptr)
            XFreeGC(display, gc);
        if (window != 0)
            XDestroyWindow(display, window);
        inputContext = nullptr;
        inputMethod = nullptr;
        cursors.fill(0);
        gc = nullptr;
        window = 0;
    }
};

ZWindow::ZWindow(ZUIRoot& root) : root_(root) {}

ZWindow::~ZWindow() { Close(); }

bool ZWindow::Open(unsigned long parent, int pixelWidth, int pixelHeight)
{
    Close();
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return false;
    x_ = std::make_unique<Connection>(display);
    bool opened = false;
    {
        ZX11ErrorTrap trap(display);
        XWindowAttributes parentAttributes{};
        if (XGetWindowAttributes(display, parent, &parentAttributes) != 0 && !trap.Failed() &&
            x_->writer.Init(display, parentAttributes.visual, parentAttributes.depth)) {
            XSetWindowAttributes attributes{};
            attributes.background_pixmap = 0; // none: no flash of a background before the first upload
            attributes.event_mask = kEventMask;
            x_->window = XCreateWindow(display, parent, 0, 0, static_cast<unsigned>(std::max(pixelWidth, 1)),
                                       static_cast<unsigned>(std::max(pixelHeight, 1)), 0, CopyFromParent, InputOutput,
                                       CopyFromParent, CWBackPixmap | CWEventMask, &attributes);
            x_->gc = XCreateGC(display, x_->window, 0, nullptr);
            x_->pixelWidth = pixelWidth;
            x_->pixelHeight = pixelHeight;
            x_->openInput();
            XMapWindow(display, x_->window);
            opened = !trap.Failed();
        }
        if (!opened)
            x_->destroy();
    }
    if (!opened) {
        closeConnection();
        return false;
    }
    x_->clipboard = std::make_unique<ZX11Clipboard>(display, x_->window);
    root_.SetClipboard(x_->clipboard.get());
    return true;
}

void ZWindow::Close()
{
    if (!x_)
        return;
    root_.SetClipboard(nullptr);
    {
        ZX11ErrorTrap trap(x_->display);
        x_->destroy();
    }
    closeConnection();
}

void ZWindow::closeConnection()
{
    XCloseDisplay(x_->display);
    x_.reset();
}

bool ZWindow::IsOpen() const { return x_ && x_->window != 0; }

int ZWindow::ConnectionFileDescriptor() const { return x_ ? XConnectionNumber(x_->display) : -1; }

void ZWindow::ProcessEvents()
{
    if (!x_)
        return;
    std::vector<ZRect> exposed;
    {
        ZX11ErrorTrap trap(x_->display);
        while (x_->window != 0 && XPending(x_->display) > 0) {
            XEvent event;
            XNextEvent(x_->display, &event);

            if (x_->inputContext != nullptr && XFilterEvent(&event, 0))
                continue;
            dispatch(event, exposed);
        }
        showCursor();
    }
    Upload(exposed);
}

void ZWindow::dispatch(XEvent& event, std::vector<ZRect>& exposed)
{
    switch (event.type) {
    case Expose:
        exposed.push_back({static_cast<double>(event.xexpose.x), static_cast<double>(event.xexpose.y),
                           static_cast<double>(event.xexpose.width), static_cast<double>(event.xexpose.height)});
        break;
    case ConfigureNotify:
        if (event.xconfigure.window == x_->window)
            configured(event.xconfigure.width, event.xconfigure.height);
        break;
    case DestroyNotify:
        if (event.xdestroywindow.window == x_->window) {
            // The host destroyed the parent and this window with it: nothing is left to
            // destroy, and a drag in progress is over.
            x_->window = 0;
            root_.CancelInteraction();
        }
        break;
    case ButtonPress:
        pressed(event);
        break;
    case ButtonRelease:
        released(event);
        break;
    case MotionNotify:
        moved(event.xmotion.x, event.xmotion.y, event.xmotion.state);
        break;
    case EnterNotify:
        moved(event.xcrossing.x, event.xcrossing.y, event.xcrossing.state);
        break;
    case LeaveNotify:
        left(event);
        break;
    case FocusIn:
        if (x_->inputContext != nullptr)
            XSetICFocus(x_->inputContext);
        break;
    case FocusOut:
        if (x_->inputContext != nullptr)
            XUnsetICFocus(x_->inputContext);
        // The keyboard went elsewhere; not when it moves into this window from the
        // pointer's default focus, or between this window and its own children.
        if (event.xfocus.mode == NotifyNormal && event.xfocus.detail != NotifyInferior &&
            event.xfocus.detail != NotifyPointer)
            root_.SetFocus(nullptr);
        break;
    case KeyPress:
        keyPressed(event);
        break;
    case MappingNotify:
        XRefreshKeyboardMapping(&event.xmapping);
        break;
    default:
        x_->clipboard->HandleEvent(event);
        break;
    }
}

void ZWindow::configured(int pixelWidth, int pixelHeight)
{
    if (pixelWidth == x_->pixelWidth && pixelHeight == x_->pixelHeight)
        return;
    x_->pixelWidth = pixelWidth;
    x_->pixelHeight = pixelHeight;
    if (resized_)
        resized_(pixelWidth, pixelHeight);
}

ZPoint ZWindow::logical(int x, int y) const { return {x / root_.scale(), y / root_.scale()}; }

void ZWindow::pressed(XEvent& event)
{
    const XButtonEvent& button = event.xbutton;
    x_->clipboard->SetTime(button.time);
    const ZPoint position = logical(button.x, button.y);
    const unsigned modifiers = ModifiersFromX(button.state);
    if (const std::optional<double> steps = WheelSteps(button.button)) {
        root_.Wheel({position, *steps, modifiers});
        return;
    }
    if (button.button < Button1 || button.button > Button3)
        return;
    ZMouseEvent mouse{position, static_cast<ZMouseButton>(button.button), modifiers,
                      x_->clicks.Press(static_cast<int>(button.button), static_cast<uint32_t>(button.time), button.x, button.y)};
    root_.MouseDown(mouse);
    takeKeyboardIfWanted(button.time);
}

// A view that takes keys (a text field, a dialog, a menu) needs the keyboard, which
// stays with the host otherwise.
void ZWindow::takeKeyboardIfWanted(unsigned long time)
{
    if ((root_.focused() != nullptr || root_.HasOverlays()) && x_->window != 0)
        XSetInputFocus(x_->display, x_->window, RevertToParent, time);
}

void ZWindow::released(XEvent& event)
{
    const XButtonEvent& button = event.xbutton;
    if (button.button < Button1 || button.button > Button3)
        return;
    root_.MouseUp({logical(button.x, button.y), static_cast<ZMouseButton>(button.button), ModifiersFromX(button.state), 1});
    takeKeyboardIfWanted(button.time); // a click may have opened a dialog or a menu
    const bool outside = button.x < 0 || button.y < 0 || button.x >= x_->pixelWidth || button.y >= x_->pixelHeight;
    if (outside)
        root_.MouseLeft(); // the drag ended outside, where no leave event comes any more
}

void ZWindow::moved(int x, int y, unsigned state)
{
    root_.MouseMove({logical(x, y), HeldButton(state), ModifiersFromX(state), 1});
}

void ZWindow::left(XEvent& event)
{
    const XCrossingEvent& crossing = event.xcrossing;
    if (crossing.mode == NotifyGrab)
        root_.CancelInteraction(); // another client took the pointer: no release will come
    else if ((crossing.state & kButtonsHeld) == 0)
        root_.MouseLeft();
}

void ZWindow::keyPressed(XEvent& event)
{
    x_->clipboard->SetTime(event.xkey.time);
    char buffer[64] = {};
    KeySym keysym = 0;
    std::string text;
    if (x_->inputContext != nullptr) {
        Status status = 0;
        const int length = Xutf8LookupString(x_->inputContext, &event.xkey, buffer, sizeof buffer - 1, &keysym, &status);
        if (status == XLookupChars || status == XLookupBoth)
            text.assign(buffer, static_cast<size_t>(std::max(length, 0)));
        if (status != XLookupKeySym && status != XLookupBoth)
            keysym = 0;
    } else {
        XLookupString(&event.xkey, buffer, sizeof buffer - 1, &keysym, nullptr);
        text = TextFromKeysym(keysym);
    }
    if (!IsModifierKey(keysym)) // a modifier alone is no key; it comes with the next one
        root_.Key(KeyEventFromX(keysym, text, event.xkey.state));
}

void ZWindow::showCursor()
{
    const ZCursor wanted = root_.cursor();
    if (x_->window == 0 || x_->shownCursor == wanted)
        return;
    Cursor& cursor = x_->cursors[static_cast<size_t>(wanted)];
    if (cursor == 0)
        cursor = XCreateFontCursor(x_->display, FontCursorShape(wanted));
    XDefineCursor(x_->display, x_->window, cursor);
    x_->shownCursor = wanted;
}

void ZWindow::Upload(const std::vector<ZRect>& pixelRects)
{
    if (!IsOpen() || pixelRects.empty())
        return;
    ZCanvas& canvas = root_.canvas();
    const ZPixelBuffer pixels{canvas.pixels(), canvas.stride(), canvas.pixelWidth(), canvas.pixelHeight()};
    const int right = std::min(pixels.width, x_->pixelWidth), bottom = std::min(pixels.height, x_->pixelHeight);
    ZX11ErrorTrap trap(x_->display);
    for (const ZRect& rect : pixelRects) {
        const int x0 = std::max(0, static_cast<int>(std::floor(rect.x)));
        const int y0 = std::max(0, static_cast<int>(std::floor(rect.y)));
        const int x1 = std::min(right, static_cast<int>(std::ceil(rect.right())));
        const int y1 = std::min(bottom, static_cast<int>(std::ceil(rect.bottom())));
        x_->writer.Put(x_->window, x_->gc, pixels, x0, y0, x1 - x0, y1 - y0);
    }
}

void ZWindow::SetPixelSize(int pixelWidth, int pixelHeight)
{
    if (!IsOpen() || (pixelWidth == x_->pixelWidth && pixelHeight == x_->pixelHeight))
        return;
    x_->pixelWidth = pixelWidth;
    x_->pixelHeight = pixelHeight;
    ZX11ErrorTrap trap(x_->display);
    XResizeWindow(x_->display, x_->window, static_cast<unsigned>(std::max(pixelWidth, 1)),
                  static_cast<unsigned>(std::max(pixelHeight, 1)));
}

double SystemContentScale()
{
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return 1.0;
    double scale = 1.0;
    if (const char* resources = XResourceManagerString(display)) {
        XrmInitialize();
        if (XrmDatabase database = XrmGetStringDatabase(resources)) {
            char* type = nullptr;
            XrmValue value{};
            if (XrmGetResource(database, "Xft.dpi", "Xft.Dpi", &type, &value) && value.addr != nullptr)
                scale = std::clamp(std::atof(value.addr) / 96.0, 1.0, 4.0);
            XrmDestroyDatabase(database);
        }
    }
    XCloseDisplay(display);
    return scale;
}

} // namespace halvern
