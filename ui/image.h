#pragma once

// PNG images through libpng's simplified interface, as cairo ARGB32 surfaces.

#include <cstddef>
#include <cstdint>
#include <string>

typedef struct _cairo_surface cairo_surface_t;

namespace halvern {

// A decoded image (the caller destroys it with cairo_surface_destroy), or null with the
// reason in error when the data is not a PNG image or is larger than 8192 pixels a side.
cairo_surface_t* LoadPNGImage(const uint8_t* data, size_t size, std::string& error);
cairo_surface_t* LoadPNGFile(const std::string& path, std::string& error);
// Writes an ARGB32 image surface as an RGBA PNG file; false on failure.
bool WritePNGImage(cairo_surface_t* surface, const std::string& path);

} // namespace halvern
