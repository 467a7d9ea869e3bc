#pragma once

// The inline level of the markup layout: a paragraph becomes words, spaces and line
// breaks (tokens), which ZMarkupLineFiller sets into lines of a column.

#include "ui/markup/markup_layout.h"

#include <vector>

namespace halvern {

// What measuring and resolving images needs.
struct ZMarkupContext {
    const ZCanvas& canvas;
    const ZMarkupMetrics& metrics;
    const ZMarkupImageLookup& images;
};

// A part of a word that is placed whole; only a text part can be split between
// characters, when its word fits no line. piece.box.width is its advance.
struct ZMarkupAtom {
    ZMarkupPiece piece;
    double ascent = 0.0;  // above the baseline
    double descent = 0.0; // below it
};

struct ZMarkupToken {
    enum class Kind { Word, Space, Break };
    Kind kind = Kind::Word;
    std::vector<ZMarkupAtom> atoms; // a word's parts, with no place to break between them
    double width = 0.0;             // the advance of the word or the space
};

std::vector<ZMarkupToken> TokenizeParagraph(const ZMarkupParagraph& paragraph, const ZMarkupContext& context);

struct ZMarkupExtent {
    double minimum = 0.0; // the widest word
    double natural = 0.0; // the widest line when nothing wraps
};

ZMarkupExtent MeasureTokens(const std::vector<ZMarkupToken>& tokens);

// Sets tokens into lines of a column, appending the pieces to a list.
class ZMarkupLineFiller {
public:
    // The column starts at (left, top) and is width wide.
    ZMarkupLineFiller(const ZMarkupContext& context, double left, double top, double width,
                      std::vector<ZMarkupPiece>& out);

    void Add(std::vector<ZMarkupToken>& tokens);
    // Ends the last line and answers the bottom of the text (top when there is none).
    double Finish();

private:
    void addWord(ZMarkupToken& word);
    void addBrokenWord(ZMarkupToken& word);
    void splitText(ZMarkupAtom atom);
    void shrinkToColumn(ZMarkupAtom& atom) const;
    void place(ZMarkupAtom atom);
    void endLine();
    // Whether an advance fits between x and the column's right edge.
    bool fits(double x, double advance) const;
    double right() const { return left_ + width_; }

    const ZMarkupContext& context_;
    double left_;
    double width_;
    std::vector<ZMarkupPiece>& out_;
    std::vector<ZMarkupAtom> line_;
    double x_;
    double top_;    // of the line being filled
    double bottom_; // of the last line ended
    double pendingSpace_ = 0.0;
};

} // namespace halvern
