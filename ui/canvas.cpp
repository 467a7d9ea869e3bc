#include "ui/canvas.h"

#include "core/utf8.h"
#include "ui/fonts.h"
#include "ui/image.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>

namespace halvern {

ZColor ZColor::FromRGB(uint32_t rgb, double alpha)
{
    return {((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, alpha};
}

ZColor ZColor::mixed(const ZColor& other, double t) const
{
    return {r + (other.r - r) * t, g + (other.g - g) * t, b + (other.b - b) * t, a + (other.a - a) * t};
}

ZCanvas::ZCanvas(int pixelWidth, int pixelHeight, double scale)
    : pixelWidth_(std::max(1, pixelWidth)), pixelHeight_(std::max(1, pixelHeight)), scale_(scale > 0.0 ? scale : 1.0)
{
    surface_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixelWidth_, pixelHeight_);
    cr_ = cairo_create(surface_);
    cairo_scale(cr_, scale_, scale_);
    // Metrics unhinted, so text measures the same at every scale and layouts stay put.
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(cr_, options);
    cairo_font_options_destroy(options);
}

ZCanvas::~ZCanvas()
{
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
}

void ZCanvas::Save() { cairo_save(cr_); }
void ZCanvas::Restore() { cairo_restore(cr_); }

void ZCanvas::ClipTo(const ZRect& rect)
{
    cairo_rectangle(cr_, rect.x, rect.y, std::max(0.0, rect.width), std::max(0.0, rect.height));
    cairo_clip(cr_);
}

void ZCanvas::Translate(double dx, double dy) { cairo_translate(cr_, dx, dy); }

void ZCanvas::setColor(const ZColor& color) { cairo_set_source_rgba(cr_, color.r, color.g, color.b, color.a); }

void ZCanvas::FillRect(const ZRect& rect, const ZColor& color)
{
    setColor(color);
    cairo_rectangle(cr_, rect.x, rect.y, rect.width, rect.height);
    cairo_fill(cr_);
}

void ZCanvas::StrokeRect(const ZRect& rect, const ZColor& color, double lineWidth)
{
    setColor(color);
    cairo_set_line_width(cr_, lineWidth);
    const double h = lineWidth / 2;
    cairo_rectangle(cr_, rect.x + h, rect.y + h, rect.width - lineWidth, rect.height - lineWidth);
    cairo_stroke(cr_);
}

void ZCanvas::roundedRectPath(const ZRect& rect, double radius)
{
    const double r = std::clamp(radius, 0.0, std::min(rect.width, rect.height) / 2);
    cairo_new_sub_path(cr_);
    cairo_arc(cr_, rect.right() - r, rect.y + r, r, -M_PI / 2, 0);
    cairo_arc(cr_, rect.right() - r, rect.bottom() - r, r, 0, M_PI / 2);
    cairo_arc(cr_, rect.x + r, rect.bottom() - r, r, M_PI / 2, M_PI);
    cairo_arc(cr_, rect.x + r, rect.y + r, r, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr_);
}

void ZCanvas::FillRoundedRect(const ZRect& rect, double radius, const ZColor& color)
{
    if (rect.empty())
        return;
    setColor(color);
    roundedRectPath(rect, radius);
    cairo_fill(cr_);
}

void ZCanvas::StrokeRoundedRect(const ZRect& rect, double radius, const ZColor& color, double lineWidth)
{
    if (rect.empty())
        return;
    setColor(color);
    cairo_set_line_width(cr_, lineWidth);
    roundedRectPath(rect.inset(lineWidth / 2, lineWidth / 2), radius);
    cairo_stroke(cr_);
}

void ZCanvas::Line(ZPoint from, ZPoint to, const ZColor& color, double lineWidth)
{
    setColor(color);
    cairo_set_line_width(cr_, lineWidth);
    cairo_move_to(cr_, from.x, from.y);
    cairo_line_to(cr_, to.x, to.y);
    cairo_stroke(cr_);
}

void ZCanvas::FillCircle(ZPoint center, double radius, const ZColor& color)
{
    setColor(color);
    cairo_new_sub_path(cr_);
    cairo_arc(cr_, center.x, center.y, radius, 0, 2 * M_PI);
    cairo_fill(cr_);
}

void ZCanvas::StrokeCircle(ZPoint center, double radius, const ZColor& color, double lineWidth)
{
    StrokeArc(center, radius, 0, 2 * M_PI, color, lineWidth);
}

void ZCanvas::StrokeArc(ZPoint center, double radius, double a0, double a1, const ZColor& color, double lineWidth)
{
    setColor(color);
    cairo_set_line_width(cr_, lineWidth);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
    cairo_new_sub_path(cr_);
    cairo_arc(cr_, center.x, center.y, radius, a0, a1);
    cairo_stroke(cr_);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_BUTT);
}

void ZCanvas::StrokePolyline(const std::vector<ZPoint>& points, const ZColor& color, double lineWidth, bool closed)
{
    if (points.size() < 2)
        return;
    setColor(color);
    cairo_set_line_width(cr_, lineWidth);
    cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
    cairo_move_to(cr_, points[0].x, points[0].y);
    for (size_t i = 1; i < points.size(); ++i)
        cairo_line_to(cr_, points[i].x, points[i].y);
    if (closed)
        cairo_close_path(cr_);
    cairo_stroke(cr_);
}

void ZCanvas::FillPolygon(const std::vector<ZPoint>& points, const ZColor& color)
{
    if (points.size() < 3)
        return;
    setColor(color);
    cairo_move_to(cr_, points[0].x, points[0].y);
    for (size_t i = 1; i < points.size(); ++i)
        cairo_line_to(cr_, points[i].x, points[i].y);
    cairo_close_path(cr_);
    cairo_fill(cr_);
}

void ZCanvas::selectFont(const ZTextStyle& style) const
{
    cairo_set_font_face(cr_, UIFontFace(style.weight));
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, style.size, style.size);
    if (style.italic)
        matrix.xy = -0.2 * style.size; // a slanted upright face
    cairo_set_font_matrix(cr_, &matrix);
}

double ZCanvas::TextWidth(const std::string& utf8, const ZTextStyle& style) const
{
    if (utf8.empty())
        return 0.0;
    selectFont(style);
    cairo_text_extents_t extents;
    cairo_text_extents(cr_, utf8.c_str(), &extents);
    return extents.x_advance;
}

double ZCanvas::TextAscent(const ZTextStyle& style) const
{
    selectFont(style);
    cairo_font_extents_t extents;
    cairo_font_extents(cr_, &extents);
    return extents.ascent;
}

double ZCanvas::TextDescent(const ZTextStyle& style) const
{
    selectFont(style);
    cairo_font_extents_t extents;
    cairo_font_extents(cr_, &extents);
    return extents.descent;
}

void ZCanvas::DrawText(const std::string& utf8, double x, double baselineY, const ZTextStyle& style)
{
    if (utf8.empty())
        return;
    selectFont(style);
    setColor(style.color);
    cairo_move_to(cr_, x, baselineY);
    cairo_show_text(cr_, utf8.c_str());
    cairo_new_path(cr_);
}


std::string ZCanvas::Elide(const std::string& utf8, double width, const ZTextStyle& style) const
{
    if (TextWidth(utf8, style) <= width)
        return utf8;
    static const std::string ellipsis = "\u2026";
    std::string best;
    for (size_t end = 0; end < utf8.size();) {
        end = NextCharacter(utf8, end);
        std::string candidate = utf8.substr(0, end) + ellipsis;
        if (TextWidth(candidate, style) > width)
            break;
        best = std::move(candidate);
    }
    return best;
}

double ZCanvas::DrawTextInRect(const std::string& utf8, const ZRect& rect, const ZTextStyle& style, ZTextAlign align)
{
    const std::string shown = Elide(utf8, rect.width, style);
    const double width = TextWidth(shown, style);
    double x = rect.x;
    if (align == ZTextAlign::Center)
        x = rect.x + (rect.width - width) / 2;
    else if (align == ZTextAlign::Right)
        x = rect.right() - width;
    const double ascent = TextAscent(style);
    const double descent = TextDescent(style);
    DrawText(shown, x, rect.y + (rect.height + ascent - descent) / 2, style);
    return width;
}

void ZCanvas::DrawImage(cairo_surface_t* image, const ZRect& rect)
{
    if (image == nullptr || cairo_surface_status(image) != CAIRO_STATUS_SUCCESS)
        return;
    const int w = cairo_image_surface_get_width(image);
    const int h = cairo_image_surface_get_height(image);
    if (w <= 0 || h <= 0)
        return;
    cairo_save(cr_);
    cairo_translate(cr_, rect.x, rect.y);
    cairo_scale(cr_, rect.width / w, rect.height / h);
    cairo_set_source_surface(cr_, image, 0, 0);
    cairo_paint(cr_);
    cairo_restore(cr_);
}

void ZCanvas::MarkDirty(const ZRect& rect)
{
    const ZRect clipped = rect.intersection({0, 0, logicalWidth(), logicalHeight()});
    if (clipped.empty())
        return;
    // Overlapping rectangles merge, so a repaint never draws one area twice.
    ZRect merged = clipped;
    for (bool grown = true; grown;) {
        grown = false;
        for (auto it = dirty_.begin(); it != dirty_.end(); ++it) {
            if (it->intersects(merged)) {
                merged = merged.united(*it);
                dirty_.erase(it);
                grown = true;
                break;
            }
        }
    }
    dirty_.push_back(merged);
}

std::vector<ZRect> ZCanvas::TakeDirtyPixels()
{
    std::vector<ZRect> pixels;
    pixels.reserve(dirty_.size());
    for (const ZRect& r : dirty_) {
        const double x0 = std::floor(r.x * scale_), y0 = std::floor(r.y * scale_);
        const double x1 = std::min<double>(pixelWidth_, std::ceil(r.right() * scale_));
        const double y1 = std::min<double>(pixelHeight_, std::ceil(r.bottom() * scale_));
        if (x1 > x0 && y1 > y0)
            pixels.push_back({x0, y0, x1 - x0, y1 - y0});
    }
    dirty_.clear();
    return pixels;
}

const uint8_t* ZCanvas::pixels()
{
    cairo_surface_flush(surface_);
    return cairo_image_surface_get_data(surface_);
}

int ZCanvas::stride() const { return cairo_image_surface_get_stride(surface_); }

bool ZCanvas::WritePNG(const std::string& path) { return WritePNGImage(surface_, path); }

} // namespace halvern
