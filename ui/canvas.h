#pragma once

// ZCanvas: software drawing into a cairo ARGB32 image surface. Callers draw in logical
// units; the canvas scales them to device pixels. It collects the dirty rectangles that
// a window uploads after a repaint.

#include "ui/geometry.h"

#include <cstdint>
#include <string>
#include <vector>

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace halvern {

struct ZColor {
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
    double a = 1.0;

    // 0xRRGGBB, or 0xAARRGGBB when alpha is given separately as 0..1.
    static ZColor FromRGB(uint32_t rgb, double alpha = 1.0);
    ZColor withAlpha(double alpha) const { return {r, g, b, alpha}; }
    // Mixes toward another colour by t in 0..1.
    ZColor mixed(const ZColor& other, double t) const;
};

enum class ZFontWeight { Regular, SemiBold };

enum class ZTextAlign { Left, Center, Right };

struct ZTextStyle {
    double size = 12.0; // logical units
    ZFontWeight weight = ZFontWeight::Regular;
    ZColor color;
    bool italic = false; // drawn slanted from the upright face
};

class ZCanvas {
public:
    // A canvas of the given device pixel size drawing logical units times scale.
    ZCanvas(int pixelWidth, int pixelHeight, double scale);
    ~ZCanvas();
    ZCanvas(const ZCanvas&) = delete;
    ZCanvas& operator=(const ZCanvas&) = delete;

    int pixelWidth() const { return pixelWidth_; }
    int pixelHeight() const { return pixelHeight_; }
    double scale() const { return scale_; }
    double logicalWidth() const { return pixelWidth_ / scale_; }
    double logicalHeight() const { return pixelHeight_ / scale_; }

    // ---- state ----
    void Save();
    void Restore();
    // Intersects the clip with a rectangle (logical units).
    void ClipTo(const ZRect& rect);
    void Translate(double dx, double dy);

    // ---- shapes ----
    void FillRect(const ZRect& rect, const ZColor& color);
    void FillRoundedRect(const ZRect& rect, double radius, const ZColor& color);
    void StrokeRoundedRect(const ZRect& rect, double radius, const ZColor& color, double lineWidth);
    void StrokeRect(const ZRect& rect, const ZColor& color, double lineWidth);
    void Line(ZPoint from, ZPoint to, const ZColor& color, double lineWidth);
    void FillCircle(ZPoint center, double radius, const ZColor& color);
    void StrokeCircle(ZPoint center, double radius, const ZColor& color, double lineWidth);
    // An arc stroke from angle a0 to a1 (radians, 0 = right, clockwise on screen).
    void StrokeArc(ZPoint center, double radius, double a0, double a1, const ZColor& color, double lineWidth);
    // A polyline; closed fills and strokes the polygon.
    void StrokePolyline(const std::vector<ZPoint>& points, const ZColor& color, double lineWidth, bool closed = false);
    void FillPolygon(const std::vector<ZPoint>& points, const ZColor& color);

    // ---- text (the embedded UI font) ----
    // Width of a single line of text.
    double TextWidth(const std::string& utf8, const ZTextStyle& style) const;
    // Ascent and descent of the font at the style's size.
    double TextAscent(const ZTextStyle& style) const;
    double TextDescent(const ZTextStyle& style) const;
    // Draws one line with its baseline at y.
    void DrawText(const std::string& utf8, double x, double baselineY, const ZTextStyle& style);
    // Draws one line vertically centred in rect, aligned as asked, cut with an ellipsis
    // when it does not fit. Returns the width actually drawn.
    double DrawTextInRect(const std::string& utf8, const ZRect& rect, const ZTextStyle& style,
                          ZTextAlign align = ZTextAlign::Left);
    // The longest prefix of utf8 (at a character boundary) that fits width, with "…" when cut.
    std::string Elide(const std::string& utf8, double width, const ZTextStyle& style) const;

    // ---- images ----
    // Draws an ARGB32 premultiplied image (device-independent pixels) into rect.
    void DrawImage(cairo_surface_t* image, const ZRect& rect);

    // ---- dirty rectangles (logical units in, device pixels out) ----
    void MarkDirty(const ZRect& rect);
    bool HasDirty() const { return !dirty_.empty(); }
    // The dirty rectangles merged where they overlap, in device pixels, and forgets them.
    std::vector<ZRect> TakeDirtyPixels();
    const std::vector<ZRect>& dirtyRects() const { return dirty_; }

    // ---- pixels ----
    cairo_t* context() { return cr_; }
    cairo_surface_t* surface() { return surface_; }
    // Flushed pixel data, 4 bytes per pixel (B, G, R, A in memory on little-endian).
    const uint8_t* pixels();
    int stride() const;
    // Writes the canvas to a PNG file; false on failure.
    bool WritePNG(const std::string& path);

private:
    void roundedRectPath(const ZRect& rect, double radius);
    void setColor(const ZColor& color);
    void selectFont(const ZTextStyle& style) const;

    int pixelWidth_;
    int pixelHeight_;
    double scale_;
    cairo_surface_t* surface_ = nullptr;
    cairo_t* cr_ = nullptr;
    std::vector<ZRect> dirty_;
};

} // namespace halvern
