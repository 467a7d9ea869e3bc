#include "ui/markup/markup_flow.h"

#include "core/utf8.h"

#include <cairo.h>

#include <algorithm>
#include <string_view>

namespace halvern {
namespace {

using Kind = ZMarkupPiece::Kind;

// Turns a paragraph's items into words, spaces and breaks.
class Tokenizer {
public:
    explicit Tokenizer(const ZMarkupContext& context) : context_(context) {}

    std::vector<ZMarkupToken> Tokenize(const ZMarkupParagraph& paragraph)
    {
        for (const ZMarkupInline& item : paragraph.items) {
            switch (item.kind) {
            case ZMarkupInline::Kind::Text: addText(item.text, item.style); break;
            case ZMarkupInline::Kind::Control: addAtom(chipAtom(item.text)); break;
            case ZMarkupInline::Kind::Image: addImage(item); break;
            case ZMarkupInline::Kind::LineBreak: tokens_.push_back({ZMarkupToken::Kind::Break, {}, 0.0}); break;
            }
        }
        return std::move(tokens_);
    }

private:
    void addText(std::string_view text, unsigned styleFlags)
    {
        const ZTextStyle style = context_.metrics.TextStyle(styleFlags);
        size_t start = 0;
        while (start < text.size()) {
            const size_t space = std::min(text.find(' ', start), text.size());
            if (space > start)
                addAtom(textAtom(std::string(text.substr(start, space - start)), style));
            if (space < text.size())
                tokens_.push_back({ZMarkupToken::Kind::Space, {}, context_.canvas.TextWidth(" ", style)});
            start = space + 1;
        }
    }

    void addImage(const ZMarkupInline& item)
    {
        cairo_surface_t* surface = item.source.empty() || !context_.images ? nullptr : context_.images(item.source);
        const int width = surface ? cairo_image_surface_get_width(surface) : 0;
        const int height = surface ? cairo_image_surface_get_height(surface) : 0;
        if (width <= 0 || height <= 0) {
            addText(item.text, item.style | kMarkupItalic);
            return;
        }
        ZMarkupAtom atom;
        atom.piece.kind = Kind::Image;
        atom.piece.image = ZSurfaceReference(surface);
        atom.piece.box.width = width;
        atom.ascent = height;
        addAtom(std::move(atom));
    }

    // Appends to the word being read, or starts one.
    void addAtom(ZMarkupAtom atom)
    {
        if (tokens_.empty() || tokens_.back().kind != ZMarkupToken::Kind::Word)
            tokens_.push_back({ZMarkupToken::Kind::Word, {}, 0.0});
        tokens_.back().width += atom.piece.box.width;
        tokens_.back().atoms.push_back(std::move(atom));
    }

    ZMarkupAtom textAtom(std::string text, const ZTextStyle& style) const
    {
        ZMarkupAtom atom;
        atom.piece.kind = Kind::Text;
        atom.piece.box.width = context_.canvas.TextWidth(text, style);
        atom.piece.text = std::move(text);
        atom.piece.style = style;
        atom.ascent = context_.canvas.TextAscent(style);
        atom.descent = context_.canvas.TextDescent(style);
        return atom;
    }

    ZMarkupAtom chipAtom(const std::string& name) const
    {
        const ZMarkupMetrics& metrics = context_.metrics;
        ZMarkupAtom atom = textAtom(name, metrics.chipText);
        atom.piece.kind = Kind::Chip;
        atom.piece.box.width += 2 * metrics.chipPaddingX;
        atom.ascent += metrics.chipPaddingY;
        atom.descent += metrics.chipPaddingY;
        return atom;
    }

    const ZMarkupContext& context_;
    std::vector<ZMarkupToken> tokens_;
};

// The longest prefix of text from offset that ends at a character and is at most
// available wide: its length in bytes (0 when not even one character fits) and width.
// Grows the prefix by doubling and then halves back, so a long word costs a few
// measurements per line.
size_t fittingPrefix(const ZCanvas& canvas, const std::string& text, size_t offset, const ZTextStyle& style,
                     double available, double& width)
{
    auto advance = [&](size_t from, size_t characters) {
        for (; characters > 0 && from < text.size(); --characters)
            from = NextCharacter(text, from);
        return from;
    };
    auto fits = [&](size_t end, double& measured) {
        measured = canvas.TextWidth(text.substr(offset, end - offset), style);
        return measured <= available;
    };
    size_t good = offset;
    width = 0.0;
    size_t step = 1;
    double measured = 0.0;
    while (true) {
        const size_t candidate = advance(good, step);
        if (!fits(candidate, measured))
            break;
        good = candidate;
        width = measured;
        if (good == text.size())
            return good - offset;
        step *= 2;
    }
    while (step > 1) {
        step /= 2;
        const size_t candidate = advance(good, step);
        if (fits(candidate, measured)) {
            good = candidate;
            width = measured;
        }
    }
    return good - offset;
}

} // namespace

std::vector<ZMarkupToken> TokenizeParagraph(const ZMarkupParagraph& paragraph, const ZMarkupContext& context)
{
    return Tokenizer(context).Tokenize(paragraph);
}

ZMarkupExtent MeasureTokens(const std::vector<ZMarkupToken>& tokens)
{
    ZMarkupExtent extent;
    double line = 0.0;
    double space = 0.0;
    bool lineStarted = false;
    for (const ZMarkupToken& token : tokens) {
        switch (token.kind) {
        case ZMarkupToken::Kind::Word:
            extent.minimum = std::max(extent.minimum, token.width);
            line += (lineStarted ? space : 0.0) + token.width;
            extent.natural = std::max(extent.natural, line);
            lineStarted = true;
            space = 0.0;
            break;
        case ZMarkupToken::Kind::Space: space = token.width; break;
        case ZMarkupToken::Kind::Break:
            line = 0.0;
            space = 0.0;
            lineStarted = false;
            break;
        }
    }
    return extent;
}

ZMarkupLineFiller::ZMarkupLineFiller(const ZMarkupContext& context, double left, double top, double width,
                                     std::vector<ZMarkupPiece>& out)
    : context_(context), left_(left), width_(std::max(width, 0.0)), out_(out), x_(left), top_(top), bottom_(top)
{
}

void ZMarkupLineFiller::Add(std::vector<ZMarkupToken>& tokens)
{
    for (ZMarkupToken& token : tokens) {
        switch (token.kind) {
        case ZMarkupToken::Kind::Word: addWord(token); break;
        case ZMarkupToken::Kind::Space: pendingSpace_ = line_.empty() ? 0.0 : token.width; break;
        case ZMarkupToken::Kind::Break: endLine(); break;
        }
    }
}

double ZMarkupLineFiller::Finish()
{
    if (!line_.empty())
        endLine();
    return bottom_;
}

void ZMarkupLineFiller::addWord(ZMarkupToken& word)
{
    if (!line_.empty()) {
        if (fits(x_ + pendingSpace_, word.width))
            x_ += pendingSpace_;
        else
            endLine();
    }
    pendingSpace_ = 0.0;
    if (fits(x_, word.width)) {
        for (ZMarkupAtom& atom : word.atoms)
            place(std::move(atom));
    } else {
        addBrokenWord(word);
    }
}

// A word wider than the column, starting a line: its parts go on as they fit, text split
// between characters, a chip or an image on a line of its own, made to fit.
void ZMarkupLineFiller::addBrokenWord(ZMarkupToken& word)
{
    for (ZMarkupAtom& atom : word.atoms) {
        if (fits(x_, atom.piece.box.width)) {
            place(std::move(atom));
        } else if (atom.piece.kind == Kind::Text) {
            splitText(std::move(atom));
        } else {
            if (!line_.empty())
                endLine();
            shrinkToColumn(atom);
            place(std::move(atom));
        }
    }
}

void ZMarkupLineFiller::splitText(ZMarkupAtom atom)
{
    const std::string text = std::move(atom.piece.text); // the parts copy the rest of the atom
    size_t offset = 0;
    while (offset < text.size()) {
        double width = 0.0;
        size_t length = fittingPrefix(context_.canvas, text, offset, atom.piece.style, right() - x_, width);
        if (length == 0) {
            if (!line_.empty()) {
                endLine();
                continue;
            }
            length = NextCharacter(text, offset) - offset; // a line takes at least one character
            width = context_.canvas.TextWidth(text.substr(offset, length), atom.piece.style);
        }
        ZMarkupAtom part = atom;
        part.piece.text = text.substr(offset, length);
        part.piece.box.width = width;
        place(std::move(part));
        offset += length;
        if (offset < text.size())
            endLine();
    }
}

// Sums of the same advances in another order (a table column's natural width) may differ
// in the last bits; they still fit.
bool ZMarkupLineFiller::fits(double x, double advance) const
{
    constexpr double kTolerance = 1e-9;
    return x + advance <= right() + kTolerance * std::max(1.0, right());
}

void ZMarkupLineFiller::shrinkToColumn(ZMarkupAtom& atom) const
{
    ZMarkupPiece& piece = atom.piece;
    if (piece.box.width <= width_)
        return;
    if (piece.kind == Kind::Chip) {
        const double padding = 2 * context_.metrics.chipPaddingX;
        piece.text = context_.canvas.Elide(piece.text, std::max(width_ - padding, 0.0), piece.style);
        piece.box.width = context_.canvas.TextWidth(piece.text, piece.style) + padding;
    } else {
        atom.ascent *= width_ / piece.box.width;
        piece.box.width = width_;
    }
}

void ZMarkupLineFiller::place(ZMarkupAtom atom)
{
    atom.piece.box.x = x_;
    x_ += atom.piece.box.width;
    line_.push_back(std::move(atom));
}

// Puts the line's parts on a common baseline below the previous line.
void ZMarkupLineFiller::endLine()
{
    const ZMarkupMetrics& metrics = context_.metrics;
    double ascent = context_.canvas.TextAscent(metrics.text);
    double descent = context_.canvas.TextDescent(metrics.text);
    for (const ZMarkupAtom& atom : line_) {
        ascent = std::max(ascent, atom.ascent);
        descent = std::max(descent, atom.descent);
    }
    const double baseline = top_ + ascent;
    for (ZMarkupAtom& atom : line_) {
        atom.piece.baseline = baseline;
        atom.piece.box.y = baseline - atom.ascent;
        atom.piece.box.height = atom.ascent + atom.descent;
        out_.push_back(std::move(atom.piece));
    }
    line_.clear();
    bottom_ = baseline + descent;
    top_ = bottom_ + metrics.lineGap;
    x_ = left_;
    pendingSpace_ = 0.0;
}

} // namespace halvern
