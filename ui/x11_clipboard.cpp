#include "ui/x11_clipboard.h"

#include "ui/x11_error_trap.h"

#include <X11/Xatom.h>

#include <poll.h>

#include <chrono>
#include <climits>

namespace halvern {
namespace {

std::string Latin1FromUtf8(const std::string& utf8)
{
    std::string latin1;
    for (size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80) {
            latin1.push_back(static_cast<char>(lead));
            ++i;
            continue;
        }
        const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (length == 2 && i + 1 < utf8.size() && lead <= 0xC3)
            latin1.push_back(static_cast<char>(((lead & 0x1F) << 6) | (static_cast<unsigned char>(utf8[i + 1]) & 0x3F)));
        else
            latin1.push_back('?');
        i += length;
    }
    return latin1;
}

std::string Utf8FromLatin1(const unsigned char* text, unsigned long length)
{
    std::string utf8;
    for (unsigned long i = 0; i < length; ++i) {
        if (text[i] < 0x80) {
            utf8.push_back(static_cast<char>(text[i]));
        } else {
            utf8.push_back(static_cast<char>(0xC0 | (text[i] >> 6)));
            utf8.push_back(static_cast<char>(0x80 | (text[i] & 0x3F)));
        }
    }
    return utf8;
}

} // namespace

ZX11Clipboard::ZX11Clipboard(Display* display, Window window)
    : display_(display), window_(window), clipboard_(XInternAtom(display, "CLIPBOARD", False)),
      utf8_(XInternAtom(display, "UTF8_STRING", False)), targets_(XInternAtom(display, "TARGETS", False)),
      transfer_(XInternAtom(display, "ZUI_SELECTION", False))
{
}

void ZX11Clipboard::SetText(const std::string& utf8)
{
    ZX11ErrorTrap trap(display_);
    text_ = utf8;
    XSetSelectionOwner(display_, clipboard_, window_, time_);
    owner_ = XGetSelectionOwner(display_, clipboard_) == window_;
}

std::string ZX11Clipboard::Text()
{
    if (owner_)
        return text_;
    ZX11ErrorTrap trap(display_);
    if (XGetSelectionOwner(display_, clipboard_) == 0)
        return {};
    XConvertSelection(display_, clipboard_, utf8_, transfer_, window_, time_);
    XEvent answer;
    if (!waitForAnswer(answer))
        return {};
    return readAnswer(answer.xselection);
}

// Looks for the owner's SelectionNotify, sleeping on the connection between looks, until
// it comes or the time is up. Other events stay queued for the window's next round.
bool ZX11Clipboard::waitForAnswer(XEvent& answer)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(kReadTimeout);
    for (;;) {
        if (XCheckTypedWindowEvent(display_, window_, SelectionNotify, &answer))
            return true;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return false;
        pollfd connection{ConnectionNumber(display_), POLLIN, 0};
        poll(&connection, 1, static_cast<int>(left));
    }
}

std::string ZX11Clipboard::readAnswer(const XSelectionEvent& answer)
{
    if (answer.property == 0)
        return {}; // the owner has no text
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, remaining = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display_, window_, answer.property, 0, LONG_MAX / 4, True, AnyPropertyType, &type, &format,
                           &items, &remaining, &data) != Success)
        return {};
    std::string text;
    if (data != nullptr && format == 8 && type == utf8_)
        text.assign(reinterpret_cast<const char*>(data), items);
    else if (data != nullptr && format == 8 && type == XA_STRING)
        text = Utf8FromLatin1(data, items);
    if (data != nullptr)
        XFree(data);
    return text;
}

bool ZX11Clipboard::HandleEvent(const XEvent& event)
{
    if (event.type == SelectionClear && event.xselectionclear.selection == clipboard_) {
        owner_ = false;
        return true;
    }
    if (event.type == SelectionRequest) {
        answer(event.xselectionrequest);
        return true;
    }
    return false;
}

// Puts what the requestor asked for into its property, or refuses with property None.
void ZX11Clipboard::answer(const XSelectionRequestEvent& request)
{
    XSelectionEvent reply{};
    reply.type = SelectionNotify;
    reply.display = display_;
    reply.requestor = request.requestor;
    reply.selection = request.selection;
    reply.target = request.target;
    reply.time = request.time;
    // Clients older than the conventions give no property and get the target's name.
    const Atom property = request.property != 0 ? request.property : request.target;
    if (owner_ && request.selection == clipboard_) {
        if (request.target == targets_) {
            const Atom offered[] = {targets_, utf8_, XA_STRING};
            XChangeProperty(display_, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(offered), 3);
            reply.property = property;
        } else if (request.target == utf8_ || request.target == XA_STRING) {
            const std::string text = request.target == utf8_ ? text_ : Latin1FromUtf8(text_);
            XChangeProperty(display_, request.requestor, property, request.target, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
            reply.property = property;
        }
    }
    XEvent event{};
    event.xselection = reply;
    XSendEvent(display_, request.requestor, False, NoEventMask, &event);
}

} // namespace halvern
