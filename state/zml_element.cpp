#include "state/zml_element.h"

#include <algorithm>

namespace halvern {

std::vector<ZAttribute>::const_iterator ZMLElement::lowerBound(std::string_view name) const
{
    return std::lower_bound(attributes_.begin(), attributes_.end(), name,
                            [](const ZAttribute& attribute, std::string_view key) { return attribute.name < key; });
}

void ZMLElement::setAttribute(std::string_view name, std::string_view value)
{
    auto at = lowerBound(name);
    if (at != attributes_.end() && at->name == name) {
        attributes_[static_cast<size_t>(at - attributes_.begin())].value = std::string(value);
        return;
    }
    attributes_.insert(at, ZAttribute{std::string(name), std::string(value)});
}

void ZMLElement::setAttributeInt(std::string_view name, long long value)
{
    setAttribute(name, std::to_string(value));
}

void ZMLElement::removeAttribute(std::string_view name)
{
    auto at = lowerBound(name);
    if (at != attributes_.end() && at->name == name)
        attributes_.erase(at);
}

const std::string* ZMLElement::findAttribute(std::string_view name) const
{
    auto at = lowerBound(name);
    return at != attributes_.end() && at->name == name ? &at->value : nullptr;
}

bool ZMLElement::hasAttribute(std::string_view name) const
{
    return findAttribute(name) != nullptr;
}

std::string ZMLElement::getAttribute(std::string_view name, std::string_view defaultText) const
{
    const std::string* value = findAttribute(name);
    return value != nullptr ? *value : std::string(defaultText);
}

ZMLElement& ZMLElement::addChild(std::string name)
{
    children_.push_back(std::make_unique<ZMLElement>(std::move(name)));
    return *children_.back();
}

ZMLElement& ZMLElement::addCopy(const ZMLElement& element)
{
    children_.push_back(element.clone());
    return *children_.back();
}

std::unique_ptr<ZMLElement> ZMLElement::clone() const
{
    auto copy = std::make_unique<ZMLElement>(name_);
    copy->attributes_ = attributes_;
    copy->text_ = text_;
    for (const auto& child : children_)
        copy->addCopy(*child);
    return copy;
}

ZMLElement* ZMLElement::findChild(std::string_view name)
{
    for (auto& child : children_)
        if (child->name() == name)
            return child.get();
    return nullptr;
}

const ZMLElement* ZMLElement::findChild(std::string_view name) const
{
    return const_cast<ZMLElement*>(this)->findChild(name);
}

} // namespace halvern
