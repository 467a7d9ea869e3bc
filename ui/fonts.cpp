#include "ui/fonts.h"

#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdint>
#include <mutex>

extern "C" {
extern const uint8_t halvern_font_regular_begin[];
extern const uint8_t halvern_font_regular_end[];
extern const uint8_t halvern_font_semibold_begin[];
extern const uint8_t halvern_font_semibold_end[];
}

namespace halvern {
namespace {

struct LoadedFonts {
    FT_Library library = nullptr;
    cairo_font_face_t* regular = nullptr;
    cairo_font_face_t* semiBold = nullptr;
};

cairo_font_face_t* loadFace(FT_Library library, const uint8_t* begin, const uint8_t* end)
{
    FT_Face face = nullptr;
    if (FT_New_Memory_Face(library, begin, static_cast<FT_Long>(end - begin), 0, &face) != 0)
        return nullptr;
    cairo_font_face_t* cairoFace = cairo_ft_font_face_create_for_ft_face(face, 0);
    if (cairo_font_face_status(cairoFace) != CAIRO_STATUS_SUCCESS) {
        cairo_font_face_destroy(cairoFace);
        FT_Done_Face(face);
        return nullptr;
    }
    return cairoFace;
}

// Loaded on first use and kept until the process ends: hosts open and close editors many
// times, and the faces are shared by every editor of every instance.
const LoadedFonts& fonts()
{
    static LoadedFonts loaded;
    static std::once_flag once;
    std::call_once(once, [] {
        if (FT_Init_FreeType(&loaded.library) != 0)
            return;
        loaded.regular = loadFace(loaded.library, halvern_font_regular_begin, halvern_font_regular_end);
        loaded.semiBold = loadFace(loaded.library, halvern_font_semibold_begin, halvern_font_semibold_end);
        if (loaded.semiBold == nullptr)
            loaded.semiBold = loaded.regular;
    });
    return loaded;
}

} // namespace

cairo_font_face_t* UIFontFace(ZFontWeight weight)
{
    const LoadedFonts& loaded = fonts();
    return weight == ZFontWeight::SemiBold ? loaded.semiBold : loaded.regular;
}

} // namespace halvern
