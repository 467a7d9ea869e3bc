#include "ui/x11_image_writer.h"

#include <X11/Xutil.h>

#include <bit>
#include <vector>

namespace halvern {
namespace {

constexpr unsigned long kRedMask = 0xFF0000, kGreenMask = 0x00FF00, kBlueMask = 0x0000FF;

// One 8-bit component scaled into the bits of a mask.
unsigned long Component(uint32_t value, unsigned long mask)
{
    if (mask == 0)
        return 0;
    const int shift = std::countr_zero(mask);
    const unsigned long top = mask >> shift;
    return ((value * top + 127) / 255) << shift;
}

int BitsPerPixel(Display* display, int depth)
{
    int count = 0;
    XPixmapFormatValues* formats = XListPixmapFormats(display, &count);
    int bits = 0;
    for (int i = 0; i < count; ++i)
        if (formats[i].depth == depth)
            bits = formats[i].bits_per_pixel;
    if (formats != nullptr)
        XFree(formats);
    return bits;
}

// An image header over memory the caller keeps; the pixels stay in native byte order
// and Xlib swaps them for a server that wants the other.
XImage* ImageOver(Display* display, Visual* visual, int depth, char* data, int width, int height, int stride)
{
    XImage* image = XCreateImage(display, visual, static_cast<unsigned>(depth), ZPixmap, 0, data,
                                 static_cast<unsigned>(width), static_cast<unsigned>(height), 32, stride);
    if (image != nullptr)
        image->byte_order = std::endian::native == std::endian::little ? LSBFirst : MSBFirst;
    return image;
}

void Release(XImage* image)
{
    image->data = nullptr; // the memory is not Xlib's
    XDestroyImage(image);
}

} // namespace

unsigned long PixelFromARGB(uint32_t argb, unsigned long redMask, unsigned long greenMask, unsigned long blueMask)
{
    return Component((argb >> 16) & 0xFF, redMask) | Component((argb >> 8) & 0xFF, greenMask) |
           Component(argb & 0xFF, blueMask);
}

bool ZX11ImageWriter::Init(Display* display, Visual* visual, int depth)
{
    display_ = display;
    visual_ = visual;
    depth_ = depth;
    if (visual == nullptr || visual->c_class != TrueColor)
        return false;
    direct_ = (depth == 24 || depth == 32) && visual->red_mask == kRedMask && visual->green_mask == kGreenMask &&
              visual->blue_mask == kBlueMask && BitsPerPixel(display, depth) == 32;
    return true;
}

void ZX11ImageWriter::Put(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width, int height) const
{
    if (width <= 0 || height <= 0)
        return;
    if (direct_)
        putDirect(target, gc, pixels, x, y, width, height);
    else
        putConverted(target, gc, pixels, x, y, width, height);
}

void ZX11ImageWriter::putDirect(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width, int height) const
{
    XImage* image = ImageOver(display_, visual_, depth_, const_cast<char*>(reinterpret_cast<const char*>(pixels.data)),
                              pixels.width, pixels.height, pixels.stride);
    if (image == nullptr)
        return;
    XPutImage(display_, target, gc, image, x, y, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height));
    Release(image);
}

void ZX11ImageWriter::putConverted(Drawable target, GC gc, const ZPixelBuffer& pixels, int x, int y, int width,
                                   int height) const
{
    XImage* image = ImageOver(display_, visual_, depth_, nullptr, width, height, 0);
    if (image == nullptr)
        return;
    std::vector<char> memory(static_cast<size_t>(image->bytes_per_line) * static_cast<size_t>(height));
    image->data = memory.data();
    for (int row = 0; row < height; ++row) {
        const auto* source = reinterpret_cast<const uint32_t*>(pixels.data + static_cast<size_t>(y + row) * pixels.stride) + x;
        for (int column = 0; column < width; ++column)
            XPutPixel(image, column, row, PixelFromARGB(source[column], visual_->red_mask, visual_->green_mask, visual_->blue_mask));
    }
    XPutImage(display_, target, gc, image, 0, 0, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height));
    Release(image);
}

} // namespace halvern
