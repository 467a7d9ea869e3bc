#pragma once

// ZX11ErrorTrap: catches the X errors one connection's requests cause while it lives.
// Xlib has one error handler for the whole process and the host has its own, so ours is
// installed only around our own calls and the previous one is put back after them; the
// destructor syncs first, so every error our requests cause arrives while it is in place.
// Traps nest; errors of other connections go on to the handler that was there before.

#include <X11/Xlib.h>

namespace halvern {

class ZX11ErrorTrap {
public:
    explicit ZX11ErrorTrap(Display* display);
    ~ZX11ErrorTrap();
    ZX11ErrorTrap(const ZX11ErrorTrap&) = delete;
    ZX11ErrorTrap& operator=(const ZX11ErrorTrap&) = delete;

    // Syncs with the server and says whether any request failed since the trap was set.
    bool Failed();

private:
    static int handle(Display* display, XErrorEvent* error);

    static ZX11ErrorTrap* innermost_;

    Display* display_;
    ZX11ErrorTrap* outer_;
    XErrorHandler previous_ = nullptr;
    bool failed_ = false;
};

} // namespace halvern
