#include "state/zml_element.h"

#include "core/z_exception.h"
#include "core/z_format.h"

#include <algorithm>
#include <charconv>

namespace halvern {
namespace {

bool isNameStart(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' || c >= 0x80;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

bool IsZMLName(std::string_view text)
{
    if (text.empty() || !isNameStart(static_cast<unsigned char>(text[0])))
        return false;
    return std::all_of(text.begin() + 1, text.end(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return isNameStart(u) || (u >= '0' && u <= '9') || u == '-' || u == '.';
    });
}

template <class A, class L>
typename L::const_iterator ZMLParser<A, L>::lowerBound(std::string_view name) const
{
    return std::lower_bound(attributes_.begin(), attributes_.end(), name,
                            [](const A& attribute, std::string_view key) { return attribute.name < key; });
}

template <class A, class L>
void ZMLParser<A, L>::clear()
{
    attributes_.clear();
    text_.clear();
    children_.clear();
}

template <class A, class L>
void ZMLParser<A, L>::setAttribute(std::string_view name, std::string_view value)
{
    auto at = lowerBound(name);
    if (at != attributes_.end() && at->name == name) {
        attributes_[static_cast<size_t>(at - attributes_.begin())].value = std::string(value);
        return;
    }
    A attribute;
    attribute.name = std::string(name);
    attribute.value = std::string(value);
    attributes_.insert(at, std::move(attribute));
}

template <class A, class L>
void ZMLParser<A, L>::setAttributeInt(std::string_view name, long long value)
{
    setAttribute(name, std::to_string(value));
}

template <class A, class L>
void ZMLParser<A, L>::setAttributes(L attributes)
{
    std::stable_sort(attributes.begin(), attributes.end(),
                     [](const A& a, const A& b) { return a.name < b.name; });
    // The sort is stable, so the last of a run of equal names is the one given last.
    L unique;
    unique.reserve(attributes.size());
    for (size_t i = 0; i < attributes.size(); ++i)
        if (i + 1 == attributes.size() || attributes[i + 1].name != attributes[i].name)
            unique.push_back(std::move(attributes[i]));
    attributes_ = std::move(unique);
}

template <class A, class L>
void ZMLParser<A, L>::removeAttribute(std::string_view name)
{
    auto at = lowerBound(name);
    if (at != attributes_.end() && at->name == name)
        attributes_.erase(at);
}

template <class A, class L>
const std::string* ZMLParser<A, L>::findAttribute(std::string_view name) const
{
    auto at = lowerBound(name);
    return at != attributes_.end() && at->name == name ? &at->value : nullptr;
}

template <class A, class L>
bool ZMLParser<A, L>::hasAttribute(std::string_view name) const
{
    return findAttribute(name) != nullptr;
}

template <class A, class L>
std::string ZMLParser<A, L>::getAttribute(std::string_view name, std::string_view defaultText) const
{
    const std::string* value = findAttribute(name);
    return value != nullptr ? *value : std::string(defaultText);
}

template <class A, class L>
long long ZMLParser<A, L>::getAttributeInt(std::string_view name, long long defaultValue) const
{
    const std::string* value = findAttribute(name);
    if (value == nullptr)
        return defaultValue;
    std::string_view text = *value;
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    // from_chars takes a minus sign but no plus sign.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return defaultValue;
    return number;
}

template <class A, class L>
const std::string& ZMLParser<A, L>::requireAttribute(std::string_view name) const
{
    const std::string* value = findAttribute(name);
    if (value == nullptr)
        throw ZException(ZFormat("Could not find required attribute ({0}).").arg(name).text());
    return *value;
}

template <class A, class L>
ZMLParser<A, L>& ZMLParser<A, L>::addChild(std::string name)
{
    children_.push_back(std::make_unique<ZMLParser>(std::move(name)));
    return *children_.back();
}

template <class A, class L>
ZMLParser<A, L>& ZMLParser<A, L>::addCopy(const ZMLParser& element)
{
    children_.push_back(element.clone());
    return *children_.back();
}

template <class A, class L>
std::unique_ptr<ZMLParser<A, L>> ZMLParser<A, L>::clone() const
{
    auto copy = std::make_unique<ZMLParser>(name_);
    copy->attributes_ = attributes_;
    copy->text_ = text_;
    copy->children_.reserve(children_.size());
    for (const auto& child : children_)
        copy->addCopy(*child);
    return copy;
}

template <class A, class L>
ZMLParser<A, L>* ZMLParser<A, L>::findChild(std::string_view name)
{
    for (auto& child : children_)
        if (child->name() == name)
            return child.get();
    return nullptr;
}

template <class A, class L>
const ZMLParser<A, L>* ZMLParser<A, L>::findChild(std::string_view name) const
{
    return const_cast<ZMLParser*>(this)->findChild(name);
}

template <class A, class L>
ZMLParser<A, L>& ZMLParser<A, L>::requireChild(std::string_view name)
{
    ZMLParser* child = findChild(name);
    if (child == nullptr)
        throw ZException(ZFormat("Could not find required subitem ({0}).").arg(name).text());
    return *child;
}

template <class A, class L>
const ZMLParser<A, L>& ZMLParser<A, L>::requireChild(std::string_view name) const
{
    return const_cast<ZMLParser*>(this)->requireChild(name);
}

template <class A, class L>
bool ZMLParser<A, L>::removeChild(std::string_view name)
{
    auto at = std::find_if(children_.begin(), children_.end(),
                           [name](const std::unique_ptr<ZMLParser>& child) { return child->name() == name; });
    if (at == children_.end())
        return false;
    children_.erase(at);
    return true;
}

template <class A, class L>
bool ZMLParser<A, L>::removeChild(const ZMLParser& child)
{
    auto at = std::find_if(children_.begin(), children_.end(),
                           [&child](const std::unique_ptr<ZMLParser>& own) { return own.get() == &child; });
    if (at == children_.end())
        return false;
    children_.erase(at);
    return true;
}

template <class A, class L>
bool ZMLParser<A, L>::operator==(const ZMLParser& other) const
{
    if (name_ != other.name_ || text_ != other.text_ || attributes_.size() != other.attributes_.size() ||
        children_.size() != other.children_.size())
        return false;
    for (size_t i = 0; i < attributes_.size(); ++i)
        if (attributes_[i].name != other.attributes_[i].name || attributes_[i].value != other.attributes_[i].value)
            return false;
    for (size_t i = 0; i < children_.size(); ++i)
        if (!(*children_[i] == *other.children_[i]))
            return false;
    return true;
}

template class ZMLParser<ZAttribute, ZList<ZAttribute>>;

} // namespace halvern
