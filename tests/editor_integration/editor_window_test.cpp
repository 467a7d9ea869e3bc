#include "editor/editor_frame.h"
#include "ui/click_counter.h"
#include "ui/ui_root.h"
#include "ui/window.h"
#include "ui/x11_keys.h"
#include "x11_test_display.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <string>
#include <thread>
#include <vector>

// Xlib comes last: its macros (None, Bool) would clash with the headers above.
#include "ui/x11_image_writer.h"

#include <X11/Xatom.h>
#include <X11/keysym.h>

namespace {

using editorhost::TestDisplay;
using namespace halvern;

constexpr uint32_t kProbeColour = 0x336699;

struct ProbeLog {
    int built = 0;
    int destroyed = 0;
    std::vector<int> clickCounts;
    std::vector<double> wheelSteps;
    std::vector<ZKeyEvent> keys;
};

// Fills its bounds with one colour and records what reaches it.
class Probe : public ZView {
public:
    explicit Probe(ProbeLog& log) : log_(log) { ++log_.built; }
    ~Probe() override { ++log_.destroyed; }
    bool AcceptsMouse() const override { return true; }
    bool AcceptsFocus() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override
    {
        log_.clickCounts.push_back(event.clickCount);
        return true;
    }
    bool OnWheel(const ZWheelEvent& event) override
    {
        log_.wheelSteps.push_back(event.steps);
        return true;
    }
    bool OnKey(const ZKeyEvent& event) override
    {
        log_.keys.push_back(event);
        return true;
    }

protected:
    void PaintSelf(ZCanvas& canvas) override { canvas.FillRect(bounds(), ZColor::FromRGB(kProbeColour)); }

private:
    ProbeLog& log_;
};

class GrantingHost : public ZEditorHost {
public:
    void BeginEdit(int32_t) override {}
    void PerformEdit(int32_t, double) override {}
    void EndEdit(int32_t) override {}
    bool RequestResize(ZEditorSize) override { return true; }
};

class EditorWindow : public testing::Test {
protected:
    std::unique_ptr<ZEditorFrame> makeFrame()
    {
        auto frame = std::make_unique<ZEditorFrame>(
            host, 400, 300, [this](ZUIRoot&) { return std::make_unique<Probe>(log); },
            [this](bool open) { openEvents.push_back(open); });
        frame->SetContentScale(1.0);
        return frame;
    }
    Window childOf(Window parent)
    {
        const std::vector<Window> children = display.Children(parent);
        return children.empty() ? 0 : children.front();
    }

    TestDisplay display;
    GrantingHost host;
    ProbeLog log;
    std::vector<bool> openEvents;
};

int hostErrors = 0;
int CountingHostHandler(Display*, XErrorEvent*)
{
    ++hostErrors;
    return 0;
}

TEST_F(EditorWindow, DrawsItsContentWhichLivesOnlyWhileOpenAndSurvivesItsParent)
{
    auto frame = makeFrame();
    EXPECT_EQ(log.built, 0) << "a closed editor builds no content";
    EXPECT_FALSE(frame->Open(0)) << "no parent window";
    const Window parent = display.CreateParent(0, 0, 400, 300);
    ASSERT_TRUE(frame->Open(parent));
    EXPECT_EQ(log.built, 1);
    EXPECT_EQ(openEvents, std::vector<bool>{true});
    const Window editor = childOf(parent);
    ASSERT_NE(editor, 0u);
    TestDisplay::PumpFor([&] { frame->Idle(); }, 60);
    EXPECT_EQ(display.Pixel(editor, 50, 50), kProbeColour) << "the canvas reaches the window";
    frame->Close();
    EXPECT_EQ(log.destroyed, 1);
    EXPECT_EQ(openEvents, (std::vector<bool>{true, false}));
    EXPECT_TRUE(display.Children(parent).empty());
    // The host destroys its window under the open editor: no X error reaches the host.
    ASSERT_TRUE(frame->Open(parent));
    const XErrorHandler hostHandler = XSetErrorHandler(CountingHostHandler);
    hostErrors = 0;
    display.Destroy(parent);
    TestDisplay::PumpFor([&] { frame->Idle(); }, 60);
    frame->SetSize({600, 450});
    frame->Close();
    XSync(display.display(), False);
    EXPECT_EQ(hostErrors, 0);
    XSetErrorHandler(hostHandler);
    EXPECT_EQ(log.destroyed, 2);
}

// Reads the CLIPBOARD selection as another client does, pumping the editor meanwhile.
std::string AskForSelection(TestDisplay& display, Window requestor, const char* target, ZEditorFrame& frame)
{
    Display* x = display.display();
    const Atom property = XInternAtom(x, "TEST_SELECTION", False);
    XConvertSelection(x, XInternAtom(x, "CLIPBOARD", False), XInternAtom(x, target, False), property, requestor,
                      CurrentTime);
    XFlush(x);
    XEvent answer{};
    TestDisplay::PumpUntil([&] { frame.Idle(); },
                           [&] { return XCheckTypedWindowEvent(x, requestor, SelectionNotify, &answer) != 0; });
    if (answer.type != SelectionNotify || answer.xselection.property == 0)
        return {};
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, remaining = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(x, requestor, property, 0, LONG_MAX / 4, True, AnyPropertyType, &type, &format, &items,
                       &remaining, &data);
    const std::string bytes(reinterpret_cast<const char*>(data), items);
    XFree(data);
    return bytes;
}

TEST_F(EditorWindow, PointerWheelKeysAndTheClipboardReachTheViews)
{
    auto frame = makeFrame();
    const Window parent = display.CreateParent(0, 0, 400, 300);
    ASSERT_TRUE(frame->Open(parent));
    auto pump = [&] { frame->Idle(); };
    TestDisplay::PumpFor(pump, 30);
    display.MoveTo(childOf(parent), 100, 100);
    display.Click(1);
    display.Click(1);
    display.Click(4);
    display.Click(5);
    ASSERT_TRUE(TestDisplay::PumpUntil(pump, [&] { return log.wheelSteps.size() == 2; }));
    EXPECT_EQ(log.clickCounts, (std::vector<int>{1, 2}));
    EXPECT_EQ(log.wheelSteps, (std::vector<double>{1.0, -1.0}));
    // The press gave the probe the focus, and with it the keyboard.
    display.Type(XK_a);
    display.Key(XK_Shift_L, true);
    display.Type(XK_b);
    display.Key(XK_Shift_L, false);
    display.Type(XK_Return);
    ASSERT_TRUE(TestDisplay::PumpUntil(pump, [&] { return log.keys.size() == 3; }));
    EXPECT_EQ(log.keys[0].text, "a");
    EXPECT_EQ(log.keys[1].text, "B");
    EXPECT_EQ(log.keys[1].modifiers, kModifierShift);
    EXPECT_EQ(log.keys[2].key, ZKey::Enter);
    // The clipboard is the X selection, both ways.
    frame->root()->clipboard().SetText("Größe 1.5 dB");
    const Window requestor = display.CreateParent(500, 0, 10, 10);
    EXPECT_EQ(AskForSelection(display, requestor, "UTF8_STRING", *frame), "Größe 1.5 dB");
    EXPECT_EQ(AskForSelection(display, requestor, "STRING", *frame), "Gr\xF6\xDF" "e 1.5 dB");
    // Another client owns the selection (on a thread of its own, as another program would).
    std::atomic<bool> owning{false}, done{false};
    std::thread owner([&] {
        Display* x = XOpenDisplay(nullptr);
        const Window window = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, 1, 1, 0, 0, 0);
        const Atom clipboard = XInternAtom(x, "CLIPBOARD", False), utf8 = XInternAtom(x, "UTF8_STRING", False);
        XSetSelectionOwner(x, clipboard, window, CurrentTime);
        XSync(x, False);
        owning = true;
        const std::string text = "from elsewhere ✓";
        while (!done) {
            XEvent event;
            if (!XCheckTypedWindowEvent(x, window, SelectionRequest, &event)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                continue;
            }
            const XSelectionRequestEvent& request = event.xselectionrequest;
            XEvent reply{};
            reply.xselection = {SelectionNotify, 0, True, x, request.requestor, request.selection, request.target,
                                request.target == utf8 ? request.property : 0, request.time};
            if (request.target == utf8)
                XChangeProperty(x, request.requestor, request.property, utf8, 8, PropModeReplace,
                                reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
            XSendEvent(x, request.requestor, False, NoEventMask, &reply);
            XFlush(x);
        }
        XDestroyWindow(x, window);
        XCloseDisplay(x);
    });
    while (!owning)
        std::this_thread::yield();
    TestDisplay::PumpFor(pump, 30); // the editor hears that it lost the selection
    EXPECT_EQ(frame->root()->clipboard().Text(), "from elsewhere ✓");
    done = true;
    owner.join();
    frame->Close();
    display.Destroy(requestor);
    display.Destroy(parent);
}

TEST_F(EditorWindow, WithoutTheHostsScaleTheDesktopsDecides)
{
    Display* x = display.display();
    const std::string resources = "Xft.antialias:\t1\nXft.dpi:\t144\n";
    XChangeProperty(x, DefaultRootWindow(x), XA_RESOURCE_MANAGER, XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(resources.data()), static_cast<int>(resources.size()));
    XSync(x, False);
    EXPECT_DOUBLE_EQ(SystemContentScale(), 1.5);
    ZEditorFrame desktopScaled(host, 400, 300, nullptr, nullptr);
    EXPECT_EQ(desktopScaled.Size().width, 600);
    XDeleteProperty(x, DefaultRootWindow(x), XA_RESOURCE_MANAGER);
    XSync(x, False);
    EXPECT_DOUBLE_EQ(SystemContentScale(), 1.0);
}

TEST(X11Input, ClicksKeysAndPixelsConvert)
{
    ZClickCounter clicks;
    EXPECT_EQ(clicks.Press(1, 1000, 10, 10), 1);
    EXPECT_EQ(clicks.Press(1, 1400, 13, 6), 2);
    EXPECT_EQ(clicks.Press(1, 1500, 13, 6), 1) << "a third press starts again";
    EXPECT_EQ(clicks.Press(1, 1600, 18, 6), 1) << "too far";
    EXPECT_EQ(clicks.Press(1, 2001, 18, 6), 1) << "too late";
    EXPECT_EQ(clicks.Press(1, 0xFFFFFF00u, 0, 0), 1);
    EXPECT_EQ(clicks.Press(1, 0x50, 0, 0), 2) << "across the server clock's wrap";
    EXPECT_EQ(KeyEventFromX(XK_KP_Enter, "\r", 0).key, ZKey::Enter);
    EXPECT_EQ(KeyEventFromX(XK_ISO_Left_Tab, "", ShiftMask).key, ZKey::Tab);
    const ZKeyEvent copy = KeyEventFromX(XK_c, "\x03", ControlMask | Mod1Mask);
    EXPECT_EQ(copy.key, ZKey::Character);
    EXPECT_EQ(copy.text, "c");
    EXPECT_EQ(copy.modifiers, kModifierControl | kModifierAlt);
    EXPECT_EQ(KeyEventFromX(XK_dead_acute, "é", 0).text, "é") << "composed text wins over the keysym";
    EXPECT_EQ(TextFromKeysym(0x10020AC), "€");
    EXPECT_EQ(TextFromKeysym(XK_Shift_L), "");
    EXPECT_EQ(PixelFromARGB(0xFF336699, 0xF800, 0x07E0, 0x001F), (6u << 11) | (25u << 5) | 19u);
    EXPECT_EQ(PixelFromARGB(0xFFFFFFFF, 0xF800, 0x07E0, 0x001F), 0xFFFFu);
}

} // namespace
