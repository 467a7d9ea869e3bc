#pragma once

// A markup element: a name, attributes kept sorted by name (looked up by binary
// search), character text and owned children in insertion order.

#include "core/z_object.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

struct ZAttribute {
    std::string name;
    std::string value;
};

class ZMLElement : public ZObject {
public:
    explicit ZMLElement(std::string name = {}) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    const std::string& text() const { return text_; }
    void setText(std::string text) { text_ = std::move(text); }

    void setAttribute(std::string_view name, std::string_view value);
    void setAttributeInt(std::string_view name, long long value);
    void removeAttribute(std::string_view name);
    bool hasAttribute(std::string_view name) const;
    // The attribute's value, or nullptr when absent.
    const std::string* findAttribute(std::string_view name) const;
    std::string getAttribute(std::string_view name, std::string_view defaultText = {}) const;
    const std::vector<ZAttribute>& attributes() const { return attributes_; }

    ZMLElement& addChild(std::string name);
    ZMLElement* findChild(std::string_view name);
    const ZMLElement* findChild(std::string_view name) const;
    bool hasChild(std::string_view name) const { return findChild(name) != nullptr; }
    const std::vector<std::unique_ptr<ZMLElement>>& children() const { return children_; }
    // Adds a deep copy of an element as the last child.
    ZMLElement& addCopy(const ZMLElement& element);
    // A deep copy of this element with its attributes, text and children.
    std::unique_ptr<ZMLElement> clone() const;

private:
    std::vector<ZAttribute>::const_iterator lowerBound(std::string_view name) const;

    std::string name_;
    std::vector<ZAttribute> attributes_;
    std::string text_;
    std::vector<std::unique_ptr<ZMLElement>> children_;
};

} // namespace halvern
