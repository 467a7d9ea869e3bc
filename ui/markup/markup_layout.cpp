#include "ui/markup/markup_layout.h"

#include "ui/markup/markup_flow.h"

#include <algorithm>
#include <numeric>

namespace halvern {
namespace {

using Kind = ZMarkupPiece::Kind;

// Sets one paragraph into a column; answers its bottom.
double layParagraph(const ZMarkupContext& context, std::vector<ZMarkupToken>& tokens, double left, double top,
                    double width, std::vector<ZMarkupPiece>& out)
{
    ZMarkupLineFiller filler(context, left, top, width, out);
    filler.Add(tokens);
    return filler.Finish();
}

// Column widths from their minimum and natural widths. A column whose natural width is
// within a fair share of what is left gets it; the others get their minimum and a part
// of the rest in proportion to how much more they would like. Minimums that do not fit
// shrink in proportion.
std::vector<double> columnWidths(const std::vector<ZMarkupExtent>& extents, double available)
{
    std::vector<double> widths(extents.size(), -1.0);
    size_t open = extents.size();
    for (bool settled = true; settled && open > 0;) {
        settled = false;
        const double fairShare = available / static_cast<double>(open);
        for (size_t i = 0; i < extents.size(); ++i) {
            if (widths[i] < 0.0 && extents[i].natural <= fairShare) {
                widths[i] = extents[i].natural;
                available -= widths[i];
                --open;
                settled = true;
            }
        }
    }
    double minimum = 0.0;
    double natural = 0.0;
    for (size_t i = 0; i < extents.size(); ++i) {
        if (widths[i] < 0.0) {
            minimum += extents[i].minimum;
            natural += extents[i].natural;
        }
    }
    for (size_t i = 0; i < extents.size(); ++i) {
        if (widths[i] >= 0.0)
            continue;
        const ZMarkupExtent& extent = extents[i];
        if (minimum >= available)
            widths[i] = minimum > 0.0 ? extent.minimum * available / minimum : available / static_cast<double>(open);
        else
            widths[i] = extent.minimum +
                        (extent.natural - extent.minimum) * (available - minimum) / (natural - minimum);
    }
    return widths;
}

// Lays a table out: rows of cells in columns sized to their content, a rule above the
// table and below each row.
class TableLayout {
public:
    TableLayout(const ZMarkupContext& context, const ZMarkupTable& table, double width)
        : context_(context), columns_(table.columnCount()), width_(width)
    {
        for (const auto& row : table.rows) {
            auto& tokenRow = cells_.emplace_back();
            for (const ZMarkupCell& cell : row) {
                auto& paragraphs = tokenRow.emplace_back();
                for (const ZMarkupParagraph& paragraph : cell.paragraphs)
                    paragraphs.push_back(TokenizeParagraph(paragraph, context));
            }
        }
        // Narrow widths give up padding before text.
        paddingX_ = std::min(context.metrics.cellPaddingX, width / (4.0 * columns_));
    }

    // Appends the table's pieces below top; answers its bottom.
    double Lay(double top, std::vector<ZMarkupPiece>& out)
    {
        const std::vector<double> widths =
            columnWidths(columnExtents(), std::max(width_ - 2 * paddingX_ * columns_, 0.0));
        const double tableWidth = std::accumulate(widths.begin(), widths.end(), 2 * paddingX_ * columns_);
        const ZMarkupMetrics& metrics = context_.metrics;
        double y = addRule(top, tableWidth, out);
        for (auto& row : cells_) {
            double rowBottom = y + metrics.cellPaddingY;
            double x = 0.0;
            for (size_t column = 0; column < row.size(); ++column) {
                rowBottom = std::max(rowBottom, layCell(row[column], x + paddingX_, y + metrics.cellPaddingY,
                                                        widths[column], out));
                x += widths[column] + 2 * paddingX_;
            }
            y = addRule(rowBottom + metrics.cellPaddingY, tableWidth, out);
        }
        return y;
    }

private:
    using CellTokens = std::vector<std::vector<ZMarkupToken>>; // per paragraph

    std::vector<ZMarkupExtent> columnExtents() const
    {
        std::vector<ZMarkupExtent> extents(columns_);
        for (const auto& row : cells_) {
            for (size_t column = 0; column < row.size(); ++column) {
                for (const auto& paragraph : row[column]) {
                    const ZMarkupExtent extent = MeasureTokens(paragraph);
                    extents[column].minimum = std::max(extents[column].minimum, extent.minimum);
                    extents[column].natural = std::max(extents[column].natural, extent.natural);
                }
            }
        }
        return extents;
    }

    double layCell(CellTokens& paragraphs, double left, double top, double width, std::vector<ZMarkupPiece>& out)
    {
        double bottom = top;
        for (size_t i = 0; i < paragraphs.size(); ++i) {
            const double paragraphTop = i == 0 ? top : bottom + context_.metrics.paragraphGap;
            bottom = layParagraph(context_, paragraphs[i], left, paragraphTop, width, out);
        }
        return bottom;
    }

    double addRule(double y, double width, std::vector<ZMarkupPiece>& out) const
    {
        ZMarkupPiece rule;
        rule.kind = Kind::Rule;
        rule.box = {0.0, y, width, context_.metrics.lineWidth};
        out.push_back(std::move(rule));
        return y + context_.metrics.lineWidth;
    }

    const ZMarkupContext& context_;
    size_t columns_;
    double width_;
    double paddingX_;
    std::vector<std::vector<CellTokens>> cells_;
};

} // namespace

ZMarkupLayout::ZMarkupLayout(const ZMarkupDocument& document, double width, const ZTheme& theme,
                             const ZCanvas& measure, const ZMarkupImageLookup& images)
    : metrics_(theme), width_(std::max(width, 0.0))
{
    const ZMarkupContext context{measure, metrics_, images};
    double y = 0.0;
    for (size_t i = 0; i < document.blocks.size(); ++i) {
        const double top = i == 0 ? 0.0 : y + metrics_.paragraphGap;
        if (const auto* paragraph = std::get_if<ZMarkupParagraph>(&document.blocks[i])) {
            std::vector<ZMarkupToken> tokens = TokenizeParagraph(*paragraph, context);
            y = layParagraph(context, tokens, 0.0, top, width_, pieces_);
        } else {
            y = TableLayout(context, std::get<ZMarkupTable>(document.blocks[i]), width_).Lay(top, pieces_);
        }
    }
    height_ = y;
}

double ZMarkupLayout::usedWidth() const
{
    double used = 0.0;
    for (const ZMarkupPiece& piece : pieces_)
        used = std::max(used, piece.box.right());
    return used;
}

void ZMarkupLayout::Draw(ZCanvas& canvas, ZPoint origin) const
{
    for (const ZMarkupPiece& piece : pieces_) {
        const ZRect box{piece.box.x + origin.x, piece.box.y + origin.y, piece.box.width, piece.box.height};
        const double baseline = piece.baseline + origin.y;
        switch (piece.kind) {
        case Kind::Text: canvas.DrawText(piece.text, box.x, baseline, piece.style); break;
        case Kind::Chip: drawChip(canvas, piece, box, baseline); break;
        case Kind::Image: canvas.DrawImage(piece.image.get(), box); break;
        case Kind::Rule: canvas.FillRect(box, metrics_.rule); break;
        }
    }
}

void ZMarkupLayout::drawChip(ZCanvas& canvas, const ZMarkupPiece& chip, const ZRect& box, double baseline) const
{
    canvas.FillRoundedRect(box, metrics_.chipRadius, metrics_.chipFill);
    const double halfLine = metrics_.lineWidth / 2; // the frame's stroke stays inside the box
    canvas.StrokeRoundedRect(box.inset(halfLine, halfLine), metrics_.chipRadius, metrics_.chipBorder,
                             metrics_.lineWidth);
    canvas.DrawText(chip.text, box.x + metrics_.chipPaddingX, baseline, chip.style);
}

} // namespace halvern
