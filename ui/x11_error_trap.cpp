#include "ui/x11_error_trap.h"

namespace halvern {

ZX11ErrorTrap* ZX11ErrorTrap::innermost_ = nullptr;

ZX11ErrorTrap::ZX11ErrorTrap(Display* display) : display_(display), outer_(innermost_)
{
    if (outer_ == nullptr)
        previous_ = XSetErrorHandler(&ZX11ErrorTrap::handle);
    innermost_ = this;
}

ZX11ErrorTrap::~ZX11ErrorTrap()
{
    XSync(display_, False);
    innermost_ = outer_;
    if (outer_ == nullptr)
        XSetErrorHandler(previous_);
}

bool ZX11ErrorTrap::Failed()
{
    XSync(display_, False);
    return failed_;
}

int ZX11ErrorTrap::handle(Display* display, XErrorEvent* error)
{
    ZX11ErrorTrap* outermost = innermost_;
    for (ZX11ErrorTrap* trap = innermost_; trap != nullptr; trap = trap->outer_) {
        if (trap->display_ == display) {
            trap->failed_ = true;
            return 0;
        }
        outermost = trap;
    }
    return outermost != nullptr && outermost->previous_ != nullptr ? outermost->previous_(display, error) : 0;
}

} // namespace halvern
