#pragma once

// The UI font (two faces of Inter, embedded in the library) as cairo font faces, loaded
// through FreeType from memory once per process and kept for its life.

#include "ui/canvas.h"

typedef struct _cairo_font_face cairo_font_face_t;

namespace halvern {

// The face for a weight; null only when FreeType cannot read the embedded font.
cairo_font_face_t* UIFontFace(ZFontWeight weight);

} // namespace halvern
