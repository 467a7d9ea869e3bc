#pragma once

// ZX11ImageWriter: puts rectangles of a canvas's pixels (ARGB32, native byte order) into
// a window. On the usual TrueColor visuals with 8 bits per colour in 32-bit pixels the
// canvas's memory is sent as it is; other TrueColor visuals (16-bit ones) get each pixel
// converted through the visual's colour masks.

#include <X11/Xlib.h>

#include <cstdint>

namespace halvern {

// A canvas's pixel memory as the writer reads it.
struct ZPixelBuffer {
    const uint8_t* data = nullptr;
    int stride = 0; // bytes per row
    int width = 0;
    int height = 0;
};

class ZX11ImageWriter {
public:
    // Takes the window's visual; false when it is not TrueColor.
    bool Init(Display* display, Visual* visual, int depth);
    // Puts the rectangle (device pixels, inside the buffer) at the same place in target.
    void Put(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width, int height) const;

private:
    void putDirect(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width, int height) const;
    void putConverted(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width, int height) const;

    Display* display_ = nullptr;
    Visual* visual_ = nullptr;
    int depth_ = 0;
    bool direct_ = false;
};

// A canvas pixel (0xAARRGGBB, opaque) as a TrueColor pixel value with the given masks.
unsigned long PixelFromARGB(uint32_t argb, unsigned long redMask, unsigned long greenMask, unsigned long blueMask);

} // namespace halvern
