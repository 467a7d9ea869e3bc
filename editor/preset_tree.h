#pragma once

// ZPresetTree: the preset window's tree of presets as rows: the two branches (the
// factory's presets and the user's), their folders and presets, each indented by its
// depth. Folders and branches open and close with the triangle before them or a double
// click; a click selects a row, a double click on a preset activates it. The selected
// row is highlighted, the current preset's name is set in semibold and, unless selected,
// in the accent colour. It scrolls with the wheel.

#include "ui/view.h"

#include <functional>
#include <string>
#include <vector>

namespace halvern {

struct ZPresetNode {
    enum class Kind { Branch, Folder, Preset };
    Kind kind = Kind::Preset;
    bool factory = false;  // a row of the read-only factory presets
    int depth = 0;
    std::vector<int> path; // child indices from the collection's root (empty: the branch)
    std::string name;
    std::string key;       // the branch and the folder names down to the row
    bool expanded = false;
    bool current = false;

    bool isContainer() const { return kind != Kind::Preset; }
};

class ZPresetTree : public ZView {
public:
    ZPresetTree() = default;

    // New rows; the selection stays on the row of the same key when there is one.
    void SetNodes(std::vector<ZPresetNode> nodes);
    const std::vector<ZPresetNode>& nodes() const { return nodes_; }
    // Selects a row (-1: none) and scrolls it into view.
    void Select(int row);
    int selected() const { return selected_; }
    const ZPresetNode* selectedNode() const;
    // The row of a key and kind, or -1.
    int RowOf(const std::string& key, ZPresetNode::Kind kind) const;

    void SetOnSelect(std::function<void(int row)> onSelect) { onSelect_ = std::move(onSelect); }
    void SetOnToggle(std::function<void(int row)> onToggle) { onToggle_ = std::move(onToggle); }
    void SetOnActivate(std::function<void(int row)> onActivate) { onActivate_ = std::move(onActivate); }

    ZRect RowRect(int row) const;
    int RowAt(ZPoint point) const;
    std::string Text() const override;

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    bool OnWheel(const ZWheelEvent& event) override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    double rowHeight() const;
    double indent(int depth) const;
    ZRect toggleRect(int row) const;
    void scrollTo(double offset);
    void paintRow(ZCanvas& canvas, int row);

    std::vector<ZPresetNode> nodes_;
    int selected_ = -1;
    double offset_ = 0.0;
    std::function<void(int)> onSelect_;
    std::function<void(int)> onToggle_;
    std::function<void(int)> onActivate_;
};

} // namespace halvern
