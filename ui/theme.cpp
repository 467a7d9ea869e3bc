#include "ui/theme.h"

#include "core/z_exception.h"
#include "state/zml_reader.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace halvern {

ZTextStyle ZTheme::Text(double size) const { return {size > 0.0 ? size : fontSize, ZFontWeight::Regular, text}; }
ZTextStyle ZTheme::Label() const { return {smallFontSize, ZFontWeight::Regular, textDim}; }
ZTextStyle ZTheme::Value() const { return {smallFontSize, ZFontWeight::SemiBold, text}; }
ZTextStyle ZTheme::Title() const { return {titleFontSize, ZFontWeight::SemiBold, text}; }

ZTheme ZTheme::Default()
{
    // Dark surfaces, one cyan accent; text on panels stays above 7:1 and dim text above
    // 4.5:1 contrast.
    ZTheme theme;
    theme.background = ZColor::FromRGB(0x17191D);
    theme.panel = ZColor::FromRGB(0x22262C);
    theme.panelBorder = ZColor::FromRGB(0x333941);
    theme.header = ZColor::FromRGB(0x2A2F37);
    theme.text = ZColor::FromRGB(0xE8EBEF);
    theme.textDim = ZColor::FromRGB(0xA3ACB8);
    theme.accent = ZColor::FromRGB(0x4FC3D4);
    theme.accentText = ZColor::FromRGB(0x0E1418);
    theme.track = ZColor::FromRGB(0x3A414B);
    theme.control = ZColor::FromRGB(0x2F353E);
    theme.controlHover = ZColor::FromRGB(0x3A414C);
    theme.popup = ZColor::FromRGB(0x2A2F36);
    theme.popupBorder = ZColor::FromRGB(0x4A5361);
    theme.highlight = ZColor::FromRGB(0x2F5560);
    theme.meterLow = ZColor::FromRGB(0x4CC38A);
    theme.meterHigh = ZColor::FromRGB(0xE3C04F);
    theme.meterClip = ZColor::FromRGB(0xE5534B);
    theme.source = ZColor::FromRGB(0xF0A04B);
    theme.microphone = ZColor::FromRGB(0x4FC3D4);
    theme.modulation = ZColor::FromRGB(0xF0A04B);
    theme.error = ZColor::FromRGB(0xE5534B);
    return theme;
}

namespace {

std::map<std::string, ZColor ZTheme::*> colorItems()
{
    return {{"background", &ZTheme::background}, {"panel", &ZTheme::panel},
            {"panelBorder", &ZTheme::panelBorder}, {"header", &ZTheme::header},
            {"text", &ZTheme::text},             {"textDim", &ZTheme::textDim},
            {"accent", &ZTheme::accent},         {"accentText", &ZTheme::accentText},
            {"track", &ZTheme::track},           {"control", &ZTheme::control},
            {"controlHover", &ZTheme::controlHover}, {"popup", &ZTheme::popup},
            {"popupBorder", &ZTheme::popupBorder}, {"highlight", &ZTheme::highlight},
            {"meterLow", &ZTheme::meterLow},     {"meterHigh", &ZTheme::meterHigh},
            {"meterClip", &ZTheme::meterClip},   {"source", &ZTheme::source},
            {"microphone", &ZTheme::microphone},
            {"modulation", &ZTheme::modulation}, {"error", &ZTheme::error}};
}

struct SizeItem {
    double ZTheme::*member;
    double minimum;
    double maximum;
};

std::map<std::string, SizeItem> sizeItems()
{
    return {{"fontSize", {&ZTheme::fontSize, 6, 32}},
            {"smallFontSize", {&ZTheme::smallFontSize, 6, 32}},
            {"titleFontSize", {&ZTheme::titleFontSize, 6, 40}},
            {"logoFontSize", {&ZTheme::logoFontSize, 6, 48}},
            {"radius", {&ZTheme::radius, 0, 20}},
            {"spacing", {&ZTheme::spacing, 0, 40}},
            {"padding", {&ZTheme::padding, 0, 40}},
            {"knobSize", {&ZTheme::knobSize, 20, 120}},
            {"rowHeight", {&ZTheme::rowHeight, 14, 60}},
            {"lineWidth", {&ZTheme::lineWidth, 0.25, 6}},
            {"valueLineWidth", {&ZTheme::valueLineWidth, 0.5, 12}},
            {"dragPixelsFullRange", {&ZTheme::dragPixelsFullRange, 20, 2000}},
            {"fineFactor", {&ZTheme::fineFactor, 0.001, 1}},
            {"wheelStep", {&ZTheme::wheelStep, 0.0001, 0.5}},
            {"wheelScroll", {&ZTheme::wheelScroll, 1, 400}},
            {"labelHeight", {&ZTheme::labelHeight, 8, 40}},
            {"textInset", {&ZTheme::textInset, 0, 20}},
            {"handleRadius", {&ZTheme::handleRadius, 2, 20}},
            {"switchWidth", {&ZTheme::switchWidth, 12, 80}},
            {"switchHeight", {&ZTheme::switchHeight, 8, 40}},
            {"scrollBarWidth", {&ZTheme::scrollBarWidth, 1, 16}}};
}

// "#RRGGBB" or "#RRGGBBAA".
bool parseColor(const std::string& text, ZColor& color)
{
    if ((text.size() != 7 && text.size() != 9) || text[0] != '#')
        return false;
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    color = text.size() == 7 ? ZColor::FromRGB(value) : ZColor::FromRGB(value >> 8, (value & 0xFF) / 255.0);
    return true;
}

bool parseNumber(const std::string& text, double& number)
{
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    in >> number;
    return !in.fail() && in.eof() && std::isfinite(number);
}

// Applies the items to a copy; the theme changes only when every item is good.
void applyStyle(const ZMLElement& style, ZTheme& theme)
{
    if (style.name() != "style")
        throw ZException("the root element must be <style>");
    ZTheme changed = theme;
    const auto colors = colorItems();
    const auto sizes = sizeItems();
    for (const auto& item : style.children()) {
        const std::string name = item->getAttribute("name");
        const std::string value = item->getAttribute("value");
        if (item->name() == "color") {
            const auto found = colors.find(name);
            ZColor color;
            if (found == colors.end())
                throw ZException("unknown colour \"" + name + "\"");
            if (!parseColor(value, color))
                throw ZException("colour \"" + name + "\" needs #RRGGBB or #RRGGBBAA, not \"" + value + "\"");
            changed.*(found->second) = color;
        } else if (item->name() == "size") {
            const auto found = sizes.find(name);
            double number = 0.0;
            if (found == sizes.end())
                throw ZException("unknown size \"" + name + "\"");
            if (!parseNumber(value, number) || number < found->second.minimum || number > found->second.maximum)
                throw ZException("size \"" + name + "\" must be a number from " +
                                 std::to_string(found->second.minimum) + " to " +
                                 std::to_string(found->second.maximum));
            changed.*(found->second.member) = number;
        } else {
            throw ZException("unknown item <" + item->name() + ">");
        }
    }
    theme = changed;
}

} // namespace

bool LoadStyleFile(const std::string& path, ZTheme& theme, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return true; // no style file: the built-in theme
    const std::string document((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    try {
        applyStyle(*ReadZMLDocument(document), theme);
        return true;
    } catch (const ZException& failure) {
        error = path + ": " + failure.what();
        return false;
    }
}

} // namespace halvern
