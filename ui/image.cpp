#include "ui/image.h"

#include <cairo.h>
#include <png.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

namespace halvern {
namespace {

constexpr png_uint_32 kMaxSide = 8192;

// Premultiplied BGRA (cairo's ARGB32 in memory) from straight RGBA, and back.
void premultiply(const uint8_t* rgba, uint8_t* bgra, size_t pixels)
{
    for (size_t i = 0; i < pixels; ++i, rgba += 4, bgra += 4) {
        const unsigned a = rgba[3];
        bgra[0] = static_cast<uint8_t>((rgba[2] * a + 127) / 255);
        bgra[1] = static_cast<uint8_t>((rgba[1] * a + 127) / 255);
        bgra[2] = static_cast<uint8_t>((rgba[0] * a + 127) / 255);
        bgra[3] = static_cast<uint8_t>(a);
    }
}

void unpremultiply(const uint8_t* bgra, uint8_t* rgba, size_t pixels)
{
    for (size_t i = 0; i < pixels; ++i, rgba += 4, bgra += 4) {
        const unsigned a = bgra[3];
        for (int c = 0; c < 3; ++c)
            rgba[c] = a == 0 ? 0 : static_cast<uint8_t>(std::min(255u, (bgra[2 - c] * 255 + a / 2) / a));
        rgba[3] = static_cast<uint8_t>(a);
    }
}

} // namespace

cairo_surface_t* LoadPNGImage(const uint8_t* data, size_t size, std::string& error)
{
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, data, size)) {
        error = std::string("not a PNG image: ") + image.message;
        return nullptr;
    }
    if (image.width == 0 || image.height == 0 || image.width > kMaxSide || image.height > kMaxSide) {
        png_image_free(&image);
        error = "the image is larger than 8192 pixels a side";
        return nullptr;
    }
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> rgba(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr)) {
        error = std::string("damaged PNG image: ") + image.message;
        return nullptr;
    }
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(image.width),
                                                          static_cast<int>(image.height));
    cairo_surface_flush(surface);
    uint8_t* pixels = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (png_uint_32 row = 0; row < image.height; ++row)
        premultiply(rgba.data() + row * image.width * 4, pixels + row * stride, image.width);
    cairo_surface_mark_dirty(surface);
    return surface;
}

cairo_surface_t* LoadPNGFile(const std::string& path, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = "cannot open " + path;
        return nullptr;
    }
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return LoadPNGImage(bytes.data(), bytes.size(), error);
}

bool WritePNGImage(cairo_surface_t* surface, const std::string& path)
{
    if (surface == nullptr || cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32)
        return false;
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const uint8_t* pixels = cairo_image_surface_get_data(surface);
    std::vector<uint8_t> rgba(static_cast<size_t>(width) * height * 4);
    for (int row = 0; row < height; ++row)
        unpremultiply(pixels + row * stride, rgba.data() + static_cast<size_t>(row) * width * 4, width);
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    return png_image_write_to_file(&image, path.c_str(), 0, rgba.data(), 0, nullptr) != 0;
}

} // namespace halvern
