#pragma once

// A markup element: a name, attributes kept sorted by name (looked up by binary
// search), character text and owned children in insertion order. ZMLElement is the
// one instantiation the framework uses; the member definitions live in the .cpp.

#include "core/z_object.h"
#include "state/zml_fwd.h"

#include <memory>
#include <string>
#include <string_view>

namespace halvern {

// The deepest nesting of elements that the reader accepts and the writer writes; the
// root is at depth 1.
constexpr int kZMLMaxDepth = 256;

struct ZAttribute {
    std::string name;
    std::string value;
};

// True when text is a name the reader accepts for elements and attributes: not empty,
// starting with an ASCII letter, '_', ':' or a byte of a multi-byte UTF-8 character,
// followed by those, ASCII digits, '-' and '.'.
bool IsZMLName(std::string_view text);

// Attribute holds the std::string members name and value; AttributeList is a
// random-access sequence of Attribute.
template <class Attribute, class AttributeList>
class ZMLParser : public ZObject {
public:
    using ChildList = ZList<std::unique_ptr<ZMLParser>>;

    explicit ZMLParser(std::string name = {}) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    const std::string& text() const { return text_; }
    void setText(std::string text) { text_ = std::move(text); }

    // Removes all children, attributes and text; the name stays.
    void clear();

    void setAttribute(std::string_view name, std::string_view value);
    void setAttributeInt(std::string_view name, long long value);
    // Replaces all attributes by the given ones, sorted by name; of several attributes
    // with the same name the last one is kept.
    void setAttributes(AttributeList attributes);
    void removeAttribute(std::string_view name);
    bool hasAttribute(std::string_view name) const;
    // The attribute's value, or nullptr when absent.
    const std::string* findAttribute(std::string_view name) const;
    std::string getAttribute(std::string_view name, std::string_view defaultText = {}) const;
    // The attribute as a decimal integer (optional sign, surrounding blanks allowed);
    // defaultValue when it is absent, not an integer or out of range.
    long long getAttributeInt(std::string_view name, long long defaultValue = 0) const;
    // The attribute's value; throws "Could not find required attribute (name)." when absent.
    const std::string& requireAttribute(std::string_view name) const;
    const AttributeList& attributes() const { return attributes_; }

    ZMLParser& addChild(std::string name);
    ZMLParser* findChild(std::string_view name);
    const ZMLParser* findChild(std::string_view name) const;
    bool hasChild(std::string_view name) const { return findChild(name) != nullptr; }
    // The first child of that name; throws "Could not find required subitem (name)."
    // when there is none.
    ZMLParser& requireChild(std::string_view name);
    const ZMLParser& requireChild(std::string_view name) const;
    // Removes and destroys the first child of that name; false when there is none.
    bool removeChild(std::string_view name);
    // Removes and destroys this very child (compared by address); false when it is not
    // a child of this element.
    bool removeChild(const ZMLParser& child);
    const ChildList& children() const { return children_; }
    // Adds a deep copy of an element as the last child.
    ZMLParser& addCopy(const ZMLParser& element);
    // A deep copy of this element with its attributes, text and children.
    std::unique_ptr<ZMLParser> clone() const;

    // Same name, attributes, text and children (compared deeply, in order).
    bool operator==(const ZMLParser& other) const;

private:
    typename AttributeList::const_iterator lowerBound(std::string_view name) const;

    std::string name_;
    AttributeList attributes_;
    std::string text_;
    ChildList children_;
};

extern template class ZMLParser<ZAttribute, ZList<ZAttribute>>;

} // namespace halvern
