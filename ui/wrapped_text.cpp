#include "ui/wrapped_text.h"

#include "ui/ui_root.h"

#include <cmath>

namespace halvern {

namespace {

constexpr double kLineSpacing = 1.5; // line height in font sizes

void wrapParagraph(const ZCanvas& canvas, const std::string& paragraph, const ZTextStyle& style, double width,
                   std::vector<std::string>& lines)
{
    std::string line;
    size_t start = 0;
    while (start <= paragraph.size()) {
        size_t end = paragraph.find(' ', start);
        if (end == std::string::npos)
            end = paragraph.size();
        const std::string word = paragraph.substr(start, end - start);
        const std::string joined = line.empty() ? word : line + ' ' + word;
        if (!line.empty() && canvas.TextWidth(joined, style) > width) {
            lines.push_back(line);
            line = word;
        } else {
            line = joined;
        }
        start = end + 1;
    }
    lines.push_back(line);
}

} // namespace

std::vector<std::string> WrapText(const ZCanvas& canvas, const std::string& text, const ZTextStyle& style,
                                  double width)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        wrapParagraph(canvas, text.substr(start, end - start), style, width, lines);
        start = end + 1;
    }
    return lines;
}

ZWrappedText::ZWrappedText(std::string text) : text_(std::move(text))
{
}

void ZWrappedText::SetText(std::string text)
{
    if (text_ == text)
        return;
    text_ = std::move(text);
    Invalidate();
}

double ZWrappedText::lineHeight() const
{
    const ZUIRoot* r = root();
    return r != nullptr ? std::round(r->theme().fontSize * kLineSpacing) : 0.0;
}

double ZWrappedText::HeightForWidth(double width) const
{
    ZUIRoot* r = root();
    if (r == nullptr || text_.empty())
        return 0.0;
    return static_cast<double>(WrapText(r->canvas(), text_, r->theme().Text(), width).size()) * lineHeight();
}

void ZWrappedText::PaintSelf(ZCanvas& canvas)
{
    const ZTextStyle style = root()->theme().Text();
    const double step = lineHeight();
    double y = bounds().y;
    for (const std::string& line : WrapText(canvas, text_, style, bounds().width)) {
        if (y + step > bounds().bottom() + 0.5)
            break; // what does not fit is left out rather than drawn over what follows
        canvas.DrawTextInRect(line, {bounds().x, y, bounds().width, step}, style);
        y += step;
    }
}

} // namespace halvern
