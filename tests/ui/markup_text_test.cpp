#include "ui/markup/markup_layout.h"
#include "ui/markup/markup_parser.h"
#include "ui/markup/markup_tooltip.h"
#include "core/utf8.h"
#include "ui/markup/markup_view.h"
#include "ui/ui_root.h"

#include <gtest/gtest.h>

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

namespace {

using Kind = ZMarkupInline::Kind;

const char* const kDryWet = "<name>Dry/wet</name> defines amount of ambience added to the sound. Note that the plugin "
                            "also affect spectrum and panorama depending on source position and room.";
const char* const kModulation = "Modulates the late reflections' phase. <p>Note that this algorithm is appliead on "
                                "the reverberation signal only.";
const char* const kReference = "You can apply similar approach as to <reference>Diffusion</reference>, but here "
                               "the echoes are spread in time.";
const char* const kTable = "<table><tr><td>Mode</td><td>Character</td></tr>"
                           "<tr><td>1</td><td>Smooth and dense</td></tr>"
                           "<tr><td>Mode 3</td><td>Bright, a little metallic</td></tr></table>";

const ZMarkupParagraph& paragraph(const ZMarkupDocument& document, size_t index)
{
    return std::get<ZMarkupParagraph>(document.blocks.at(index));
}

ZMarkupInline text(std::string content, unsigned style = kMarkupPlain)
{
    return {Kind::Text, std::move(content), style, {}};
}

bool sameColor(const ZColor& a, const ZColor& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

std::string withoutSpaces(std::string text)
{
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
    return text;
}

// Lays documents out the way the editor does: the default theme, measured at scale 1.
struct Typesetter {
    ZTheme theme = ZTheme::Default();
    ZCanvas canvas{1, 1, 1.0};

    ZMarkupLayout lay(const std::string& markup, double width, const ZMarkupImageLookup& images = {})
    {
        return ZMarkupLayout(ParseMarkup(markup), width, theme, canvas, images);
    }
};

std::vector<const ZMarkupPiece*> piecesOf(const ZMarkupLayout& layout, ZMarkupPiece::Kind kind)
{
    std::vector<const ZMarkupPiece*> found;
    for (const ZMarkupPiece& piece : layout.pieces()) {
        if (piece.kind == kind)
            found.push_back(&piece);
    }
    return found;
}

const ZMarkupPiece& pieceWithText(const ZMarkupLayout& layout, const std::string& content)
{
    for (const ZMarkupPiece& piece : layout.pieces()) {
        if (piece.text == content)
            return piece;
    }
    ADD_FAILURE() << "no piece \"" << content << "\"";
    static const ZMarkupPiece none;
    return none;
}

TEST(UiMarkup, ParsesRealHelpTexts)
{
    const ZMarkupDocument dryWet = ParseMarkup(kDryWet);
    ASSERT_EQ(dryWet.blocks.size(), 1u);
    EXPECT_EQ(paragraph(dryWet, 0).items,
              (std::vector<ZMarkupInline>{text("Dry/wet", kMarkupName),
                                          text(" defines amount of ambience added to the sound. Note that the plugin "
                                               "also affect spectrum and panorama depending on source position and "
                                               "room.")}));
    const ZMarkupDocument modulation = ParseMarkup(kModulation);
    ASSERT_EQ(modulation.blocks.size(), 2u);
    EXPECT_EQ(paragraph(modulation, 0).items, std::vector{text("Modulates the late reflections' phase.")});
    EXPECT_EQ(paragraph(modulation, 1).items,
              std::vector{text("Note that this algorithm is appliead on the reverberation signal only.")});
    EXPECT_EQ(paragraph(ParseMarkup(kReference), 0).items,
              (std::vector<ZMarkupInline>{text("You can apply similar approach as to "),
                                          text("Diffusion", kMarkupReference),
                                          text(", but here the echoes are spread in time.")}));
    EXPECT_EQ(ParseMarkup("&quot;a&quot; &amp; b &lt;c&gt; &apos;d&apos; &#65;&#x42;&#X263a; e&nbsp;f").PlainText(),
              "\"a\" & b <c> 'd' AB\u263A e\u00A0f");
    // White space collapses; chips, breaks and images are items of their own.
    const ZMarkupDocument mixed = ParseMarkup("  Press \n\t <control> Reset </control> twice<br/>then "
                                              "<b>see <i>the</i></b> <img src=\"room\" alt=\"Room &amp; plan\"/>  ");
    EXPECT_EQ(paragraph(mixed, 0).items,
              (std::vector<ZMarkupInline>{text("Press "), {Kind::Control, "Reset", kMarkupPlain, {}}, text(" twice"),
                                          {Kind::LineBreak, {}, kMarkupPlain, {}}, text("then "),
                                          text("see ", kMarkupBold), text("the", kMarkupBold | kMarkupItalic),
                                          text(" "), {Kind::Image, "Room & plan", kMarkupPlain, "room"}}));
    EXPECT_EQ(mixed.PlainText(), "Press Reset twice\nthen see the Room & plan");
}

TEST(UiMarkup, DamagedInputGivesSaneOutput)
{
    const ZMarkupDocument open = ParseMarkup("<b>bold <i>both</b> plain</i> <control>chip");
    EXPECT_EQ(paragraph(open, 0).items,
              (std::vector<ZMarkupInline>{text("bold ", kMarkupBold), text("both", kMarkupBold | kMarkupItalic),
                                          text(" plain "), {Kind::Control, "chip", kMarkupPlain, {}}}));
    EXPECT_EQ(ParseMarkup("a < b, c<d, x <3 y, <blink>hi</blink> <!-- note --> there").PlainText(),
              "a < b, c<d, x <3 y, hi there");
    EXPECT_EQ(ParseMarkup("&bogus; & &#xZZ; &#1114112; &#0; &#;").PlainText(), "&bogus; & &#xZZ; \uFFFD \uFFFD &#;");
    EXPECT_EQ(ParseMarkup("<b title=\"never closed>text").PlainText(), "<b title=\"never closed>text");
    EXPECT_TRUE(ParseMarkup("<!-- runs to the end <b>x</b>").blocks.empty());
    EXPECT_EQ(ParseMarkup("caf\xC3 \xFF\xFE ok \xED\xA0\x80 \xF0\x9F\x8E\xB5").PlainText(), "caf\uFFFD \uFFFD\uFFFD ok \uFFFD\uFFFD\uFFFD \U0001F3B5");
    std::string deep;
    for (int i = 0; i < 2000; ++i)
        deep += "<b><i><table><tr><td>";
    const ZMarkupDocument nested = ParseMarkup(deep + "x");
    ASSERT_EQ(nested.blocks.size(), 1u); // tables do not nest: one table of 2000 rows
    EXPECT_EQ(std::get<ZMarkupTable>(nested.blocks[0]).rows.size(), 2000u);
    EXPECT_EQ(std::get<ZMarkupTable>(nested.blocks[0]).rows.back().back().paragraphs.at(0).items,
              std::vector{text("x", kMarkupBold | kMarkupItalic)});
    std::string huge;
    while (huge.size() < 4 * kMaxMarkupBytes)
        huge += "word ";
    EXPECT_LE(ParseMarkup(huge).PlainText().size(), kMaxMarkupBytes);
    std::string wide = "<table><tr>";
    for (size_t i = 0; i < kMaxMarkupColumns + 5; ++i)
        wide += "<td>c</td>";
    EXPECT_EQ(std::get<ZMarkupTable>(ParseMarkup(wide).blocks[0]).columnCount(), kMaxMarkupColumns);
    Typesetter typesetter;
    for (const std::string& markup : {deep, huge, wide, std::string("<br><br>\xFF<control></control>")}) {
        const ZMarkupLayout layout = typesetter.lay(markup, 150.0);
        EXPECT_TRUE(std::isfinite(layout.height()));
        EXPECT_LE(layout.usedWidth(), 150.0 + 1e-6);
    }
}

TEST(UiMarkup, WrappingStaysInsideTheWidthInReadingOrderAndStyles)
{
    Typesetter typesetter;
    const std::string markup = std::string(kDryWet) + "<p>" + kModulation + "<br>" + kReference +
                               " Press <control>Reset</control> twice. Unbreakable: Zimmerakustikberechnungsverfahren "
                               "\u00C4\u00D6\u00DC\u00C4\u00D6\u00DC\u00C4\u00D6\u00DC\u00C4\u00D6\u00DC.";
    const std::string plain = ParseMarkup(markup).PlainText();
    double previousHeight = 0.0;
    for (const double width : {400.0, 150.0, 60.0}) {
        SCOPED_TRACE(width);
        const ZMarkupLayout layout = typesetter.lay(markup, width);
        std::string drawn;
        double lastBaseline = -1.0;
        double lastRight = 0.0;
        for (const ZMarkupPiece& piece : layout.pieces()) {
            EXPECT_GE(piece.box.x, 0.0);
            EXPECT_LE(piece.box.right(), width + 1e-6) << piece.text;
            EXPECT_EQ(SanitizedUTF8(piece.text), piece.text); // split only between characters
            // Reading order: left to right along a line, lines top to bottom.
            EXPECT_TRUE(piece.baseline > lastBaseline || (piece.baseline == lastBaseline && piece.box.x >= lastRight));
            lastBaseline = piece.baseline;
            lastRight = piece.box.right();
            drawn += piece.text;
        }
        EXPECT_EQ(drawn, withoutSpaces(plain));
        EXPECT_GT(layout.height(), previousHeight);
        previousHeight = layout.height();
    }
    const ZMarkupLayout layout = typesetter.lay(markup, 150.0);
    // Only the word wider than a line is split: pieces that touch on a line make whole words.
    std::vector<std::string> words;
    const ZMarkupPiece* previous = nullptr;
    for (const ZMarkupPiece& piece : layout.pieces()) {
        if (previous && previous->baseline == piece.baseline && previous->box.right() == piece.box.x)
            words.back() += piece.text;
        else
            words.push_back(piece.text);
        previous = &piece;
    }
    const std::string spaced = " " + plain + " ";
    for (const std::string& word : words) {
        const bool whole = spaced.find(" " + word + " ") != std::string::npos ||
                           spaced.find("\n" + word + " ") != std::string::npos ||
                           spaced.find(" " + word + "\n") != std::string::npos;
        EXPECT_TRUE(whole || std::string("Zimmerakustikberechnungsverfahren").find(word) != std::string::npos) << word;
    }
    const ZMarkupPiece& name = pieceWithText(layout, "Dry/wet");
    EXPECT_EQ(name.style.weight, ZFontWeight::SemiBold);
    EXPECT_TRUE(sameColor(name.style.color, typesetter.theme.accent));
    EXPECT_TRUE(sameColor(pieceWithText(layout, "defines").style.color, typesetter.theme.text));
    const ZMarkupPiece& chip = pieceWithText(layout, "Reset");
    EXPECT_EQ(chip.kind, ZMarkupPiece::Kind::Chip);
    EXPECT_GT(chip.box.width, typesetter.canvas.TextWidth("Reset", chip.style));
}

TEST(UiMarkup, TablesLayOutInColumns)
{
    Typesetter typesetter;
    const ZMarkupLayout wide = typesetter.lay(std::string("Modes:") + kTable + "After.", 400.0);
    const double secondColumn = pieceWithText(wide, "Character").box.x;
    EXPECT_EQ(pieceWithText(wide, "Bright,").box.x, secondColumn);
    EXPECT_LT(pieceWithText(wide, "3").box.right(), secondColumn); // the widest cell of column one
    EXPECT_EQ(pieceWithText(wide, "metallic").baseline, pieceWithText(wide, "Bright,").baseline);
    EXPECT_LT(pieceWithText(wide, "Smooth").baseline, pieceWithText(wide, "Bright,").baseline);
    EXPECT_GT(pieceWithText(wide, "After.").box.y, pieceWithText(wide, "metallic").box.bottom());
    EXPECT_EQ(piecesOf(wide, ZMarkupPiece::Kind::Rule).size(), 4u); // above the table and below each row
    EXPECT_LT(wide.usedWidth(), 300.0);
    // Narrow: the second column wraps, everything stays inside, the table grows.
    const ZMarkupLayout narrow = typesetter.lay(kTable, 140.0);
    for (const ZMarkupPiece& piece : narrow.pieces())
        EXPECT_LE(piece.box.right(), 140.0 + 1e-6) << piece.text;
    EXPECT_GT(pieceWithText(narrow, "metallic").baseline, pieceWithText(narrow, "Bright,").baseline);
    EXPECT_EQ(pieceWithText(narrow, "3").baseline, pieceWithText(narrow, "Bright,").baseline);
}

TEST(UiMarkup, ViewImagesAndTooltip)
{
    cairo_surface_t* dot = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 10, 8);
    const ZMarkupImageLookup images = [dot](const std::string& name) { return name == "dot" ? dot : nullptr; };
    Typesetter typesetter;
    const ZMarkupLayout withImages =
        typesetter.lay("A <img src=\"dot\" alt=\"Dot\"/> and <img src=\"missing\" alt=\"Lost\"/>", 300.0, images);
    cairo_surface_destroy(dot); // the layout keeps its own reference
    const auto drawnImages = piecesOf(withImages, ZMarkupPiece::Kind::Image);
    ASSERT_EQ(drawnImages.size(), 1u);
    EXPECT_EQ(drawnImages[0]->box.height, 8.0);
    EXPECT_EQ(cairo_image_surface_get_width(drawnImages[0]->image.get()), 10);
    EXPECT_TRUE(pieceWithText(withImages, "Lost").style.italic);
    const ZTheme theme = ZTheme::Default();
    ZUIRoot root(400.0, 300.0, 2.0, theme);
    auto content = std::make_unique<ZView>();
    ZMarkupView* view = content->AddChild(std::make_unique<ZMarkupView>(kDryWet));
    root.SetContent(std::move(content));
    view->SetBounds({20.0, 20.0, 200.0, 100.0});
    const ZPoint preferred = view->PreferredSize();
    EXPECT_LT(view->HeightForWidth(400.0), preferred.y);
    root.InvalidateAll();
    root.Paint();
    ZCanvas& canvas = root.canvas();
    auto pixel = [&](double x, double y) {
        const uint8_t* p = canvas.pixels() + static_cast<int>(y * 2) * canvas.stride() + static_cast<int>(x * 2) * 4;
        return (uint32_t(p[2]) << 16) | (uint32_t(p[1]) << 8) | p[0];
    };
    const uint32_t backdrop = pixel(350.0, 250.0);
    int inked = 0;
    for (double y = 20.0; y < 20.0 + preferred.y; y += 0.5)
        for (double x = 20.0; x < 220.0; x += 0.5)
            inked += pixel(x, y) != backdrop;
    EXPECT_GT(inked, 200);
    // Tooltips: inside the root and beside the pointer wherever it is.
    EXPECT_EQ(MakeMarkupTooltip("  <b> </b> ", {10.0, 10.0}, root), nullptr);
    const auto shortTip = MakeMarkupTooltip("Bypass", {10.0, 10.0}, root);
    ASSERT_NE(shortTip, nullptr);
    EXPECT_LT(shortTip->bounds().width, 120.0);
    EXPECT_GT(shortTip->bounds().y, 10.0); // below the pointer
    for (const ZPoint at : {ZPoint{395.0, 295.0}, ZPoint{0.0, 0.0}, ZPoint{200.0, 150.0}}) {
        ZView* tip = root.PushOverlay(MakeMarkupTooltip(std::string(kDryWet) + "<p>" + kReference, at, root));
        ASSERT_NE(tip, nullptr);
        EXPECT_TRUE((ZRect{0.0, 0.0, 400.0, 300.0}.contains(tip->bounds())));
        EXPECT_FALSE(tip->bounds().contains(at)); // never under the pointer
        EXPECT_LE(tip->bounds().width, kMarkupTooltipMaxWidth);
        const auto* text = static_cast<const ZMarkupView*>(tip->children().at(0).get());
        EXPECT_LE(text->HeightForWidth(text->bounds().width), text->bounds().height);
        root.RemoveOverlay(tip);
    }
}

} // namespace
} // namespace halvern
